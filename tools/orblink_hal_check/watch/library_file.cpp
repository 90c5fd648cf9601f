#include "tools/orblink_hal_check/watch/library_file.h"

#include <elf.h>
#include <link.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>

namespace halcheck {

namespace {

constexpr uintmax_t kLongestFile = 1U << 30;
constexpr unsigned char kOwnClass = sizeof(void*) == 8 ? ELFCLASS64 : ELFCLASS32;
#ifdef __x86_64__
constexpr uint16_t kOwnMachine = EM_X86_64;
constexpr char kOwnAbi[] = "x86-64";
#else
constexpr uint16_t kOwnMachine = EM_386;
constexpr char kOwnAbi[] = "i386";
#endif

// A record at a place of the file; nothing when it does not lie within.
template <typename Record>
std::optional<Record> At(const std::string& file, uint64_t offset)
{
    if (offset > file.size() || file.size() - offset < sizeof(Record))
        return std::nullopt;
    Record record;
    memcpy(&record, file.data() + offset, sizeof record);
    return record;
}

std::string NameAt(const std::string& file, uint64_t offset)
{
    // What follows the last character is a NUL.
    return offset < file.size() ? file.data() + static_cast<size_t>(offset) : "";
}

bool IsApiFunction(const std::string& name)
{
    return name.starts_with("ORBLINK_") ||
           (name.starts_with("ETHPHY_") && name != "ETHPHY_HalFuncs");
}

void TakeSymbol(const std::string& name, bool defined, LibraryFile& library)
{
    if (!defined && IsApiFunction(name))
        library.apiFunctions.push_back(name);
    library.hasSwitchTable = library.hasSwitchTable || (defined && name == "OBHAL_HalFuncs");
    library.hasPhyTable = library.hasPhyTable || (defined && name == "ETHPHY_HalFuncs");
}

void ReadSymbols(const std::string& file, const ElfW(Shdr) & symbols, const ElfW(Shdr) & names,
                 LibraryFile& library)
{
    const uint64_t count = symbols.sh_size / sizeof(ElfW(Sym));
    for (uint64_t i = 0; i < count; ++i) {
        const auto symbol = At<ElfW(Sym)>(file, symbols.sh_offset + i * sizeof(ElfW(Sym)));
        if (!symbol)
            return;
        TakeSymbol(NameAt(file, uint64_t{names.sh_offset} + symbol->st_name),
                   symbol->st_shndx != SHN_UNDEF, library);
    }
}

void ReadSections(const std::string& file, const ElfW(Ehdr) & header, LibraryFile& library)
{
    const auto section = [&](unsigned index) {
        return At<ElfW(Shdr)>(file, header.e_shoff + uint64_t{index} * sizeof(ElfW(Shdr)));
    };
    for (unsigned i = 0; i < header.e_shnum; ++i) {
        const auto symbols = section(i);
        if (!symbols || symbols->sh_type != SHT_DYNSYM)
            continue;
        if (const auto names = section(symbols->sh_link))
            ReadSymbols(file, *symbols, *names, library);
    }
}

}  // namespace

LibraryFile ReadLibraryFile(const std::string& path)
{
    LibraryFile library{};
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error) ||
        std::filesystem::file_size(path, error) > kLongestFile) {
        library.complaint = "there is no such library";
        return library;
    }
    std::ifstream stream{path, std::ios::binary};
    const std::string file{std::istreambuf_iterator<char>(stream), {}};
    const auto header = At<ElfW(Ehdr)>(file, 0);
    if (!header || memcmp(header->e_ident, ELFMAG, SELFMAG) != 0 || header->e_type != ET_DYN) {
        library.complaint = "it is no shared library";
        return library;
    }
    if (header->e_ident[EI_CLASS] != kOwnClass || header->e_machine != kOwnMachine) {
        library.complaint =
            std::string("it is not for ") + kOwnAbi + ": use the orblink-hal-check of its own ABI";
        return library;
    }
    ReadSections(file, *header, library);
    if (!library.hasSwitchTable && !library.hasPhyTable)
        library.complaint = "it has neither OBHAL_HalFuncs nor ETHPHY_HalFuncs";
    return library;
}

}  // namespace halcheck

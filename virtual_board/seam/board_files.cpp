#include "virtual_board/seam/board_files.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <string_view>
#include <vector>

namespace vboard::seam {
namespace {

// How /proc names the descriptors that MakeDescriptor makes: it needs no list of them that way, and
// a descriptor is known wherever a program takes it.
constexpr std::string_view kWritable = "orblink-vboard-writable:";
constexpr std::string_view kReadOnly = "orblink-vboard:";

std::vector<BoardFile> AllFiles()
{
    std::vector<BoardFile> files{{BoardFile::Kind::kLaneDevice, 0, wire::kLaneDriverPath}};
    for (const wire::AttributePath& entry : wire::kAttributePaths)
        files.push_back(
            {BoardFile::Kind::kAttribute, static_cast<uint32_t>(entry.attribute), entry.path});
    for (uint32_t index = 0; index < std::size(wire::kPrivatePaths); ++index)
        files.push_back({BoardFile::Kind::kPrivateName, index, wire::kPrivatePaths[index]});
    return files;
}

std::string_view BaseName(std::string_view path)
{
    return path.substr(path.rfind('/') + 1);
}

std::string Absolute(const Target& target, int directory, const std::string& path)
{
    const std::string whole = path[0] == '/' ? path : target.DirectoryOf(directory) + "/" + path;
    return std::filesystem::path(whole).lexically_normal();
}

std::string LinkName(std::string_view prefix, std::string_view base)
{
    return std::string("/memfd:").append(prefix).append(base).append(" (deleted)");
}

}  // namespace

std::optional<BoardFile> FindFile(const Target& target, int directory, uint64_t path,
                                  bool privateNames)
{
    static const std::vector<BoardFile> kFiles = AllFiles();
    const std::optional<std::string> given = target.ReadPath(path);
    const std::string_view base = BaseName(given ? std::string_view(*given) : std::string_view());
    for (const BoardFile& file : kFiles) {
        if (base != BaseName(file.path))
            continue;
        if (file.kind == BoardFile::Kind::kPrivateName && !privateNames)
            return std::nullopt;
        return Absolute(target, directory, *given) == file.path ? std::optional{file}
                                                                : std::nullopt;
    }
    return std::nullopt;
}

UniqueFd MakeDescriptor(const BoardFile& file, const std::string& text, int flags)
{
    const int access = flags & O_ACCMODE;
    const bool writable = access != O_RDONLY && file.kind == BoardFile::Kind::kAttribute;
    const std::string name =
        std::string(writable ? kWritable : kReadOnly).append(BaseName(file.path));
    const UniqueFd memory{memfd_create(name.c_str(), MFD_CLOEXEC | MFD_ALLOW_SEALING)};
    if (!memory || write(memory.Get(), text.data(), text.size()) < 0)
        return {};
    // Result dropped: unsealed it is the program's own copy all the same.
    fcntl(memory.Get(), F_ADD_SEALS, F_SEAL_WRITE | F_SEAL_GROW | F_SEAL_SHRINK | F_SEAL_SEAL);
    const std::string path = "/proc/self/fd/" + std::to_string(memory.Get());
    return UniqueFd{open(path.c_str(), access | (flags & (O_APPEND | O_NONBLOCK)) | O_CLOEXEC)};
}

std::optional<wire::Attribute> WritableAttribute(const Target& target, int fd)
{
    const std::string link = target.DescriptorLink(fd);
    for (const wire::AttributePath& entry : wire::kAttributePaths)
        if (link == LinkName(kWritable, BaseName(entry.path)))
            return entry.attribute;
    return std::nullopt;
}

bool IsLaneDevice(const Target& target, int fd)
{
    return target.DescriptorLink(fd) == LinkName(kReadOnly, BaseName(wire::kLaneDriverPath));
}

}  // namespace vboard::seam

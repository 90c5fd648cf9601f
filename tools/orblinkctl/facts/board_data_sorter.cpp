#include "tools/orblinkctl/facts/board_data_sorter.h"

#include <dlfcn.h>
#include <endian.h>
#include <sys/mman.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <utility>

#include "board/board_services.h"

namespace ctl {

namespace {

BoardDataSorter* current = nullptr;

int RealStart(int role, uint16_t appid, uint8_t mid, MsgBuilder builder, MsgParser parser,
              void* dest, int destSize)
{
    static const auto real =
        reinterpret_cast<decltype(&HWMB_Start)>(dlsym(RTLD_NEXT, "HWMB_Start"));
    return real(role, appid, mid, builder, parser, dest, destSize);
}

bool IsFor(Family family, const void* message, uint32_t size)
{
    uint32_t type = 0;
    if (size < sizeof type)
        return false;
    std::memcpy(&type, message, sizeof type);
    return be32toh(type) ==
           (family == Family::kSwitch ? OB_MESSAGE_SWITCH_DATA : OB_MESSAGE_PHY_DATA);
}

}  // namespace

struct BoardDataSorter::Message {
    uint32_t size;  // 0 while none is kept
    uint8_t bytes[HWMB_BUFFER_SIZE];
};

BoardDataSorter::BoardDataSorter()
{
    void* const memory =
        // cppcheck-suppress invalidFunctionArg ; -1 is for memory without a file
        mmap(nullptr, sizeof(Message), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        throw Failure{kFailed, std::string("mmap: ") + std::strerror(errno)};
    kept_ = static_cast<Message*>(memory);
    current = this;
}

BoardDataSorter::~BoardDataSorter()
{
    current = nullptr;
    munmap(kept_, sizeof(Message));  // result dropped: it is a mapping of this object's own
}

void BoardDataSorter::SortFor(Family family)
{
    family_ = family;
    handedOver_ = false;
}

bool BoardDataSorter::Keep(const void* received, uint32_t size)
{
    const Family other = family_ == Family::kSwitch ? Family::kPhy : Family::kSwitch;
    if (kept_->size != 0 || !IsFor(other, received, size))
        return false;
    std::memcpy(kept_->bytes, received, sizeof kept_->bytes);
    kept_->size = size;
    return true;
}

int BoardDataSorter::Parse(void* received, uint32_t size, void* dest, int destSize)
{
    current->misplaced_ = current->Keep(received, size);
    return current->misplaced_ ? 0 : current->parser_(received, size, dest, destSize);
}

int BoardDataSorter::Receive(uint16_t appid, uint8_t mid, MsgBuilder builder, MsgParser parser,
                             void* dest, int destSize)
{
    if (kept_->size != 0 && IsFor(family_, kept_->bytes, kept_->size)) {
        handedOver_ = true;
        const uint32_t size = std::exchange(kept_->size, 0);
        parser(kept_->bytes, size, dest, destSize);  // result dropped, as the client does
        return 0;
    }
    parser_ = parser;
    int result = 0;
    do {
        misplaced_ = false;
        result = RealStart(SOCK_SUBJECT, appid, mid, builder, Parse, dest, destSize);
    } while (result == 0 && misplaced_);
    return result;
}

BoardDataSorter* CurrentSorter()
{
    return current;
}

}  // namespace ctl

// What the library calls finds this one first.
int HWMB_Start(int Role, uint16_t Appid, uint8_t Mid, MsgBuilder Builder, MsgParser Parser,
               void* Dest, int DestSize)
{
    ctl::BoardDataSorter* const sorter = ctl::CurrentSorter();
    if (sorter == nullptr || Role != SOCK_SUBJECT)
        return ctl::RealStart(Role, Appid, Mid, Builder, Parser, Dest, DestSize);
    return sorter->Receive(Appid, Mid, Builder, Parser, Dest, DestSize);
}

#include "virtual_board/seam/entry.h"

#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <system_error>

#include "virtual_board/board/descriptor_passing.h"
#include "virtual_board/seam/listener.h"
#include "virtual_board/seam/target.h"

namespace vboard::seam {
namespace {

// What the entrant says.
struct Greeting {
    int32_t error;
    int32_t withoutPrivileges;
    int32_t process;
    int32_t reserved;
    uint64_t address;  // of kProbe in its memory
};

constexpr uint32_t kProbeValue = 0x4F425645;
volatile const uint32_t kProbe = kProbeValue;

[[noreturn]] void Refuse(const std::string& why)
{
    throw std::runtime_error(why);
}

void CheckMemory(pid_t entrant, uint64_t address)
{
    uint32_t value = 0;
    if (!ReadMemoryOf(entrant, address, &value, sizeof value) || value != kProbeValue)
        Refuse(std::string("a sandbox forbids to read the memory of the board's programs "
                           "(process_vm_readv): ") +
               strerror(errno));
}

}  // namespace

EntryChannel::EntryChannel()
{
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0)
        throw std::system_error(errno, std::generic_category(), "cannot make a socket pair");
    maker = UniqueFd{ends[0]};
    entrant = UniqueFd{ends[1]};
}

bool EnterSeam(EntryChannel& channel, const FilterOptions& options)
{
    channel.maker = UniqueFd{};
    const std::vector<sock_filter> filter = BuildFilter(options);
    const UniqueFd listener{InstallFilter(filter)};
    Greeting greeting{};
    greeting.error = listener ? 0 : errno;
    greeting.withoutPrivileges = prctl(PR_GET_NO_NEW_PRIVS, 0, 0, 0, 0);
    greeting.process = getpid();
    greeting.address = reinterpret_cast<uintptr_t>(&kProbe);
    if (!SendWithDescriptor(channel.entrant.Get(), &greeting, sizeof greeting, listener.Get()))
        return false;
    char goAhead = 0;
    return read(channel.entrant.Get(), &goAhead, sizeof goAhead) == sizeof goAhead;
}

Entered AwaitEntry(EntryChannel& channel)
{
    channel.entrant = UniqueFd{};
    Greeting greeting{};
    Received received = ReceiveWithDescriptor(channel.maker.Get(), &greeting, sizeof greeting);
    if (received.size != static_cast<ssize_t>(sizeof greeting))
        Refuse("the command ended before it had begun");
    if (greeting.error != 0 || !received.descriptor)
        Refuse(ExplainRefusal(greeting.error));
    if (!Listener::CanHandIn(received.descriptor.Get()))
        Refuse(ExplainRefusal(ENOSYS));
    CheckMemory(greeting.process, greeting.address);
    const char goAhead = 1;
    // Result dropped: a child that has ended is noticed by its listener.
    send(channel.maker.Get(), &goAhead, sizeof goAhead, MSG_NOSIGNAL);
    return {std::move(received.descriptor), greeting.withoutPrivileges == 1};
}

}  // namespace vboard::seam

#include "virtual_board/cables/network_namespace.h"

#include <fcntl.h>
#include <linux/capability.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

#include <cerrno>
#include <future>
#include <string>

#include "virtual_board/board/system_failure.h"

namespace vboard::cables {
namespace {

}  // namespace

UniqueFd MakeNetwork(const std::function<void()>& body)
{
    // A thread leaves for the new namespace alone. Without privileges there would be no way back.
    auto made = std::async(std::launch::async, [&] {
        if (unshare(CLONE_NEWNET) != 0)
            Fail("cannot create a network namespace");
        UniqueFd holder{open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC)};
        if (!holder)
            Fail("/proc/thread-self/ns/net");
        body();
        return holder;
    });
    return made.get();
}

void EnterNetwork(pid_t holder, int fd)
{
    const std::string path = "/proc/" + std::to_string(holder) + "/fd/" + std::to_string(fd);
    const UniqueFd network{open(path.c_str(), O_RDONLY | O_CLOEXEC)};
    if (!network || setns(network.Get(), CLONE_NEWNET) != 0)
        Fail("cannot enter the network namespace of the host");
}

void ShowOwnInterfaces()
{
    if (unshare(CLONE_NEWNS) != 0)
        return;
    // In a chroot there is no mount at the root (EINVAL) and nothing that could spread.
    if (mount(nullptr, "/", nullptr, MS_REC | MS_SLAVE, nullptr) != 0 && errno != EINVAL)
        return;
    // Refused where the machine hides parts of its /sys; the host's interfaces stay hidden then.
    static_cast<void>(mount("sysfs", "/sys", "sysfs", MS_NOSUID | MS_NODEV | MS_NOEXEC, nullptr));
}

void KeepRightsAcrossExec()
{
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct sets[2]{};
    if (syscall(SYS_capget, &header, sets) != 0)
        return;
    for (auto& set : sets)
        set.inheritable = set.permitted;
    if (syscall(SYS_capset, &header, sets) != 0)
        return;
    for (unsigned right = 0; right <= CAP_LAST_CAP; ++right)
        // Result dropped: a right that is not permitted cannot be raised, and is not needed.
        prctl(PR_CAP_AMBIENT, PR_CAP_AMBIENT_RAISE, right, 0, 0);
}

}  // namespace vboard::cables

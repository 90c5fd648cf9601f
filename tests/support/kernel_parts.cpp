#include "tests/support/kernel_parts.h"

#include <unistd.h>

#include <cstdlib>
#include <string>

namespace support {
namespace {

bool Works(const std::string& script)
{
    const std::string unshare = geteuid() == 0 ? "unshare -n" : "unshare -rn";
    return std::system((unshare + " sh -c '" + script + "' >/dev/null 2>&1").c_str()) == 0;
}

}  // namespace

bool KernelHasCables()
{
    static const bool has = Works("ip link add one type veth peer name other");
    return has;
}

bool KernelFiltersVlans()
{
    static const bool has = Works("ip link add probe type bridge vlan_filtering 1");
    return has;
}

bool KernelHasFilters()
{
    static const bool has = Works(
        "ip link add one type veth peer name other\n"
        "tc -batch - <<END\n"
        "qdisc add dev one clsact\n"
        "filter add dev one ingress prio 1 flower src_mac 02:00:00:00:00:01 action vlan push id 5\n"
        "filter add dev one egress prio 2 matchall action mirred egress mirror dev other\n"
        "filter add dev one egress prio 3 flower indev other action drop\n"
        "END");
    return has;
}

}  // namespace support

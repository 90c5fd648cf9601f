// Filters as the kernel takes them.
#include "hals/linux_switch/filters.h"

#include <arpa/inet.h>
#include <errno.h>
#include <linux/if_ether.h>
#include <linux/pkt_cls.h>
#include <linux/pkt_sched.h>
#include <linux/rtnetlink.h>
#include <linux/tc_act/tc_gact.h>
#include <linux/tc_act/tc_mirred.h>
#include <linux/tc_act/tc_vlan.h>

namespace linux_switch {
namespace {

constexpr uint32_t kHook = TC_H_MAKE(TC_H_CLSACT, 0U);
constexpr uint32_t kIngress = TC_H_MAKE(TC_H_CLSACT, TC_H_MIN_INGRESS);
constexpr uint32_t kEgress = TC_H_MAKE(TC_H_CLSACT, TC_H_MIN_EGRESS);

// What tells this HAL's filters from those of others.
constexpr uint8_t kOwner[] = {'o', 'r', 'b', 'l', 'i', 'n', 'k'};

tcmsg Of(uint32_t index, uint32_t parent)
{
    tcmsg header{};
    header.tcm_family = AF_UNSPEC;
    header.tcm_ifindex = static_cast<int>(index);
    header.tcm_parent = parent;
    return header;
}

tcmsg Of(uint32_t index, const Filter& filter)
{
    const uint16_t protocol = filter.kind == FilterKind::kTagged ? filter.tpid : ETH_P_ALL;
    tcmsg header = Of(index, filter.egress ? kEgress : kIngress);
    header.tcm_handle = filter.handle;
    header.tcm_info = static_cast<uint32_t>(filter.precedence) << 16 | htons(protocol);
    return header;
}

const char* ClassifierOf(const Filter& filter)
{
    // What switch drivers take for mirroring.
    return filter.kind == FilterKind::kMirror ? "matchall" : "flower";
}

void PutMirroring(Request& request, const Filter& filter)
{
    tc_mirred parameters{};
    parameters.action = TC_ACT_UNSPEC;  // goes on with the next filter
    parameters.eaction = TCA_EGRESS_MIRROR;
    parameters.ifindex = filter.other;
    request.PutText(TCA_ACT_KIND, "mirred");
    const size_t options = request.Open(TCA_ACT_OPTIONS | NLA_F_NESTED);
    request.Put(TCA_MIRRED_PARMS, parameters);
    request.Close(options);
}

void PutVerdict(Request& request, int verdict)
{
    tc_gact parameters{};
    parameters.action = verdict;
    request.PutText(TCA_ACT_KIND, "gact");
    const size_t options = request.Open(TCA_ACT_OPTIONS | NLA_F_NESTED);
    request.Put(TCA_GACT_PARMS, parameters);
    request.Close(options);
}

void PutTagging(Request& request, const Filter& filter)
{
    tc_vlan parameters{};
    parameters.action = TC_ACT_OK;
    parameters.v_action = TCA_VLAN_ACT_PUSH;
    request.PutText(TCA_ACT_KIND, "vlan");
    const size_t options = request.Open(TCA_ACT_OPTIONS | NLA_F_NESTED);
    request.Put(TCA_VLAN_PARMS, parameters);
    request.Put<uint16_t>(TCA_VLAN_PUSH_VLAN_ID, filter.vid);
    request.Put<uint16_t>(TCA_VLAN_PUSH_VLAN_PROTOCOL, htons(filter.tpid));
    request.Put<uint8_t>(TCA_VLAN_PUSH_VLAN_PRIORITY, filter.pcp);
    request.Close(options);
}

void PutAction(Request& request, const Filter& filter)
{
    switch (filter.kind) {
        case FilterKind::kMirror:
            return PutMirroring(request, filter);
        case FilterKind::kApart:
            return PutVerdict(request, TC_ACT_SHOT);
        case FilterKind::kTagged:
            return PutVerdict(request, TC_ACT_OK);
        default:
            return PutTagging(request, filter);
    }
}

void PutKeys(Request& request, const Filter& filter)
{
    if (filter.kind == FilterKind::kApart)
        request.PutText(TCA_FLOWER_INDEV, filter.otherName);
    if (filter.kind == FilterKind::kSteering) {
        request.Put(TCA_FLOWER_KEY_ETH_SRC, filter.mac, sizeof filter.mac);
        request.Put(TCA_FLOWER_KEY_ETH_SRC_MASK, filter.mask, sizeof filter.mask);
    }
}

// A filter as the kernel shows it.
struct FoundFilter {
    tcmsg header;
    bool flower;
};

bool IsOwn(const Reply& reply, FoundFilter& found)
{
    if (reply.Type() != RTM_NEWTFILTER || !reply.Header(found.header))
        return false;
    const uint32_t precedence = found.header.tcm_info >> 16;
    if (precedence < kFirstPrecedence || precedence > kLastPrecedence)
        return false;
    const Attributes attributes = reply.Behind(sizeof found.header);
    const Attribute kind = attributes.Find(TCA_KIND);
    found.flower = kind && kind.IsText("flower");
    const Attributes options{attributes.Find(TCA_OPTIONS)};
    const Attributes actions{options.Find(
        static_cast<uint16_t>(found.flower ? int{TCA_FLOWER_ACT} : int{TCA_MATCHALL_ACT}))};
    const Attribute owner = Attributes(actions.Find(1)).Find(TCA_ACT_COOKIE);
    return owner && owner.size == sizeof kOwner && memcmp(owner.data, kOwner, sizeof kOwner) == 0;
}

int DeleteFound(Netlink& netlink, const FoundFilter& found)
{
    Request request(RTM_DELTFILTER, 0);
    request.Header(found.header);
    request.PutText(TCA_KIND, found.flower ? "flower" : "matchall");
    return netlink.Do(request);
}

// The first filter of this HAL. ENOENT: there is none.
int FindOwn(Netlink& netlink, uint32_t index, uint32_t parent, FoundFilter& own)
{
    Request request(RTM_GETTFILTER, NLM_F_DUMP);
    request.Header(Of(index, parent));
    bool any = false;
    const int error = netlink.Dump(
        request,
        [&](const Reply& reply) {
            FoundFilter found;
            if (!any && IsOwn(reply, found)) {
                own = found;
                any = true;
            }
        },
        [&] { any = false; });
    return error != 0 || any ? error : ENOENT;
}

int CountFilters(Netlink& netlink, uint32_t index, uint32_t parent, int& count)
{
    Request request(RTM_GETTFILTER, NLM_F_DUMP);
    request.Header(Of(index, parent));
    return netlink.Dump(
        request, [&](const Reply& reply) { count += reply.Type() == RTM_NEWTFILTER ? 1 : 0; },
        [&] { count = 0; });
}

int DeleteAllAt(Netlink& netlink, uint32_t index, uint32_t parent)
{
    // No port has as many.
    for (int i = 0; i < 2 * kMostFilters; ++i) {
        FoundFilter own;
        int error = FindOwn(netlink, index, parent, own);
        if (error == EINVAL || error == ENOENT)
            return 0;  // no hook, or nothing on it
        if (error == 0)
            error = DeleteFound(netlink, own);
        if (error != 0)
            return error;
    }
    return EBUSY;
}

}  // namespace

int PutFilter(Netlink& netlink, uint32_t index, const Filter& filter)
{
    const bool mirrors = filter.kind == FilterKind::kMirror;
    Request request(RTM_NEWTFILTER, NLM_F_CREATE | (mirrors ? NLM_F_EXCL : NLM_F_REPLACE));
    request.Header(Of(index, filter));
    request.PutText(TCA_KIND, ClassifierOf(filter));
    const size_t options = request.Open(TCA_OPTIONS | NLA_F_NESTED);
    PutKeys(request, filter);
    if (filter.toHardware)
        request.Put<uint32_t>(mirrors ? uint16_t{TCA_MATCHALL_FLAGS} : uint16_t{TCA_FLOWER_FLAGS},
                              TCA_CLS_FLAGS_SKIP_SW);
    const size_t actions = request.Open(static_cast<uint16_t>(
        (mirrors ? int{TCA_MATCHALL_ACT} : int{TCA_FLOWER_ACT}) | NLA_F_NESTED));
    const size_t first = request.Open(1 | NLA_F_NESTED);
    PutAction(request, filter);
    request.Put(TCA_ACT_COOKIE, kOwner, sizeof kOwner);
    request.Close(first);
    request.Close(actions);
    request.Close(options);
    return netlink.Do(request);
}

int DeleteFilter(Netlink& netlink, uint32_t index, const Filter& filter)
{
    Request request(RTM_DELTFILTER, 0);
    request.Header(Of(index, filter));
    request.PutText(TCA_KIND, ClassifierOf(filter));
    return netlink.Do(request);
}

int DeleteAllFilters(Netlink& netlink, uint32_t index)
{
    const int error = DeleteAllAt(netlink, index, kIngress);
    return error != 0 ? error : DeleteAllAt(netlink, index, kEgress);
}

int MakeHook(Netlink& netlink, uint32_t index)
{
    Request request(RTM_NEWQDISC, NLM_F_CREATE | NLM_F_EXCL);
    tcmsg header = Of(index, TC_H_CLSACT);
    header.tcm_handle = kHook;
    request.Header(header);
    request.PutText(TCA_KIND, "clsact");
    return netlink.Do(request);
}

int DeleteIdleHook(Netlink& netlink, uint32_t index)
{
    int in = 0;
    int out = 0;
    int error = CountFilters(netlink, index, kIngress, in);
    if (error == 0)
        error = CountFilters(netlink, index, kEgress, out);
    if (error != 0 || in + out != 0)
        return error == EINVAL ? 0 : error;  // EINVAL: there is no hook
    Request request(RTM_DELQDISC, 0);
    tcmsg header = Of(index, TC_H_CLSACT);
    header.tcm_handle = kHook;
    request.Header(header);
    error = netlink.Do(request);
    return error == ENOENT || error == EINVAL ? 0 : error;  // somebody has taken it away
}

}  // namespace linux_switch

// The walk of the bridge's forwarding database, and its ioctls.
#include "hals/linux_switch/mac_table.h"

#include <errno.h>
#include <linux/neighbour.h>
#include <string.h>
#include <sys/mman.h>

#include "hals/linux_switch/linux_switch_hal.h"
#include "hals/linux_switch/log.h"
#include "hals/linux_switch/slots.h"

namespace linux_switch {
namespace {

static_assert(sizeof(LinuxSwitchMacEntry) == sizeof(MacEntry));
static_assert(offsetof(LinuxSwitchMacEntry, contextWord) == offsetof(MacEntry, contextWord));

constexpr uint32_t kTicksPerSecond = 100;

// The entries of one walk. They are complete before the first is handed out: a list that changes
// while it is read is read again. In pages of their own, which cost nothing until they are used.
class EntryTable {
public:
    EntryTable()
        : pages_(mmap(nullptr, kBytes, PROT_READ | PROT_WRITE,
                      MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0))
    {
    }
    ~EntryTable()
    {
        if (*this)
            munmap(pages_, kBytes);
    }
    EntryTable(const EntryTable&) = delete;
    EntryTable& operator=(const EntryTable&) = delete;

    explicit operator bool() const { return pages_ != MAP_FAILED; }
    void Clear() { count_ = 0; }
    void Add(const LinuxSwitchMacEntry& entry)
    {
        if (count_ < kMost)
            memcpy(At(count_++), &entry, sizeof entry);
    }
    size_t Count() const { return count_; }
    uint8_t* At(size_t number) const
    {
        return static_cast<uint8_t*>(pages_) + number * sizeof(LinuxSwitchMacEntry);
    }

private:
    static constexpr size_t kMost = 65'536;
    static constexpr size_t kBytes = kMost * sizeof(LinuxSwitchMacEntry);

    void* pages_;
    size_t count_ = 0;
};

// -1 for an interface that is no port.
int PortOf(const Session& session, int index)
{
    const SwitchMemory& memory = session.Memory();
    for (int port = 0; port < memory.ports; ++port) {
        if (session.Port(port) && session.Port(port).index == static_cast<uint32_t>(index))
            return port;
    }
    return -1;
}

// False for what is no station behind a port: the interfaces' own addresses among them.
bool ReadEntry(const Session& session, const Reply& reply, LinuxSwitchMacEntry& entry)
{
    ndmsg header;
    if (reply.Type() != RTM_NEWNEIGH || !reply.Header(header))
        return false;
    const Attributes attributes = reply.Behind(sizeof header);
    const int port = PortOf(session, header.ndm_ifindex);
    const Attribute mac = attributes.Find(NDA_LLADDR);
    if (port < 0 || mac.size != sizeof entry.mac || (header.ndm_flags & NTF_SELF) != 0 ||
        (header.ndm_state & NUD_PERMANENT) != 0 ||
        attributes.Find(NDA_MASTER).As<uint32_t>() != session.Bridge().index)
        return false;
    const auto vid = attributes.Find(NDA_VLAN).As<uint16_t>();
    entry = {};
    memcpy(entry.mac, mac.data, sizeof entry.mac);
    entry.vlanId = vid != 0 || session.Memory().filtering ? vid : kDefaultVid;
    entry.port = static_cast<uint8_t>(port);
    entry.isStatic = (header.ndm_state & NUD_NOARP) != 0 ? 1 : 0;
    const auto cache = attributes.Find(NDA_CACHEINFO).As<nda_cacheinfo>();
    entry.ageSeconds = entry.isStatic ? 0 : cache.ndm_updated / kTicksPerSecond;
    return true;
}

int ReadTable(Session& session, EntryTable& table)
{
    Request request(RTM_GETNEIGH, NLM_F_DUMP);
    ndmsg header{};
    header.ndm_family = AF_BRIDGE;
    request.Header(header);
    request.Put<uint32_t>(NDA_MASTER, session.Bridge().index);
    return session.Route().Dump(
        request,
        [&](const Reply& reply) {
            LinuxSwitchMacEntry entry;
            if (ReadEntry(session, reply, entry))
                table.Add(entry);
        },
        [&] { table.Clear(); });
}

// One station behind one port.
int AskForEntry(Session& session, uint16_t type, uint16_t flags,
                const LinuxSwitchStaticMac& station, bool ofVlan)
{
    const SwitchMemory& memory = session.Memory();
    Request request(type, flags);
    ndmsg header{};
    header.ndm_family = AF_BRIDGE;
    header.ndm_ifindex = static_cast<int>(session.Port(station.port).index);
    header.ndm_state = NUD_NOARP;
    header.ndm_flags = memory.port[station.port].name[0] ? NTF_MASTER : NTF_SELF;
    request.Header(header);
    request.Put(NDA_LLADDR, station.mac, sizeof station.mac);
    if (ofVlan)
        request.Put<uint16_t>(NDA_VLAN, station.vlanId);
    return session.Route().Do(request);
}

bool ChangeEntry(int devIdx, const void* param, uint16_t type, const char* what)
{
    LinuxSwitchStaticMac station{};
    Session session(devIdx);
    if (param)
        memcpy(&station, param, sizeof station);
    const bool adds = type == RTM_NEWNEIGH;
    if (!param || (adds ? !session.MeetPort(station.port) : !session.Meet()))
        return false;
    int error = ENOENT;
    for (int port = 0; port < session.Memory().ports && error == ENOENT; ++port) {
        if (!session.Port(port) || (adds && port != station.port))
            continue;
        station.port = static_cast<uint8_t>(port);
        error = AskForEntry(session, type, adds ? NLM_F_CREATE | NLM_F_REPLACE : 0, station,
                            session.Memory().filtering != 0);
    }
    if (error != 0)
        session.Refuse(what, session.Memory().bridge, error);
    return error == 0;
}

}  // namespace

int ForEachMacEntry(int devIdx, MacEntryCallback callback, void* context)
{
    Session session(devIdx);
    EntryTable table;
    if (!callback || !table || !session.Meet())
        return -1;
    if (const int error = ReadTable(session, table))
        return session.Refuse("read the MAC table of", session.Memory().bridge, error);
    uint16_t slot = 0;
    for (size_t i = 0; i < table.Count(); ++i) {
        LinuxSwitchMacEntry filled;
        memcpy(&filled, table.At(i), sizeof filled);
        // Where VLANs are filtered, an entry of none is for what the filter never lets in.
        if (filled.vlanId == 0)
            continue;
        filled.slot = slot++;
        filled.contextWord = static_cast<uint32_t>(reinterpret_cast<uintptr_t>(context));
        MacEntry entry;
        memcpy(&entry, &filled, sizeof entry);
        if (callback(&entry) == 0)
            return 0;
    }
    return 0;
}

int EmptyMacTable(Session& session)
{
    EntryTable table;
    if (!table)
        return ENOMEM;
    if (const int error = ReadTable(session, table))
        return error;
    const uint32_t bridge = session.Bridge().index;
    if (const int error = SetBridge<uint32_t>(session.Route(), bridge, IFLA_BR_FDB_FLUSH, 0))
        return error;
    for (size_t i = 0; i < table.Count(); ++i) {
        LinuxSwitchMacEntry entry;
        memcpy(&entry, table.At(i), sizeof entry);
        LinuxSwitchStaticMac station = {{}, entry.vlanId, entry.port};
        memcpy(station.mac, entry.mac, sizeof station.mac);
        if (!entry.isStatic)
            continue;
        const bool ofVlan = session.Memory().filtering && entry.vlanId != 0;
        const int error = AskForEntry(session, RTM_DELNEIGH, 0, station, ofVlan);
        if (error != 0 && error != ENOENT)
            return error;
    }
    return 0;
}

bool FlushMacs(int devIdx)
{
    Session session(devIdx);
    if (!session.Meet())
        return false;
    const int error =
        SetBridge<uint32_t>(session.Route(), session.Bridge().index, IFLA_BR_FDB_FLUSH, 0);
    if (error != 0)
        session.Refuse("flush the MAC table of", session.Memory().bridge, error);
    return error == 0;
}

bool AddStaticMac(int devIdx, const void* param)
{
    return ChangeEntry(devIdx, param, RTM_NEWNEIGH, "add a station to");
}

bool DeleteMac(int devIdx, const void* param)
{
    return ChangeEntry(devIdx, param, RTM_DELNEIGH, "delete a station from");
}

}  // namespace linux_switch

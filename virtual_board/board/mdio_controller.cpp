#include "virtual_board/board/mdio_controller.h"

#include <cerrno>

namespace vboard {
namespace {

constexpr uint16_t kClause45 = 0x8000;
constexpr uint16_t kMaxClause22 = 31;
constexpr uint16_t kNobodyAnswers = 0xFFFF;  // the pulled-up bus

}  // namespace

MdioController::MdioController(const std::vector<Device>& boardDevices, uint32_t busCount,
                               Faults& activeFaults, Journal& boardJournal,
                               const BoardClock& boardClock)
    : devices_{boardDevices},
      buses_{busCount},
      faults_{activeFaults},
      journal_{boardJournal},
      clock_{boardClock}
{
}

int MdioController::Decode(const wire::MiiAccess& access, Target& target) const
{
    target.clause45 = (access.phyId & kClause45) != 0;
    unsigned rest = access.phyId & 0x7FFFU;
    target.address = static_cast<uint8_t>(target.clause45 ? rest >> 5 & 31 : rest & 31);
    target.mmd = target.clause45 ? static_cast<uint8_t>(rest & 31) : 0;
    unsigned highest = target.clause45 ? 0x3FF : 31;
    if (rest > highest || (!target.clause45 && access.reg > kMaxClause22))
        return EINVAL;
    return access.bus < buses_ ? 0 : ENODEV;
}

MdioDevice* MdioController::Find(uint16_t bus, uint8_t address) const
{
    for (const Device& device : devices_)
        if (device.wiring->mdioBus == bus && device.wiring->mdioAddr == address)
            return device.chip.get();
    return nullptr;
}

bool MdioController::Run(MdioDevice& chip, const Target& target, wire::MiiAccess& access) const
{
    auto reg22 = static_cast<uint8_t>(access.reg);
    chip.Advance(clock_.Now());
    if (access.write != 0)
        return target.clause45 ? chip.Write45(target.mmd, access.reg, access.valueIn)
                               : chip.Write22(reg22, access.valueIn);
    auto value = target.clause45 ? chip.Read45(target.mmd, access.reg) : chip.Read22(reg22);
    access.valueOut = value.value_or(0);
    return value.has_value();
}

int MdioController::Reach(const Target& target, wire::MiiAccess& access, std::string& note)
{
    if (auto error = faults_.Strike(FaultId::kMdioError)) {
        note = "fault";
        return static_cast<int>(*error);
    }
    MdioDevice* chip = Find(access.bus, target.address);
    if (chip == nullptr) {
        access.valueOut = kNobodyAnswers;
        note = "no device at this address";
        return 0;
    }
    if (Run(*chip, target, access))
        return 0;
    note = chip->Complaint();
    return EIO;
}

int MdioController::Access(wire::MiiAccess& access)
{
    Target target{};
    JournalEntry entry{JournalKind::kMdio, access.write != 0 ? "write" : "read"};
    entry.error = Decode(access, target);
    if (entry.error == 0)
        entry.error = Reach(target, access, entry.note);
    entry.more.Add("bus", access.bus);
    entry.more.Add("address", target.address);
    if (target.clause45)
        entry.more.Add("mmd", target.mmd);
    entry.more.Add("reg", access.reg);
    if (access.write != 0)
        entry.more.Add("value", access.valueIn);
    else if (entry.error == 0)
        entry.more.Add("value", access.valueOut);
    return journal_.Note(std::move(entry));
}

}  // namespace vboard

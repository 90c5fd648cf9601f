// The MDIO buses behind the MII requests, and the devices on them.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "virtual_board/board/faults.h"
#include "virtual_board/board/journal.h"
#include "virtual_board/board/wire.h"
#include "virtual_board/chips/mdio_device.h"
#include "virtual_board/description/board_description.h"

namespace vboard {

class VswitchChip;

// A device of the board under the name that `control` uses.
struct Device {
    std::string name;  // "sw0", "phy1"
    const Wiring* wiring;
    std::unique_ptr<MdioDevice> chip;   // null: the board file says that no chip is there
    VswitchChip* switchChip = nullptr;  // the same, when it forwards frames
};

class MdioController {
public:
    MdioController(const std::vector<Device>& boardDevices, uint32_t busCount, Faults& activeFaults,
                   Journal& boardJournal, const BoardClock& boardClock);

    // One request; 0 or errno. A read leaves its value in access.valueOut.
    int Access(wire::MiiAccess& access);

private:
    struct Target {
        bool clause45;
        uint8_t address;
        uint8_t mmd;
    };
    int Decode(const wire::MiiAccess& access, Target& target) const;
    MdioDevice* Find(uint16_t bus, uint8_t address) const;
    bool Run(MdioDevice& chip, const Target& target, wire::MiiAccess& access) const;
    int Reach(const Target& target, wire::MiiAccess& access, std::string& note);

    const std::vector<Device>& devices_;
    uint32_t buses_;
    Faults& faults_;
    Journal& journal_;
    const BoardClock& clock_;
};

}  // namespace vboard

// The parts of the SoC that the library reaches beside MDIO: SerDes lanes, GMAC interfaces, the
// reset attributes and the system-state attribute.
#pragma once

#include <array>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "virtual_board/board/faults.h"
#include "virtual_board/board/journal.h"
#include "virtual_board/board/mdio_controller.h"
#include "virtual_board/board/wire.h"
#include "virtual_board/description/board_description.h"

namespace vboard {

class Soc {
public:
    Soc(const BoardDescription& spec, const std::vector<Device>& boardDevices, Faults& activeFaults,
        Journal& boardJournal, const BoardClock& boardClock);

    // Each 0 or errno.
    int OpenLaneDriver();
    int ResetLane(uint32_t client);
    int ReconfigureGmac(const wire::GmacRequest& request, int32_t& result);
    int SetInterface(uint32_t index, bool up);
    bool IsUp(uint32_t index) const { return index < interfaces_.size() && interfaces_[index].up; }
    int ReadAttribute(wire::Attribute attribute, std::string& text);
    int OpenAttributeForWriting(wire::Attribute attribute);
    int WriteAttribute(wire::Attribute attribute, std::string_view text);

    void SetBattery(uint32_t value) { battery_ = value; }

    Json State() const;

private:
    static constexpr uint32_t kFirstPin = 18;
    static constexpr uint32_t kFirstLaneClient = 3;
    static constexpr uint32_t kLastLaneClient = 6;

    struct Interface {
        bool up = true;
        uint32_t speed = 0;
        uint32_t duplex = 0;
        uint32_t reconfigurations = 0;
    };
    void SetResetLine(uint32_t pin, bool high);
    Json ShowLanes() const;
    Json ShowInterfaces() const;

    const std::vector<Device>& devices_;
    Faults& faults_;
    Journal& journal_;
    const BoardClock& clock_;
    uint32_t battery_;
    std::array<bool, 2> released_{};
    std::array<Interface, 2> interfaces_{};
    std::map<uint32_t, uint32_t> laneResets_;
};

}  // namespace vboard

// MAC table access of the VS08 model: the registers and commands in front of the table.
#pragma once

#include <chrono>
#include <optional>

#include "virtual_board/chips/vs08/mac_table.h"
#include "virtual_board/chips/vs08/registers.h"

namespace vboard::vswitch {

inline constexpr uint16_t kFdbFirst = 0x0200;
inline constexpr uint16_t kFdbLast = 0x0209;

class Fdb {
public:
    Fdb();

    void Reset();
    // Finishes the command in progress when its time has come, and ages the table.
    void Advance(std::chrono::nanoseconds now, std::chrono::nanoseconds ageLimit);

    Refusal Read(uint16_t address, uint16_t& value) const;
    // The same without the rules of a command in progress.
    Refusal Peek(uint16_t address, uint16_t& value) const;
    Refusal Write(uint16_t address, uint16_t value, std::chrono::nanoseconds now);

    MacTable table;

private:
    bool Busy() const { return doneAt_.has_value(); }
    Refusal Start(uint16_t value, std::chrono::nanoseconds now);
    bool Execute();
    bool GetNext();
    bool AddStatic();
    MacAddress Mac() const;

    RegisterBank registers_;
    std::chrono::nanoseconds currentTime_{};
    std::optional<std::chrono::nanoseconds> doneAt_;
    bool failed_ = false;
};

}  // namespace vboard::vswitch

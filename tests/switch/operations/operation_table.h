// The parts of the table of operations, and what its rows are made of.
#pragma once

#include "tests/switch/operations/operation.h"

namespace obtest {

std::vector<Operation> BridgingOperations();
std::vector<Operation> PortOperations();
std::vector<Operation> ChipOperations();

inline constexpr const char* kBatteryProbe =
    "sys fopen(/sys/bus/acpi/drivers/Kova ACPI driver/VQR34DB:00/system_state, r)";

inline constexpr const char* kInvalidPhyPort = "Invalid PhyPortIdx={p}, DevIdx={d}";

// One slot that is called with the arguments; its failure is logged with the message.
Operation OneSlot(Operation operation, const std::string& slot, const std::string& arguments,
                  const std::string& failed);

// A value that only the HAL knows the meaning of.
Operation PassThrough(Operation operation, const std::string& slot, const std::string& arguments,
                      const std::string& failed);

}  // namespace obtest

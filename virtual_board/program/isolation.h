// What keeps a board's command apart from the rest of the machine.
#pragma once

#include <optional>
#include <string>

#include "virtual_board/program/machine_names.h"

namespace vboard {

class Isolation {
public:
    // "namespaces", "names" or "machine"; "auto" is the first of them that is to be had. Throws
    // std::runtime_error that says why one is not.
    explicit Isolation(const std::string& wanted);

    // Whether the board gives its command names of its own for what the library shares.
    bool GivesNames() const { return givesNames_; }
    // Whether it took a user namespace, so that rights count on the board alone.
    bool LosesRights() const { return losesRights_; }
    // For the line that names the board; empty in namespaces.
    const std::string& Remark() const { return remark_; }

private:
    bool givesNames_ = false;
    bool losesRights_ = false;
    std::optional<MachineNames> machine_;
    std::string remark_;
};

}  // namespace vboard

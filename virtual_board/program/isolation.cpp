#include "virtual_board/program/isolation.h"

#include <stdexcept>

#include "virtual_board/program/namespaces.h"

namespace vboard {

Isolation::Isolation(const std::string& wanted)
{
    if (wanted == "machine") {
        machine_.emplace();
        remark_ = ", with the machine's own names";
        return;
    }
    if (wanted == "names") {
        givesNames_ = true;
        remark_ = ", with names of its own";
        return;
    }
    const EnteredNamespaces entered = EnterPrivateNamespaces();
    losesRights_ = entered.ofUser;
    if (entered.refusal.empty())
        return;
    if (wanted == "namespaces")
        throw std::runtime_error(entered.refusal);
    givesNames_ = true;
    remark_ = ", with names of its own (" + entered.refusal + ")";
}

}  // namespace vboard

// The table, put together.
#include <iterator>

#include "tests/switch/operations/operation_table.h"

namespace obtest {

Operation OneSlot(Operation operation, const std::string& slot, const std::string& arguments,
                  const std::string& failed)
{
    const std::string step = "hal " + slot + "(" + arguments + ")";
    operation.steps.insert(operation.steps.begin(), step);
    operation.failures = {{.slot = slot, .steps = {step, "log1 " + failed}}};
    return operation;
}

Operation PassThrough(Operation operation, const std::string& slot, const std::string& arguments,
                      const std::string& failed)
{
    operation.needsEnabled = true;
    return OneSlot(std::move(operation), slot, arguments, failed);
}

const std::vector<Operation>& Operations()
{
    static const std::vector<Operation> operations = [] {
        std::vector<Operation> all;
        for (const auto& part : {BridgingOperations(), PortOperations(), ChipOperations()})
            all.insert(all.end(), part.begin(), part.end());
        return all;
    }();
    return operations;
}

}  // namespace obtest

#include "annotations/Actions.h"

#include "Command.h"

namespace Zantrix::Cli {

void demandOperands(const std::vector<std::string>& operands, std::size_t count, const std::string& names) {
    if (operands.size() != count) {
        throw UsageError("this action takes " + names + ", " + std::to_string(operands.size()) + " names are given");
    }
}

int exitCodeOf(bool isDone) {
    return isDone ? AllDone : Interrupt::requested() ? Interrupted : SomeFailed;
}

}  // namespace Zantrix::Cli

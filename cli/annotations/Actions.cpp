#include "annotations/Actions.h"

#include "Command.h"

namespace Zantrix::Cli {

void demandOperands(const std::vector<std::string>& operands, std::size_t count, const std::string& names) {
    if (operands.size() != count) {
        throw UsageError("this action takes " + names + ", " + counted(operands.size(), "name") +
                         (operands.size() == 1 ? " is" : " are") + " given");
    }
}

int exitCodeOf(bool isDone) {
    return isDone ? AllDone : Interrupt::requested() ? Interrupted : SomeFailed;
}

}  // namespace Zantrix::Cli

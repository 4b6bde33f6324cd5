#include "batch/FailureList.h"

#include "shell/Text.h"

namespace Zantrix::Cli {

bool FailureList::open(const std::string& path) {
    m_bWanted = !path.empty();
    return !m_bWanted || m_output.open(path);
}

void FailureList::add(std::string_view name, std::string_view why) {
    if (m_bWanted) {
        const std::string line = escaped(name) + '\t' + escaped(why) + '\n';
        m_output.write(line.data(), line.size());
    }
}

bool FailureList::finish() {
    return !m_bWanted || m_output.commit();
}

}  // namespace Zantrix::Cli

#include "standalone/TraceObjects.h"

#include <algorithm>

namespace Standalone {

TraceObjects& TraceObjects::ofTheProcess() {
    static TraceObjects objects;
    return objects;
}

void TraceObjects::add(OrbiTrace* object) {
    m_entries.push_back({object, object->getLevel()});
}

void TraceObjects::remove(const OrbiTrace* object) {
    const auto gone = std::remove_if(m_entries.begin(), m_entries.end(),
                                     [object](const Entry& entry) { return entry.object == object; });
    m_entries.erase(gone, m_entries.end());
}

void TraceObjects::setThreshold(OrbiTraceLevel level) const {
    for (const Entry& entry : m_entries) {
        entry.object->setLevel(level);
    }
}

void TraceObjects::resetThresholds() const {
    for (const Entry& entry : m_entries) {
        entry.object->setLevel(entry.initialLevel);
    }
}

} // namespace Standalone

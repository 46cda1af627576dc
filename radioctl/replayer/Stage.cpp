#include "radioctl/replayer/Stage.h"

#include <algorithm>
#include <cstring>

namespace Replayer {

Stage& Stage::get() {
    // It is never destroyed: the library's objects at the end of the process still lead to it.
    static auto* const stage = new Stage; // NOLINT(cppcoreguidelines-owning-memory)
    return *stage;
}

Driver& Stage::driver(const std::string& name) {
    auto& driver = m_drivers[name];
    if (driver == nullptr) {
        driver = std::make_unique<Driver>();
        driver->name = name;
        m_called[driver.get()] = driver.get();
        m_called[&driver->record] = driver.get();
    }
    return *driver;
}

const Driver* Stage::calledWith(const void* first) const {
    const auto found = m_called.find(first);
    return found != m_called.end() ? found->second : nullptr;
}

Variable& Stage::variable(const std::string& name) {
    auto& variable = m_variables[name];
    if (variable == nullptr) {
        variable = std::make_unique<Variable>();
    }
    return *variable;
}

void Stage::setContent(const Record& record) {
    if (record.object != nullptr) {
        Variable& changed = variable(record.object->name);
        std::memcpy(changed.content.data(), record.bytes.data(),
                    std::min(record.bytes.size(), sizeof changed.content));
    }
}

CalibrationTableHandle Stage::table(const std::string& name) {
    auto& table = m_tables[name];
    if (table == nullptr) {
        table = std::make_unique<char>();
    }
    return reinterpret_cast<CalibrationTableHandle>(table.get());
}

std::string Stage::tableOf(CalibrationTableHandle handle) const {
    const auto found = std::find_if(m_tables.begin(), m_tables.end(), [handle](const auto& table) {
        return reinterpret_cast<CalibrationTableHandle>(table.second.get()) == handle;
    });
    return found != m_tables.end() ? found->first : std::string();
}

} // namespace Replayer

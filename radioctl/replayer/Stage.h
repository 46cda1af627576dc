#ifndef RADIOCTL_REPLAYER_STAGE_H
#define RADIOCTL_REPLAYER_STAGE_H

#include "CCalibrationHandler.h"
#include "CModuleManager_c.h"
#include "CStorageManager.h"
#include "DriverLayer.h"
#include "IInterface.h"
#include "ITemperatureHandler_c.h"
#include "radioctl/replayer/Player.h"

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

class ModuleInterface;

namespace Replayer {

/** A driver as the library is given it. It passes the address of the record or the context, which differ. */
struct Driver {
    std::string name;
    DriverInterface record{};
};

/** The content of a variable, as many numbers as a recording keeps of one. */
struct Variable {
    std::array<std::int32_t, Recording::mostBytes / sizeof(std::int32_t)> content{};
    StorageVariable record{nullptr, nullptr};
};

/** What registered with the temperature service, in the order in which it did. */
struct TemperatureObservers {
    std::vector<ITemperatureObserver*> observers;
    std::size_t next = 0;
};

/** What there is of platform and library while a recording is lived. */
class Stage {
public:
    static Stage& get();

    Driver& driver(const std::string& name);
    /** The one that is called with `first`; null: none. */
    const Driver* calledWith(const void* first) const;
    Variable& variable(const std::string& name);
    void setContent(const Record& record);
    CalibrationTableHandle table(const std::string& name);
    /** Empty: there is none with this handle. */
    std::string tableOf(CalibrationTableHandle handle) const;

    /** Under a name of the broker. */
    std::map<std::string, IInterface*> published;
    /** By the number of the object in the recording. */
    std::map<std::uint16_t, ModuleInterface*> modules;
    std::map<std::uint16_t, IInterface*> compensations;
    std::map<std::uint16_t, TemperatureObservers> temperatures;
    /** By module and name. */
    std::map<std::pair<std::int32_t, std::string>, ModuleCallbackRecord*> callbacks;

private:
    std::map<std::string, std::unique_ptr<Driver>> m_drivers;
    std::map<const void*, const Driver*> m_called;
    std::map<std::string, std::unique_ptr<Variable>> m_variables;
    std::map<std::string, std::unique_ptr<char>> m_tables;
};

/** Makes the operation of the library that `begin` tells of. */
Answer makeOperation(const Record& begin);

} // namespace Replayer

#endif

// The operations of the contracts, answered from the recording.

#include "CCalibrationHandler.h"
#include "CInterfaceBroker.h"
#include "CModuleManager.h"
#include "CStorageManager.h"
#include "IRauHandler.h"
#include "ITemperatureHandler.h"
#include "InterfaceBroker.h"
#include "radioctl/replayer/Stage.h"

#include <algorithm>
#include <cstring>
#include <memory>

using namespace Replayer;

namespace {

/** What was answered to `call`. Outside of what was recorded nobody asks. */
Record recorded(const Call& call) {
    return Player::current()->answer(call);
}

bool isPlaying() {
    return Player::current() != nullptr;
}

Call namedCall(Kind kind, ObjectKind objectKind, const char* name) {
    Call call{kind, objectKind};
    call.name = name != nullptr ? name : "";
    return call;
}

template <typename Result>
Result codeOf(const Record& record) {
    return static_cast<Result>(record.code);
}

// Drivers

Call driverCall(Kind kind, const void* first) {
    const Driver* const driver = Stage::get().calledWith(first);
    Call call = namedCall(kind, ObjectKind::driver, driver != nullptr ? driver->name.c_str() : "");
    call.b = driver != nullptr && first == &driver->record ? 1 : 0;
    return call;
}

EDriverResult write(void* context, int value) {
    Call call = driverCall(Kind::driverWrite, context);
    call.a = value;
    return codeOf<EDriverResult>(recorded(call));
}

EDriverResult writeBuffer(void* context, const void* data, unsigned byteCount) {
    Call call = driverCall(Kind::driverWriteBuffer, context);
    call.a = static_cast<std::int32_t>(byteCount);
    if (data != nullptr) {
        call.bytes.assign(static_cast<const char*>(data), byteCount);
    }
    return codeOf<EDriverResult>(recorded(call));
}

EDriverResult read(void* context, int* value) {
    const Record record = recorded(driverCall(Kind::driverRead, context));
    if (value != nullptr) {
        *value = record.a;
    }
    return codeOf<EDriverResult>(record);
}

// Nothing is known of calls of a driver without a context. Writing is taken to have gone well.

EDriverResult writeUnseen(void* /*context*/, int /*value*/) {
    return EDriverResult{0};
}

EDriverResult writeBufferUnseen(void* /*context*/, const void* /*data*/, unsigned /*byteCount*/) {
    return EDriverResult{0};
}

EDriverResult readUnseen(void* /*context*/, int* /*value*/) {
    Player::current()->giveUp("a driver is read whose calls could not be recorded");
}

void fillIn(Driver& driver, std::int32_t offers) {
    namespace Offers = Recording::Offers;
    const bool isSeen = (offers & Offers::unseen) == 0;
    DriverInterface& record = driver.record;
    record.context = (offers & Offers::context) != 0 ? &driver : nullptr;
    record.write = (offers & Offers::write) == 0 ? nullptr : isSeen ? &write : &writeUnseen;
    record.writeBuffer = (offers & Offers::writeBuffer) == 0 ? nullptr
                         : isSeen                            ? &writeBuffer
                                                             : &writeBufferUnseen;
    record.read = (offers & Offers::read) == 0 ? nullptr : isSeen ? &read : &readUnseen;
}

EDriverResult getDriver(DriverInterface** out, const char* name) {
    const Record record = recorded(namedCall(Kind::driverLookup, ObjectKind::driver, name));
    if (record.a != 0) {
        Driver& driver = Stage::get().driver(name);
        fillIn(driver, record.b);
        *out = &driver.record;
    } else if (record.code == 0) {
        *out = nullptr;
    }
    return codeOf<EDriverResult>(record);
}

DriverLayerInterface s_driverLayer{nullptr, &getDriver};

/** Whether the library went on to call `kind` after what it found: only then was it what it looked for. */
bool isFollowedBy(Kind kind) {
    const auto next = Player::current()->peekCall();
    return next && next->kind == kind;
}

class DriverLayer final : public IInterface_c {
public:
    void* getCStruct() override {
        return recorded({Kind::driverLayerRecord}).a != 0 ? &s_driverLayer : nullptr;
    }
};

// Temperatures

ETHResult registerTemperatureObserver(ITemperatureObserver* observer, int way) {
    Call call{Kind::temperatureRegister, ObjectKind::temperatureObserver};
    call.a = way;
    const Record record = recorded(call);
    if (record.object != nullptr && observer != nullptr) {
        auto& observers = Stage::get().temperatures[record.object->number].observers;
        if (std::find(observers.begin(), observers.end(), observer) == observers.end()) {
            observers.push_back(observer);
        }
    }
    return codeOf<ETHResult>(record);
}

ETHResult registerByRecord(ITemperatureObserver* observer) {
    return registerTemperatureObserver(observer, 1);
}

TemperatureHandlerCStruct s_temperatures{&registerByRecord};

class TemperatureService final : public ITemperatureHandler {
public:
    void* getCStruct() override { return &s_temperatures; }
};

// Remote radio units

class RemoteUnit final : public IRauHandler {
public:
    explicit RemoteUnit(std::string name) : m_name(std::move(name)) {}
    EAFResult setTxRadioFrequency(unsigned long frequency) override { return set(Kind::rauTx, frequency); }
    EAFResult setRxRadioFrequency(unsigned long frequency) override { return set(Kind::rauRx, frequency); }

private:
    EAFResult set(Kind kind, unsigned long frequency) const {
        Call call = namedCall(kind, ObjectKind::interface, m_name.c_str());
        const auto carrier = static_cast<std::uint64_t>(frequency);
        call.a = static_cast<std::int32_t>(static_cast<std::uint32_t>(carrier));
        call.b = static_cast<std::int32_t>(static_cast<std::uint32_t>(carrier >> 32U));
        return codeOf<EAFResult>(recorded(call));
    }

    std::string m_name;
};

/** Something of which nothing is known but that it is there. */
class Something final : public IInterface {};

constexpr const char* remoteUnit = "IRauHandler";

IInterface* find(const std::string& name) {
    static Something s_something;
    if (name == "IDriverLayer") {
        static DriverLayer s_layer;
        return isFollowedBy(Kind::driverLayerRecord) ? static_cast<IInterface*>(&s_layer) : &s_something;
    }
    if (name == "ITemperatureHandler") {
        static TemperatureService s_service;
        return isFollowedBy(Kind::temperatureRegister) ? static_cast<IInterface*>(&s_service) : &s_something;
    }
    auto& published = Stage::get().published;
    if (name.compare(0, std::strlen(remoteUnit), remoteUnit) == 0) {
        // Of what is no remote radio unit the library complains, without asking for a level first.
        if (isFollowedBy(Kind::traceMessage)) {
            return &s_something;
        }
        const auto [unit, isNew] = published.try_emplace(name, nullptr);
        if (isNew) {
            unit->second = new RemoteUnit(name);
        }
    }
    const auto found = published.find(name);
    return found != published.end() && found->second != nullptr ? found->second : &s_something;
}

/** What a C client is given. */
void* findRecord(const std::string& name) {
    if (name == "IDriverLayer") {
        return isFollowedBy(Kind::driverLookup) ? &s_driverLayer : nullptr;
    }
    auto* const found = dynamic_cast<IInterface_c*>(find(name));
    return found != nullptr ? found->getCStruct() : nullptr;
}

/** The handle of the broker that was given last. */
void* s_broker;

std::string bytesOf(const unsigned long* phases, unsigned long count) {
    std::string bytes;
    for (unsigned long index = 0;
         phases != nullptr && index < std::min<unsigned long>(count, Recording::mostPhases); ++index) {
        const auto phase = static_cast<std::uint32_t>(phases[index]);
        bytes.append(reinterpret_cast<const char*>(&phase), sizeof phase);
    }
    return bytes;
}

} // namespace

IRadio::~IRadio() = default;
IRauHandler::~IRauHandler() = default;
ITemperatureHandler::~ITemperatureHandler() = default;

ETHResult ITemperatureHandler::registerObserver(ITemperatureObserver* observer) {
    return registerTemperatureObserver(observer, 0);
}

// Interface broker

InterfaceBroker& InterfaceBroker::getInstance() {
    static InterfaceBroker broker;
    if (isPlaying()) {
        static_cast<void>(recorded({Kind::brokerInstance}));
    }
    return broker;
}

EAFResult InterfaceBroker::registerInterface(const std::string& name, IInterface* iface) {
    const Record record = recorded(namedCall(Kind::brokerRegister, ObjectKind::interface, name.c_str()));
    if (isSuccess(record.code)) {
        Stage::get().published[name] = iface;
    }
    return codeOf<EAFResult>(record);
}

EAFResult InterfaceBroker::unregisterInterface(const std::string& name, IInterface** removed) {
    const Record record = recorded(namedCall(Kind::brokerUnregister, ObjectKind::interface, name.c_str()));
    auto& published = Stage::get().published;
    const auto found = published.find(name);
    if (found != published.end()) {
        if (removed != nullptr && isSuccess(record.code)) {
            *removed = found->second;
        }
        published.erase(found);
    }
    return codeOf<EAFResult>(record);
}

IInterface* InterfaceBroker::findInterface(const std::string& name) {
    const Record record = recorded(namedCall(Kind::brokerLookup, ObjectKind::interface, name.c_str()));
    return record.a != 0 ? find(name) : nullptr;
}

EAFResult CInterfaceBroker_GetInstance(void** broker) {
    const Record record = recorded({Kind::brokerOpen});
    if (isSuccess(record.code) && broker != nullptr) {
        s_broker = record.a != 0 ? &Stage::get() : nullptr;
        *broker = s_broker;
    }
    return codeOf<EAFResult>(record);
}

EAFResult CInterfaceBroker_GetInterface(void* broker, const char* name, void** iface) {
    Call call = namedCall(Kind::brokerGet, ObjectKind::interface, name);
    call.b = broker == s_broker ? 1 : 0;
    const Record record = recorded(call);
    if (record.a != 0) {
        *iface = findRecord(name);
    } else if (record.code == 0) {
        *iface = nullptr;
    }
    return codeOf<EAFResult>(record);
}

EAFResult CInterfaceBroker_DestroyInstance(void* broker) {
    Call call{Kind::brokerClose};
    call.a = broker == s_broker ? 1 : 0;
    return codeOf<EAFResult>(recorded(call));
}

// Module manager

namespace {

/** What the contract keeps to itself of a module, by the one way that the language leaves. */
template <auto filter, auto count>
struct PublishedFilterOf {
    friend void describe(const ModuleInterface& module, Call& call) {
        call.bytes = bytesOf(module.*filter, module.*count);
        call.b = static_cast<std::int32_t>(call.bytes.size() / sizeof(std::int32_t));
    }
};
void describe(const ModuleInterface& module, Call& call);
template struct PublishedFilterOf<&ModuleInterface::m_phaseFilter, &ModuleInterface::m_phaseCount>;

} // namespace

// The contract gives the name by reference. NOLINTNEXTLINE(modernize-pass-by-value)
ModuleInterface::ModuleInterface(unsigned moduleId, const std::string& moduleName, unsigned channel,
                                 unsigned /*reserved*/, const unsigned long* phaseFilter,
                                 unsigned long phaseCount)
    : m_moduleId(moduleId),
      m_moduleName(moduleName),
      m_channel(channel),
      m_phaseFilter(phaseFilter),
      m_phaseCount(phaseCount) {}

ModuleInterface::~ModuleInterface() = default;

bool ModuleInterface::wantsPhase(unsigned long phase) const {
    return std::find(m_phaseFilter, m_phaseFilter + m_phaseCount, phase) != m_phaseFilter + m_phaseCount;
}

/** The platform's own, which called of the module what is recorded, and answered what it wanted. */
EAFResult ModuleInterface::onPhaseActivation(unsigned long /*phase*/, ECallbackPriority /*priority*/) {
    return codeOf<EAFResult>(Player::current()->makeUntilEnd());
}

EAFResult ModuleInterface::onModuleInit() {
    return ResultOk;
}
EAFResult ModuleInterface::onPhaseModuleStorageObjectsRetreived() {
    return ResultOk;
}
EAFResult ModuleInterface::onPhasePostFrameformatLoad() {
    return ResultOk;
}
EAFResult ModuleInterface::onPhaseEndFrameformatLoad() {
    return ResultOk;
}
EAFResult ModuleInterface::onPhaseStart() {
    return ResultOk;
}
EAFResult ModuleInterface::onPhaseStop() {
    return ResultOk;
}
EAFResult ModuleInterface::onPhaseFrameformatLoad() {
    return ResultOk;
}
EAFResult ModuleInterface::onPhasePreFrameformatLoad() {
    return ResultOk;
}
EAFResult ModuleInterface::onPhaseSetRadioChannelNearEndFinished() {
    return ResultOk;
}

CModuleManager& CModuleManager::GetInstance() {
    static CModuleManager manager;
    if (isPlaying()) {
        static_cast<void>(recorded({Kind::moduleManagerInstance}));
    }
    return manager;
}

EAFResult CModuleManager::RegisterModule(ModuleInterface* module) {
    Call call{Kind::moduleRegister, ObjectKind::module};
    call.number = static_cast<std::int32_t>(module->getModuleChannel());
    call.a = static_cast<std::int32_t>(module->getModuleId());
    describe(*module, call);
    call.bytes += module->getModuleName().substr(0, Recording::mostModuleName);
    // A phase may reach it before the registration is over.
    const auto next = Player::current()->peekCall();
    if (next && next->kind == Kind::moduleRegister && next->object != nullptr) {
        Stage::get().modules[next->object->number] = module;
    }
    return codeOf<EAFResult>(recorded(call));
}

EAFResult CModuleManager::UnRegisterModule(ModuleInterface* module) {
    Call call{Kind::moduleUnregister, ObjectKind::module};
    call.number = static_cast<std::int32_t>(module->getModuleChannel());
    return codeOf<EAFResult>(recorded(call));
}

EAFResult CModuleManager_RegisterModule(unsigned moduleId, const char* moduleName) {
    Call call = namedCall(Kind::moduleRegisterC, ObjectKind::interface, moduleName);
    call.a = static_cast<std::int32_t>(moduleId);
    return codeOf<EAFResult>(recorded(call));
}

EAFResult CModuleManager_RegisterCallback(unsigned moduleId, const char* callbackName, unsigned order,
                                          ModuleCallbackRecord* callback, ECallbackPriority priority,
                                          unsigned reserved, const unsigned long* phases,
                                          unsigned long phaseCount) {
    Call call = namedCall(Kind::callbackRegister, ObjectKind::callback, callbackName);
    call.number = static_cast<std::int32_t>(moduleId);
    call.a = call.number;
    call.b = static_cast<std::int32_t>(order);
    call.c = priority;
    call.d = static_cast<std::int32_t>(reserved);
    call.bytes = bytesOf(phases, phaseCount);
    Stage::get().callbacks[{call.number, call.name}] = callback;
    return codeOf<EAFResult>(recorded(call));
}

// Storage manager

EAFResult CStorageManager_GetVariableByName(const char* name, StorageVariable** out) {
    const Record record = recorded(namedCall(Kind::variableGet, ObjectKind::variable, name));
    if (record.a != 0) {
        Variable& variable = Stage::get().variable(name);
        variable.content[0] = record.c;
        variable.record.content = record.b != 0 ? variable.content.data() : nullptr;
        *out = &variable.record;
    } else if (record.code == 0) {
        *out = nullptr;
    }
    return codeOf<EAFResult>(record);
}

EAFResult CStorageManager_GetVariableContentAddressByName(const char* name, void** contentAddress,
                                                          int reserved) {
    Call call = namedCall(Kind::variableAddress, ObjectKind::variable, name);
    call.c = reserved;
    const Record record = recorded(call);
    if (record.a != 0) {
        Variable& variable = Stage::get().variable(name);
        if (!Recording::isArray(name)) {
            variable.content[0] = record.b;
        }
        *contentAddress = variable.content.data();
    } else if (record.code == 0) {
        *contentAddress = nullptr;
    }
    return codeOf<EAFResult>(record);
}

// Calibration handler

ECHResult CCalibrationHandler_GetTable(const char* tableName, CalibrationTableHandle* out) {
    const Record record = recorded(namedCall(Kind::tableLookup, ObjectKind::table, tableName));
    if (record.a != 0) {
        *out = Stage::get().table(tableName);
    } else if (record.code == 0) {
        *out = nullptr;
    }
    return codeOf<ECHResult>(record);
}

ECHResult CCalibrationTable_LinearInterpolate(CalibrationTableHandle table, int x, int* y) {
    Call call = namedCall(Kind::tableLinear, ObjectKind::table, Stage::get().tableOf(table).c_str());
    call.a = x;
    const Record record = recorded(call);
    if (y != nullptr) {
        *y = record.b;
    }
    return codeOf<ECHResult>(record);
}

ECHResult CCalibrationTable_BiLinearInterpolate(CalibrationTableHandle table, int x1, int x2, int* y) {
    Call call = namedCall(Kind::tableBilinear, ObjectKind::table, Stage::get().tableOf(table).c_str());
    call.a = x1;
    call.b = x2;
    const Record record = recorded(call);
    if (y != nullptr) {
        *y = record.c;
    }
    return codeOf<ECHResult>(record);
}

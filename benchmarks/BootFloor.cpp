#include "BootFloor.h"

#include "CStorageManager.h"
#include "IInterface_c.h"
#include "ITemperatureHandler.h"
#include "InterfaceBroker.h"
#include "OrbiTrace.h"

namespace Benchmarks {

namespace {

constexpr unsigned moduleId = 19000;
constexpr int information = 0x800;
constexpr std::array<unsigned long, 3> phases{11, 5, 20};
const std::string moduleName = "FrequencyHandler"; // made before main

void message() {
    static_cast<void>(CZulTraceHandler_DmLevel2GtLevel(information));
}

const DriverLayerInterface& findDriverLayer(const std::string& name) {
    auto* const iface = InterfaceBroker::getInstance().getInterface<IInterface_c>(name);
    return *static_cast<const DriverLayerInterface*>(iface->getCStruct());
}

std::int32_t variable(const std::string& name) {
    StorageVariable* found = nullptr;
    CStorageManager_GetVariableByName(name.c_str(), &found);
    return *static_cast<const std::int32_t*>(found->content);
}

} // namespace

BootNames::BootNames(int channel_)
    : channel(channel_),
      tx(channel, "Tx", "tx"),
      rx(channel, "Rx", "rx"),
      canceller("ILoCancellation_" + std::to_string(channel)) {
    const std::string prefix = "channel." + std::to_string(channel) + ".tx.rf.";
    mixerI = prefix + "mixer.i";
    mixerQ = prefix + "mixer.q";
    detector = prefix + "detector.v";
    const std::string table =
        "Channel." + std::to_string(channel) + ".Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.";
    tableI = table + "I";
    tableQ = table + "Q";
}

BootNames::Direction::Direction(int channel, const std::string& name, const std::string& lowerName) {
    const std::string prefix = "channel." + std::to_string(channel) + "." + lowerName + ".";
    interface = "IFrequencyHandler_" + name + "_" + std::to_string(channel);
    rfLo = prefix + "rf.lo.frequency";
    rfLoInHz = prefix + "rf.lo.frequency.in.hz";
    intermediate = prefix + "if.frequency";
    loConfiguration = prefix + "rf.lo.config";
    pllConfiguration = prefix + "rf.pll.config";
    chargePump =
        "Channel." + std::to_string(channel) + "." + name + ".Rf.Pll.Frequency.To.Chargepump.Setting";
    factor = prefix + "mixer.multiplicationfactor";
    isRfInverted = prefix + "rf.spectruminverted";
    isBasebandInverted = prefix + "baseband.spectruminverted";
    ifBb = name + "IfBb";
}

BootFloor::BootFloor(const BootNames& names)
    : ModuleInterface(moduleId, moduleName, static_cast<unsigned>(names.channel), 0, phases.data(),
                      phases.size()),
      m_names(names),
      m_observer{this, [](void* /*module*/, int /*temperature*/) {}} {
    InterfaceBroker& broker = InterfaceBroker::getInstance();
    broker.registerInterface(names.tx.interface, &m_tx.published);
    broker.registerInterface(names.rx.interface, &m_rx.published);
    broker.registerInterface(names.canceller, &m_canceller);
    CModuleManager::GetInstance().RegisterModule(this);
}

BootFloor::~BootFloor() {
    CModuleManager::GetInstance().UnRegisterModule(this);
    InterfaceBroker& broker = InterfaceBroker::getInstance();
    broker.unregisterInterface(m_names.tx.interface, nullptr);
    broker.unregisterInterface(m_names.rx.interface, nullptr);
    broker.unregisterInterface(m_names.canceller, nullptr);
}

EAFResult BootFloor::onModuleInit() {
    message(); // onModuleInit
    bind(m_names.tx, m_tx);
    bind(m_names.rx, m_rx);

    const DriverLayerInterface& layer = findDriverLayer(m_names.driverLayer);
    layer.getDriverInterface(&m_drivers[0], m_names.mixerI.c_str());
    layer.getDriverInterface(&m_drivers[1], m_names.mixerQ.c_str());
    layer.getDriverInterface(&m_drivers[2], m_names.detector.c_str());
    CCalibrationHandler_GetTable(m_names.tableI.c_str(), &m_tables[0]);
    CCalibrationHandler_GetTable(m_names.tableQ.c_str(), &m_tables[1]);

    InterfaceBroker::getInstance().getInterface<ITemperatureHandler>(m_names.temperatureHandler);
    ITemperatureHandler::registerObserver(&m_observer);
    return ResultOk;
}

void BootFloor::bind(const BootNames::Direction& names, Direction& direction) {
    const DriverLayerInterface& layer = findDriverLayer(m_names.driverLayer);
    layer.getDriverInterface(&direction.drivers[0], names.rfLo.c_str());
    layer.getDriverInterface(&direction.drivers[1], names.rfLoInHz.c_str());
    layer.getDriverInterface(&direction.drivers[2], names.intermediate.c_str());
    layer.getDriverInterface(&direction.drivers[3], names.loConfiguration.c_str());
    layer.getDriverInterface(&direction.drivers[4], names.pllConfiguration.c_str());
    CCalibrationHandler_GetTable(names.chargePump.c_str(), &direction.chargePump);
    message(); // if.pll, which is computed of zeroes here
}

EAFResult BootFloor::onPhaseModuleStorageObjectsRetreived() {
    message(); // onPhaseModuleStorageObjectsRetreived
    read(m_names.tx, m_tx);
    read(m_names.rx, m_rx);
    return ResultOk;
}

void BootFloor::read(const BootNames::Direction& names, Direction& direction) {
    direction.variables[0] = variable(names.factor);
    direction.variables[1] = variable(names.isRfInverted);
    direction.variables[2] = variable(names.isBasebandInverted);
    direction.variables[3] = variable(names.ifBb);
}

EAFResult BootFloor::onPhasePostFrameformatLoad() {
    message(); // onPhasePostFrameformatLoad
    m_tx.variables[3] = variable(m_names.tx.ifBb);
    m_rx.variables[3] = variable(m_names.rx.ifBb);
    return ResultOk;
}

} // namespace Benchmarks

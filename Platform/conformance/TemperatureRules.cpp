#include "CInterfaceBroker.h"
#include "ITemperatureHandler.h"
#include "InterfaceBroker.h"
#include "conformance/Rule.h"

#include <array>

namespace Conformance {

namespace {

constexpr const char* correction = "LoCancellation: corrections that follow the temperature";
constexpr const char* compensation = "CTxIQImbalanceHandler: compensation that follows the temperature";

/** Notes the degrees that it is told of. */
struct Thermometer {
    static void note(void* context, int degrees) {
        static_cast<Thermometer*>(context)->told += std::to_string(degrees) + " ";
    }

    std::string told;
    ITemperatureObserver record{this, &Thermometer::note};
};

void observe(Thermometer& thermometer) {
    hold(isSuccess(ITemperatureHandler::registerObserver(&thermometer.record)), "registerObserver fails");
}

/** What was told from now on, without what registering itself may tell. */
void set(Adapter& adapter, int degrees) {
    need(adapter.setTemperature(degrees), "set a temperature");
}

void changesAreTold(Adapter& adapter) {
    Thermometer thermometer;
    set(adapter, 20);
    observe(thermometer);
    thermometer.told.clear();
    set(adapter, -33);
    set(adapter, 55);
    holdSame("of -33 and then 55 degrees was told", thermometer.told, std::string("-33 55 "));
}

void allAreTold(Adapter& adapter) {
    std::array<Thermometer, 64> thermometers;
    set(adapter, 20);
    for (Thermometer& thermometer : thermometers) {
        observe(thermometer);
        thermometer.told.clear();
    }
    set(adapter, 21);
    for (const Thermometer& thermometer : thermometers) {
        holdSame("one of 64 observers was told", thermometer.told, std::string("21 "));
    }
}

void orderIsKept(Adapter& adapter) {
    struct Caller {
        static void note(void* context, int /*degrees*/) {
            const auto& caller = *static_cast<Caller*>(context);
            *caller.calls += caller.name;
        }

        std::string* calls = nullptr;
        char name = 0;
        ITemperatureObserver record{this, &Caller::note};
    };
    std::string calls;
    // They come neither in the order of their addresses nor of their names.
    std::array<Caller, 3> callers{{{&calls, 'c'}, {&calls, 'b'}, {&calls, 'a'}}};
    set(adapter, 20);
    for (const std::size_t n : {std::size_t{2}, std::size_t{0}, std::size_t{1}}) {
        hold(isSuccess(ITemperatureHandler::registerObserver(&callers.at(n).record)),
             "registerObserver fails");
    }
    calls.clear();
    set(adapter, 21);
    holdSame("observers a, c and b, who came in this order, were told in the order", calls,
             std::string("acb"));
}

void recordIsKeptByAddress(Adapter& adapter) {
    Thermometer thermometer;
    Thermometer late;
    set(adapter, 20);
    observe(thermometer);
    thermometer.told.clear();
    thermometer.record.context = &late;
    set(adapter, 21);
    hold(thermometer.told.empty() && late.told == "21 ",
         "a context that was put into the record after its registration is not the one that is called");
}

void typeIsSeen(Adapter& /*adapter*/) {
    class Foreign : public ITemperatureHandler {
    } service;
    hold(isSuccess(InterfaceBroker::getInstance().registerInterface("ITemperature_Of_Conformance", &service)),
         "publishing a temperature service fails");
    hold(InterfaceBroker::getInstance().getInterface<ITemperatureHandler>("ITemperature_Of_Conformance") ==
             &service,
         "it is not seen as one: is the type information of ITemperatureHandler hidden?");
}

void cViewRegisters(Adapter& adapter) {
    Thermometer thermometer;
    void* broker = nullptr;
    void* record = nullptr;
    set(adapter, 20);
    hold(isSuccess(CInterfaceBroker_GetInstance(&broker)), "CInterfaceBroker_GetInstance fails");
    hold(isSuccess(CInterfaceBroker_GetInterface(broker, "ITemperatureHandler", &record)) &&
             record != nullptr,
         "the C view of the broker gives no record of \"ITemperatureHandler\"");
    CInterfaceBroker_DestroyInstance(broker);
    hold(isSuccess(static_cast<TemperatureHandlerCStruct*>(record)->registerObserver(&thermometer.record)),
         "registering through the record fails");
    thermometer.told.clear();
    set(adapter, 21);
    holdSame("it was told", thermometer.told, std::string("21 "));
}

} // namespace

Rules temperatureRules() {
    return {
        {"temperature.changes-are-told",
         "An observer is told of each change, with its context and in degrees Celsius.", correction,
         changesAreTold},
        {"temperature.all-are-told", "All observers are told, each once.", correction, allAreTold},
        {"temperature.order-is-kept", "Observers are told in the order in which they were registered.",
         correction, orderIsKept},
        {"temperature.record-is-kept-by-address", "An observer's record is kept by address, and not copied.",
         correction, recordIsKeptByAddress},
        {"temperature.type-is-seen", "What derives from ITemperatureHandler is found as one.", correction,
         typeIsSeen},
        {"temperature.c-view-registers", "The first word of the service's C record registers, too.",
         compensation, cViewRegisters},
    };
}

} // namespace Conformance

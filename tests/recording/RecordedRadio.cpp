// recorded_radio WHAT [COUNT]
//
// A process with a radio on the minimal platform, which does not know whether it is recorded. It prints what
// reached the hardware, and what came of it.

#include "BarePlatform.h"
#include "CCalibrationHandler.h"
#include "CStorageManager.h"
#include "CTxIQImbalanceHandler.h"
#include "FrequencyHandler.h"
#include "FrequencyHandler_Common.h"
#include "IRauHandler.h"
#include "InterfaceBroker.h"

#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>

namespace {

using Handler = RL::FrequencyHandler::Common::FrequencyHandler;

/** A module of channel 1, up. */
class Radio {
public:
    explicit Radio(::FrequencyHandler::FrequencyHandlerType type)
        : m_module(new ::FrequencyHandler(1, type)) {
        for (const unsigned long phase : {11UL, 5UL, 20UL}) {
            static_cast<void>(m_module->onPhaseActivation(phase, ECallbackPriority{3}));
        }
        static_cast<void>(m_module->onModuleInit());
    }
    Radio(const Radio&) = delete;
    Radio& operator=(const Radio&) = delete;
    ~Radio() { delete m_module; } // NOLINT(cppcoreguidelines-owning-memory): as a platform does

    void tune(unsigned long carrier) {
        std::printf("answered %d\n", static_cast<int>(m_module->setTxFrequency(carrier)));
    }
    ::FrequencyHandler& module() { return *m_module; }

private:
    ::FrequencyHandler* m_module;
};

class Listener final : public Observer<IFrequencyHandler> {
public:
    void onChange(IFrequencyHandler* subject) override { std::printf("told %lu\n", subject->getFrequency()); }
};

void tellCarrier(void* /*context*/, unsigned long channel, unsigned long frequency) {
    std::printf("channel %lu told %lu\n", channel, frequency);
}

void show() {
    for (const std::string& write : bare().writes) {
        std::printf("write %s\n", write.c_str());
    }
    for (const std::string& message : bare().messages) {
        if (message.rfind("text ", 0) == 0) {
            std::printf("%s\n", message.c_str());
        }
    }
}

void listen() {
    static Listener listener;
    IFrequencyObserver record{nullptr, &tellCarrier};
    auto* const handler =
        InterfaceBroker::getInstance().getInterface<IFrequencyHandler>("IFrequencyHandler_Tx_1");
    handler->registerObserver(&listener);
    auto* const cRecord = static_cast<FrequencyHandlerCStruct*>(handler->getCStruct());
    cRecord->registerObserver(cRecord->handler, &record);
}

/** The program's own use of its platform. */
void useThePlatform() {
    StorageVariable* variable = nullptr;
    int value = 0;
    static_cast<void>(CStorageManager_GetVariableByName("the program's own", &variable));
    static_cast<void>(CCalibrationTable_LinearInterpolate(nullptr, 1, &value));
}

int tune(int count) {
    Radio radio(::FrequencyHandler::RfModule);
    listen();
    useThePlatform();
    for (int index = 0; index < count; ++index) {
        radio.tune(7442000UL + static_cast<unsigned long>(index));
    }
    show();
    return EXIT_SUCCESS;
}

class RemoteUnit final : public IRauHandler {
public:
    EAFResult setTxRadioFrequency(unsigned long frequency) override {
        std::printf("unit %lu\n", frequency);
        return ResultOk;
    }
    EAFResult setRxRadioFrequency(unsigned long /*frequency*/) override { return ResultFailed; }
};

int tuneRemoteUnit() {
    RemoteUnit unit;
    bare().interfaces["IRauHandler_1"] = &unit;
    Radio radio(::FrequencyHandler::Rau);
    radio.tune(18000000);
    static_cast<void>(radio.module().setRxFrequency(19000000));
    return EXIT_SUCCESS;
}

int throwInTheDriver() {
    Radio radio(::FrequencyHandler::RfModule);
    bare().driver.write = [](void*, int) -> EDriverResult { throw std::runtime_error("no hardware"); };
    radio.tune(7442000);
    bare().driver.write = [](void*, int) -> EDriverResult { throw 5; }; // NOLINT(hicpp-exception-baseclass)
    radio.tune(7442001);
    show();
    return EXIT_SUCCESS;
}

int cancelInTheDriver() {
    Radio radio(::FrequencyHandler::RfModule);
    auto* const write = bare().driver.write;
    bare().driver.write = [](void*, int) {
        static_cast<void>(pthread_cancel(pthread_self()));
        pthread_testcancel();
        return EDriverResult{0};
    };
    pthread_t thread{};
    static_cast<void>(pthread_create(
        &thread, nullptr,
        [](void* tuned) -> void* {
            static_cast<Radio*>(tuned)->tune(7442000);
            return nullptr;
        },
        &radio));
    void* ended = nullptr;
    static_cast<void>(pthread_join(thread, &ended));
    std::printf("%s\n", ended == PTHREAD_CANCELED ? "cancelled" : "not cancelled");
    bare().driver.write = write;
    radio.tune(7442001);
    show();
    return EXIT_SUCCESS;
}

/** A platform that calls back in every phase, whatever was asked for. */
int callBackInEveryPhase() {
    CTxIQImbalanceHandler compensation(1);
    static_cast<void>(compensation.initialize());
    const ModuleCallbackRecord& callback = *bare().phaseCallback;
    for (const unsigned long phase : {5UL, 20UL, 11UL, 0UL}) {
        std::printf("answered %d\n", static_cast<int>(callback.onPhaseActivation(callback.context, phase,
                                                                                 ECallbackPriority{3})));
    }
    const ITemperatureObserver& observer = *bare().temperatureObserver;
    observer.notifyTemperature(observer.context, 30);
    show();
    return EXIT_SUCCESS;
}

/** A child of the process tunes its copy of the radio. */
int tuneInAChild() {
    Radio radio(::FrequencyHandler::RfModule);
    radio.tune(7442000);
    static_cast<void>(std::fflush(stdout));
    const pid_t child = fork();
    if (child == 0) {
        static_cast<void>(radio.module().setTxFrequency(7442009));
        _exit(EXIT_SUCCESS);
    }
    static_cast<void>(waitpid(child, nullptr, 0));
    radio.tune(7442001);
    return EXIT_SUCCESS;
}

/** Until somebody kills it. */
int tuneForEver() {
    Radio radio(::FrequencyHandler::RfModule);
    bare().driver.write = [](void*, int) { return EDriverResult{0}; };
    for (unsigned long carrier = 0;; ++carrier) {
        static_cast<void>(radio.module().setTxFrequency(carrier));
        bare().messages.clear();
    }
}

} // namespace

int main(int count, char** arguments) {
    const std::string what = count > 1 ? arguments[1] : "";
    if (what == "tune") {
        return tune(count > 2 ? std::atoi(arguments[2]) : 1); // NOLINT(cert-err34-c)
    }
    if (what == "unit") {
        return tuneRemoteUnit();
    }
    if (what == "throw") {
        return throwInTheDriver();
    }
    if (what == "cancel") {
        return cancelInTheDriver();
    }
    if (what == "phases") {
        return callBackInEveryPhase();
    }
    if (what == "fork") {
        return tuneInAChild();
    }
    return what == "for-ever" ? tuneForEver() : EXIT_FAILURE;
}

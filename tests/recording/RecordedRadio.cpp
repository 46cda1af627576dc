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

#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <new>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using Handler = RL::FrequencyHandler::Common::FrequencyHandler;

/** A module, of channel 1 if not said otherwise, up. */
class Radio {
public:
    explicit Radio(::FrequencyHandler::FrequencyHandlerType type, unsigned long channel = 1)
        : m_module(new ::FrequencyHandler(channel, type)) {
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

/** A child that drives a radio of its own, which its parent never did. */
int buildInAChild() {
    const pid_t child = fork();
    if (child == 0) {
        Radio(::FrequencyHandler::RfModule).tune(7442000);
        static_cast<void>(std::fflush(stdout));
        _exit(EXIT_SUCCESS);
    }
    static_cast<void>(waitpid(child, nullptr, 0));
    return EXIT_SUCCESS;
}

/** Somebody cuts the recording short in the middle of it. */
int goOnWithoutTheFile() {
    Radio radio(::FrequencyHandler::RfModule);
    radio.tune(7442000);
    std::printf("cut %d\n", truncate("recording", 0));
    for (unsigned long carrier = 7442001; carrier < 7442004; ++carrier) {
        radio.tune(carrier);
    }
    show();
    return EXIT_SUCCESS;
}

struct Mapping {
    char* memory;
    std::size_t bytes;
};
Mapping s_mapping;

void handleOwnFault(int /*signal*/, siginfo_t* info, void* /*context*/) {
    const bool isOwn = info->si_addr == s_mapping.memory;
    static_cast<void>(mmap(s_mapping.memory, s_mapping.bytes, PROT_READ | PROT_WRITE,
                           MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0));
    static_cast<void>(write(STDOUT_FILENO, isOwn ? "own\n" : "not\n", 4));
}

/** Memory whose file is cut short before anybody looks at it. */
void makeMapping() {
    s_mapping.bytes = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const int file = open("mapped", O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    static_cast<void>(ftruncate(file, static_cast<off_t>(s_mapping.bytes)));
    s_mapping.memory =
        static_cast<char*>(mmap(nullptr, s_mapping.bytes, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0));
    static_cast<void>(ftruncate(file, 0));
}

/** A process that has a handler of its own for the faults of its own memory. */
int faultInOwnMemory() {
    struct sigaction own {};
    own.sa_flags = SA_SIGINFO;
    own.sa_sigaction = &handleOwnFault;
    static_cast<void>(sigaction(SIGBUS, &own, nullptr));
    Radio radio(::FrequencyHandler::RfModule);
    static_cast<void>(truncate("recording", 0));
    radio.tune(7442000);
    static_cast<void>(std::fflush(stdout));
    makeMapping();
    *s_mapping.memory = 1;
    radio.tune(7442001);
    return EXIT_SUCCESS;
}

/** One that leaves its faults to the system. */
int dieOfAFault() {
    Radio radio(::FrequencyHandler::RfModule);
    makeMapping();
    *s_mapping.memory = 1;
    return EXIT_SUCCESS;
}

/** A frequency change of one channel begins and ends while that of another one waits for its hardware. */
int tuneAtOnce() {
    Radio one(::FrequencyHandler::RfModule);
    Radio two(::FrequencyHandler::RfModule, 2);
    static Radio* s_two;
    s_two = &two;
    bare().driver.write = [](void*, int value) {
        if (value == 7442000) {
            std::thread([] { s_two->tune(7484000); }).join();
        }
        return EDriverResult{0};
    };
    std::thread([&one] { one.tune(7442000); }).join();
    return EXIT_SUCCESS;
}

/** Many threads, one after the other. */
int tuneOnThreads(int count) {
    Radio radio(::FrequencyHandler::RfModule);
    for (int index = 0; index < count; ++index) {
        std::thread([&] { radio.tune(7442000UL + static_cast<unsigned long>(index)); }).join();
    }
    return EXIT_SUCCESS;
}

/** Compensations that are built, initialised, and destroyed one after the other, each at a place of its own.
 */
int compensate(int count) {
    struct Place {
        alignas(CTxIQImbalanceHandler) std::array<unsigned char, sizeof(CTxIQImbalanceHandler)> room;
    };
    std::vector<Place> places(static_cast<std::size_t>(count));
    for (Place& place : places) {
        auto* const compensation = new (place.room.data()) CTxIQImbalanceHandler(1);
        static_cast<void>(compensation->initialize());
        const ModuleCallbackRecord& callback = *bare().phaseCallback;
        const EAFResult code = callback.onPhaseActivation(callback.context, 11, ECallbackPriority{3});
        std::printf("answered %d\n", static_cast<int>(code));
        compensation->~CTxIQImbalanceHandler();
    }
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
    const int often = count > 2 ? std::atoi(arguments[2]) : 1; // NOLINT(cert-err34-c)
    const std::map<std::string, std::function<int()>> known{{"tune", [=] { return tune(often); }},
                                                            {"unit", &tuneRemoteUnit},
                                                            {"throw", &throwInTheDriver},
                                                            {"cancel", &cancelInTheDriver},
                                                            {"phases", &callBackInEveryPhase},
                                                            {"fork", &tuneInAChild},
                                                            {"build-in-child", &buildInAChild},
                                                            {"cut-short", &goOnWithoutTheFile},
                                                            {"own-fault", &faultInOwnMemory},
                                                            {"fault", &dieOfAFault},
                                                            {"at-once", &tuneAtOnce},
                                                            {"threads", [=] { return tuneOnThreads(often); }},
                                                            {"compensate", [=] { return compensate(often); }},
                                                            {"nothing", [] { return EXIT_SUCCESS; }},
                                                            {"for-ever", &tuneForEver}};
    const auto found = known.find(what);
    return found != known.end() ? found->second() : EXIT_FAILURE;
}

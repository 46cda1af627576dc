// recorded_life PART
//
// A process with radios on the stand-alone platform that live through what seldom happens: calls that fail,
// throw or store nothing, observers that throw, numbers at the ends of their ranges. Each radio lives
// shortly, one after the other. It does not know whether it is recorded.

#include "CTxIQImbalanceHandler.h"
#include "FrequencyHandler.h"
#include "FrequencyHandler_Common.h"
#include "FullBoard.h"
#include "IFrequencyHandler.h"
#include "ILoCancellation.h"
#include "standalone/Platform.h"

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using Standalone::Fault;
using Standalone::Operation;

constexpr std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t highest = std::numeric_limits<std::int32_t>::max();
constexpr double noNumber = std::numeric_limits<double>::quiet_NaN();

/** What is thrown: something that says what it is, and something that does not. */
const std::exception_ptr known = std::make_exception_ptr(std::runtime_error("out of order"));
const std::exception_ptr unknown = std::make_exception_ptr(7);

/** An observer of carriers; what it does when it is told is up to who made it. */
class Listener final : public Observer<IFrequencyHandler> {
public:
    explicit Listener(std::exception_ptr thrown = nullptr) : m_thrown(std::move(thrown)) {}
    void onChange(IFrequencyHandler* /*subject*/) override { hear(&m_thrown, 0, 0); }
    static void hear(void* thrown, unsigned long /*channel*/, unsigned long /*frequency*/) {
        if (*static_cast<std::exception_ptr*>(thrown) != nullptr) {
            std::rethrow_exception(*static_cast<std::exception_ptr*>(thrown));
        }
    }

private:
    std::exception_ptr m_thrown;
};

struct Search {
    int iLow = 0;
    int iHigh = 100;
    int qLow = -100;
    int qHigh = 0;
    double shrinkFactor = 0.75;
    int minDelta = 1;
    unsigned maxIterations = 2;
    unsigned iterations = 0;
    bool useHighDetector = false;
};

/** A radio of one channel, with whatever anything of the library may ask for. */
class Radio {
public:
    explicit Radio(int type, std::int32_t channel = 1, bool hasAlternatives = false)
        : m_type(type),
          m_channel(channel) {
        addBoard(hasAlternatives);
        platform.trace().setThreshold(Standalone::TraceLevel::notice);
    }
    Radio(const Radio&) = delete;
    Radio& operator=(const Radio&) = delete;
    ~Radio() {
        platform.temperature().forgetObservers();
        m_module.reset();
    }

    void build() {
        m_module = std::make_unique<::FrequencyHandler>(
            static_cast<unsigned long>(m_channel),
            static_cast<::FrequencyHandler::FrequencyHandlerType>(m_type));
    }
    void run(unsigned long phase) { static_cast<void>(platform.modules().run(phase)); }
    void boot() {
        build();
        for (const unsigned long phase : {11UL, 5UL, 20UL}) {
            run(phase);
        }
        m_canceller = find<ILoCancellation>("ILoCancellation");
    }
    void tune(unsigned long carrier) {
        static_cast<void>(m_module->setTxFrequency(carrier));
        static_cast<void>(m_module->setRxFrequency(carrier + 154500));
    }
    /** What it does when all is well, in short. */
    void live() {
        boot();
        platform.temperature().set(25);
        tune(17442250);
    }
    // Not inlined: of a copy of one number GCC 14 says that it reaches beyond.
    [[gnu::noinline]] void set(const std::string& variable, const std::vector<std::int32_t>& values) {
        platform.variables().add(named(variable), values).set(values);
    }
    void fail(Operation operation, const std::string& object, std::int32_t code = 0x8001) {
        platform.calls().inject({operation, named(object), code});
    }
    void letThrow(Operation operation, const std::string& object, const std::exception_ptr& thrown = known) {
        Fault fault{operation, named(object), 0x8000};
        fault.thrown = thrown;
        platform.calls().inject(fault);
    }
    void recover() { platform.calls().clearAll(); }
    void remove(const std::string& driver) { fail(Operation::driverLookup, driver); }

    IFrequencyHandler& handler(const std::string& direction) const {
        return *find<IFrequencyHandler>("IFrequencyHandler_" + direction);
    }
    void observe(const std::string& direction, Observer<IFrequencyHandler>* observer) const {
        static_cast<void>(handler(direction).registerObserver(observer));
    }
    void observeAsC(const std::string& direction, IFrequencyObserver* observer) const {
        auto* const record = static_cast<FrequencyHandlerCStruct*>(handler(direction).getCStruct());
        static_cast<void>(record->registerObserver(record->handler, observer));
    }
    ILoCancellation& canceller() const { return *m_canceller; }
    void search(Search s) const {
        int i = 0;
        int q = 0;
        int delta = 0;
        static_cast<void>(canceller().calibrateLoCancellation(
            s.iLow, s.iHigh, s.qLow, s.qHigh, s.shrinkFactor, s.minDelta, s.maxIterations, 0, &i, &q, &delta,
            &s.iterations, s.useHighDetector));
    }
    /** Tunes a handler by itself. */
    void tuneHandler(const std::string& direction, unsigned long carrier) const {
        using Handler = RL::FrequencyHandler::Common::FrequencyHandler;
        auto& tuned = dynamic_cast<Handler&>(handler(direction));
        static_cast<void>(tuned.Handler::setRfFrequency(carrier));
    }
    /** What the detectors give, one reading after the other and over again. */
    void setReadings(const std::vector<std::int32_t>& readings) {
        for (const char* const detector :
             {"tx.rf.detector.v", "tx.rf.detector.low.v.detect", "tx.rf.detector.high.v.detect"}) {
            if (Standalone::Driver* const driver = platform.drivers().find(named(detector))) {
                driver->setSource([readings, next = std::size_t{0}]() mutable {
                    return std::int64_t{readings[next++ % readings.size()]};
                });
            }
        }
    }
    /** "tx.rf.frequency" is "channel.1.tx.rf.frequency", "Tx.Bb" "Channel.1.Tx.Bb"; "/name" is "name". */
    std::string named(const std::string& name) const {
        if (name.empty() || name.front() == '/') {
            return name.substr(name.empty() ? 0 : 1);
        }
        return (name.rfind("Tx.", 0) == 0 || name.rfind("Rx.", 0) == 0 ? "Channel." : "channel.") +
               std::to_string(m_channel) + "." + name;
    }

    bool hasCanceller() const { return m_canceller != nullptr; }

    mutable Standalone::Platform platform;

private:
    /** What is published; null: nothing. */
    template <typename Interface>
    Interface* find(const std::string& name) const {
        const auto& all = platform.interfaces().entries();
        const auto found = all.find(m_channel == 0 ? name : name + "_" + std::to_string(m_channel));
        return found != all.end() ? dynamic_cast<Interface*>(found->second) : nullptr;
    }
    void addBoard(bool hasAlternatives) {
        Told::Board board;
        Told::addChannel(board, m_channel, hasAlternatives);
        Told::addShared(board);
        for (const Told::Driver& driver : board.drivers) {
            platform.drivers().add(driver.name.text());
        }
        for (const Told::Variable& variable : board.variables) {
            platform.variables().add(variable.name.text(), variable.values);
        }
        for (const Told::Table& table : board.tables) {
            platform.tables().add({table.name.text(), table.axis1, table.axis2, table.values});
        }
        platform.addRau(m_channel);
        setReadings({40, 30, 20, 25, 10, 50});
    }

    int m_type;
    std::int32_t m_channel;
    std::unique_ptr<::FrequencyHandler> m_module;
    ILoCancellation* m_canceller = nullptr;
};

constexpr int microwaveIf = 0;
constexpr int rfModule = 1;
constexpr int microwaveDspOffset = 2;
constexpr int microwaveArray = 3;
constexpr int rau = 4;
constexpr int microwaveHz = 5;
constexpr int noType = 9;

// Every board, and every message that it has.

void liveAtLength(Radio& radio) {
    radio.platform.trace().setThreshold(Standalone::TraceLevel::information);
    radio.live();
    radio.platform.temperature().set(-5);
    radio.tune(18596749);
    radio.platform.temperature().set(-6);
}

void boards() {
    for (int type = microwaveIf; type <= microwaveHz; ++type) {
        Radio radio(type, type == microwaveDspOffset ? 2 : 1, type == microwaveArray);
        liveAtLength(radio);
    }
    Radio unknownType(noType);
    liveAtLength(unknownType);
}

/** Carriers before the first phase. */
void tuneTooSoon() {
    for (int type = microwaveIf; type <= microwaveHz; ++type) {
        Radio radio(type);
        radio.platform.trace().setThreshold(Standalone::TraceLevel::information);
        radio.build();
        radio.tune(17442250);
    }
}

// Numbers as they seldom are

/** The life of a radio in which `name` is something else. */
void liveWith(int type, const std::string& name, const std::vector<std::int32_t>& values) {
    Radio radio(type);
    radio.platform.trace().setThreshold(Standalone::TraceLevel::information);
    radio.set(name, values);
    radio.boot();
    radio.platform.trace().setThreshold(Standalone::TraceLevel::notice);
    for (const unsigned long carrier : {17442250UL, 17442500UL, 18000001UL, 0UL}) {
        radio.tune(carrier);
    }
}

void numbers() {
    for (const int type : {microwaveIf, microwaveHz}) {
        for (const std::int32_t factor : {-2, 0, 1, 3, 10000000}) {
            liveWith(type, "tx.mixer.multiplicationfactor", {factor});
        }
    }
    liveWith(microwaveIf, "rx.rf.spectruminverted", {2});
    liveWith(microwaveIf, "rx.baseband.spectruminverted", {2});
    liveWith(microwaveIf, "tx.baseband.spectruminverted", {0});
    liveWith(microwaveIf, "tx.if.frequency", {20000000});
    liveWith(microwaveIf, "/TxIfBb", {-7});
}

/** All spacings there are, and some that there are not. */
void spacings() {
    const std::vector<std::int32_t> codes{50,  100, 125, 150, 200, 250, 300, 350,
                                          400, 450, 500, 600, 601, 0,   17};
    for (const int type : {microwaveDspOffset, microwaveArray}) {
        Radio radio(type);
        radio.boot();
        for (const std::int32_t code : codes) {
            radio.set("/ChannelSpacing", {code});
            radio.run(20);
            radio.tune(17442250);
        }
    }
}

/** Offset arrays that are odd, empty, or say something else. */
void offsetArrays() {
    Radio radio(microwaveArray);
    radio.platform.trace().setThreshold(Standalone::TraceLevel::information);
    radio.boot();
    const std::string size = "rx.rf.frequency.cs.offset.arraysize";
    for (const std::int32_t entries : {0, -1, 1, 3, 10}) {
        radio.set(size, {entries});
        radio.tune(17442250);
    }
    radio.set("rx.rf.frequency.cs.offset.array", {100, -3000, 100, 3000});
    radio.tune(17442251);
    radio.set("/HwCodeDsp", {2});
    radio.set("/ChannelSpacing", {250});
    radio.run(20);
    radio.set(size, {0});
    radio.tune(17442250);
    radio.set("rx.rf.spectruminverted", {1});
    radio.run(5);
    radio.set("/HwCodeDsp", {3});
    radio.tune(17442250);
}

void liveOnChannel(std::int32_t channel) {
    Radio radio(rfModule, channel);
    radio.live();
}

void carriers() {
    for (int type = microwaveIf; type <= microwaveHz; ++type) {
        Radio radio(type, type == rfModule || type == rau ? 0 : 1);
        radio.boot();
        Listener listener;
        std::exception_ptr nothing;
        IFrequencyObserver record{&nothing, &Listener::hear};
        radio.observe("Tx", &listener);
        radio.observeAsC("Rx", &record);
        radio.platform.trace().setThreshold(Standalone::TraceLevel::information);
        // Of a carrier, 32 bits count: where there are more, it is the second once more.
        radio.tune(0xFFFFFFFFUL);
        radio.tune(static_cast<unsigned long>(0x10A000000ULL + 1234567));
        radio.tune(17000499);
        radio.tuneHandler("Tx", 17000500);
    }
    liveOnChannel(-1);
    Radio two(rfModule, 2);
    two.boot();
    std::exception_ptr nothing;
    IFrequencyObserver record{&nothing, &Listener::hear};
    two.observeAsC("Tx", &record);
    two.tune(7442000);
}

// Observers

void observers() {
    Radio radio(rfModule);
    radio.boot();
    Listener good;
    Listener bad(known);
    Listener strange(unknown);
    for (Listener* const listener : {&good, &bad, static_cast<Listener*>(nullptr), &strange, &good}) {
        radio.observe("Tx", listener);
    }
    radio.tune(7442000);
    std::exception_ptr what = known;
    std::exception_ptr nothing;
    for (std::exception_ptr* const thrown : {&nothing, &what}) {
        IFrequencyObserver record{thrown, &Listener::hear};
        radio.observeAsC("Rx", &record);
    }
    IFrequencyObserver functionless{&nothing, nullptr};
    radio.observeAsC("Rx", &functionless);
    radio.observeAsC("Rx", nullptr);
    radio.tune(7442001);
    what = unknown;
    radio.tune(7442002);
}

// The canceller

void searches() {
    Radio radio(microwaveHz);
    radio.boot();
    radio.search({});
    radio.search({0, 100, -100, 0, 0.75, 75, 5});
    radio.search({0, 10, 0, 1000, 0.5, 40, 6});
    radio.search({-101, 0, -103, 0, 0.5, 0, 1});
    radio.search({lowest, highest, lowest, 0, 0.6, 0, 3});
    radio.search({lowest, lowest + 9, highest - 9, highest, 1.0, 0, 2});
    radio.search({lowest, 0, lowest, 0, 2.5, 0, 3});
    radio.search({0, 100, 0, 100, noNumber, -1, 2});
    radio.search({0, 100, 0, 100, 0.5, 30, 0xFFFFFFFFU, 3});
    radio.setReadings({7, 7, 9, 9, 7, 7, 7, 7});
    radio.search({0, 100, 0, 100, 0.75, 0, 3});
    radio.search(
        {0, 100, 0, 100, 0.5, 0, 1, 0, true}); // there is no such detector: it goes on with what it has
    radio.setReadings({9, 7, 7, 9});
    radio.search({});
    for (const char* const driver : {"tx.rf.mixer.i", "tx.rf.mixer.q"}) {
        radio.fail(Operation::driverWrite, driver);
        radio.search({});
        radio.tune(17442250);
        radio.recover();
        radio.letThrow(Operation::driverWrite, driver, unknown);
        radio.search({});
        radio.tune(17442250);
        radio.recover();
    }
    radio.fail(Operation::driverRead, "tx.rf.detector.v");
    radio.search({});
    radio.letThrow(Operation::driverRead, "tx.rf.detector.v");
    radio.search({});
    radio.recover();
    static_cast<void>(radio.canceller().onModuleInit());
    static_cast<void>(radio.canceller().setLoCancellation(17500000, 40));
    static_cast<void>(radio.canceller().calibrateLoCancellation(0, 1, 0, 1, 0.5, 0, 1, 0, nullptr, nullptr,
                                                                nullptr, nullptr, false));
}

/** What was found cannot be written: of ten writes, the last two fail. */
void searchWhoseEndFails() {
    Radio radio(microwaveHz);
    radio.boot();
    int writes = 0;
    radio.platform.calls().setListener([&](const Standalone::Call& call) {
        if (call.operation == Operation::driverWrite && ++writes == 8) {
            radio.fail(Operation::driverWrite, "");
        }
    });
    radio.search({0, 100, -100, 0, 0.75, 1, 1});
}

/** No detector that could be read, and no table at all. */
void searchInVain() {
    Radio radio(microwaveHz);
    radio.fail(Operation::tableLookup, "");
    radio.platform.drivers().find("channel.1.tx.rf.detector.v")->setMissingWords(Standalone::wordRead);
    radio.boot();
    radio.search({});
    radio.tune(17442250);
}

void searchesOfAlternatives() {
    Radio alternatives(microwaveHz, 1, true);
    for (const char* const driver : {"tx.rf.mixer.i", "tx.rf.mixer.q", "tx.rf.detector.v"}) {
        alternatives.remove(driver);
    }
    for (const char* const branch : {"I", "Q"}) {
        alternatives.fail(Operation::tableLookup,
                          std::string("Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.") + branch);
    }
    alternatives.live();
    alternatives.setReadings({4, 3, 2, 1, 5, 9});
    alternatives.search({});
    alternatives.search({0, 100, -100, 0, 0.75, 1, 2, 0, true});
}

// The compensation of the IQ imbalance

struct Compensated : Radio {
    explicit Compensated(std::int32_t channel = 1)
        : Radio(noType, channel),
          compensation(std::make_unique<CTxIQImbalanceHandler>(static_cast<unsigned long>(channel))) {}
    void live() {
        static_cast<void>(compensation->initialize());
        run(11);
        platform.temperature().set(30);
        static_cast<void>(compensation->doImbalanceCompensation());
        static_cast<void>(compensation->onTxFrequencyChanged(17442250));
    }
    std::unique_ptr<CTxIQImbalanceHandler> compensation;
};

void compensations() {
    for (const std::int32_t channel : {1, 0, -1, 7}) {
        Compensated radio(channel);
        radio.platform.trace().setThreshold(Standalone::TraceLevel::information);
        radio.live();
    }
    for (const Operation operation :
         {Operation::moduleRegisterC, Operation::callbackRegister, Operation::brokerRegister,
          Operation::brokerOpen, Operation::brokerGet, Operation::brokerClose, Operation::driverLookup,
          Operation::tableLookup, Operation::temperatureRegister, Operation::tableLinear,
          Operation::driverWrite}) {
        for (const auto& thrown : {std::exception_ptr(), known, unknown}) {
            Compensated radio;
            thrown != nullptr ? radio.letThrow(operation, "", thrown) : radio.fail(operation, "", 0x8002);
            radio.live();
            radio.recover();
            radio.platform.temperature().set(-20);
        }
    }
    for (const char* const name :
         {"dsp.tx.dc.compensation.i", "dsp.tx.dc.compensation.q",
          "dsp.tx.quadrature.gain.offset.compensation", "dsp.tx.quadrature.phase.offset.compensation"}) {
        Compensated radio;
        radio.fail(Operation::driverLookup, name);
        radio.live();
        radio.recover();
        radio.run(11);
        radio.fail(Operation::driverWrite, name, 0x8003);
        radio.platform.temperature().set(50);
    }
    for (const char* const name : {"Dc.I", "Dc.Q", "Gain.Offset", "Phase.Offset"}) {
        const std::string table = std::string("Tx.Dsp.Temperature.To.") + name + ".Compensation";
        Compensated radio;
        radio.fail(Operation::tableLookup, table);
        radio.live();
        radio.recover();
        radio.run(11);
        radio.fail(Operation::tableLinear, table);
        radio.platform.temperature().set(50);
    }
    for (const char* const service : {"IDriverLayer", "ITemperatureHandler"}) {
        for (const auto presence :
             {Standalone::Presence::absent, Standalone::Presence::null, Standalone::Presence::foreign}) {
            Compensated radio;
            radio.platform.setPresence(service, presence);
            radio.live();
        }
    }
}

// What goes wrong

/** A start-up once more, and carriers. */
void liveOn(Radio& radio) {
    for (const unsigned long phase : {11UL, 5UL, 20UL}) {
        radio.run(phase);
    }
    radio.platform.temperature().set(40);
    radio.tune(18000250);
    if (radio.hasCanceller()) {
        radio.search({});
    }
}

/** Every call that a radio makes until its first carrier. */
std::set<std::pair<Operation, std::string>> callsOf(int type, bool hasAlternatives) {
    Radio radio(type, 1, hasAlternatives);
    radio.live();
    std::set<std::pair<Operation, std::string>> calls;
    for (const Standalone::Call& call : radio.platform.calls().journal()) {
        calls.insert({call.operation, call.object});
    }
    return calls;
}

/** A driver that is looked up lacks a word of its record. */
void lackWords(Radio& radio, Operation operation, const std::string& object) {
    Standalone::Driver* const driver = radio.platform.drivers().find(object);
    if (operation != Operation::driverLookup || driver == nullptr) {
        return;
    }
    for (const unsigned words : {Standalone::wordWrite, Standalone::wordWriteBuffer}) {
        driver->setMissingWords(words);
        radio.run(11);
    }
    radio.tune(17442250);
}

/** A radio whose calls go wrong in turn, one all the time. */
void failOneByOne(int type, bool hasAlternatives) {
    for (const auto& [operation, object] : callsOf(type, hasAlternatives)) {
        Radio radio(type, 1, hasAlternatives);
        radio.fail(operation, "/" + object, 0x8004);
        radio.live();
        radio.recover();
        lackWords(radio, operation, object);
    }
}

/** Radios that were well, and whose calls of one operation after the other go wrong from then on. */
void goWrong(int type, const std::function<Fault(Operation)>& faultOf) {
    std::set<Operation> operations;
    for (const auto& [operation, object] : callsOf(type, false)) {
        operations.insert(operation);
    }
    for (const Operation operation : operations) {
        Radio radio(type);
        radio.live();
        radio.platform.calls().inject(faultOf(operation));
        liveOn(radio);
    }
}

Fault throwing(Operation operation, const std::exception_ptr& thrown) {
    Fault fault{operation, "", 0x8000};
    fault.thrown = thrown;
    return fault;
}

Fault silent(Operation operation) {
    Fault fault{operation, ""};
    fault.isLeftUndone = true;
    return fault;
}

/** Addresses that were known and are not found any more: nothing of before is used. */
void loseAddresses() {
    for (const char* const variable : {"/HwCodeDsp", "rx.rf.frequency.cs.offset.arraysize",
                                       "rx.rf.frequency.cs.offset.array", "/ChannelSpacing"}) {
        Radio failing(microwaveArray);
        failing.live();
        failing.fail(Operation::variableAddress, variable);
        liveOn(failing);
    }
    Radio throwing(microwaveArray);
    throwing.live();
    throwing.letThrow(Operation::variableAddress, "rx.rf.frequency.cs.offset.arraysize", unknown);
    liveOn(throwing);
}

void failures() {
    failOneByOne(microwaveArray, false);
}

void otherFailures() {
    failOneByOne(rfModule, false);
    failOneByOne(rau, false);
    failOneByOne(microwaveIf, true);
    for (const char* const service : {"IDriverLayer", "ITemperatureHandler", "IRauHandler_1"}) {
        for (const auto presence : {Standalone::Presence::absent, Standalone::Presence::foreign,
                                    Standalone::Presence::nullRecord}) {
            Radio radio(std::string(service) == "IRauHandler_1" ? rau : microwaveHz);
            radio.platform.setPresence(service, presence);
            radio.live();
        }
    }
}

void exceptions() {
    goWrong(microwaveArray, [](Operation operation) { return throwing(operation, unknown); });
    goWrong(rfModule, [](Operation operation) { return throwing(operation, known); });
    goWrong(rau, [](Operation operation) { return throwing(operation, known); });
    // While it is built, and when it goes.
    for (const Operation operation : {Operation::brokerRegister, Operation::moduleRegister,
                                      Operation::brokerUnregister, Operation::moduleUnregister}) {
        Radio radio(microwaveArray);
        radio.letThrow(operation, "", unknown);
        radio.build();
    }
}

void silences() {
    goWrong(microwaveArray, &silent);
}

/** Whoever is told of a message throws. */
void messages() {
    for (const auto& thrown : {known, unknown}) {
        Radio radio(rfModule);
        radio.platform.trace().setThreshold(Standalone::TraceLevel::information);
        radio.boot();
        radio.platform.trace().setSink(
            [&](const Standalone::TraceMessage& /*message*/) { std::rethrow_exception(thrown); });
        liveOn(radio);
        radio.platform.trace().setSink({});
        radio.tune(17442250);
    }
}

} // namespace

int main(int count, char** arguments) {
    const std::map<std::string, std::vector<void (*)()>> parts{
        {"boards", {&boards, &tuneTooSoon}},
        {"numbers", {&numbers}},
        {"spacings", {&spacings, &offsetArrays}},
        {"carriers", {&carriers}},
        {"searches", {&searches, &searchWhoseEndFails, &searchInVain, &searchesOfAlternatives}},
        {"observers", {&observers, &messages}},
        {"compensations", {&compensations}},
        {"failures", {&failures, &loseAddresses}},
        {"other-failures", {&otherFailures}},
        {"exceptions", {&exceptions}},
        {"silences", {&silences}},
    };
    const auto part = parts.find(count > 1 ? arguments[1] : "");
    if (part == parts.end()) {
        static_cast<void>(std::fputs("recorded_life PART\n", stderr));
        return EXIT_FAILURE;
    }
    for (const auto live : part->second) {
        live();
    }
    return EXIT_SUCCESS;
}

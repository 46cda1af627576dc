// What comes into the library. Each operation has two doors: one for the table of an object that was given a
// copy of its own, and one under the symbol that the library exports, for callers that were linked with it.

#include "LibraryDoors.h"

#include "Calls.h"
#include "Clients.h"
#include "IFrequencyHandler.h"
#include "ILoCancellation.h"
#include "Next.h"
#include "Objects.h"
#include "ResultCode.h"

#include <array>
#include <atomic>
#include <cstring>

namespace Recording::LibraryDoors {

namespace {

using Objects::numberOf;
using Objects::originalOf;

template <typename Function>
void* addressOf(Function* function) {
    return reinterpret_cast<void*>(function);
}

// Operations without arguments, and those with a carrier, in a slot of a table

template <Kind kind, std::size_t slot>
EAFResult follow(void* self) {
    return incoming(kind, numberOf(self), 0, 0,
                    [&] { return reinterpret_cast<EAFResult (*)(void*)>(originalOf(self, slot))(self); });
}

template <Kind kind, std::size_t slot>
EAFResult followCarrier(void* self, unsigned long carrier) {
    return incoming(kind, numberOf(self), lower(carrier), upper(carrier), [&] {
        return reinterpret_cast<EAFResult (*)(void*, unsigned long)>(originalOf(self, slot))(self, carrier);
    });
}

/** A destructor gives the address on 32-bit ARM, where its caller may count on it. */
template <std::size_t slot>
void* destroy(void* self) {
    const auto original = reinterpret_cast<void* (*)(void*)>(originalOf(self, slot));
    void* answer = self;
    static_cast<void>(incoming(Kind::destroy, numberOf(self), 0, 0, [&] {
        answer = original(self);
        return 0;
    }));
    return answer;
}

// Observers

template <typename Call>
EAFResult registerWith(void* self, Observer<IFrequencyHandler>* observer, Call call) {
    if (t_thread.isInLibrary || !Recorder::isOn()) {
        return call(observer);
    }
    std::uint16_t number = 0;
    Observer<IFrequencyHandler>* const given = Clients::observerOf(observer, self, numberOf(self), number);
    return incoming(Kind::registerObserver, numberOf(self), number, 0, [&] { return call(given); });
}

EAFResult registerInTable(void* self, Observer<IFrequencyHandler>* observer) {
    return registerWith(self, observer, [self](Observer<IFrequencyHandler>* given) {
        using Register = EAFResult (*)(void*, Observer<IFrequencyHandler>*);
        return reinterpret_cast<Register>(originalOf(self, 3))(self, given);
    });
}

template <typename Call>
EAFResult registerRecord(void* handler, IFrequencyObserver* observer, Call call) {
    if (t_thread.isInLibrary || !Recorder::isOn()) {
        return call(observer);
    }
    std::uint16_t number = 0;
    IFrequencyObserver given{};
    const bool isReplaced = observer != nullptr && observer->onFrequencyChanged != nullptr &&
                            Clients::observerOf(*observer, handler, numberOf(handler), given, number);
    return incoming(Kind::registerObserverC, numberOf(handler), number, 0,
                    [&] { return call(isReplaced ? &given : observer); });
}

using RegisterRecord = EAFResult (*)(void*, IFrequencyObserver*);
std::atomic<RegisterRecord> s_registerRecord;

EAFResult registerByRecord(void* handler, IFrequencyObserver* observer) {
    return registerRecord(handler, observer, [handler](IFrequencyObserver* given) {
        return s_registerRecord.load(std::memory_order_relaxed)(handler, given);
    });
}

// The canceller

EAFResult followCancellation(void* self, unsigned frequency, int temperature) {
    return incoming(Kind::cancel, numberOf(self), static_cast<std::int32_t>(frequency), temperature, [&] {
        using Cancel = EAFResult (*)(void*, unsigned, int);
        return reinterpret_cast<Cancel>(originalOf(self, 3))(self, frequency, temperature);
    });
}

struct Search {
    std::array<std::int32_t, 4> ranges;
    double shrinkFactor;
    std::array<std::int32_t, 5> rest;
};

/** As they stand in a record, without gaps. */
std::array<char, 44> bytesOf(const Search& search) {
    std::array<char, 44> bytes{};
    std::memcpy(bytes.data(), search.ranges.data(), 16);
    std::memcpy(bytes.data() + 16, &search.shrinkFactor, 8);
    std::memcpy(bytes.data() + 24, search.rest.data(), 20);
    return bytes;
}

template <typename Number>
std::int32_t at(const Number* place) {
    return place != nullptr ? static_cast<std::int32_t>(*place) : 0;
}

EAFResult followCalibration(void* self, int iLow, int iHigh, int qLow, int qHigh, double shrinkFactor,
                            int minDelta, unsigned maxIterations, unsigned settleTimeMs, int* calibratedI,
                            int* calibratedQ, int* maxDelta, unsigned* iterations, bool useHighDetector) {
    using Calibrate = EAFResult (*)(void*, int, int, int, int, double, int, unsigned, unsigned, int*, int*,
                                    int*, unsigned*, bool);
    const auto call = [&] {
        return reinterpret_cast<Calibrate>(originalOf(self, 4))(
            self, iLow, iHigh, qLow, qHigh, shrinkFactor, minDelta, maxIterations, settleTimeMs, calibratedI,
            calibratedQ, maxDelta, iterations, useHighDetector);
    };
    if (t_thread.isInLibrary || !Recorder::isOn()) {
        return call();
    }
    const auto bytes =
        bytesOf({{iLow, iHigh, qLow, qHigh},
                 shrinkFactor,
                 {minDelta, static_cast<std::int32_t>(maxIterations), static_cast<std::int32_t>(settleTimeMs),
                  at(iterations), useHighDetector ? 1 : 0}});
    Visit visit(Kind::calibrate, numberOf(self), bytes.data(), bytes.size());
    try {
        const EAFResult code = call();
        const std::array<std::int32_t, 4> found{at(calibratedI), at(calibratedQ), at(maxDelta),
                                                at(iterations)};
        visit.finish(code, found.data(), sizeof found);
        return code;
    } catch (const abi::__forced_unwind&) {
        visit.unwind();
        throw;
    } catch (...) {
        visit.throwOut();
        throw;
    }
}

// Behind the symbols

using Plain = EAFResult(void*);
using Carrier = EAFResult(void*, unsigned long);

template <Kind kind>
EAFResult pass(Next<Plain>& next, void* self) {
    return incoming(kind, numberOf(self), 0, 0, [&] { return next(self); });
}

template <Kind kind>
EAFResult passCarrier(Next<Carrier>& next, void* self, unsigned long carrier) {
    return incoming(kind, numberOf(self), lower(carrier), upper(carrier),
                    [&] { return next(self, carrier); });
}

template <typename Call>
void* construct(void* self, std::uint16_t number, std::int32_t channel, std::int32_t type, Call call) {
    void* answer = self;
    static_cast<void>(incoming(Kind::construct, number, channel, type, [&] {
        answer = call();
        return 0;
    }));
    return answer;
}

bool isSeen() {
    return Recorder::isOn() && !t_thread.isInLibrary;
}

void* constructModule(Next<void*(void*, unsigned long, std::int32_t)>& next, void* self,
                      unsigned long channel, std::int32_t type) {
    const std::uint16_t number = isSeen() ? Objects::addModule(self, lower(channel), type) : std::uint16_t{0};
    return construct(self, number, lower(channel), type, [&] { return next(self, channel, type); });
}

void* constructCompensation(Next<void*(void*, unsigned long)>& next, void* self, unsigned long channel) {
    const std::uint16_t number = isSeen() ? Objects::addCompensation(self, lower(channel)) : std::uint16_t{0};
    return construct(self, number, lower(channel), 0, [&] { return next(self, channel); });
}

void* passDestruction(Next<void*(void*)>& next, void* self) {
    void* answer = self;
    static_cast<void>(incoming(Kind::destroy, numberOf(self), 0, 0, [&] {
        answer = next(self);
        return 0;
    }));
    return answer;
}

template <std::size_t slot>
void* destroyCompensationIn(void* self) {
    // Its memory may be another's before the destructor is back.
    const std::uint16_t number = numberOf(self);
    const auto original = reinterpret_cast<void* (*)(void*)>(originalOf(self, slot));
    Objects::forget(self);
    void* answer = self;
    static_cast<void>(incoming(Kind::destroy, number, 0, 0, [&] {
        answer = original(self);
        return 0;
    }));
    return answer;
}

} // namespace

void* destroyModule(std::size_t form) {
    return form == 0 ? addressOf(&destroy<0>) : addressOf(&destroy<1>);
}
void* moduleInit() {
    return addressOf(&follow<Kind::moduleInit, 3>);
}
void* storageRetrieved() {
    return addressOf(&follow<Kind::storageRetrieved, 4>);
}
void* postFrameformat() {
    return addressOf(&follow<Kind::postFrameformat, 5>);
}
void* setTx() {
    return addressOf(&followCarrier<Kind::setTx, 12>);
}
void* setRx() {
    return addressOf(&followCarrier<Kind::setRx, 13>);
}
void* registerObserver() {
    return addressOf(&registerInTable);
}
void replaceRegistration(FrequencyHandlerCStruct& record) {
    if (record.registerObserver != &registerByRecord && record.registerObserver != nullptr) {
        s_registerRecord.store(record.registerObserver, std::memory_order_relaxed);
        record.registerObserver = &registerByRecord;
    }
}
void* initializeCanceller() {
    return addressOf(&follow<Kind::cancellerInit, 2>);
}
void* cancel() {
    return addressOf(&followCancellation);
}
void* calibrate() {
    return addressOf(&followCalibration);
}
void* destroyCompensation(std::size_t form) {
    return form == 0 ? addressOf(&destroyCompensationIn<0>) : addressOf(&destroyCompensationIn<1>);
}
void* compensate() {
    return addressOf(&follow<Kind::compensate, 2>);
}
void* compensationCarrier() {
    return addressOf(&followCarrier<Kind::compensationCarrier, 3>);
}

// The symbols. SYMBOL names a door after what it stands for; its definition follows.

#define SYMBOL(door, symbol) door __asm__(symbol)

namespace {

Next<void*(void*, unsigned long, std::int32_t)>
    s_moduleC1("_ZN16FrequencyHandlerC1EmNS_20FrequencyHandlerTypeE");
Next<void*(void*, unsigned long, std::int32_t)>
    s_moduleC2("_ZN16FrequencyHandlerC2EmNS_20FrequencyHandlerTypeE");
Next<void*(void*)> s_moduleD1("_ZN16FrequencyHandlerD1Ev");
Next<void*(void*)> s_moduleD2("_ZN16FrequencyHandlerD2Ev");
Next<Plain> s_moduleInit("_ZN16FrequencyHandler12onModuleInitEv");
Next<Plain> s_storageRetrieved("_ZN16FrequencyHandler36onPhaseModuleStorageObjectsRetreivedEv");
Next<Plain> s_postFrameformat("_ZN16FrequencyHandler26onPhasePostFrameformatLoadEv");
Next<Carrier> s_setTx("_ZN16FrequencyHandler14setTxFrequencyEm");
Next<Carrier> s_setRx("_ZN16FrequencyHandler14setRxFrequencyEm");
Next<Carrier> s_setRf("_ZN2RL16FrequencyHandler6Common16FrequencyHandler14setRfFrequencyEm");
Next<EAFResult(void*, Observer<IFrequencyHandler>*)> s_registerObserver(
    "_ZN2RL16FrequencyHandler6Common16FrequencyHandler16registerObserverEP8ObserverI17IFrequencyHandlerE");
Next<EAFResult(void*, IFrequencyObserver*)>
    s_registerRecordNext("_ZN17IFrequencyHandler16registerObserverEPvP18IFrequencyObserver");
Next<void*(void*, unsigned long)> s_compensationC1("_ZN21CTxIQImbalanceHandlerC1Em");
Next<void*(void*, unsigned long)> s_compensationC2("_ZN21CTxIQImbalanceHandlerC2Em");
Next<Plain> s_initialize("_ZN21CTxIQImbalanceHandler10initializeEv");
Next<Plain> s_compensate("_ZN21CTxIQImbalanceHandler23doImbalanceCompensationEv");
Next<Carrier> s_compensationCarrier("_ZN21CTxIQImbalanceHandler20onTxFrequencyChangedEm");

} // namespace

extern "C" {

RADIO_API void* SYMBOL(openModuleC1(void*, unsigned long, std::int32_t),
                       "_ZN16FrequencyHandlerC1EmNS_20FrequencyHandlerTypeE");
void* openModuleC1(void* self, unsigned long channel, std::int32_t type) {
    return constructModule(s_moduleC1, self, channel, type);
}
RADIO_API void* SYMBOL(openModuleC2(void*, unsigned long, std::int32_t),
                       "_ZN16FrequencyHandlerC2EmNS_20FrequencyHandlerTypeE");
void* openModuleC2(void* self, unsigned long channel, std::int32_t type) {
    return constructModule(s_moduleC2, self, channel, type);
}
RADIO_API void* SYMBOL(openModuleD1(void*), "_ZN16FrequencyHandlerD1Ev");
void* openModuleD1(void* self) {
    return passDestruction(s_moduleD1, self);
}
RADIO_API void* SYMBOL(openModuleD2(void*), "_ZN16FrequencyHandlerD2Ev");
void* openModuleD2(void* self) {
    return passDestruction(s_moduleD2, self);
}
RADIO_API EAFResult SYMBOL(openModuleInit(void*), "_ZN16FrequencyHandler12onModuleInitEv");
EAFResult openModuleInit(void* self) {
    return pass<Kind::moduleInit>(s_moduleInit, self);
}
RADIO_API EAFResult SYMBOL(openStorageRetrieved(void*),
                           "_ZN16FrequencyHandler36onPhaseModuleStorageObjectsRetreivedEv");
EAFResult openStorageRetrieved(void* self) {
    return pass<Kind::storageRetrieved>(s_storageRetrieved, self);
}
RADIO_API EAFResult SYMBOL(openPostFrameformat(void*), "_ZN16FrequencyHandler26onPhasePostFrameformatLoadEv");
EAFResult openPostFrameformat(void* self) {
    return pass<Kind::postFrameformat>(s_postFrameformat, self);
}
RADIO_API EAFResult SYMBOL(openSetTx(void*, unsigned long), "_ZN16FrequencyHandler14setTxFrequencyEm");
EAFResult openSetTx(void* self, unsigned long carrier) {
    return passCarrier<Kind::setTx>(s_setTx, self, carrier);
}
RADIO_API EAFResult SYMBOL(openSetRx(void*, unsigned long), "_ZN16FrequencyHandler14setRxFrequencyEm");
EAFResult openSetRx(void* self, unsigned long carrier) {
    return passCarrier<Kind::setRx>(s_setRx, self, carrier);
}
RADIO_API EAFResult SYMBOL(openSetRf(void*, unsigned long),
                           "_ZN2RL16FrequencyHandler6Common16FrequencyHandler14setRfFrequencyEm");
EAFResult openSetRf(void* self, unsigned long carrier) {
    return passCarrier<Kind::setRf>(s_setRf, self, carrier);
}
RADIO_API EAFResult SYMBOL(
    openRegisterObserver(void*, Observer<IFrequencyHandler>*),
    "_ZN2RL16FrequencyHandler6Common16FrequencyHandler16registerObserverEP8ObserverI17IFrequencyHandlerE");
EAFResult openRegisterObserver(void* self, Observer<IFrequencyHandler>* observer) {
    return registerWith(self, observer, [self](Observer<IFrequencyHandler>* given) {
        return s_registerObserver(self, given);
    });
}
RADIO_API EAFResult SYMBOL(openRegisterRecord(void*, IFrequencyObserver*),
                           "_ZN17IFrequencyHandler16registerObserverEPvP18IFrequencyObserver");
EAFResult openRegisterRecord(void* handler, IFrequencyObserver* observer) {
    return registerRecord(handler, observer, [handler](IFrequencyObserver* given) {
        return s_registerRecordNext(handler, given);
    });
}
RADIO_API void* SYMBOL(openCompensationC1(void*, unsigned long), "_ZN21CTxIQImbalanceHandlerC1Em");
void* openCompensationC1(void* self, unsigned long channel) {
    void* const built = constructCompensation(s_compensationC1, self, channel);
    if (isSeen()) {
        Objects::followBuiltCompensation(self);
    }
    return built;
}
RADIO_API void* SYMBOL(openCompensationC2(void*, unsigned long), "_ZN21CTxIQImbalanceHandlerC2Em");
void* openCompensationC2(void* self, unsigned long channel) {
    return constructCompensation(s_compensationC2, self, channel);
}
RADIO_API EAFResult SYMBOL(openInitialize(void*), "_ZN21CTxIQImbalanceHandler10initializeEv");
EAFResult openInitialize(void* self) {
    return pass<Kind::compensationInitialize>(s_initialize, self);
}
RADIO_API EAFResult SYMBOL(openCompensate(void*), "_ZN21CTxIQImbalanceHandler23doImbalanceCompensationEv");
EAFResult openCompensate(void* self) {
    return pass<Kind::compensate>(s_compensate, self);
}
RADIO_API EAFResult SYMBOL(openCompensationCarrier(void*, unsigned long),
                           "_ZN21CTxIQImbalanceHandler20onTxFrequencyChangedEm");
EAFResult openCompensationCarrier(void* self, unsigned long carrier) {
    return passCarrier<Kind::compensationCarrier>(s_compensationCarrier, self, carrier);
}

} // extern "C"

} // namespace Recording::LibraryDoors

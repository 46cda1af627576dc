// What came into the library, once more.

#include "CTxIQImbalanceHandler.h"
#include "FrequencyHandler.h"
#include "FrequencyHandler_Common.h"
#include "ILoCancellation.h"
#include "radioctl/replayer/Stage.h"

#include <cstring>
#include <deque>

namespace Replayer {

namespace {

using DirectionHandler = RL::FrequencyHandler::Common::FrequencyHandler;

Player& player() {
    return *Player::current();
}

unsigned long carrierOf(const Record& begin) {
    return static_cast<unsigned long>(begin.carrier());
}

[[noreturn]] void giveUp(const std::string& what) {
    player().giveUp(what);
}

std::uint16_t numberOf(const Record& begin) {
    return begin.object != nullptr ? begin.object->number : std::uint16_t{0};
}

::FrequencyHandler& moduleOf(const Record& begin) {
    const auto found = Stage::get().modules.find(numberOf(begin));
    if (found == Stage::get().modules.end()) {
        giveUp("the module was not seen being built");
    }
    return static_cast<::FrequencyHandler&>(*found->second);
}

CTxIQImbalanceHandler& compensationOf(const Record& begin) {
    const auto found = Stage::get().compensations.find(numberOf(begin));
    if (found == Stage::get().compensations.end()) {
        giveUp("the IQ compensation was not seen being built");
    }
    return static_cast<CTxIQImbalanceHandler&>(*found->second);
}

/** What the object of `begin` is published as. */
template <typename Interface>
Interface& publishedOf(const Record& begin) {
    const std::string name = begin.object != nullptr ? begin.object->name : "";
    const auto found = Stage::get().published.find(name);
    auto* const wanted =
        found != Stage::get().published.end() ? dynamic_cast<Interface*>(found->second) : nullptr;
    if (wanted == nullptr) {
        giveUp("nothing is published as " + name);
    }
    return *wanted;
}

// Modules and compensations

void construct(const Record& begin) {
    if (begin.object == nullptr) {
        giveUp("what was built has no number");
    }
    if (begin.object->kind == ObjectKind::compensation) {
        Stage::get().compensations[numberOf(begin)] =
            new CTxIQImbalanceHandler(static_cast<unsigned long>(begin.a));
        return;
    }
    const auto type = static_cast<::FrequencyHandler::FrequencyHandlerType>(begin.b);
    // It registers itself, and may be called from then on.
    Stage::get().modules[numberOf(begin)] = new ::FrequencyHandler(static_cast<unsigned long>(begin.a), type);
}

/** The temperature service does not know of it any more. */
void forgetObservers(std::uint16_t owner) {
    auto& all = Stage::get().temperatures;
    for (auto place = all.begin(); place != all.end();) {
        const Object* const observer = player().file().object(place->first);
        const bool isIts = observer != nullptr && observer->first == static_cast<std::int32_t>(owner);
        place = isIts ? all.erase(place) : std::next(place);
    }
}

void destroy(const Record& begin) {
    const std::uint16_t number = numberOf(begin);
    if (begin.object != nullptr && begin.object->kind == ObjectKind::compensation) {
        CTxIQImbalanceHandler* const compensation = &compensationOf(begin);
        Stage::get().compensations.erase(number);
        delete compensation; // NOLINT(cppcoreguidelines-owning-memory): as a platform does
    } else {
        ::FrequencyHandler* const module = &moduleOf(begin);
        delete module; // NOLINT(cppcoreguidelines-owning-memory): as a platform does
        Stage::get().modules.erase(number);
    }
    forgetObservers(number);
}

EAFResult reachPhase(const Record& begin) {
    return moduleOf(begin).onPhaseActivation(static_cast<unsigned long>(begin.a),
                                             static_cast<ECallbackPriority>(begin.b));
}

EAFResult callBack(const Record& begin) {
    const auto& callbacks = Stage::get().callbacks;
    const auto found =
        begin.object != nullptr ? callbacks.find({begin.object->first, begin.object->name}) : callbacks.end();
    if (found == callbacks.end()) {
        giveUp("the callback was not seen being registered");
    }
    const ModuleCallbackRecord& record = *found->second;
    return record.onPhaseActivation(record.context, static_cast<unsigned long>(begin.a),
                                    static_cast<ECallbackPriority>(begin.b));
}

void notifyTemperature(const Record& begin) {
    const auto found = Stage::get().temperatures.find(numberOf(begin));
    if (found == Stage::get().temperatures.end() || found->second.observers.empty()) {
        giveUp("the temperature observer was not seen being registered");
    }
    TemperatureObservers& observers = found->second;
    const ITemperatureObserver& observer =
        *observers.observers[observers.next++ % observers.observers.size()];
    observer.notifyTemperature(observer.context, begin.a);
}

// Observers of carriers

void setCarrier(Call& told, std::uint64_t carrier) {
    told.a = static_cast<std::int32_t>(static_cast<std::uint32_t>(carrier));
    told.c = static_cast<std::int32_t>(static_cast<std::uint32_t>(carrier >> 32U));
}

class ClassObserver final : public Observer<IFrequencyHandler> {
public:
    explicit ClassObserver(std::int32_t number) : m_number(number) {}
    void onChange(IFrequencyHandler* subject) override {
        Call told{Kind::observerTold, ObjectKind::observer};
        setCarrier(told, subject->getFrequency());
        told.number = m_number;
        static_cast<void>(player().answer(told));
    }

private:
    std::int32_t m_number;
};

void changeFrequency(void* context, unsigned long channel, unsigned long frequency) {
    Call told{Kind::observerTold, ObjectKind::observerC};
    setCarrier(told, frequency);
    told.b = static_cast<std::int32_t>(static_cast<std::uint32_t>(channel));
    told.number = *static_cast<const std::int32_t*>(context);
    static_cast<void>(player().answer(told));
}

EAFResult observe(const Record& begin) {
    auto& handler = publishedOf<IFrequencyHandler>(begin);
    // Observers are never withdrawn.
    auto* const given = begin.a != 0 ? new ClassObserver(begin.a) : nullptr;
    return handler.registerObserver(given);
}

EAFResult observeAsC(const Record& begin) {
    // Observers are never withdrawn.
    static std::deque<std::int32_t> numbers;
    IFrequencyObserver observer{&numbers.emplace_back(begin.a), &changeFrequency};
    IFrequencyObserver* const given = begin.a != 0 ? &observer : nullptr;
    if (begin.object == nullptr) {
        return IFrequencyHandler::registerObserver(nullptr, given);
    }
    auto* const record =
        static_cast<FrequencyHandlerCStruct*>(publishedOf<IFrequencyHandler>(begin).getCStruct());
    return record->registerObserver(record->handler, given);
}

// The canceller

/** The library has not written there. */
constexpr int untouched = -2147483647;

/** Whether a failed end comes without a call, but for a message: then it was given a null pointer. */
bool isRefused() {
    return player().endsAtOnce();
}

Answer calibrate(const Record& begin) {
    if (begin.bytes.size() < 44) {
        giveUp("a search without its settings");
    }
    double shrinkFactor = 0;
    std::memcpy(&shrinkFactor, begin.bytes.data() + 16, sizeof shrinkFactor);
    int i = untouched;
    int q = untouched;
    int delta = untouched;
    auto iterations = static_cast<unsigned>(begin.number(9));
    int* const foundI = isRefused() ? nullptr : &i;
    const EAFResult code = publishedOf<ILoCancellation>(begin).calibrateLoCancellation(
        begin.number(0), begin.number(1), begin.number(2), begin.number(3), shrinkFactor, begin.number(6),
        static_cast<unsigned>(begin.number(7)), static_cast<unsigned>(begin.number(8)), foundI, &q, &delta,
        &iterations, begin.number(10) != 0);
    const std::array<std::int32_t, 4> found{i, q, delta, static_cast<std::int32_t>(iterations)};
    Answer answer{code, {}};
    // What it left alone stands in the recording as its caller had it, which nobody recorded.
    if (i != untouched && q != untouched && delta != untouched) {
        answer.bytes.assign(reinterpret_cast<const char*>(found.data()), sizeof found);
    }
    return answer;
}

} // namespace

Answer makeOperation(const Record& begin) {
    switch (begin.kind) {
    case Kind::construct:
        construct(begin);
        return {};
    case Kind::destroy:
        destroy(begin);
        return {};
    case Kind::phase:
        return {reachPhase(begin), {}};
    case Kind::moduleInit:
        return {moduleOf(begin).onModuleInit(), {}};
    case Kind::storageRetrieved:
        return {moduleOf(begin).onPhaseModuleStorageObjectsRetreived(), {}};
    case Kind::postFrameformat:
        return {moduleOf(begin).onPhasePostFrameformatLoad(), {}};
    case Kind::setTx:
        return {moduleOf(begin).setTxFrequency(carrierOf(begin)), {}};
    case Kind::setRx:
        return {moduleOf(begin).setRxFrequency(carrierOf(begin)), {}};
    case Kind::setRf:
        return {publishedOf<DirectionHandler>(begin).setRfFrequency(carrierOf(begin)), {}};
    case Kind::temperature:
        notifyTemperature(begin);
        return {};
    case Kind::callbackPhase:
        return {callBack(begin), {}};
    case Kind::registerObserver:
        return {observe(begin), {}};
    case Kind::registerObserverC:
        return {observeAsC(begin), {}};
    case Kind::cancellerInit:
        return {publishedOf<ILoCancellation>(begin).onModuleInit(), {}};
    case Kind::cancel:
        return {
            publishedOf<ILoCancellation>(begin).setLoCancellation(static_cast<unsigned>(begin.a), begin.b),
            {}};
    case Kind::calibrate:
        return calibrate(begin);
    case Kind::compensationInitialize:
        return {compensationOf(begin).initialize(), {}};
    case Kind::compensate:
        return {compensationOf(begin).doImbalanceCompensation(), {}};
    case Kind::compensationCarrier:
        return {compensationOf(begin).onTxFrequencyChanged(carrierOf(begin)), {}};
    default:
        giveUp("an operation that this version does not know");
    }
}

} // namespace Replayer

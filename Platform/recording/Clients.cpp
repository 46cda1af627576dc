#include "Clients.h"

#include "Calls.h"
#include "Drivers.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <new>
#include <utility>

namespace Recording::Clients {

namespace {

/** The place of `real`, a free one if it has none yet; null when there is none. */
template <typename Places, typename Real>
typename Places::value_type* placeOf(Places& all, Real* real) {
    for (auto& place : all) {
        Real* there = nullptr;
        if (place.real.compare_exchange_strong(there, real) || there == real) {
            return &place;
        }
    }
    Recorder::passOver();
    return nullptr;
}

// Temperatures

struct Temperature {
    std::atomic<ITemperatureObserver*> real;
    ITemperatureObserver record;
    std::uint16_t object;
    /** What registered it. */
    std::uint16_t owner;
};
std::array<Temperature, 256> s_temperatures;

void notifyTemperature(void* context, int temperature) {
    const auto& place = *static_cast<Temperature*>(context);
    const ITemperatureObserver& real = *place.real.load(std::memory_order_relaxed);
    Drivers::refresh(place.owner);
    static_cast<void>(incoming(Kind::temperature, place.object, temperature, 0, [&] {
        real.notifyTemperature(real.context, temperature);
        return 0;
    }));
}

struct Service {
    std::atomic<TemperatureHandlerCStruct*> real;
    TemperatureHandlerCStruct record;
};
std::array<Service, 4> s_services;

template <std::size_t index>
ETHResult registerWith(ITemperatureObserver* observer) {
    return registerObserver(observer, 1, s_services[index].real.load()->registerObserver);
}
using Register = ETHResult (*)(ITemperatureObserver*);
constexpr std::array<Register, 4> s_registers{&registerWith<0>, &registerWith<1>, &registerWith<2>,
                                              &registerWith<3>};

// Phases

struct Callback {
    std::atomic<ModuleCallbackRecord*> real;
    ModuleCallbackRecord record;
    std::uint16_t object;
};
std::array<Callback, 64> s_callbacks;

EAFResult activatePhase(void* context, unsigned long phase, ECallbackPriority priority) {
    const auto& place = *static_cast<Callback*>(context);
    const ModuleCallbackRecord& real = *place.real.load(std::memory_order_relaxed);
    return incoming(Kind::callbackPhase, place.object, lower(phase), priority,
                    [&] { return real.onPhaseActivation(real.context, phase, priority); });
}

// Carriers

struct Told {
    /** The handler that tells; null: free. */
    std::atomic<const void*> handler;
    std::uint16_t object;
};

template <typename Call>
void tell(std::uint16_t object, unsigned long carrier, unsigned long channel, Call call) {
    const Entry entry{Kind::observerTold, object, 0, lower(carrier), lower(channel), upper(carrier)};
    static_cast<void>(outgoing(entry, [&] {
        call();
        return 0;
    }));
    Recorder::write(entry);
}

class ClassObserver final : public Observer<IFrequencyHandler> {
public:
    explicit ClassObserver(Observer<IFrequencyHandler>& real, std::uint16_t object)
        : m_real(real),
          m_object(object) {}

    void onChange(IFrequencyHandler* subject) override {
        tell(m_object, subject->getFrequency(), 0, [&] { m_real.onChange(subject); });
    }

private:
    Observer<IFrequencyHandler>& m_real;
    std::uint16_t m_object;
};

struct ClassPlace : Told {
    alignas(ClassObserver) std::array<unsigned char, sizeof(ClassObserver)> room;
};
struct RecordPlace : Told {
    IFrequencyObserver real;
};
std::array<ClassPlace, 1024> s_classObservers;
std::array<RecordPlace, 1024> s_recordObservers;

void changeFrequency(void* context, unsigned long channel, unsigned long frequency) {
    const auto& place = *static_cast<RecordPlace*>(context);
    tell(place.object, frequency, channel,
         [&] { place.real.onFrequencyChanged(place.real.context, channel, frequency); });
}

template <typename Places>
std::int32_t countOf(const Places& all, const void* handler) {
    return static_cast<std::int32_t>(
        std::count_if(all.begin(), all.end(), [&](const auto& place) { return place.handler == handler; }));
}

template <typename Places>
typename Places::value_type* freePlace(Places& all, const void* handler) {
    for (auto& place : all) {
        const void* none = nullptr;
        if (place.handler.compare_exchange_strong(none, handler)) {
            return &place;
        }
    }
    Recorder::passOver();
    return nullptr;
}

} // namespace

ITemperatureObserver* observerOf(ITemperatureObserver* observer, std::uint16_t& object) {
    object = Recorder::name(ObjectKind::temperatureObserver, "", t_thread.object);
    Temperature* const place = observer != nullptr && observer->notifyTemperature != nullptr
                                   ? placeOf(s_temperatures, observer)
                                   : nullptr;
    if (place == nullptr) {
        return observer;
    }
    place->record = {place, &notifyTemperature};
    place->object = object;
    place->owner = t_thread.object;
    return &place->record;
}

TemperatureHandlerCStruct* recordOf(TemperatureHandlerCStruct* real) {
    Service* const service = real != nullptr ? placeOf(s_services, real) : nullptr;
    if (service == nullptr) {
        return real;
    }
    const auto index = static_cast<std::size_t>(service - s_services.data());
    service->record.registerObserver = real->registerObserver != nullptr ? s_registers[index] : nullptr;
    return &service->record;
}

ETHResult registerObserver(ITemperatureObserver* observer, int way,
                           ETHResult (*call)(ITemperatureObserver* observer)) {
    Entry entry{Kind::temperatureRegister, 0, 0, way};
    ITemperatureObserver* const given = observerOf(observer, entry.object);
    const ETHResult code = outgoing(entry, [&] { return call(given); });
    entry.code = code;
    Recorder::write(entry);
    return code;
}

ModuleCallbackRecord* callbackOf(ModuleCallbackRecord* callback, std::uint16_t object) {
    Callback* const place = callback != nullptr && callback->onPhaseActivation != nullptr
                                ? placeOf(s_callbacks, callback)
                                : nullptr;
    if (place == nullptr) {
        return callback;
    }
    place->record = {place, &activatePhase};
    place->object = object;
    Drivers::forget(object);
    return &place->record;
}

Observer<IFrequencyHandler>* observerOf(Observer<IFrequencyHandler>* observer, const void* handler,
                                        std::uint16_t object, std::uint16_t& observerNumber) {
    const std::int32_t index = countOf(s_classObservers, handler);
    ClassPlace* const place = observer != nullptr ? freePlace(s_classObservers, handler) : nullptr;
    if (place == nullptr) {
        return observer;
    }
    observerNumber = place->object = Recorder::name(ObjectKind::observer, "", object, index);
    return new (place->room.data()) ClassObserver(*observer, place->object);
}

bool observerOf(const IFrequencyObserver& observer, const void* handler, std::uint16_t object,
                IFrequencyObserver& given, std::uint16_t& observerNumber) {
    const std::int32_t index = countOf(s_recordObservers, handler);
    RecordPlace* const place = freePlace(s_recordObservers, handler);
    if (place == nullptr) {
        return false;
    }
    observerNumber = place->object = Recorder::name(ObjectKind::observerC, "", object, index);
    place->real = observer;
    given = {place, &changeFrequency};
    return true;
}

void forget(const void* handler) {
    for (ClassPlace& place : s_classObservers) {
        const void* there = handler;
        place.handler.compare_exchange_strong(there, nullptr);
    }
    for (RecordPlace& place : s_recordObservers) {
        const void* there = handler;
        place.handler.compare_exchange_strong(there, nullptr);
    }
}

} // namespace Recording::Clients

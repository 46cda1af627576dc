#include "Drivers.h"

#include "Calls.h"
#include "Names.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <new>
#include <utility>

namespace Recording::Drivers {

namespace {

// The record of one driver

/**
 * The library is given the address of `record`, and in it the address of the whole as the context. It passes
 * the one or the other, which the alignment tells apart: the platform is to get its own of the two.
 */
struct alignas(64) Driver {
    /** Null: free. */
    std::atomic<DriverInterface*> real;
    std::uint16_t object;
    /** The one that the same object of the library looked up before it, from 1. */
    std::uint16_t before;
    DriverInterface record;
};
static_assert(offsetof(Driver, record) != 0 && sizeof(Driver) == 64);

constexpr std::size_t mostDrivers = 2048;
std::array<Driver, mostDrivers> s_drivers;
/** The one that each object looked up last, from 1. */
std::array<std::atomic<std::uint16_t>, 8193> s_lastOf;

/** What the library calls, and what the platform is to be given. */
struct Called {
    explicit Called(void* first) {
        const auto address = reinterpret_cast<std::uintptr_t>(first);
        // NOLINTNEXTLINE(performance-no-int-to-ptr): the driver around it
        driver = reinterpret_cast<Driver*>(address & ~(std::uintptr_t{alignof(Driver)} - 1));
        isRecord = static_cast<void*>(driver) != first;
    }
    void* first() const { return isRecord ? real() : real()->context; }
    DriverInterface* real() const { return driver->real.load(std::memory_order_relaxed); }

    Driver* driver;
    bool isRecord;
};

void takeOver(Driver& driver);

/** The platform took the operation away after the library had looked for it: nothing is done. */
[[gnu::cold, gnu::noinline]] EDriverResult takeAway(Driver& driver) {
    takeOver(driver);
    return EDriverResult{0};
}

EDriverResult write(void* context, int value) {
    const Called called(context);
    if (called.real()->write == nullptr) {
        return takeAway(*called.driver);
    }
    Entry entry{Kind::driverWrite, called.driver->object, 0, value, called.isRecord ? 1 : 0};
    const EDriverResult code = outgoing(entry, [&] { return called.real()->write(called.first(), value); });
    entry.code = code;
    Recorder::write(entry);
    return code;
}

EDriverResult writeBuffer(void* context, const void* data, unsigned byteCount) {
    const Called called(context);
    if (called.real()->writeBuffer == nullptr) {
        return takeAway(*called.driver);
    }
    Entry entry{Kind::driverWriteBuffer, called.driver->object, 0, static_cast<std::int32_t>(byteCount),
                called.isRecord ? 1 : 0};
    const EDriverResult code =
        outgoing(entry, [&] { return called.real()->writeBuffer(called.first(), data, byteCount); });
    entry.code = code;
    Recorder::write(entry, data, data != nullptr ? byteCount : 0);
    return code;
}

EDriverResult read(void* context, int* value) {
    const Called called(context);
    if (called.real()->read == nullptr) {
        return takeAway(*called.driver);
    }
    Entry entry{Kind::driverRead,        called.driver->object,        0, 0,
                called.isRecord ? 1 : 0, value != nullptr ? *value : 0};
    const EDriverResult code = outgoing(entry, [&] { return called.real()->read(called.first(), value); });
    entry.code = code;
    entry.a = value != nullptr ? *value : 0;
    Recorder::write(entry);
    return code;
}

bool isOurs(const DriverInterface* record) {
    const auto address = reinterpret_cast<std::uintptr_t>(record);
    const auto begin = reinterpret_cast<std::uintptr_t>(s_drivers.data());
    return address - begin < sizeof s_drivers;
}

DriverInterface* realOf(DriverInterface* record) {
    return isOurs(record) ? Called(record).real() : record;
}

Driver* driverOf(std::uint16_t object, std::uint16_t owner, DriverInterface* real) {
    for (std::size_t next = s_lastOf[owner].load(); next != 0; next = s_drivers[next - 1].before) {
        Driver& driver = s_drivers[next - 1];
        if (driver.object == object && driver.real == real) {
            return &driver;
        }
    }
    for (Driver& driver : s_drivers) {
        DriverInterface* none = nullptr;
        if (driver.real.compare_exchange_strong(none, real)) {
            driver.object = object;
            driver.before =
                s_lastOf[owner].exchange(static_cast<std::uint16_t>(&driver - s_drivers.data() + 1));
            return &driver;
        }
    }
    return nullptr;
}

/** Null words stay null. */
void takeOver(Driver& driver) {
    const DriverInterface& real = *driver.real.load(std::memory_order_relaxed);
    driver.record.write = real.write != nullptr ? &write : nullptr;
    driver.record.writeBuffer = real.writeBuffer != nullptr ? &writeBuffer : nullptr;
    driver.record.read = real.read != nullptr ? &read : nullptr;
}

std::int32_t offersOf(const DriverInterface& record) {
    return (record.context != nullptr ? Offers::context : 0) | (record.write != nullptr ? Offers::write : 0) |
           (record.writeBuffer != nullptr ? Offers::writeBuffer : 0) |
           (record.read != nullptr ? Offers::read : 0);
}

/** What the library is given in the place of `real`. One without a context is given as it is: nothing in its
 * calls would tell which it is. */
DriverInterface* recordOf(DriverInterface* real, Entry& entry) {
    entry.a = 1;
    entry.b = offersOf(*real);
    Driver* const driver = real->context != nullptr ? driverOf(entry.object, t_thread.object, real) : nullptr;
    if (driver == nullptr) {
        entry.b |= Offers::unseen;
        Recorder::passOver();
        return real;
    }
    driver->record.context = driver;
    takeOver(*driver);
    return &driver->record;
}

// The record of the driver layer

EDriverResult lookUp(DriverLayerInterface& layer, DriverInterface** out, const char* name) {
    if (out == nullptr || name == nullptr) {
        return layer.getDriverInterface(out, name);
    }
    Entry entry{Kind::driverLookup, Names::numberOf(ObjectKind::driver, name)};
    DriverInterface* const given = realOf(*out);
    DriverInterface* found = given;
    const EDriverResult code = outgoing(entry, [&] { return layer.getDriverInterface(&found, name); });
    entry.code = code;
    if (found != given || (isSuccess(code) && found != nullptr)) {
        *out = found != nullptr ? recordOf(found, entry) : nullptr;
    }
    Recorder::write(entry);
    return code;
}

/** Its function is called without a word of whose it is: each has one of its own. */
struct Layer {
    std::atomic<DriverLayerInterface*> real;
    DriverLayerInterface record;
};
constexpr std::size_t mostLayers = 8;
std::array<Layer, mostLayers> s_layers;
std::atomic<std::size_t> s_layersTaken;

template <std::size_t index>
EDriverResult lookUpIn(DriverInterface** out, const char* name) {
    return lookUp(*s_layers[index].real.load(std::memory_order_relaxed), out, name);
}

using LookUp = EDriverResult (*)(DriverInterface**, const char*);
template <std::size_t... indices>
constexpr std::array<LookUp, mostLayers> lookUps(std::index_sequence<indices...> /*all*/) {
    return {&lookUpIn<indices>...};
}
constexpr std::array<LookUp, mostLayers> s_lookUps = lookUps(std::make_index_sequence<mostLayers>());

/** The place of `real` among `all`. When there is none yet, it gets a free one, or the one that was taken
 * longest ago: the library asks for drivers at once and keeps neither object nor record. */
template <typename Places, typename Real>
typename Places::value_type& placeOf(Places& all, std::atomic<std::size_t>& taken, Real* real) {
    for (auto& place : all) {
        if (place.real.load(std::memory_order_relaxed) == real) {
            return place;
        }
    }
    auto& place = all[taken.fetch_add(1) % all.size()];
    place.real.store(real);
    return place;
}

// The object that has it

class LayerObject final : public IInterface_c {
public:
    explicit LayerObject(IInterface_c& real) : m_real(real) {}
    void* getCStruct() override {
        Entry entry{Kind::driverLayerRecord};
        void* const real = outgoing(entry, [&] { return m_real.getCStruct(); });
        entry.a = real != nullptr ? 1 : 0;
        Recorder::write(entry);
        return recordOf(static_cast<DriverLayerInterface*>(real));
    }

private:
    static void* recordOf(DriverLayerInterface* real) { return Drivers::recordOf(real); }

    IInterface_c& m_real;
};

struct Place {
    std::atomic<IInterface_c*> real;
    alignas(LayerObject) std::array<unsigned char, sizeof(LayerObject)> room;
};
std::array<Place, mostLayers> s_objects;
std::atomic<std::size_t> s_objectsTaken;

} // namespace

void refresh(std::uint16_t owner) {
    for (std::size_t next = s_lastOf[owner].load(std::memory_order_acquire); next != 0;
         next = s_drivers[next - 1].before) {
        takeOver(s_drivers[next - 1]);
    }
}

void forget(std::uint16_t owner) {
    std::size_t next = owner != 0 ? s_lastOf[owner].exchange(0) : 0;
    while (next != 0) {
        Driver& driver = s_drivers[next - 1];
        next = driver.before;
        driver.real.store(nullptr);
    }
}

DriverLayerInterface* recordOf(DriverLayerInterface* real) {
    if (real == nullptr) {
        return nullptr;
    }
    Layer& layer = placeOf(s_layers, s_layersTaken, real);
    const auto index = static_cast<std::size_t>(&layer - s_layers.data());
    layer.record = {real->reserved, real->getDriverInterface != nullptr ? s_lookUps[index] : nullptr};
    return &layer.record;
}

IInterface* objectOf(IInterface* real) {
    auto* const object = dynamic_cast<IInterface_c*>(real);
    if (object == nullptr) {
        return real;
    }
    // Made anew each time, also for what came to lie where another one lay.
    return new (placeOf(s_objects, s_objectsTaken, object).room.data()) LayerObject(*object);
}

} // namespace Recording::Drivers

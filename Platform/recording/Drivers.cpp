#include "Drivers.h"

#include "Calls.h"

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
    DriverInterface* real;
    std::uint16_t object;
    DriverInterface record;
};
static_assert(offsetof(Driver, record) != 0 && sizeof(Driver) == 64);

constexpr std::size_t mostDrivers = 2048;
std::array<Driver, mostDrivers> s_drivers;
std::atomic<std::size_t> s_driverCount;

/** What the library calls, and what the platform is to be given. */
struct Called {
    explicit Called(void* first) {
        const auto address = reinterpret_cast<std::uintptr_t>(first);
        // NOLINTNEXTLINE(performance-no-int-to-ptr): the driver around it
        driver = reinterpret_cast<Driver*>(address & ~(std::uintptr_t{alignof(Driver)} - 1));
        isRecord = static_cast<void*>(driver) != first;
    }
    void* first() const { return isRecord ? driver->real : driver->real->context; }

    Driver* driver;
    bool isRecord;
};

EDriverResult write(void* context, int value) {
    const Called called(context);
    Entry entry{Kind::driverWrite, called.driver->object, 0, value, called.isRecord ? 1 : 0};
    const EDriverResult code =
        outgoing(entry, [&] { return called.driver->real->write(called.first(), value); });
    entry.code = code;
    Recorder::write(entry);
    return code;
}

EDriverResult writeBuffer(void* context, const void* data, unsigned byteCount) {
    const Called called(context);
    Entry entry{Kind::driverWriteBuffer, called.driver->object, 0, static_cast<std::int32_t>(byteCount),
                called.isRecord ? 1 : 0};
    const EDriverResult code =
        outgoing(entry, [&] { return called.driver->real->writeBuffer(called.first(), data, byteCount); });
    entry.code = code;
    Recorder::write(entry, data, data != nullptr ? byteCount : 0);
    return code;
}

EDriverResult read(void* context, int* value) {
    const Called called(context);
    Entry entry{Kind::driverRead,        called.driver->object,        0, 0,
                called.isRecord ? 1 : 0, value != nullptr ? *value : 0};
    const EDriverResult code =
        outgoing(entry, [&] { return called.driver->real->read(called.first(), value); });
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
    return isOurs(record) ? Called(record).driver->real : record;
}

Driver* driverOf(std::uint16_t object, const DriverInterface* real) {
    const std::size_t count = std::min(s_driverCount.load(std::memory_order_acquire), mostDrivers);
    auto* const end = s_drivers.begin() + count;
    auto* const found = std::find_if(s_drivers.begin(), end, [&](const Driver& driver) {
        return driver.object == object && driver.real == real;
    });
    if (found != end) {
        return found;
    }
    const std::size_t place = s_driverCount.fetch_add(1);
    return place < mostDrivers ? &s_drivers[place] : nullptr;
}

std::int32_t offersOf(const DriverInterface& record) {
    return (record.context != nullptr ? Offers::context : 0) | (record.write != nullptr ? Offers::write : 0) |
           (record.writeBuffer != nullptr ? Offers::writeBuffer : 0) |
           (record.read != nullptr ? Offers::read : 0);
}

/** What the library is given in the place of `real`. Null words stay null. One without a context is given as
 * it is: nothing in its calls would tell which it is. */
DriverInterface* recordOf(DriverInterface* real, Entry& entry) {
    entry.a = 1;
    entry.b = offersOf(*real);
    Driver* const driver = real->context != nullptr ? driverOf(entry.object, real) : nullptr;
    if (driver == nullptr) {
        entry.b |= Offers::unseen;
        Recorder::passOver();
        return real;
    }
    driver->real = real;
    driver->object = entry.object;
    driver->record = {driver, real->write != nullptr ? &write : nullptr,
                      real->writeBuffer != nullptr ? &writeBuffer : nullptr,
                      real->read != nullptr ? &read : nullptr};
    return &driver->record;
}

// The record of the driver layer

EDriverResult lookUp(DriverLayerInterface& layer, DriverInterface** out, const char* name) {
    if (out == nullptr || name == nullptr) {
        return layer.getDriverInterface(out, name);
    }
    Entry entry{Kind::driverLookup, Recorder::name(ObjectKind::driver, name)};
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

/** The place of `real` among `all`, a free one if it has none yet; null when there is none. */
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

// The object that has it

class LayerObject final : public IInterface_c {
public:
    explicit LayerObject(IInterface_c& real) : m_real(real) {}
    void* getCStruct() override {
        const InPlatform inside;
        return recordOf(static_cast<DriverLayerInterface*>(m_real.getCStruct()));
    }

private:
    static void* recordOf(DriverLayerInterface* real) { return Drivers::recordOf(real); }

    IInterface_c& m_real;
};

struct Place {
    std::atomic<IInterface_c*> real;
    std::atomic<IInterface*> object;
    alignas(LayerObject) std::array<unsigned char, sizeof(LayerObject)> room;
};
std::array<Place, mostLayers> s_objects;

} // namespace

DriverLayerInterface* recordOf(DriverLayerInterface* real) {
    if (real == nullptr) {
        return nullptr;
    }
    Layer* const layer = placeOf(s_layers, real);
    if (layer == nullptr) {
        return real;
    }
    const auto index = static_cast<std::size_t>(layer - s_layers.data());
    layer->record = {real->reserved, real->getDriverInterface != nullptr ? s_lookUps[index] : nullptr};
    return &layer->record;
}

IInterface* objectOf(IInterface* real) {
    auto* const object = dynamic_cast<IInterface_c*>(real);
    Place* const place = object != nullptr ? placeOf(s_objects, object) : nullptr;
    if (place == nullptr) {
        return real;
    }
    // Made once, and anew for what came to lie where another one lay: both are the same.
    if (place->object.load() == nullptr) {
        place->object.store(new (place->room.data()) LayerObject(*object));
    }
    return place->object.load();
}

} // namespace Recording::Drivers

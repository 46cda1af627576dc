#include "Rau.h"

#include "Calls.h"
#include "IRauHandler.h"

#include <array>
#include <atomic>
#include <new>

// The parts of the contract that a class of one's own needs. Nobody else is given them: they are not
// exported.
IRadio::~IRadio() = default;
IRauHandler::~IRauHandler() = default;

namespace Recording::Rau {

namespace {

class Object final : public IRauHandler {
public:
    Object(IRauHandler& real, std::uint16_t name) : m_real(real), m_name(name) {}

    EAFResult setTxRadioFrequency(unsigned long frequency) override {
        return set(Kind::rauTx, frequency, [&] { return m_real.setTxRadioFrequency(frequency); });
    }
    EAFResult setRxRadioFrequency(unsigned long frequency) override {
        return set(Kind::rauRx, frequency, [&] { return m_real.setRxRadioFrequency(frequency); });
    }

private:
    template <typename Call>
    EAFResult set(Kind kind, unsigned long frequency, Call call) {
        Entry entry{kind, m_name, 0, lower(frequency), upper(frequency)};
        const EAFResult code = outgoing(entry, call);
        entry.code = code;
        Recorder::write(entry);
        return code;
    }

    IRauHandler& m_real;
    std::uint16_t m_name;
};

struct Place {
    std::atomic<IRauHandler*> real;
    std::uint16_t name;
    /** What found it. */
    std::uint16_t owner;
    std::atomic<IInterface*> object;
    alignas(Object) std::array<unsigned char, sizeof(Object)> room;
};
constexpr std::size_t mostObjects = 64;
std::array<Place, mostObjects> s_objects;

} // namespace

IInterface* objectOf(IInterface* real, std::uint16_t name) {
    auto* const unit = dynamic_cast<IRauHandler*>(real);
    if (unit == nullptr) {
        return real;
    }
    for (Place& place : s_objects) {
        IRauHandler* there = nullptr;
        if (place.real.compare_exchange_strong(there, unit)) {
            place.name = name;
            place.owner = t_thread.object;
            place.object.store(new (place.room.data()) Object(*unit, name));
            return place.object.load();
        }
        if (there == unit && place.name == name && place.owner == t_thread.object &&
            place.object.load() != nullptr) {
            return place.object.load();
        }
    }
    Recorder::passOver();
    return real;
}

void forget(std::uint16_t owner) {
    for (Place& place : s_objects) {
        if (place.owner == owner && place.object.exchange(nullptr) != nullptr) {
            place.real.store(nullptr);
        }
    }
}

} // namespace Recording::Rau

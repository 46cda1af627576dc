#ifndef RADIO_SESSION_RADIOUNIT_H
#define RADIO_SESSION_RADIOUNIT_H

#include "CTxIQImbalanceHandler.h"
#include "FrequencyHandler.h"
#include "IFrequencyHandler.h"
#include "devices/Hardware.h"
#include "radio/board/Board.h"
#include "radio/board/PlatformWords.h"
#include "radio/session/LeakingTransmitter.h"
#include "radio/session/ModelClock.h"
#include "standalone/Platform.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Radio {

/** A frequency handler told an observer its carrier. */
struct Notification {
    Direction direction;
    int channel;
    /** In kHz. */
    unsigned long frequency;
    /** True for an observer that subscribed through the plain C record. */
    bool throughC;
};

/** What a radio tells while it works, in the order in which it happens. */
struct RadioEvents {
    std::function<void(const Standalone::Call&)> called;
    std::function<void(const Standalone::TraceMessage&)> traced;
    std::function<void(const Notification&)> notified;
};

/** Gives what stands behind a driver; null for one that is simulated. An empty function: all of them are. */
using Backings = std::function<Standalone::DriverBacking*(std::string_view driver)>;

/** Those of real hardware, which must outlive what is made of it; null: none. */
Backings backingsOf(Devices::Hardware* hardware);

/**
 * A described radio: the stand-alone platform filled from a board, for each channel one frequency module and,
 * where the board says so, an IQ compensation, and an observer on every handler. Where the board models the
 * LO leakage of a channel, its drivers are bound to the model, whose time goes on when the library sleeps.
 * There can be one at a time.
 */
class RadioUnit {
public:
    /**
     * Builds the modules and IQ compensations of all channels, which are not started yet. `events` is called
     * from then on.
     *
     * With `hardware`, which must outlive the object, the drivers that have some are bound to it; then
     * nothing is modelled, and sleeping takes as long as it says.
     */
    RadioUnit(const Board& board, RadioEvents events, Devices::Hardware* hardware = nullptr)
        : RadioUnit(board, std::move(events), backingsOf(hardware)) {}
    /** The same with whatever stands behind the drivers; `backings` is called here only. */
    RadioUnit(const Board& board, RadioEvents events, const Backings& backings);
    RadioUnit(const RadioUnit&) = delete;
    RadioUnit& operator=(const RadioUnit&) = delete;
    ~RadioUnit();

    /** Runs a phase over all channels, up to the first module that fails. */
    Standalone::PhaseReport runPhase(Standalone::Phase phase);
    /** Sets a carrier in kHz; gives the module's answer. `channel` is one of the board's. */
    std::int32_t tune(Direction direction, int channel, std::uint32_t frequency);
    /** Subscribes to a handler once more, through the C view of the broker; gives the first failing code. */
    std::int32_t observeThroughC(Direction direction, int channel);
    /** `name` is an interface of the platform. */
    void setPresence(const std::string& name, Standalone::Presence presence);

    /** The carrier that a handler reports, in kHz; 0 when there is no handler. */
    unsigned long frequency(Direction direction, int channel) const;

    /** One that is told of frequency changes. */
    struct ObserverState {
        Direction direction = Direction::tx;
        int channel = 0;
        bool throughC = false;
        /** How often it was told. */
        std::uint64_t notifications = 0;
        /** What it was told last, in kHz. */
        unsigned long frequency = 0;
    };
    /** In the order in which they subscribed. */
    std::vector<ObserverState> observers() const;
    /** How the interfaces show themselves that the board or a command gave a presence, and the others'
     * "present". */
    const std::map<std::string, Standalone::Presence>& presences() const { return m_presences; }

    Standalone::Platform& platform() { return m_platform; }
    /** The modelled transmitter of a channel; null when there is none. */
    LeakingTransmitter* transmitter(int channel);
    /** By their channels. */
    const std::map<int, std::unique_ptr<LeakingTransmitter>>& transmitters() const { return m_transmitters; }
    /** The time in which modelled transmitters live. */
    ModelClock& clock() { return m_clock; }

private:
    class ChangeObserver;

    void furnishPlatform(const Board& board);
    void bindHardware(const Backings& backings);
    void listen();
    void addChannel(const ChannelDescription& channel);
    void observeAll(const Board& board);
    void bindTransmitters(const Board& board);
    Surroundings surroundings(int channel);
    ChangeObserver& addObserver(Direction direction, int channel, bool throughC);

    RadioEvents m_events;
    // The platform knows the compensations until its end: they never leave broker, module manager and
    // temperature service.
    std::vector<std::unique_ptr<CTxIQImbalanceHandler>> m_compensations;
    Standalone::Platform m_platform;
    std::map<std::string, Standalone::Presence> m_presences;
    std::vector<std::unique_ptr<ChangeObserver>> m_observers;
    std::map<int, std::unique_ptr<::FrequencyHandler>> m_modules;
    std::map<std::pair<Direction, int>, IFrequencyHandler*> m_handlers;
    std::map<int, std::unique_ptr<LeakingTransmitter>> m_transmitters;
    ModelClock m_clock;
};

} // namespace Radio

#endif

#ifndef TESTS_MODEL_RUNNER_H
#define TESTS_MODEL_RUNNER_H

#include "CTxIQImbalanceHandler.h"
#include "DriverLayer.h"
#include "FrequencyHandler.h"
#include "FrequencyHandler_Common.h"
#include "IInterface_c.h"
#include "ITemperatureHandler_c.h"
#include "LoCancellation.h"
#include "Story.h"
#include "Transcript.h"
#include "standalone/Platform.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Told {

/** Plays a story with the library on a stand-alone platform and writes down what happens. */
class Runner {
public:
    Runner(const Board& board, Transcript& transcript);
    Runner(const Runner&) = delete;
    Runner& operator=(const Runner&) = delete;
    ~Runner();

    void play(const Story& story);
    /** Is told of every call of the platform, and of the step in which it came: from 0, and one more at the
     * end. */
    void setListener(std::function<void(std::size_t, const Standalone::Call&)> listener) {
        m_listener = std::move(listener);
    }

    // For those who stand in for parts of the system and of the platform.
    static Runner* current() { return s_current; }
    void hearSleep(std::int64_t microseconds) { m_transcript.note("sleep", microseconds); }
    void hearLevel(std::int64_t level);

private:
    using Handler = RL::FrequencyHandler::Common::FrequencyHandler;
    class ListeningObserver;
    struct ObserverInC;

    void setUp(const Board& board);
    template <typename Wanted>
    Wanted* published(const std::string& name);
    void listen(const Standalone::Call& call);
    void disturb();
    void loadFault();
    void unloadFault();
    void write(const Standalone::TraceMessage& message);

    void playGuarded(const Step& step);
    void play(const Step& step);
    void playWithModule(const Step& step, ::FrequencyHandler* module);
    void playWithHandler(const Step& step, Handler& handler);
    void observe(const Step& step, IFrequencyHandler& handler);
    /** What the broker answers to a client in C, and the record that it gives. */
    static std::pair<std::int32_t, void*> recordOf(const std::string& name);
    void playWithCanceller(const Step& step, LoCancellation& canceller);
    void calibrate(ILoCancellation& canceller, const Calibration& calibration);
    void playWithCompensation(const Step& step, CTxIQImbalanceHandler* compensation);
    void playWithInterface(const Step& step, ITxIQImbalanceHandler& compensation);
    void make(const Step& step);
    void change(const Step& step);
    void setPresence(const std::string& name, Presence presence);
    void plan(const Step& step, Handler& handler);
    void runPhase(std::int64_t phase);
    void destroyModule(std::int64_t slot);
    void destroyHandler(std::int64_t slot);
    void destroyCanceller(std::int64_t slot);
    void endStep();
    void tellValues();
    void answer(std::int32_t code) { m_transcript.note("answer", code); }

    /** An interface whose record is there and has nothing in it. */
    template <typename Record>
    class Wordless final : public IInterface_c {
    public:
        Wordless() { m_pCStruct = &m_record; }

    private:
        Record m_record{};
    };

    static Runner* s_current;

    Transcript& m_transcript;
    Wordless<DriverLayerInterface> m_driverLayerWithoutWords;
    Wordless<TemperatureHandlerCStruct> m_temperatureHandlerWithoutWords;
    Standalone::Platform m_platform;
    std::vector<Standalone::Driver*> m_drivers;
    std::vector<std::int32_t> m_readings;
    std::size_t m_readingsGiven = 0;
    std::int64_t m_calls = 0;
    std::function<void(std::size_t, const Standalone::Call&)> m_listener;
    std::size_t m_step = 0;
    std::optional<Disturbance> m_disturbance;

    struct FaultAt {
        std::int64_t call;
        bool forGood;
        Standalone::Fault fault;
        bool isLoaded = false;
    };
    std::optional<FaultAt> m_faultAt;
    std::vector<Standalone::Fault> m_faultsBeside;
    /** What messages meet on their way, and where. */
    Throws m_traceThrows = Throws::nothing;
    TracePlace m_tracePlace = TracePlace::mapping;

    /** What the story made. */
    struct Slots {
        Slots();
        Slots(const Slots&) = delete;
        Slots& operator=(const Slots&) = delete;
        ~Slots();
        std::vector<std::unique_ptr<ListeningObserver>> observers;
        std::vector<std::unique_ptr<ObserverInC>> observersInC;
        /** What the library makes of them, and leaves to live as long as the process. */
        std::vector<std::unique_ptr<Observer<IFrequencyHandler>>> wrappers;
        std::array<std::unique_ptr<::FrequencyHandler>, slotCount> modules;
        std::array<std::unique_ptr<Handler>, slotCount> handlers;
        std::array<std::unique_ptr<LoCancellation>, slotCount> cancellers;
        std::array<std::unique_ptr<CTxIQImbalanceHandler>, slotCount> compensations;
        /** The steps that made them. */
        std::array<Step, slotCount> moduleSteps{};
        std::array<Step, slotCount> handlerSteps{};
        std::array<Step, slotCount> cancellerSteps{};
    };
    Slots m_slots;
};

} // namespace Told

#endif

#ifndef BENCHMARKS_FLOOR_H
#define BENCHMARKS_FLOOR_H

#include "BenchmarkRadio.h"
#include "FrequencyPlan.h"
#include "IRauHandler.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Benchmarks {

/** What the floor looks at beside what it does. */
enum class Checks {
    /** Nothing: a driver is there, a call succeeds, a message is unwanted. */
    none,
    /** What has to be looked at, however it is written: threshold, driver, observer, and each result. */
    demanded,
    /** The same, and writes the messages that are wanted. */
    demandedAndMessages,
};

/**
 * The least code for what the library does: the same calls of the platform in the same order, with the same
 * arithmetic, as straight as it can be written for one direction of one board. Nothing is found at run time.
 * What happens when a check fails is of no interest here.
 */
template <Checks checks>
class Floor {
public:
    /**
     * For the last channel of `radio`, of which everything is used but the modules. `direction` is "Tx" or
     * "Rx", `ifFrequency`, in kHz, 0 for a board without an IF synthesiser.
     */
    Floor(BenchmarkRadio& radio, const std::string& direction, std::int32_t ifFrequency);

    // The write to hardware of each handler type, and of the receivers that differ from their transmitters.
    void setMicrowaveIf(std::uint32_t carrier);
    void setRfModule(std::uint32_t carrier);
    void setMicrowaveDspOffset(std::uint32_t carrier);
    void setMicrowaveDspOffsetRx(std::uint32_t carrier);
    void setMicrowaveHz(std::uint32_t carrier);
    /** The same for as many observers as the radio has; all others tell the one that they know. */
    void setMicrowaveHzForMany(std::uint32_t carrier);
    void setMicrowaveHzCsOffsetRx(std::uint32_t carrier);
    void setRauTx(std::uint32_t carrier);
    void setRauRx(std::uint32_t carrier);

    /** What follows a new transmit carrier on a board with LO cancellation. */
    void correct();
    void setTemperature(int temperature);
    void compensate(int temperature);
    /** One iteration of the calibration search in these ranges of I and Q. */
    void calibrate(std::int32_t iLow, std::int32_t iHigh, std::int32_t qLow, std::int32_t qHigh,
                   double shrinkFactor);

private:
    /** The two coordinates at which a range is probed. */
    using Probes = std::array<std::int32_t, 2>;

    template <typename... Arguments>
    void message(int level, const char* format, const Arguments&... arguments);
    static void write(const DriverInterface* driver, void* context, std::int32_t value);
    static void write(const DriverInterface* driver, std::uint32_t value);
    static void look(bool isGood);
    void accept(std::uint32_t carrier);
    void plan(std::uint32_t carrier, std::uint64_t rfPll);
    void setChargePump(std::uint32_t carrier);
    void writeLoInHz();
    void programMicrowaveHz(std::uint32_t carrier);
    void tell(Observer<IFrequencyHandler>* observer);
    void compensateOne(std::size_t which, void* context);
    void setIQ(std::int32_t i, std::int32_t q);
    std::int32_t readingAt(std::int32_t i, std::int32_t q);
    static std::int32_t truncated(double value);
    static std::int32_t narrow(std::int32_t& low, std::int32_t& high, bool isLowSideKept, double shrinkFactor,
                               Probes& next);

    RL::FrequencyHandler::FrequencyPlan::Parameters m_plan;
    std::uint32_t m_carrier = 0;
    std::uint64_t m_rfPll = 0;
    int m_temperature = 0;
    Probes m_probesI{};
    Probes m_probesQ{};
    int m_calibratedI = 0;
    int m_calibratedQ = 0;
    int m_maxDelta = 0;
    int m_channel;
    const char* m_direction;
    OrbiTrace m_trace;
    const std::int32_t* m_channelSpacingOffsets;
    Observer<IFrequencyHandler>* m_observer;
    std::vector<Observer<IFrequencyHandler>*> m_observers;
    DriverInterface* m_rfFrequency;
    DriverInterface* m_rfLo;
    DriverInterface* m_rfLoInHz;
    DriverInterface* m_if;
    DriverInterface* m_pllConfiguration;
    DriverInterface* m_dspOffset;
    DriverInterface* m_mixerI;
    DriverInterface* m_mixerQ;
    DriverInterface* m_detector;
    std::array<DriverInterface*, 4> m_compensations;
    CalibrationTable* m_chargePump;
    CalibrationTable* m_tableI;
    CalibrationTable* m_tableQ;
    std::array<CalibrationTable*, 4> m_compensationTables;
    IRauHandler* m_rau;
};

} // namespace Benchmarks

#endif

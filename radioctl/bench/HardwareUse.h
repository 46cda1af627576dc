#ifndef RADIOCTL_BENCH_HARDWAREUSE_H
#define RADIOCTL_BENCH_HARDWAREUSE_H

#include "radio/board/Board.h"
#include "radio/session/Bench.h"
#include "radioctl/bench/HardwareOptions.h"
#include "radioctl/bench/HardwareReport.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace Radio {

/**
 * The hardware that a verb drives, if it was asked to: told to people from the first line to the last, and
 * left properly on every way out. Must outlive the radio.
 */
class HardwareUse final : public Devices::HardwareListener {
public:
    /**
     * Says on `out` whether anything reaches hardware, and takes the hardware if so: connects it and sees
     * that it is there. Throws InputError when it cannot be driven; then nothing was written. A broken pipe
     * does not end the program any more, and nobody who does not read keeps it from leaving. `events`, unless
     * it is null, is told the same as JSON and must outlive the object.
     */
    HardwareUse(const Board& board, const HardwareOptions& options, std::ostream& out, bool json,
                std::ostream* events = nullptr);
    /** Leaves, if nobody did. */
    ~HardwareUse() override;

    /** For the radio; null when it is simulated. */
    Devices::Hardware* hardware() { return m_bench ? &m_bench->hardware() : nullptr; }
    bool isReal() const { return m_bench.has_value(); }
    /** Tells what happened meanwhile; the temperature, if the sensor has read it anew. */
    std::optional<int> poll();
    /** Writes what is to be written in the end, and says so; gives false when something of that failed. Good
     * without hardware and the second time. */
    bool leave();
    /** What leave() would write on hardware, for a simulation that says so. */
    void tellLeaving(const Board& board) {
        tell([&](HardwareReport& report) { report.wouldLeave(board); });
    }

    /** The device whose connection was lost last, also when it is back; empty: none was. */
    const std::string& lostDevice() const { return m_lostDevice; }

    void lost(const std::string& device, const std::string& why) override {
        m_lostDevice = device;
        tell([&](HardwareReport& report) { report.lost(device, why); });
    }
    void back(const std::string& device) override {
        tell([&](HardwareReport& report) { report.back(device); });
    }
    void failed(const std::string& driver, const std::string& attribute, std::int32_t code) override {
        tell([&](HardwareReport& report) { report.failed(driver, attribute, code); });
    }
    void sensorFailed(const std::string& why) override {
        tell([&](HardwareReport& report) { report.sensorFailed(why); });
    }

private:
    void begin();
    template <typename Telling>
    void tell(const Telling& telling) {
        std::for_each(m_reports.begin(), m_reports.end(), telling);
    }

    std::vector<HardwareReport> m_reports;
    std::optional<Bench> m_bench;
    bool m_hasLeft = false;
    std::string m_lostDevice;
};

} // namespace Radio

#endif

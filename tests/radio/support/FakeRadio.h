#ifndef TESTS_RADIO_SUPPORT_FAKERADIO_H
#define TESTS_RADIO_SUPPORT_FAKERADIO_H

#include "radio/board/Board.h"
#include "radio/calibration/CalibrationBench.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Radio::Calibration {

/** In place of real hardware: a detector that reads how far I is from -480 and Q from 120. Or a logarithmic
 * one. */
class FakeRadio {
public:
    /** What stands behind one driver. */
    class Backing final : public Standalone::DriverBacking {
    public:
        Backing(FakeRadio& radio, std::string name) : m_radio(radio), m_name(std::move(name)) {}
        std::int32_t write(std::int64_t value) override { return m_radio.write(m_name, value); }
        std::int32_t read(std::int64_t& value) override {
            if (m_name == "analyser") {
                ++m_radio.looks;
                value = m_radio.analysed;
                return 0;
            }
            return m_radio.read(value);
        }

    private:
        FakeRadio& m_radio;
        std::string m_name;
    };

    explicit FakeRadio(const Board& board) {
        for (const Devices::DriverHardware& driver : board.hardware.description.drivers) {
            m_backings[driver.driver] = std::make_unique<Backing>(*this, driver.driver);
        }
    }

    CalibrationBench bench() {
        return {[this](std::string_view name) -> Standalone::DriverBacking* {
                    const auto found = m_backings.find(name);
                    return found == m_backings.end() ? nullptr : found->second.get();
                },
                [this] { return nextTemperature(); }, [this] { return nextTemperature(); },
                [this] { return m_now += timeBetweenQuestions; }, [this] { return nextWord(); }};
    }

    /** "lo", "i", "q" or "chamber", and what was written, in order. */
    std::vector<std::string> writes;
    unsigned reads = 0;
    /** How often the analyser was read. */
    unsigned looks = 0;
    /** Told of each write before it is carried out. */
    std::function<void()> beforeWrite = [] {};
    /** From this read on the detector fails; 0: never. */
    unsigned failsAtRead = 0;
    bool isTunable = true;
    /** The detector reads 499 to 501 whatever is set. */
    bool isStuck = false;
    /** It reads 25 for each dB, and 0 at -95 dBc, of corrections that add 0.01 % of the signal's amplitude
     * each, over a floor of -85 dBc. */
    bool isLogarithmic = false;
    /** In dBc, and with isLogarithmic: what no correction takes away. */
    double uncancelled = -120.0;
    /** In hundredths of dBc: what an analyser reads whatever is set. */
    std::int64_t analysed = -8000;
    /** By how much the time goes on whenever somebody looks at the clock. */
    std::chrono::minutes timeBetweenQuestions{0};
    /** What a person says one time after the other. */
    std::deque<PersonsWord> words{};
    /** What the sensor says one time after the other; the last for ever. */
    std::deque<int> temperatures = {25};

    std::vector<std::string> writesTo(const std::string& name) const {
        std::vector<std::string> those;
        std::copy_if(writes.begin(), writes.end(), std::back_inserter(those),
                     [&](const std::string& write) { return write.rfind(name + " ", 0) == 0; });
        return those;
    }

private:
    static std::string shortName(const std::string& driver) {
        return driver == "channel.1.tx.rf.mixer.i"   ? "i"
               : driver == "channel.1.tx.rf.mixer.q" ? "q"
               : driver == "chamber"                 ? "chamber"
                                                     : "lo";
    }

    std::int32_t write(const std::string& driver, std::int64_t value) {
        beforeWrite();
        const std::string name = shortName(driver);
        if (name == "lo" && !isTunable) {
            return 0x816e;
        }
        (name == "i" ? m_i : name == "q" ? m_q : m_other) = value;
        writes.push_back(name + " " + std::to_string(value));
        if (name == "chamber") {
            temperatures = {static_cast<int>(value)};
        }
        return 0;
    }

    double logarithmOf(double off) const {
        const auto power = [](double level) { return std::pow(10.0, level / 10.0); };
        const double all = off * off * 1e-8 + power(uncancelled) + power(-85.0);
        return 25.0 * (10.0 * std::log10(all) + 95.0);
    }

    std::int32_t read(std::int64_t& value) {
        ++reads;
        if (failsAtRead != 0 && reads >= failsAtRead) {
            return 0x816e;
        }
        if (isStuck) {
            value = 499 + static_cast<std::int64_t>(m_random() % 3);
            return 0;
        }
        const double off = std::hypot(static_cast<double>(m_i + 480), static_cast<double>(m_q - 120));
        value = std::llround(isLogarithmic ? logarithmOf(off) : off);
        return 0;
    }

    PersonsWord nextWord() {
        if (words.empty()) {
            return {};
        }
        const PersonsWord word = words.front();
        words.pop_front();
        return word;
    }

    std::optional<int> nextTemperature() {
        if (temperatures.empty()) {
            return std::nullopt;
        }
        const int now = temperatures.front();
        if (temperatures.size() > 1) {
            temperatures.pop_front();
        }
        return now;
    }

    std::map<std::string, std::unique_ptr<Backing>, std::less<>> m_backings;
    std::int64_t m_i = 0;
    std::int64_t m_q = 0;
    std::int64_t m_other = 0;
    std::minstd_rand m_random{1};
    std::chrono::steady_clock::time_point m_now{};
};

} // namespace Radio::Calibration

#endif

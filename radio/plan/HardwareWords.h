#ifndef RADIO_PLAN_HARDWAREWORDS_H
#define RADIO_PLAN_HARDWAREWORDS_H

#include "radio/board/PlatformWords.h"
#include "radio/plan/PlanParameters.h"
#include "standalone/Platform.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Radio::Plan {

/** The words that a change of carrier puts into hardware. */
enum class Word : std::uint8_t { dspOffset, ifPll, rfPll, chargePump, mixerI, mixerQ, carrier };
constexpr std::size_t wordCount = 7;

/** What is shown of a word, for example "IF PLL". */
std::string_view toString(Word word);

/** One value for each word; nothing for one that was not written. */
class HardwareWords {
public:
    std::optional<std::int64_t>& operator[](Word word) { return m_values[static_cast<std::size_t>(word)]; }
    const std::optional<std::int64_t>& operator[](Word word) const {
        return m_values[static_cast<std::size_t>(word)];
    }
    bool operator==(const HardwareWords& other) const { return m_values == other.m_values; }
    bool operator!=(const HardwareWords& other) const { return m_values != other.m_values; }
    /** The first word that `other` has otherwise; nothing when there is none. */
    std::optional<Word> firstDifference(const HardwareWords& other) const;

private:
    std::array<std::optional<std::int64_t>, wordCount> m_values;
};

/** Which driver takes which word, for one channel and direction. Borrows the drivers from the platform. */
class WordSources {
public:
    WordSources(Standalone::Platform& platform, const ChannelDescription& channel, Direction direction);

    /** From here on, words count as written. */
    void mark();
    /** The words that were written since mark(). The carrier of a remote radio unit always counts. */
    HardwareWords read() const;
    /** The driver that takes a word; empty when the board has none. */
    std::string nameOf(Word word) const;
    /** The word that a driver takes; nothing for one that takes none of them. */
    std::optional<Word> wordOf(std::string_view driver) const;

private:
    struct Source {
        Word word;
        const Standalone::Driver* driver;
        std::uint64_t writesBefore;
    };

    void add(Word word, const std::string& driver);

    void addMicrowaveBoard(const std::string& channelPrefix, const Build& build);

    Standalone::Platform& m_platform;
    std::vector<Source> m_sources;
    const Standalone::RauService* m_rau = nullptr;
    Direction m_direction;
};

} // namespace Radio::Plan

#endif

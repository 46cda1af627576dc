#include "radio/plan/HardwareWords.h"

#include "radio/board/BoardNames.h"

#include <algorithm>

namespace Radio::Plan {

std::string_view toString(Word word) {
    switch (word) {
    case Word::dspOffset:
        return "DSP offset";
    case Word::ifPll:
        return "IF PLL";
    case Word::rfPll:
        return "RF PLL";
    case Word::chargePump:
        return "charge pump";
    case Word::mixerI:
        return "mixer I";
    case Word::mixerQ:
        return "mixer Q";
    case Word::carrier:
        break;
    }
    return "carrier";
}

std::optional<Word> HardwareWords::firstDifference(const HardwareWords& other) const {
    const auto [mine, theirs] = std::mismatch(m_values.begin(), m_values.end(), other.m_values.begin());
    if (mine == m_values.end()) {
        return std::nullopt;
    }
    return static_cast<Word>(mine - m_values.begin());
}

WordSources::WordSources(Standalone::Platform& platform, const ChannelDescription& channel,
                         Direction direction)
    : m_platform(platform),
      m_direction(direction) {
    const std::string channelPrefix = "channel." + std::to_string(channel.number) + ".";
    if (const std::optional<Build> build = buildOf(channel.type, direction)) {
        addMicrowaveBoard(channelPrefix, *build);
    } else if (channel.type == ::FrequencyHandler::Rau) {
        const auto rau = platform.raus().find(rauName(channel.number));
        m_rau = rau == platform.raus().end() ? nullptr : rau->second.get();
    } else {
        add(Word::carrier, driverPrefix(channel.number, direction) + "rf.frequency");
    }
}

void WordSources::addMicrowaveBoard(const std::string& channelPrefix, const Build& build) {
    const std::string prefix = channelPrefix + std::string(toString(m_direction)) + ".";
    if (build.readsChannelSpacing()) {
        add(Word::dspOffset, channelPrefix + "dsp.rx.freq.offset");
    }
    if (build.hasIfSynthesiser) {
        add(Word::ifPll, prefix + "if.frequency");
    }
    add(Word::rfPll, prefix + (build.hasLoInHz ? "rf.lo.frequency.in.hz" : "rf.lo.frequency"));
    add(Word::chargePump, prefix + "rf.pll.config");
    if (m_direction == Direction::tx) {
        // A channel has either of them; without mixer inputs the coarse DC adjustment takes their place.
        add(Word::mixerI, channelPrefix + "tx.rf.mixer.i");
        add(Word::mixerI, channelPrefix + "tx.bb.iq.coarse.dc.i.v.adjust");
        add(Word::mixerQ, channelPrefix + "tx.rf.mixer.q");
        add(Word::mixerQ, channelPrefix + "tx.bb.iq.coarse.dc.q.v.adjust");
    }
}

void WordSources::add(Word word, const std::string& driver) {
    if (const Standalone::Driver* const found = m_platform.drivers().find(driver)) {
        m_sources.push_back({word, found, found->writes()});
    }
}

void WordSources::mark() {
    for (Source& source : m_sources) {
        source.writesBefore = source.driver->writes();
    }
}

HardwareWords WordSources::read() const {
    HardwareWords words;
    for (const Source& source : m_sources) {
        if (source.driver->writes() != source.writesBefore) {
            words[source.word] = source.driver->value();
        }
    }
    if (m_rau != nullptr) {
        words[Word::carrier] = static_cast<std::int64_t>(m_direction == Direction::tx ? m_rau->txFrequency()
                                                                                      : m_rau->rxFrequency());
    }
    return words;
}

std::string WordSources::nameOf(Word word) const {
    const auto source = std::find_if(m_sources.begin(), m_sources.end(),
                                     [word](const Source& candidate) { return candidate.word == word; });
    return source == m_sources.end() ? "" : source->driver->name();
}

std::optional<Word> WordSources::wordOf(std::string_view driver) const {
    const auto source = std::find_if(m_sources.begin(), m_sources.end(), [driver](const Source& candidate) {
        return candidate.driver->name() == driver;
    });
    return source == m_sources.end() ? std::nullopt : std::optional(source->word);
}

} // namespace Radio::Plan

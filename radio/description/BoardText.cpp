#include "radio/description/BoardText.h"

#include "radio/board/BoardNames.h"
#include "radio/board/CalibrationBounds.h"
#include "radio/description/Spelling.h"
#include "radio/text/Words.h"

#include <algorithm>
#include <numeric>
#include <sstream>

namespace Radio::Describing {

namespace {

/** "5", or "5 to 7". */
std::string rangeText(std::int64_t low, std::int64_t high) {
    return std::to_string(low) + (low == high ? "" : " to " + std::to_string(high));
}

constexpr const char* whenLate = " when the radio started; later it was";

class BoardWriter {
public:
    BoardWriter(const Inventory& inventory, std::vector<std::string>& notes)
        : m_inventory(inventory),
          m_notes(notes) {}

    std::string write(const Recordings::Header& header, const std::vector<std::string>& origin);

private:
    void writeHead(const Recordings::Header& header, const std::vector<std::string>& origin);
    void writeChannels();
    void writeSearch(const SeenSearch& search);
    void writeDrivers();
    void writeDriver(const SeenDriver& driver);
    void writeVariables();
    void writeVariable(const SeenVariable& variable);
    void writeTables();
    void writeTable(const SeenTable& table);
    void writeNodes(const SeenTable& table, const FittedTable& fitted);
    void writeInterfaces();
    void writeRasters();
    void writeRaster(int channel, bool isTx, const std::set<std::uint64_t>& carriers);
    void writeWhatIsUnknown();

    /** What was asked for and is not there, as a comment. */
    template <typename List, typename IsThere>
    void writeMissing(const List& list, IsThere isThere);
    template <typename List>
    void noteLate(const List& list);

    const Inventory& m_inventory;
    std::vector<std::string>& m_notes;
    std::ostringstream m_out;
};

std::string BoardWriter::write(const Recordings::Header& header, const std::vector<std::string>& origin) {
    writeHead(header, origin);
    writeChannels();
    writeDrivers();
    writeVariables();
    writeTables();
    writeInterfaces();
    writeRasters();
    writeWhatIsUnknown();
    return m_out.str();
}

void BoardWriter::writeHead(const Recordings::Header& header, const std::vector<std::string>& origin) {
    for (const std::string& line : origin) {
        m_out << "# " << commentText(line) << "\n";
    }
    m_out << "#\n# It has what the library asked for and what it was answered. What nobody asked for may be "
             "there "
             "all the same.\n";
    if (m_inventory.hasGap()) {
        m_out << "# The recording has a gap: the ring turned over. What happened in it is not known.\n";
        m_notes.emplace_back(
            "what happened in the gap of the recording (a larger RADIO_RECORDING_SIZE leaves none)");
    }
    if (m_inventory.namesLeftOut() != 0) {
        const std::string names = counted(m_inventory.namesLeftOut(), "name");
        m_out << "# Left out, since nothing on a board can be called so: " << names << ".\n";
        m_notes.push_back("what has " + names + " that nothing on a board can have");
    }
    m_out << "\n";
    m_out << "name = " << tomlText(header.board.empty() ? "Radio described from a recording" : header.board)
          << "\n";
    if (!header.unit.empty()) {
        m_out << "serial = " << tomlText(header.unit) << "\n";
    }
}

void BoardWriter::writeChannels() {
    for (const int number : m_inventory.channelsWithoutType()) {
        m_out << "\n# Channel " << number << " is left out: nothing that it did tells of which type it is.\n";
        m_notes.push_back("the type of channel " + std::to_string(number) + ", which is left out");
    }
    for (const SeenChannel& channel : m_inventory.channels()) {
        m_out << "\n[[channel]]\nnumber = " << channel.number << "\n";
        if (channel.isTypeConcluded) {
            m_out << "# The recording does not have its type: no other one asks for what it asked for.\n";
            m_notes.push_back("the type of channel " + std::to_string(channel.number) +
                              ", which was concluded");
        }
        m_out << "type = \"" << toString(channel.type) << "\"\n";
        if (channel.iqCompensation) {
            m_out << "iq_compensation = true\n";
        }
    }
    for (const SeenSearch& search : m_inventory.searches()) {
        if (m_inventory.channel(search.channel) != nullptr) {
            writeSearch(search);
        }
    }
}

/** What of the first search can stand in a board. */
void BoardWriter::writeSearch(const SeenSearch& search) {
    const auto range = [this](const char* key, std::int32_t low, std::int32_t high) {
        if (low < high && low >= correctionBounds.low && high <= correctionBounds.high) {
            m_out << key << " = [" << low << ", " << high << "]\n";
        }
    };
    const auto number = [this](const char* key, std::int32_t value, Range bounds) {
        if (value >= bounds.low && value <= bounds.high) {
            m_out << key << " = " << value << "\n";
        }
    };
    m_out << "\n# As the first search of the recording was asked for.\n[[calibration]]\nchannel = "
          << search.channel << "\nmethod = \"search\"\n";
    range("i_range", search.iLow, search.iHigh);
    range("q_range", search.qLow, search.qHigh);
    if (isShrinkFactor(search.shrinkFactor)) {
        m_out << "shrink_factor = " << search.shrinkFactor << "\n";
    }
    number("min_delta", search.minDelta, minDeltaBounds);
    number("max_iterations", search.maxIterations, iterationBounds);
    number("settle_time", search.settleTime, settleTimeBounds);
    m_out << "detector = " << (search.isHighDetector ? "\"high\"\n" : "\"low\"\n");
}

template <typename List, typename IsThere>
void BoardWriter::writeMissing(const List& list, IsThere isThere) {
    const char* heading = "# Asked for, and not there:\n";
    for (const auto& seen : list) {
        if (!isThere(seen)) {
            m_out << heading << "#     " << seen.name << (seen.isLate ? whenLate : "") << "\n";
            heading = "";
        }
    }
}

template <typename List>
void BoardWriter::noteLate(const List& list) {
    for (const auto& seen : list) {
        if (seen.isLate) {
            m_notes.push_back(seen.name + ", which the start-up did not find");
        }
    }
}

void BoardWriter::writeDrivers() {
    if (m_inventory.drivers().empty()) {
        return;
    }
    m_out << "\n# A value is what the first read gave.\n[drivers]\n";
    for (const SeenDriver& driver : m_inventory.drivers()) {
        if (driver.isThere()) {
            writeDriver(driver);
        }
    }
    writeMissing(m_inventory.drivers(), [](const SeenDriver& driver) { return driver.isThere(); });
    noteLate(m_inventory.drivers());
}

/** "written 3 times, -5 to 7" */
std::string useOf(const SeenDriver& driver) {
    std::vector<std::string> uses;
    if (driver.writes != 0) {
        uses.push_back("written " + counted(driver.writes, "time") + ", " +
                       rangeText(driver.lowest, driver.highest));
    }
    if (driver.refused != 0) {
        uses.push_back("refused " + counted(driver.refused, "time"));
    }
    if (driver.reads != 0) {
        uses.push_back("read " + counted(driver.reads, "time") + ", " +
                       rangeText(driver.lowestRead, driver.highestRead));
    }
    return joined(uses, "; ");
}

void BoardWriter::writeDriver(const SeenDriver& driver) {
    std::vector<std::string> keys;
    if (driver.reads != 0 && driver.firstRead != 0) {
        keys.push_back("value = " + std::to_string(driver.firstRead));
    }
    if (driver.missingWords() != 0) {
        std::vector<std::string> words;
        for (const std::string_view word : toStrings(driver.missingWords())) {
            words.push_back("\"" + std::string(word) + "\"");
        }
        keys.push_back("without = [" + joined(words, ", ") + "]");
    }
    const std::string use = useOf(driver);
    m_out << tomlText(driver.name) << (keys.empty() ? " = {}" : " = { " + joined(keys, ", ") + " }")
          << (use.empty() ? "" : " # " + use) << "\n";
    if (driver.hasChanged) {
        m_notes.push_back("that " + driver.name + " offered something else later");
    }
    if ((driver.offers.value_or(0) & ::Recording::Offers::unseen) != 0) {
        m_notes.push_back("what was done with " + driver.name + ", which has no context");
    }
}

void BoardWriter::writeVariables() {
    if (m_inventory.variables().empty()) {
        return;
    }
    m_out << "\n# As they were first.\n[variables]\n";
    for (const SeenVariable& variable : m_inventory.variables()) {
        if (variable.isThere) {
            writeVariable(variable);
        }
    }
    for (const SeenVariable& variable : m_inventory.variables()) {
        if (variable.isTooLong) {
            m_notes.push_back("the content of " + variable.name + ", which is too long");
        }
    }
    writeMissing(m_inventory.variables(), [](const SeenVariable& variable) { return variable.isThere; });
    noteLate(m_inventory.variables());
}

void BoardWriter::writeVariable(const SeenVariable& variable) {
    std::vector<std::int32_t> values = variable.values;
    const std::size_t places = std::max<std::size_t>(variable.places, 1);
    const bool isWhole = values.size() == places;
    values.resize(places);
    m_out << tomlText(variable.name) << " = "
          << (variable.isArray() ? tomlNumbers(values.data(), values.size()) : std::to_string(values.front()))
          << (variable.hasChanged ? " # changes later" : "") << "\n";
    if (!isWhole) {
        m_out << "# Of these, the first " << variable.values.size() << " were seen at first.\n";
        m_notes.push_back("the whole content of " + variable.name);
    }
}

void BoardWriter::writeTables() {
    if (!m_inventory.tables().empty()) {
        m_out << "\n# Tables are fitted: each gives the recorded answers again. Where its real nodes lie is "
                 "not known, nor what it "
                 "has below\n# the first node and above the last one; the values of these hold there.\n";
    }
    for (const SeenTable& table : m_inventory.tables()) {
        if (table.isThere) {
            writeTable(table);
        }
    }
    for (const SeenTable& table : m_inventory.tables()) {
        if (!table.isThere) {
            m_out << "\n# "
                  << (table.isTooLarge ? "Asked at too many places for a board file: "
                                       : "Asked for, and not there: ")
                  << table.name << (table.isLate ? whenLate : "") << "\n";
        }
        if (table.isTooLarge) {
            m_notes.push_back("what is in " + table.name + ", which was asked at too many places");
        }
    }
    noteLate(m_inventory.tables());
}

void BoardWriter::writeTable(const SeenTable& table) {
    m_out << "\n";
    if (table.answers.empty()) {
        const bool hasTwoAxes = isCancellationTable(table.name);
        m_out << "# Nobody looked anything up in it: its one node stands for nothing.\n[tables."
              << tomlText(table.name)
              << (hasTwoAxes ? "]\naxes = [[0], [0]]\nvalues = [[0]]\n" : "]\naxis = [0]\nvalues = [0]\n");
        m_notes.push_back("what is in " + table.name);
        return;
    }
    const FittedTable fitted = fitTable(table.answers, table.hasTwoAxes);
    m_out << "# Fitted from " << counted(table.lookups, "answer") << " at "
          << counted(table.answers.size(), "place") << ".\n";
    if (table.hasNoHandle) {
        m_out << "# It was given without a handle: what all such tables answered is taken for its own.\n";
        m_notes.push_back("which answers are those of " + table.name);
    }
    if (fitted.guessed != 0) {
        m_out << "# " << fitted.guessed
              << " of the values nobody asked for: they lie between those beside them.\n";
    }
    if (table.contradictions != 0) {
        m_out << "# Other answers than the first one at the same place: " << table.contradictions << ".\n";
        m_notes.push_back("that " + table.name + " changed");
    }
    writeNodes(table, fitted);
}

void BoardWriter::writeNodes(const SeenTable& table, const FittedTable& fitted) {
    m_out << "[tables." << tomlText(table.name) << "]\n";
    const auto list = [](const std::vector<std::int32_t>& numbers) {
        return tomlNumbers(numbers.data(), numbers.size());
    };
    if (fitted.axis2.empty()) {
        m_out << "axis = " << list(fitted.axis1) << "\nvalues = " << list(fitted.values) << "\n";
        return;
    }
    m_out << "axes = [" << list(fitted.axis1) << ", " << list(fitted.axis2) << "]\nvalues = [\n";
    for (std::size_t row = 0; row < fitted.axis1.size(); ++row) {
        m_out << "    " << tomlNumbers(&fitted.values[row * fitted.axis2.size()], fitted.axis2.size())
              << ",\n";
    }
    m_out << "]\n";
}

void BoardWriter::writeInterfaces() {
    const char* heading = "\n[interfaces]\n";
    for (const SeenInterface& interface : m_inventory.interfaces()) {
        const bool isRau = rauChannel(interface.name).has_value();
        if (isRau || interface.presence != Standalone::Presence::present) {
            m_out << heading << tomlText(interface.name) << " = \"" << toString(interface.presence) << "\"\n";
            heading = "";
        }
    }
}

void BoardWriter::writeRasters() {
    for (const auto& [whose, carriers] : m_inventory.carriers()) {
        if (m_inventory.channel(whose.first) != nullptr) {
            writeRaster(whose.first, whose.second, carriers);
        }
    }
}

void BoardWriter::writeRaster(int channel, bool isTx, const std::set<std::uint64_t>& carriers) {
    constexpr std::uint64_t highest = 2147483647;
    constexpr std::uint64_t mostCarriers = 10000000;
    const std::uint64_t first = *carriers.begin();
    const std::uint64_t last = *carriers.rbegin();
    const std::string whose = "channel " + std::to_string(channel) + (isTx ? ", transmitter" : ", receiver");
    std::uint64_t step = 0;
    for (const std::uint64_t carrier : carriers) {
        step = std::gcd(step, carrier - first);
    }
    step = std::max<std::uint64_t>(step, 1);
    if (first == 0 || last > highest || (last - first) / step >= mostCarriers) {
        m_out << "\n# No raster has the carriers of " << whose << ": " << first << " to " << last
              << " kHz.\n";
        m_notes.push_back("a raster of " + whose);
        return;
    }
    m_out << "\n# The widest steps that meet " << (carriers.size() == 1 ? "the carrier" : "the carriers")
          << " seen: " << carriers.size() << ". The band may be wider.\n[[raster]]\nname = \"seen: " << whose
          << "\"\nchannels = [" << channel << "]\ndirection = \"" << (isTx ? "tx" : "rx")
          << "\"\nfirst = " << first << "\nlast = " << last << "\nstep = " << step << "\n";
}

void BoardWriter::writeWhatIsUnknown() {
    m_out << "\n# A recording does not say what the hardware can do: [limits], [hardware] and [sensor] are "
             "left to be "
             "written.\n";
    if (m_inventory.temperatures()) {
        m_out << "# The temperatures that were told: "
              << rangeText(m_inventory.temperatures()->low, m_inventory.temperatures()->high)
              << " degrees Celsius.\n";
    }
    m_out << "# Nor does it say how a transmitter leaks: there is no [[transmitter]] and no [[leakage]].\n";
}

} // namespace

std::string boardText(const Inventory& inventory, const Recordings::Header& header,
                      const std::vector<std::string>& origin, std::vector<std::string>& notes) {
    return BoardWriter(inventory, notes).write(header, origin);
}

} // namespace Radio::Describing

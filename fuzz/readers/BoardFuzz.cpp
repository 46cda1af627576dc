// Board descriptions: what is read, what radioctl check says of it, and the models that are read with it.

#include "Rules.h"
#include "radio/board/BoardCheck.h"
#include "radio/board/BoardFile.h"
#include "radio/board/BoardNames.h"
#include "radio/tables/Lint.h"

#include <algorithm>

namespace {

using namespace Radio;

const std::string fileName = "radio.toml";
const std::string csvName = "t.csv";

/** The one file beside the board. */
std::optional<CsvFile> csvBeside(const std::filesystem::path& file) {
    static const CsvFile csv("frequency_khz,temperature_c,i,q\n1,2,3,4\n", csvName, "a calibration table");
    return file == csvName ? std::optional(csv) : std::nullopt;
}

void requireFinding(const Finding& finding, std::string_view text) {
    Fuzz::requireMessage(toString(finding.place) + ": " + finding.text, fileName, text);
}

bool isWithin(std::int32_t value, const CorrectionBranch& branch) {
    return value >= branch.low && value <= branch.high;
}

void requireModel(const LeakageDescription& leakage) {
    for (const Surroundings& surroundings : {Surroundings{1, -100.0}, Surroundings{4294967295, 200.0}}) {
        const LoCorrections best = idealLoCorrections(leakage, surroundings);
        Fuzz::require(isWithin(best.i, leakage.i) && isWithin(best.q, leakage.q),
                      "corrections are within their ranges");
        const double level = leakageLevel(leakage, surroundings, best);
        Fuzz::require(level >= -120.0 && level <= 120.0, "a level can be measured");
        const std::int32_t reading =
            detectorReading(leakage.detector, detectorOutput(leakage.detector, level));
        Fuzz::require(reading >= leakage.detector.low && reading <= leakage.detector.high,
                      "a reading is within its range");
    }
}

void requireModel(const TransmitterDescription& transmitter) {
    for (const double temperature : {-100.0, 25.0, 200.0}) {
        const IqCleanliness clean =
            cleanlinessOf(transmitter, temperature, idealCorrections(transmitter, temperature));
        Fuzz::require(clean.image >= -120.0 && clean.image <= 120.0, "an image can be measured");
        Fuzz::require(clean.carrierLeakage >= -120.0 && clean.carrierLeakage <= 120.0,
                      "a carrier can be measured");
    }
}

void requireRules(const Board& board, std::string_view text) {
    for (const Finding& finding : checkBoard(board)) {
        requireFinding(finding, text);
    }
    for (const ChannelDescription& channel : board.channels) {
        const std::optional<Range> band = transmitBand(board, channel.number);
        Fuzz::require(!band || (band->low >= 1 && band->low <= band->high && band->high <= 4294967295),
                      "a band has carriers that can be tuned to");
    }
    for (const LeakageDescription& leakage : board.leakages) {
        requireModel(leakage);
    }
    for (const TransmitterDescription& transmitter : board.transmitters) {
        requireModel(transmitter);
    }
}

/** The tables that stand in the board itself. */
void requireTables(const Board& board, std::string_view text) {
    if (std::none_of(board.tables.begin(), board.tables.end(),
                     [](const TableDescription& table) { return table.isThere() && !table.file.empty(); })) {
        Fuzz::accepts(fileName, text, [&] {
            for (const Finding& finding : Tables::lintBoard(board)) {
                requireFinding(finding, text);
            }
        });
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    try {
        const Board board = readBoard(text, fileName, csvBeside);
        requireRules(board, text);
        requireTables(board, text);
    } catch (const InputError& error) {
        const std::string_view message = error.what();
        const bool isOfCsv = message.substr(0, csvName.size()) == csvName;
        Fuzz::requireMessage(message, isOfCsv ? csvName : fileName, text);
    }
    return 0;
}

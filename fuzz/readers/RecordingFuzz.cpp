// Recordings, and what radioctl record show, record diff and describe make of them. Of the header, the empty
// end is left out of an input.

#include "Rules.h"
#include "radio/board/BoardFile.h"
#include "radio/board/BoardNames.h"
#include "radio/description/Description.h"
#include "radio/language/CommandCheck.h"
#include "radio/language/CommandParser.h"
#include "radio/recording/Comparison.h"
#include "radio/recording/RecordingFile.h"
#include "radioctl/record/ComparisonReport.h"
#include "radioctl/record/RecordingJson.h"
#include "radioctl/record/RecordingText.h"

#include <algorithm>
#include <sstream>

namespace {

using namespace Radio::Recordings;

const std::string fileName = "radio.rec";
constexpr std::size_t headerPart = 384;

std::string whole(std::string_view input) {
    std::string bytes(input.substr(0, headerPart));
    if (input.size() > headerPart) {
        bytes.resize(Recording::headerBytes);
        bytes += input.substr(headerPart);
    }
    return bytes;
}

std::uint64_t requireOrder(RecordingFile& file) {
    std::uint64_t records = 0;
    std::uint64_t next = 0;
    while (const auto record = file.next()) {
        Fuzz::require(record->sequence >= next, "records ascend");
        Fuzz::require(record->bytes.size() <= Recording::mostBytes, "a record has as many bytes as it may");
        next = record->sequence + 1;
        ++records;
    }
    return records;
}

void requireHarmlessLines(const std::string& text) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        Fuzz::require(Fuzz::isHarmless(line), "output has nothing in it that a terminal obeys", line);
    }
}

/** Without what would make two lines of one, or none. */
void requireObjects(const std::string& text) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        const bool isObject = line.size() > 1 && line.front() == '{' && line.back() == '}';
        const bool isLine = std::none_of(line.begin(), line.end(), [](char character) {
            return static_cast<unsigned char>(character) < 0x20;
        });
        Fuzz::require(isObject && isLine, "an event is one JSON object in a line", line);
    }
}

/** What of all that can be shown is shown of an input: all of it takes more time than reading does. */
enum class Shown : std::uint8_t { text, json, differences, differencesAsJson };
constexpr unsigned shownWays = 4;

Shown shownOf(std::string_view input) {
    unsigned sum = 0;
    for (const char byte : input) {
        sum += static_cast<unsigned char>(byte);
    }
    return static_cast<Shown>(sum % shownWays);
}

void showText(RecordingFile& file) {
    std::ostringstream shown;
    RecordingText text(shown, file, true);
    text.begin(fileName);
    file.rewind();
    Selection all(file, {});
    while (const auto seen = all.next()) {
        text.show(*seen);
    }
    text.end();
    requireHarmlessLines(shown.str());
}

void showJson(RecordingFile& file) {
    std::ostringstream told;
    RecordingJson json(told);
    json.begin(fileName, file);
    file.rewind();
    Selection all(file, {});
    while (const auto seen = all.next()) {
        json.show(*seen);
    }
    json.end(file);
    requireObjects(told.str());
}

void select(RecordingFile& file) {
    file.rewind();
    Selection some(file, {1, "channel.1.tx.rf.frequency", 0.5, 100.0});
    while (const auto seen = some.next()) {
        Fuzz::require(seen->record.kind < Kind::finished || seen->channel == 1,
                      "what is shown was asked for");
    }
}

/** Every operation of either side is counted once, and shown without anything that a terminal obeys. */
void compare(RecordingFile& before, RecordingFile& after, const Wanted& wanted, Shown way) {
    const Comparison comparison(before, after, wanted);
    const Counts& counts = comparison.operations();
    const std::uint64_t same = counts.same + counts.different;
    Fuzz::require(same + counts.onlyBefore == comparison.before().steps().size() &&
                      same + counts.onlyAfter == comparison.after().steps().size(),
                  "every operation is counted once");
    constexpr std::uint64_t limit = 20;
    std::ostringstream shown;
    if (way == Shown::differences) {
        writeText(shown, comparison, {fileName, "other.rec", limit, true});
        requireHarmlessLines(shown.str());
    } else if (way == Shown::differencesAsJson) {
        writeJson(shown, comparison, {fileName, "other.rec", limit, true});
        requireObjects(shown.str());
    }
}

/** With itself, and with what it would be if its last records had not been written. */
void compare(const std::string& bytes, Shown way) {
    RecordingFile file(bytes, fileName);
    RecordingFile again(bytes, fileName);
    Fuzz::require(!Comparison(file, again, {}).operations().isDifferent(),
                  "a recording does not differ from itself");
    std::string shorter = bytes;
    shorter[Recording::At::claimed] = static_cast<char>(shorter[Recording::At::claimed] / 2);
    RecordingFile other(shorter, fileName);
    compare(file, other, {}, way);
    compare(other, again, {1, "channel.1.tx.rf.frequency", 0.5, 100.0}, way);
}

/** What is described can be used, and so can its script on it. */
void describe(RecordingFile& file) {
    const Radio::Describing::Description description =
        Radio::Describing::describe(file, fileName, "at some time");
    const Radio::Board board =
        Radio::readBoard(description.board, "radio.toml", [](const auto&) { return std::nullopt; });
    const Radio::CommandCheck check(board);
    std::istringstream lines(description.script);
    for (std::string line; std::getline(lines, line);) {
        if (const auto command = Radio::parseCommand(line)) {
            check.check(*command);
        }
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const std::string_view input{reinterpret_cast<const char*>(data), size};
    const std::string bytes = whole(input);
    const Shown way = shownOf(input);
    Fuzz::accepts(fileName, bytes, [&] {
        RecordingFile file(bytes, fileName);
        const std::uint64_t records = requireOrder(file);
        file.rewind();
        Fuzz::require(requireOrder(file) == records, "what is read again is the same");
        select(file);
        if (way == Shown::text) {
            showText(file);
        } else if (way == Shown::json) {
            showJson(file);
        }
        describe(file);
        compare(bytes, way);
    });
    return 0;
}

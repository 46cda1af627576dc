// Recordings, and what radioctl record show and describe make of them. Of the header, the empty end is left
// out of an input.

#include "Rules.h"
#include "radio/board/BoardFile.h"
#include "radio/board/BoardNames.h"
#include "radio/description/Description.h"
#include "radio/language/CommandCheck.h"
#include "radio/language/CommandParser.h"
#include "radio/recording/RecordingFile.h"
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

void show(RecordingFile& file) {
    std::ostringstream shown;
    RecordingText text(shown, file, true);
    std::ostringstream told;
    RecordingJson json(told);
    text.begin(fileName);
    json.begin(fileName, file);
    file.rewind();
    Selection all(file, {});
    while (const auto seen = all.next()) {
        text.show(*seen);
        json.show(*seen);
    }
    text.end();
    json.end(file);
    requireHarmlessLines(shown.str());
    file.rewind();
    Selection some(file, {1, "channel.1.tx.rf.frequency", 0.5, 100.0});
    while (const auto seen = some.next()) {
        Fuzz::require(seen->record.kind < Kind::finished || seen->channel == 1,
                      "what is shown was asked for");
    }
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
    const std::string bytes = whole({reinterpret_cast<const char*>(data), size});
    Fuzz::accepts(fileName, bytes, [&] {
        RecordingFile file(bytes, fileName);
        const std::uint64_t records = requireOrder(file);
        file.rewind();
        Fuzz::require(requireOrder(file) == records, "what is read again is the same");
        show(file);
        describe(file);
    });
    return 0;
}

#include "radio/board/BoardDraft.h"

#include "radio/board/BoardCheck.h"
#include "radio/board/BoardFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <vector>

namespace Radio {
namespace {

using ::FrequencyHandler;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

using Lines = std::vector<std::string>;

constexpr Range band{7425000, 7725000};

Board boardOf(const std::string& text) {
    return readBoard(text, "new.toml", [](const std::filesystem::path& /*file*/) { return std::nullopt; });
}

/** What check says of a draft: "error: NAME" or "warning: NAME" of what is missing. */
Lines openPoints(const std::string& text) {
    Lines lines;
    for (const Finding& finding : checkBoard(boardOf(text))) {
        std::smatch name;
        EXPECT_TRUE(std::regex_search(finding.text, name, std::regex("\"([^\"]*)\""))) << finding.text;
        lines.push_back(std::string(toString(finding.severity)) + ": " + name[1].str());
    }
    return lines;
}

/** The draft with every open line taken in: 2 for a number, one pair for the array. */
std::string filledIn(const std::string& text) {
    const std::string numbers = std::regex_replace(text, std::regex("\n#(\"[^\"]*\" = )\\.\\.\\."), "\n$012");
    return std::regex_replace(numbers, std::regex("\n#(\"[^\"]*\" = )\\[\\.\\.\\.\\]"), "\n$01[3, 4]");
}

TEST(BoardDraft, OfARadioWithoutFactsOfItsOwnIsComplete) {
    EXPECT_THAT(openPoints(draftBoard(FrequencyHandler::RfModule, band, "new")), IsEmpty());
    EXPECT_THAT(openPoints(draftBoard(FrequencyHandler::Rau, band, "new")), IsEmpty());
}

TEST(BoardDraft, LeavesOpenWhatOnlyTheMakerOfTheBoardKnows) {
    EXPECT_THAT(
        openPoints(draftBoard(FrequencyHandler::MicrowaveBoardIf, band, "new")),
        ElementsAre("error: channel.1.tx.mixer.multiplicationfactor",
                    "warning: channel.1.tx.rf.spectruminverted",
                    "warning: channel.1.tx.baseband.spectruminverted", "error: channel.1.tx.if.frequency",
                    "error: TxIfBb", "error: channel.1.rx.mixer.multiplicationfactor",
                    "warning: channel.1.rx.rf.spectruminverted",
                    "warning: channel.1.rx.baseband.spectruminverted", "error: channel.1.rx.if.frequency",
                    "error: RxIfBb", "warning: Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.I",
                    "warning: Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.Q"));
}

TEST(BoardDraft, OfAnyTypeStartsOnceItIsFilledIn) {
    for (const std::string_view word : handlerTypeWords()) {
        const std::string text = filledIn(draftBoard(*handlerTypeFromString(word), band, "new"));
        EXPECT_THAT(text, Not(HasSubstr("\n#\""))) << word;
        for (const Finding& finding : checkBoard(boardOf(text))) {
            EXPECT_EQ(finding.severity, Severity::warning) << word << ": " << finding.text;
            EXPECT_THAT(finding.text, HasSubstr("makes it")) << word;
        }
    }
}

TEST(BoardDraft, HasACommentForEachOpenLine) {
    for (const std::string_view word : handlerTypeWords()) {
        const std::string text = draftBoard(*handlerTypeFromString(word), band, "new");
        // Two open lines have the same comment at most when they stand together; none has no comment.
        EXPECT_FALSE(std::regex_search(text, std::regex("\n\n#\"|\\[variables\\]\n#\""))) << word;
    }
}

TEST(BoardDraft, HasARasterOverTheBand) {
    const Board board = boardOf(draftBoard(FrequencyHandler::Rau, band, "new"));
    ASSERT_EQ(board.rasters.size(), 1U);
    ASSERT_EQ(board.rasters[0].rows.size(), 2U);
    EXPECT_EQ(board.rasters[0].rows[0].first, 7425000U);
    // 300 MHz, both ends counted.
    EXPECT_EQ(board.rasters[0].rows[0].count, 301U);
}

TEST(BoardDraft, CallsTheFileOfItsTablesAfterItself) {
    EXPECT_THAT(draftBoard(FrequencyHandler::MicrowaveBoardHz, band, "unit-7"),
                HasSubstr("file = \"unit-7.channel-1.csv\"\ncolumn = \"i\"\n"));
    // What a string of TOML would have to escape is not taken over.
    EXPECT_THAT(draftBoard(FrequencyHandler::MicrowaveBoardHz, band, "a\"b"),
                AllOf(HasSubstr("file = \"board.channel-1.csv\"\n"), Not(HasSubstr("a\"b"))));
}

} // namespace
} // namespace Radio

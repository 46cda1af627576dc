// The recorder before radioctl, on the stand-alone platform: every board of the project.

#include "tests/recording/RecordedProcess.h"

namespace {

using namespace Radio::Recordings;
using testing::HasSubstr;

class RecordedBoardTest : public RecordedProcess, public testing::WithParamInterface<const char*> {
protected:
    static std::string run(const std::string& board) {
        const std::string path = std::string(RADIO_BOARDS) + "/" + board;
        return std::string(RADIOCTL_PROGRAM) + " run -v " + path + ".toml " + path + ".script";
    }
};

using RecordedRunTest = RecordedBoardTest;

} // namespace

TEST_P(RecordedBoardTest, TranscriptIsTheSameWithAndWithoutIt) {
    const Ending with = recorded(run(GetParam()));
    const Ending without = unrecorded(run(GetParam()));
    EXPECT_EQ(with.output, without.output);
    EXPECT_EQ(with.errors, without.errors);
    EXPECT_EQ(with.exitCode, without.exitCode);
    RecordingFile file = recording();
    while (file.next()) {
    }
    EXPECT_EQ(file.header().passedOver, 0U);
    EXPECT_EQ(file.losses().unfinished, 0U);
}

INSTANTIATE_TEST_SUITE_P(All, RecordedBoardTest,
                         testing::Values("iq-compensation-18ghz", "ka-band-28ghz", "lo-leakage-18ghz",
                                         "microwave-dsp-offset-80ghz", "microwave-hz-23ghz",
                                         "microwave-hz-cs-offset-18ghz", "microwave-if-8ghz", "rau-18ghz",
                                         "rf-module-7ghz"));

TEST_F(RecordedRunTest, TuningIsShownAsRunShowsIt) {
    recorded(run("microwave-hz-cs-offset-18ghz"));
    EXPECT_THAT(shown(), HasSubstr("\n> tune tx 1 17975000 kHz\n"
                                   "  1  channel.1.tx.rf.lo.frequency.in.hz <- 8987500000 (8 bytes)\n"
                                   "  2  channel.1.tx.rf.pll.config <- 39\n"
                                   "     tx 1 told its observer: 17975000 kHz\n"
                                   "  3  channel.1.tx.rf.mixer.i <- 537\n"
                                   "  4  channel.1.tx.rf.mixer.q <- -223\n"));
}

TEST_F(RecordedRunTest, ContentsThatAreReadThroughAddressesAreInIt) {
    recorded(run("microwave-hz-cs-offset-18ghz"));
    EXPECT_THAT(
        shown(),
        HasSubstr("\nchannel.1.rx.rf.frequency.cs.offset.array is now 27,15000,55,29000,110,57000\n"));
    EXPECT_THAT(shown(), HasSubstr("\nChannelSpacing is now 110\n"));
}

TEST_F(RecordedRunTest, DcCorrectionsGetTheirDriversRecord) {
    recorded(run("iq-compensation-18ghz"));
    RecordingFile file = recording();
    std::size_t seen = 0;
    while (const auto record = file.next()) {
        if (record->kind == Kind::driverWrite && record->object->name.find(".dsp.tx.") != std::string::npos) {
            const bool isDc = record->object->name.find(".dc.compensation.") != std::string::npos;
            EXPECT_EQ(record->b, isDc ? 1 : 0) << record->object->name;
            ++seen;
        }
    }
    EXPECT_GT(seen, 20U);
}

TEST_F(RecordedRunTest, DriverThatIsAskedForComesWithWhatIsAroundIt) {
    recorded(run("rf-module-7ghz"));
    EXPECT_THAT(shown({{}, "channel.1.tx.rf.frequency", {}, {}}, true),
                HasSubstr("\n> tune tx 1 7442000 kHz\n"
                          "  1  channel.1.tx.rf.frequency <- 7442000\n"));
}

TEST_F(RecordedRunTest, ChannelThatIsAskedForIsTheOnlyOne) {
    recorded(run("rf-module-7ghz"));
    const std::string two = shown({2, "", {}, {}});
    EXPECT_THAT(two, HasSubstr("\n> build channel 2: rf-module\n\n> observe tx 2\n"));
    EXPECT_THAT(two, testing::Not(HasSubstr("channel 1")));
    EXPECT_THAT(two, testing::Not(HasSubstr("channel.1")));
}

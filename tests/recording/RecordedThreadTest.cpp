// Several threads, and their numbers.

#include "tests/recording/RecordedProcess.h"

namespace {

using namespace Radio::Recordings;

class RecordedThreadTest : public RecordedProcess {
protected:
    /** The threads that tuned, in the order in which they began. */
    static std::vector<unsigned> threadsIn(RecordingFile& file) {
        std::vector<unsigned> threads;
        while (const auto record = file.next()) {
            if (record->kind == Kind::setTx) {
                threads.push_back(record->thread);
            }
        }
        return threads;
    }
};

} // namespace

TEST_F(RecordedThreadTest, TwoAtOnceAreShownInTheOrderInWhichTheirCallsWereAnswered) {
    recorded(radio("at-once"));
    EXPECT_THAT(shown(), testing::HasSubstr("\n> tune tx 1 7442000 kHz\n"
                                            "\n> tune tx 2 7484000 kHz\n"
                                            "  1  channel.2.tx.rf.frequency <- 7484000\n"
                                            "  2  channel.1.tx.rf.frequency <- 7442000\n"));
    RecordingFile file = recording();
    EXPECT_THAT(threadsIn(file), testing::ElementsAre(2U, 3U));
}

TEST_F(RecordedThreadTest, OneThatEndsGivesItsNumberBack) {
    recorded(radio("threads 300"));
    RecordingFile file = recording();
    EXPECT_EQ(threadsIn(file), std::vector<unsigned>(300, 2));
}

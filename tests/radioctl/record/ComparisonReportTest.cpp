#include "radioctl/record/ComparisonReport.h"

#include "tests/radio/support/MadeUpRecording.h"

#include <gtest/gtest.h>

#include <sstream>

namespace Radio::Recordings {

namespace {

constexpr std::int32_t tx = static_cast<std::int32_t>(Kind::setTx);

/** A radio with a module, the driver of its transmitter, its observer and a variable. */
MadeUpRecording radio() {
    MadeUpRecording made(32, 64, 4);
    made.name(ObjectKind::module, 1, "FrequencyHandler", 1, 0);
    made.name(ObjectKind::driver, 2, "channel.1.tx.rf.frequency");
    made.name(ObjectKind::handler, 3, "IFrequencyHandler_Tx_1");
    made.name(ObjectKind::observer, 4, "", 3, 0);
    made.name(ObjectKind::variable, 5, "ChannelSpacing");
    return made;
}

/** Begins a frequency change after so many milliseconds. */
MadeUpRecording& begin(MadeUpRecording& made, std::int32_t khz, std::int32_t after) {
    return made.record(Kind::setTx, 1, 0, khz, 0, after * 1000000);
}
MadeUpRecording& write(MadeUpRecording& made, std::int32_t value, std::int32_t code = 0) {
    return made.record(Kind::driverWrite, 2, code, value, 0, 0, 0, 1);
}
MadeUpRecording& tell(MadeUpRecording& made, std::int32_t khz) {
    return made.record(Kind::observerTold, 4, 0, khz, 0, 0, 0, 1);
}
MadeUpRecording& end(MadeUpRecording& made, std::int32_t code = 0) {
    return made.record(Kind::finished, 1, code, tx);
}

MadeUpRecording oldRadio() {
    MadeUpRecording made = radio();
    made.text(::Recording::At::library, "libFrequencyHandler.so.1.0.0").text(::Recording::At::unit, "7");
    made.record(Kind::driverLookup, 2, 0, 1, 7);
    made.record(Kind::variableGet, 5, 0, 1, 1, 27);
    end(tell(write(begin(made, 7442000, 10), 7442000), 7442000));
    end(tell(write(begin(made, 7442025, 20), 7442025), 7442025));
    return end(tell(write(begin(made, 7442050, 30), 7442050), 7442050));
}

MadeUpRecording newRadio() {
    MadeUpRecording made = radio();
    made.text(::Recording::At::library, "libFrequencyHandler.so.1.1.0");
    made.record(Kind::driverLookup, 2, 0, 1, 3);
    made.record(Kind::variableGet, 5, 0x8001);
    end(tell(write(begin(made, 7442000, 11), 7442000), 7442000));
    end(tell(write(begin(made, 7442025, 22), 7442026, 0x8001), 7442025), 0x8000);
    return end(write(begin(made, 7442075, 33), 7442075));
}

class ComparisonReport : public testing::Test {
protected:
    ComparisonReport(const MadeUpRecording& before, const MadeUpRecording& after)
        : m_before(before.bytes(), "a.rec"),
          m_after(after.bytes(), "b.rec"),
          m_comparison(m_before, m_after, {}) {}
    ComparisonReport() : ComparisonReport(oldRadio(), newRadio()) {}

    std::string text() const {
        std::ostringstream out;
        writeText(out, m_comparison, style);
        return out.str();
    }
    std::string json() const {
        std::ostringstream out;
        writeJson(out, m_comparison, style);
        return out.str();
    }

    ComparisonStyle style{"a.rec", "b.rec"};

private:
    RecordingFile m_before;
    RecordingFile m_after;
    Comparison m_comparison;
};

/** An operation more, and one for which there was no room. */
class LongerReport : public ComparisonReport {
protected:
    LongerReport() : ComparisonReport(oldRadio(), longer()) {}

    static MadeUpRecording longer() {
        MadeUpRecording made = oldRadio();
        made.text(::Recording::At::unit, "7").word(::Recording::At::passedOver, 2);
        return end(tell(write(begin(made, 7442075, 40), 7442075), 7442075));
    }
};

class SameReport : public ComparisonReport {
protected:
    SameReport() : ComparisonReport(oldRadio(), oldRadio()) {}
};

} // namespace

TEST_F(ComparisonReport, ShowsWhatDiffers) {
    EXPECT_EQ(text(), "a.rec -> b.rec\n"
                      "  library: libFrequencyHandler.so.1.0.0 -> libFrequencyHandler.so.1.1.0\n"
                      "  unit: 7 -> unknown\n"
                      "  - variable ChannelSpacing, which the other was asked for and has not\n"
                      "\n"
                      "- driver-lookup channel.1.tx.rf.frequency with context, write, write a buffer\n"
                      "+ driver-lookup channel.1.tx.rf.frequency with context, write\n"
                      "- variable-get ChannelSpacing = 27\n"
                      "+ variable-get ChannelSpacing: nothing  FAILED 0x8001\n"
                      "\n"
                      "> tune tx 1 7442025 kHz  (0.020000 s; 0.022000 s)\n"
                      "    - channel.1.tx.rf.frequency <- 7442025\n"
                      "    + channel.1.tx.rf.frequency <- 7442026  FAILED 0x8001\n"
                      "    - the operation was over and answered 0x0\n"
                      "    + the operation was over and answered 0x8000\n"
                      "\n"
                      "- tune tx 1 7442050 kHz  (0.030000 s)\n"
                      "+ tune tx 1 7442075 kHz  (0.033000 s)\n"
                      "    - channel.1.tx.rf.frequency <- 7442050\n"
                      "    + channel.1.tx.rf.frequency <- 7442075\n"
                      "    - tx 1 told its observer: 7442050 kHz\n"
                      "\n"
                      "1 operation the same, 4 different, 0 only in a.rec, 0 only in b.rec\n");
}

TEST_F(ComparisonReport, ShowsNoMoreThanIsWanted) {
    style.limit = 1;
    EXPECT_EQ(text(), "a.rec -> b.rec\n"
                      "  library: libFrequencyHandler.so.1.0.0 -> libFrequencyHandler.so.1.1.0\n"
                      "  unit: 7 -> unknown\n"
                      "  - variable ChannelSpacing, which the other was asked for and has not\n"
                      "\n"
                      "- driver-lookup channel.1.tx.rf.frequency with context, write, write a buffer\n"
                      "+ driver-lookup channel.1.tx.rf.frequency with context, write\n"
                      "\n"
                      "and 3 more\n"
                      "\n"
                      "1 operation the same, 4 different, 0 only in a.rec, 0 only in b.rec\n");
}

TEST_F(SameReport, IsItsSummary) {
    EXPECT_EQ(text(), "a.rec -> b.rec\n"
                      "\n"
                      "5 operations the same, 0 different, 0 only in a.rec, 0 only in b.rec\n");
    EXPECT_EQ(json(), R"({"schema":1,"event":"recordings_compared","before":"a.rec","after":"b.rec",)"
                      R"("same":5,"operations_different":0,"only_before":0,"only_after":0,"different":false,)"
                      R"("losses_before":{"overwritten_slots":0,"unfinished_slots":0,"passed_over":0},)"
                      R"("losses_after":{"overwritten_slots":0,"unfinished_slots":0,"passed_over":0}})"
                      "\n");
}

TEST_F(LongerReport, ShowsOperationsThatOneHasAloneWithoutTheirCalls) {
    EXPECT_EQ(text(), "a.rec -> b.rec\n"
                      "\n"
                      "+ tune tx 1 7442075 kHz  (0.040000 s)\n"
                      "\n"
                      "5 operations the same, 0 different, 0 only in a.rec, 1 only in b.rec\n"
                      "b.rec: 2 times there was no room\n");
}

TEST_F(LongerReport, ShowsTheirCallsWhenAsked) {
    style.verbose = true;
    style.limit = 2;
    EXPECT_EQ(text(), "a.rec -> b.rec\n"
                      "\n"
                      "+ tune tx 1 7442075 kHz  (0.040000 s)\n"
                      "    + channel.1.tx.rf.frequency <- 7442075\n"
                      "    + tx 1 told its observer: 7442075 kHz\n"
                      "    and 1 more\n"
                      "\n"
                      "5 operations the same, 0 different, 0 only in a.rec, 1 only in b.rec\n"
                      "b.rec: 2 times there was no room\n");
}

TEST_F(ComparisonReport, HasAnEventForEach) {
    style.limit = 1;
    EXPECT_EQ(json(),
              R"({"schema":1,"event":"header_difference","what":"library",)"
              R"("before":"libFrequencyHandler.so.1.0.0","after":"libFrequencyHandler.so.1.1.0"})"
              "\n"
              R"({"schema":1,"event":"header_difference","what":"unit","before":"7","after":""})"
              "\n"
              R"({"schema":1,"event":"object_difference","kind":"variable","name":"ChannelSpacing",)"
              R"("only_in":"before","asked_for_by_other":true})"
              "\n"
              R"({"schema":1,"event":"operation_difference","before":{"kind":"driver-lookup","sequence":0,)"
              R"("thread":1,"depth":0,"object":{"kind":"driver","name":"channel.1.tx.rf.frequency",)"
              R"("number":2,"first":0,"second":0},"channel":1,"found":1,"offers":7,"outcome":"returned",)"
              R"("code":0,"ok":true,"text":"driver-lookup channel.1.tx.rf.frequency with context, write, )"
              R"(write a buffer"},"after":{"kind":"driver-lookup","sequence":0,"thread":1,"depth":0,)"
              R"("object":{"kind":"driver","name":"channel.1.tx.rf.frequency","number":2,"first":0,)"
              R"("second":0},"channel":1,"found":1,"offers":3,"outcome":"returned","code":0,"ok":true,)"
              R"("text":"driver-lookup channel.1.tx.rf.frequency with context, write"},"calls":[],)"
              R"("same_calls":0,"different_calls":0,"calls_only_before":0,"calls_only_after":0})"
              "\n"
              R"({"schema":1,"event":"recordings_compared","before":"a.rec","after":"b.rec",)"
              R"("same":1,"operations_different":4,"only_before":0,"only_after":0,"different":true,)"
              R"("losses_before":{"overwritten_slots":0,"unfinished_slots":0,"passed_over":0},)"
              R"("losses_after":{"overwritten_slots":0,"unfinished_slots":0,"passed_over":0}})"
              "\n");
}

TEST_F(LongerReport, EventOfAnOperationHasItsCalls) {
    style.limit = 1;
    const std::string events = json();
    EXPECT_NE(
        events.find(R"({"schema":1,"event":"operation_difference","before":null,"after":{"kind":"tune-tx",)"
                    R"("sequence":14,"thread":1,"depth":0,"object":{"kind":"module",)"
                    R"("name":"FrequencyHandler","number":1,"first":1,"second":0},"channel":1,)"
                    R"("khz":7442075,"ns":40000000,"text":"tune tx 1 7442075 kHz"},)"
                    R"("calls":[{"before":null,"after":{"kind":"driver-write","sequence":15,"thread":1,)"
                    R"("depth":1,"object":{"kind":"driver","name":"channel.1.tx.rf.frequency","number":2,)"
                    R"("first":0,"second":0},"channel":1,"value":7442075,"by_record":0,)"
                    R"("outcome":"returned","code":0,"ok":true,)"
                    R"("text":"channel.1.tx.rf.frequency <- 7442075"}}],"same_calls":0,)"
                    R"("different_calls":0,"calls_only_before":0,"calls_only_after":3})"
                    "\n"),
        std::string::npos)
        << events;
}

} // namespace Radio::Recordings

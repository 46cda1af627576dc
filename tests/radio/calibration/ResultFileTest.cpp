#include "radio/calibration/ResultFile.h"

#include "tests/radio/support/FileFixture.h"

#include <sstream>
#include <stdexcept>

namespace Radio::Calibration {
namespace {

class ResultFileTest : public FileFixture {
protected:
    /** A calibration of two points. */
    static Result someResult() {
        Result result;
        result.serial = "AB-0042";
        result.date = "2026-03-01T09:30:00Z";
        result.version = "0.1.0";
        result.settings.channel = 2;
        result.settings.i = {-1000, 900};
        result.settings.q = {-800, 700};
        result.settings.shrinkFactor = 0.75;
        result.settings.minDelta = 1;
        result.settings.maxIterations = 40;
        result.settings.settleTime = 5;
        result.settings.useHighDetector = true;
        result.points = {point(18'000'000, -33, PointState::good, 433, -47),
                         point(18'192'500, -33, PointState::edge, 900, 0)};
        return result;
    }
    static Point point(std::uint32_t frequency, std::int32_t temperature, PointState state, std::int32_t i,
                       std::int32_t q) {
        Point point;
        point.frequency = frequency;
        point.temperature = temperature;
        point.state = state;
        point.i = i;
        point.q = q;
        point.before = -27.12;
        point.after = -71.4;
        point.iterations = 24;
        point.maxDelta = 1;
        return point;
    }
    static std::string written(const Result& result) {
        std::ostringstream out;
        writeResult(out, result);
        return out.str();
    }
    static Result readBack(const Result& result) {
        write("x.csv", written(result));
        return readResult("x.csv");
    }
    static Result withVerdict(VerdictKind verdict) {
        Result result = someResult();
        result.verdict = verdict;
        return result;
    }
    /** The message for a file in which `good` was replaced. */
    static std::string refusedWith(const std::string& good, const std::string& bad) {
        std::string text = someText;
        text.replace(text.find(good), good.size(), bad);
        write("x.csv", text);
        return refusal([] { readResult("x.csv"); });
    }

    static constexpr const char* someText =
        "# LO-leakage calibration\n"
        "# serial: AB-0042\n"
        "# channel: 2\n"
        "# date: 2026-03-01T09:30:00Z\n"
        "# tool: radioctl 0.1.0\n"
        "# i_range: -1000 900\n"
        "# q_range: -800 700\n"
        "# shrink_factor: 0.75\n"
        "# min_delta: 1\n"
        "# max_iterations: 40\n"
        "# settle_time_ms: 5\n"
        "# detector: high\n"
        "frequency_khz,temperature_c,i,q,before_dbc,after_dbc,iterations,max_delta,state\n"
        "18000000,-33,433,-47,-27.12,-71.40,24,1,good\n"
        "18192500,-33,900,0,-27.12,-71.40,24,1,edge\n";
};

TEST_F(ResultFileTest, IsWrittenAsPropertiesAndOneRowForEachPoint) {
    EXPECT_EQ(written(someResult()), someText);
}

TEST_F(ResultFileTest, PropertiesComeBack) {
    const Result read = readBack(someResult());
    EXPECT_EQ(read.serial, "AB-0042");
    EXPECT_EQ(read.date, "2026-03-01T09:30:00Z");
    EXPECT_EQ(read.version, "0.1.0");
    EXPECT_EQ(read.settings.channel, 2);
    EXPECT_TRUE(read.settings.useHighDetector);
}

TEST_F(ResultFileTest, SearchSettingsComeBack) {
    const Settings read = readBack(someResult()).settings;
    EXPECT_EQ(read.i.low, -1000);
    EXPECT_EQ(read.i.high, 900);
    EXPECT_EQ(read.q.low, -800);
    EXPECT_EQ(read.q.high, 700);
    EXPECT_EQ(read.minDelta, 1);
    EXPECT_EQ(read.maxIterations, 40U);
    EXPECT_EQ(read.settleTime, 5U);
}

TEST_F(ResultFileTest, ShrinkFactorComesBackToTheLastBit) {
    Result result = someResult();
    result.settings.shrinkFactor = 2.0 / 3.0;
    EXPECT_EQ(readBack(result).settings.shrinkFactor, 2.0 / 3.0);
}

TEST_F(ResultFileTest, PointsComeBack) {
    const std::vector<Point> points = readBack(someResult()).points;
    ASSERT_EQ(points.size(), 2U);
    EXPECT_EQ(points[0].frequency, 18'000'000U);
    EXPECT_EQ(points[0].temperature, -33);
    EXPECT_EQ(points[0].i, 433);
    EXPECT_EQ(points[0].q, -47);
    EXPECT_EQ(points[0].after, -71.4);
    EXPECT_EQ(points[0].iterations, 24U);
    EXPECT_EQ(points[0].maxDelta, 1);
    EXPECT_EQ(points[0].state, PointState::good);
    EXPECT_EQ(points[1].state, PointState::edge);
}

TEST_F(ResultFileTest, CarriersAndTemperaturesAreThoseOfThePoints) {
    Result result = someResult();
    result.points.push_back(point(18'000'000, 55, PointState::good, 1, 2));
    const Settings settings = readBack(result).settings;
    EXPECT_EQ(settings.frequencies, (std::vector<std::uint32_t>{18'000'000, 18'192'500}));
    EXPECT_EQ(settings.temperatures, (std::vector<std::int32_t>{-33, 55}));
}

TEST_F(ResultFileTest, SerialStaysOnOneLine) {
    Result result = someResult();
    result.serial = "A: \"B\", C\n18000000,-33,0,0";
    EXPECT_EQ(readBack(result).serial, "A: \"B\", C\\x0a18000000,'-33,0,0");
}

TEST_F(ResultFileTest, TextIsNoFormulaToASpreadsheet) {
    Result result = someResult();
    result.serial = "A,=1+1";
    result.station = "B;@SUM(A1)";
    EXPECT_NE(written(result).find("# serial: A,'=1+1\n# station: B;'@SUM(A1)\n"), std::string::npos);
    EXPECT_EQ(readBack(result).serial, "A,'=1+1");
}

TEST_F(ResultFileTest, PointThatFailedIsNotWritten) {
    Result result = someResult();
    result.points[1].state = PointState::failed;
    EXPECT_THROW(written(result), std::logic_error);
}

TEST_F(ResultFileTest, EveryPropertyIsNeeded) {
    for (const std::string key : {"serial", "channel", "date", "tool", "i_range", "q_range", "shrink_factor",
                                  "min_delta", "max_iterations", "settle_time_ms", "detector"}) {
        EXPECT_EQ(refusedWith("# " + key + ": ", "# other: "),
                  "x.csv: no line \"# " + key + ": ...\", expected it above the column names");
    }
}

TEST_F(ResultFileTest, EmptySerialIsRefused) {
    EXPECT_EQ(refusedWith("AB-0042", ""), "x.csv:2: serial: \"\", expected the serial number of the radio");
}

TEST_F(ResultFileTest, BadChannelIsRefused) {
    EXPECT_EQ(refusedWith("channel: 2", "channel: -1"),
              "x.csv:3: channel: \"-1\", expected a whole number from 0 to 2147483647");
}

TEST_F(ResultFileTest, FileOfAnotherToolIsRefused) {
    EXPECT_EQ(refusedWith("radioctl 0", "other 0"),
              "x.csv:5: tool: \"other 0.1.0\", expected \"radioctl\" and its version");
}

TEST_F(ResultFileTest, BadRangesAreRefused) {
    EXPECT_EQ(refusedWith("-1000 900", "-1000"), "x.csv:6: end of the range: \"\", expected a whole number "
                                                 "from -1000000000 to 1000000000");
    EXPECT_EQ(refusedWith("-1000 900", "900 -1000"),
              "x.csv:6: i_range: \"900 -1000\", expected the lowest value first");
    EXPECT_EQ(refusedWith("-800 700", "-800 700 1"),
              "x.csv:7: end of the range: \"700 1\", expected a whole number from -1000000000 to 1000000000");
}

TEST_F(ResultFileTest, BadSearchSettingsAreRefused) {
    EXPECT_EQ(refusedWith("0.75", "1"),
              "x.csv:8: shrink_factor: \"1\", expected a number between 0 and 1, such as 0.75");
    EXPECT_EQ(refusedWith("min_delta: 1", "min_delta: -1"),
              "x.csv:9: min_delta: \"-1\", expected a whole number from 0 to 1000000000");
    EXPECT_EQ(refusedWith("max_iterations: 40", "max_iterations: 0"),
              "x.csv:10: max_iterations: \"0\", expected a whole number from 1 to 1000");
    EXPECT_EQ(refusedWith("settle_time_ms: 5", "settle_time_ms: 60001"),
              "x.csv:11: settle_time_ms: \"60001\", expected a whole number from 0 to 60000");
    EXPECT_EQ(refusedWith("high", "middle"), "x.csv:12: detector: \"middle\", expected low or high");
}

TEST_F(ResultFileTest, MissingColumnIsRefused) {
    EXPECT_EQ(refusedWith("max_delta", "delta"),
              "x.csv:13: no column \"max_delta\"; there are: frequency_khz, temperature_c, i, q, before_dbc, "
              "after_dbc, iterations, delta, state");
}

TEST_F(ResultFileTest, BadPointsAreRefused) {
    EXPECT_EQ(refusedWith("18000000,", "0,"),
              "x.csv:14: frequency_khz: \"0\", expected a whole number from 1 to 2147483647");
    EXPECT_EQ(refusedWith("-33,", "-273,"),
              "x.csv:14: temperature_c: \"-273\", expected a whole number from -100 to 200");
    EXPECT_EQ(refusedWith(",433,", ",4.5,"),
              "x.csv:14: i: \"4.5\", expected a whole number from -1000000000 to 1000000000");
    EXPECT_EQ(refusedWith("-71.40", "low"),
              "x.csv:14: after_dbc: \"low\", expected a number from -1000 to 1000");
    EXPECT_EQ(refusedWith(",edge", ",failed"), "x.csv:15: state: \"failed\", expected good, missed or edge");
}

TEST_F(ResultFileTest, OnHardwareThereAreReadingsInPlaceOfLeakage) {
    Result result = someResult();
    result.isHardware = true;
    for (Point& point : result.points) {
        point.before.reset();
        point.after.reset();
        point.firstReading = 1650;
        point.lastReading = -3;
    }
    std::string expected = someText;
    const auto replace = [&expected](const std::string& part, const std::string& other) {
        for (std::size_t at = expected.find(part); at != std::string::npos; at = expected.find(part)) {
            expected.replace(at, part.size(), other);
        }
    };
    replace("radioctl 0.1.0\n# i_range", "radioctl 0.1.0\n# mode: hardware\n# i_range");
    replace("before_dbc,after_dbc", "first_reading,last_reading");
    replace("-27.12,-71.40", "1650,-3");
    EXPECT_EQ(written(result), expected);
    const Result read = readBack(result);
    EXPECT_TRUE(read.isHardware);
    EXPECT_EQ(read.points[0].firstReading, 1650);
    EXPECT_EQ(read.points[0].lastReading, -3);
    EXPECT_EQ(read.points[0].after, std::nullopt);
}

TEST_F(ResultFileTest, OtherModesAreRefused) {
    EXPECT_EQ(refusedWith("radioctl 0.1.0\n", "radioctl 0.1.0\n# mode: dream\n"),
              "x.csv:6: mode: \"dream\", expected hardware");
}

TEST_F(ResultFileTest, FileThatIsNotThereIsRefused) {
    EXPECT_EQ(refusal([] { readResult("none.csv"); }), "none.csv: cannot be read: No such file or directory");
}

TEST_F(ResultFileTest, VerdictStandsInTheFile) {
    EXPECT_NE(written(withVerdict(VerdictKind::pass)).find("\n# verdict: PASS\nfrequency_khz,"),
              std::string::npos);
    EXPECT_NE(written(withVerdict(VerdictKind::fail)).find("\n# verdict: FAIL (accepted)\n"),
              std::string::npos);
    EXPECT_EQ(written(withVerdict(VerdictKind::none)).find("verdict"), std::string::npos);
    for (const VerdictKind verdict : {VerdictKind::none, VerdictKind::pass, VerdictKind::fail}) {
        EXPECT_EQ(readBack(withVerdict(verdict)).verdict, verdict);
    }
}

TEST_F(ResultFileTest, ClaimOfAFitStandsInFrontOfTheVerdict) {
    Result result = withVerdict(VerdictKind::pass);
    result.settings.method = CalibrationMethod::fit;
    result.settings.budget = 400;
    result.nodes = result.points;
    EXPECT_EQ(written(result).find("claim"), std::string::npos);
    EXPECT_EQ(readBack(result).claim, std::nullopt);
    for (const bool isHardware : {false, true}) {
        result.isHardware = isHardware;
        result.claim = -75.5849;
        EXPECT_NE(written(result).find("\n# detector: high\n# claim_dbc: -75.58\n# verdict: PASS\n"),
                  std::string::npos);
        EXPECT_EQ(readBack(result).claim, -75.58);
    }
}

TEST_F(ResultFileTest, ClaimIsALevel) {
    EXPECT_EQ(refusedWith("# channel: 2\n", "# channel: 2\n# claim_dbc: low\n"),
              "x.csv:4: claim_dbc: \"low\", expected a number from -1000 to 1000");
}

TEST_F(ResultFileTest, UnknownVerdictIsRefused) {
    EXPECT_EQ(refusedWith("# channel: 2\n", "# channel: 2\n# verdict: good\n"),
              "x.csv:4: verdict: \"good\", expected PASS or FAIL (accepted)");
}

TEST_F(ResultFileTest, StationStandsInTheFileOnlyWhenSomebodySaidIt) {
    Result result = someResult();
    EXPECT_EQ(written(result).find("station"), std::string::npos);
    EXPECT_EQ(readBack(result).station, "");
    result.station = "Bench 3";
    EXPECT_NE(written(result).find("\n# station: Bench 3\n"), std::string::npos);
    EXPECT_EQ(readBack(result).station, "Bench 3");
}

TEST_F(ResultFileTest, PointThatMissedALimitIsReadBack) {
    Result result = someResult();
    result.points[0].state = PointState::missed;
    EXPECT_EQ(readBack(result).points[0].state, PointState::missed);
}

} // namespace
} // namespace Radio::Calibration

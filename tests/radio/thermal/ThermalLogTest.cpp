#include "radio/thermal/ThermalLog.h"

#include "radio/files/InputError.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

namespace Radio::Thermal {
namespace {

using Pairs = std::vector<std::pair<std::int64_t, std::int32_t>>;

class ThermalLogTest : public testing::Test {
public:
    ~ThermalLogTest() override { std::filesystem::remove(m_file); }

protected:
    Pairs read(const std::string& text) const {
        std::ofstream(m_file, std::ios::binary) << text;
        Pairs pairs;
        for (const Sample& sample : readThermalLog(m_file)) {
            pairs.emplace_back(sample.seconds, sample.degrees);
        }
        return pairs;
    }
    /** The message without the name of the file. */
    std::string refused(const std::string& text) const {
        try {
            read(text);
        } catch (const InputError& error) {
            return std::string(error.what()).substr(m_file.string().size());
        }
        return "accepted";
    }
    std::string refusedBelowHeading(const std::string& text) const {
        return refused("seconds,degrees\n" + text);
    }

private:
    std::filesystem::path m_file =
        testing::TempDir() + testing::UnitTest::GetInstance()->current_test_info()->name() + ".csv";
};

TEST_F(ThermalLogTest, SamplesStandBelowTheHeading) {
    EXPECT_EQ(read("seconds,degrees\n0,-33\n60,+5\n"), (Pairs{{0, -33}, {60, 5}}));
}

TEST_F(ThermalLogTest, CommentsEmptyLinesAndSpacesDoNotCount) {
    EXPECT_EQ(read("# summer\n\nseconds,degrees\n 0 , 20\n# noon\n\t\n60,21"), (Pairs{{0, 20}, {60, 21}}));
}

TEST_F(ThermalLogTest, FilesOfSpreadsheetsAreTaken) {
    EXPECT_EQ(read("\xEF\xBB\xBFseconds,degrees\r\n0,20\r\n"), (Pairs{{0, 20}}));
}

TEST_F(ThermalLogTest, EmptyFile) {
    EXPECT_EQ(refused(""), ": empty, expected the heading \"seconds,degrees\"");
}

TEST_F(ThermalLogTest, MissingHeading) {
    EXPECT_EQ(refused("0,20\n"), ":1: \"0,20\", expected the heading \"seconds,degrees\"");
}

TEST_F(ThermalLogTest, NoSamples) {
    EXPECT_EQ(refusedBelowHeading("# none\n"),
              ": no samples, expected lines such as \"60,-5\" below the heading");
}

TEST_F(ThermalLogTest, OneNumberOnly) {
    EXPECT_EQ(refusedBelowHeading("0,20\n60\n"),
              ":3: \"60\", expected two numbers with a comma between them, such as \"60,-5\"");
}

TEST_F(ThermalLogTest, ThreeNumbers) {
    EXPECT_EQ(refusedBelowHeading("0,20,1\n"),
              ":2: \"0,20,1\", expected two numbers with a comma between them, such as \"60,-5\"");
}

TEST_F(ThermalLogTest, DecimalsOfADegree) {
    EXPECT_EQ(refusedBelowHeading("0,20.5\n"), ":2: degrees: \"20.5\", expected a whole number from -100 to "
                                               "200, as the temperature service gives it");
}

TEST_F(ThermalLogTest, Kelvin) {
    EXPECT_EQ(refusedBelowHeading("0,293\n"), ":2: degrees: \"293\", expected a whole number from -100 to "
                                              "200, as the temperature service gives it");
}

TEST_F(ThermalLogTest, NoDegrees) {
    EXPECT_EQ(refusedBelowHeading("0,\n"), ":2: degrees: \"\", expected a whole number from -100 to 200, as "
                                           "the temperature service gives it");
}

TEST_F(ThermalLogTest, TimeOfDayInPlaceOfSeconds) {
    EXPECT_EQ(refusedBelowHeading("12:00,20\n"),
              ":2: seconds: \"12:00\", expected a whole number from 0 to 1000000000000");
}

TEST_F(ThermalLogTest, NegativeSeconds) {
    EXPECT_EQ(refusedBelowHeading("-1,20\n"),
              ":2: seconds: \"-1\", expected a whole number from 0 to 1000000000000");
}

TEST_F(ThermalLogTest, MoreSecondsThanFit) {
    EXPECT_EQ(refusedBelowHeading("99999999999999999999,20\n"),
              ":2: seconds: \"99999999999999999999\", expected a whole number from 0 to 1000000000000");
}

TEST_F(ThermalLogTest, TimeThatGoesBack) {
    EXPECT_EQ(refusedBelowHeading("60,20\n30,21\n"),
              ":3: second 30, expected more than the 60 of the sample before it");
}

TEST_F(ThermalLogTest, TwoSamplesInOneSecond) {
    EXPECT_EQ(refusedBelowHeading("60,20\n60,20\n"),
              ":3: second 60, expected more than the 60 of the sample before it");
}

TEST_F(ThermalLogTest, ZeroByteEndsNoLine) {
    EXPECT_EQ(
        refusedBelowHeading(std::string("0,20\0\n", 6)),
        ":2: degrees: \"20\\x00\", expected a whole number from -100 to 200, as the temperature service "
        "gives it");
}

TEST_F(ThermalLogTest, EndlessLine) {
    EXPECT_EQ(refusedBelowHeading(std::string(1000, '1')),
              ":2: longer than 255 characters, expected two numbers, such as \"60,-5\"");
}

TEST(ThermalLogFile, ThatIsNotThere) {
    try {
        readThermalLog("none.csv");
        FAIL() << "accepted";
    } catch (const InputError& error) {
        EXPECT_STREQ(error.what(),
                     "none.csv: cannot be read: No such file or directory, expected a temperature log");
    }
}

TEST(ThermalLogFile, ThatIsADirectory) {
    try {
        readThermalLog(".");
        FAIL() << "accepted";
    } catch (const InputError& error) {
        EXPECT_STREQ(error.what(), ".: cannot be read: Is a directory, expected a temperature log");
    }
}

TEST(ThermalLogFile, SuppliedLogsGoFromMinus33To55DegreesAtMost) {
    std::size_t logs = 0;
    for (const auto& entry : std::filesystem::directory_iterator(RADIO_BOARDS "/logs")) {
        ++logs;
        for (const Sample& sample : readThermalLog(entry.path())) {
            EXPECT_TRUE(sample.degrees >= -33 && sample.degrees <= 55) << entry.path();
        }
    }
    EXPECT_EQ(logs, 2U);
}

} // namespace
} // namespace Radio::Thermal

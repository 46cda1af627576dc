#include "calibration/Journal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace Radioctl::Calibration {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class CalibrationJournal : public testing::Test {
protected:
    CalibrationJournal() {
        std::string directory = testing::TempDir() + "journalXXXXXX";
        m_directory = mkdtemp(directory.data());
        file = m_directory / "test.journal";
    }
    ~CalibrationJournal() override { std::filesystem::remove_all(m_directory); }

    static JournalHeader header() {
        Settings settings;
        settings.channel = 3;
        settings.frequencies = {18000000, 18100000};
        settings.temperatures = {-10, 50};
        settings.i = {-1000, 1000};
        settings.q = {-900, 900};
        settings.shrinkFactor = 0.7;
        settings.minDelta = 2;
        settings.maxIterations = 30;
        settings.settleTime = 5;
        settings.useHighDetector = true;
        return {"Test radio", "T-1", "2026-03-01T09:30:00Z", "0.1.0", settings};
    }
    void write(const std::string& text) const { std::ofstream(file, std::ios::binary) << text; }
    std::string text() const {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    /** What is said about a journal whose second line is `line`. */
    std::string complaintAbout(const std::string& line) const {
        { Journal::begin(file, header()); }
        write(text() + line + "\n");
        return complaint();
    }
    std::string complaint() const {
        try {
            readJournal(file);
            return "none";
        } catch (const InputError& error) {
            return error.what();
        }
    }

    std::filesystem::path file;

private:
    std::filesystem::path m_directory;
};

TEST_F(CalibrationJournal, GivesBackItsHeader) {
    { Journal::begin(file, header()); }
    const JournalHeader read = readJournal(file).header;
    EXPECT_EQ(read.board, "Test radio");
    EXPECT_EQ(read.serial, "T-1");
    EXPECT_EQ(read.date, "2026-03-01T09:30:00Z");
    EXPECT_EQ(read.version, "0.1.0");
    EXPECT_EQ(read.settings.channel, 3);
    EXPECT_EQ(read.settings.frequencies, (std::vector<std::uint32_t>{18000000, 18100000}));
    EXPECT_EQ(read.settings.temperatures, (std::vector<std::int32_t>{-10, 50}));
    EXPECT_EQ(read.settings.i.low, -1000);
    EXPECT_EQ(read.settings.q.high, 900);
    EXPECT_EQ(read.settings.shrinkFactor, 0.7);
    EXPECT_EQ(read.settings.minDelta, 2);
    EXPECT_EQ(read.settings.maxIterations, 30U);
    EXPECT_EQ(read.settings.settleTime, 5U);
    EXPECT_TRUE(read.settings.useHighDetector);
}

TEST_F(CalibrationJournal, GivesBackProbesByPointInTheirOrder) {
    {
        Journal journal = Journal::begin(file, header());
        journal.enter(18000000, -10, {-1000, -900, 1234});
        journal.enter(18100000, -10, {1, 2, 3});
        journal.enter(18000000, -10, {1000, -900, std::nullopt});
    }
    const JournalContent content = readJournal(file);
    const JournaledProbes& probes = content.probes.at({-10, 18000000});
    ASSERT_EQ(probes.size(), 2U);
    EXPECT_EQ(probes[0].probe.i, -1000);
    EXPECT_EQ(probes[0].probe.q, -900);
    EXPECT_EQ(probes[0].probe.reading, 1234);
    EXPECT_EQ(probes[0].line, 2U);
    EXPECT_EQ(probes[1].probe.reading, std::nullopt);
    EXPECT_EQ(probes[1].line, 4U);
    EXPECT_FALSE(content.isFinished);
}

TEST_F(CalibrationJournal, ProbeIsInTheFileAtOnce) {
    Journal journal = Journal::begin(file, header());
    journal.enter(18000000, -10, {7, 8, 9});
    EXPECT_THAT(text(), HasSubstr(R"({"khz":18000000,"degrees":-10,"i":7,"q":8,"reading":9,"time":")"));
}

TEST_F(CalibrationJournal, KnowsThatItIsFinished) {
    Journal::begin(file, header()).finish();
    EXPECT_TRUE(readJournal(file).isFinished);
}

TEST_F(CalibrationJournal, ProbesBehindTheEndOpenItAgain) {
    Journal journal = Journal::begin(file, header());
    journal.finish();
    journal.enter(18000000, -10, {7, 8, 9});
    EXPECT_FALSE(readJournal(file).isFinished);
}

TEST_F(CalibrationJournal, LineThatWasCutOffWasNeverEntered) {
    Journal::begin(file, header()).enter(18000000, -10, {7, 8, 9});
    const std::string whole = text();
    write(whole + R"({"khz":18000000,"degrees":-10,"i":1)");
    const JournalContent content = readJournal(file);
    EXPECT_EQ(content.probes.at({-10, 18000000}).size(), 1U);
    EXPECT_EQ(content.size, whole.size());
}

TEST_F(CalibrationJournal, GoesOnWhereItsUsablePartEnds) {
    Journal::begin(file, header()).enter(18000000, -10, {7, 8, 9});
    const std::string whole = text();
    write(whole + R"({"khz":180000)");
    Journal journal = Journal::open(file);
    journal.cutOff(readJournal(file).size);
    journal.enter(18000000, -10, {1, 2, 3});
    EXPECT_EQ(readJournal(file).probes.at({-10, 18000000}).size(), 2U);
    EXPECT_THAT(text(), StartsWith(whole + R"({"khz":18000000,"degrees":-10,"i":1,"q":2,"reading":3,)"));
}

TEST_F(CalibrationJournal, NobodyElseCanOpenIt) {
    const Journal journal = Journal::begin(file, header());
    try {
        Journal::open(file);
        FAIL();
    } catch (const InputError& error) {
        EXPECT_EQ(std::string(error.what()), file.string() + ": another calibration is using it");
    }
}

TEST_F(CalibrationJournal, MissingFileIsNamed) {
    EXPECT_EQ(complaint(), file.string() + ": cannot be read: No such file or directory, expected a "
                                           "calibration journal");
}

TEST_F(CalibrationJournal, EmptyFileIsNoJournal) {
    write("");
    EXPECT_EQ(complaint(), file.string() + ": empty, expected a calibration journal");
}

TEST_F(CalibrationJournal, HeaderThatWasCutOffIsNoJournal) {
    write(R"({"journal":"LO-leak)");
    EXPECT_EQ(complaint(), file.string() + ": empty, expected a calibration journal");
}

TEST_F(CalibrationJournal, OtherFilesAreRefusedAtTheirFirstLine) {
    write("name = \"Test radio\"\n");
    EXPECT_THAT(complaint(), StartsWith(file.string() + ":1: not the beginning of a calibration journal: "));
    write("{}\n");
    EXPECT_THAT(complaint(), StartsWith(file.string() + ":1: not the beginning of a calibration journal: "));
    write("[1]\n");
    EXPECT_THAT(complaint(), StartsWith(file.string() + ":1: not the beginning of a calibration journal: "));
}

TEST_F(CalibrationJournal, LaterFormatIsRefused) {
    { Journal::begin(file, header()); }
    std::string changed = text();
    changed.replace(changed.find("\"format\":1"), 10, "\"format\":2");
    write(changed);
    EXPECT_EQ(complaint(), file.string() + ":1: not the beginning of a calibration journal: another kind of "
                                           "file, or of a later version of this program");
}

TEST_F(CalibrationJournal, LineThatIsNoProbeIsNamed) {
    for (const char* const line :
         {"", "what", "[]", "7", "{}", R"({"khz":18000000,"degrees":-10,"i":1,"q":2})",
          R"({"khz":18000000,"degrees":-10,"i":1.5,"q":2,"reading":3})",
          R"({"khz":18000000,"degrees":-10,"i":2147483648,"q":2,"reading":3})",
          R"({"khz":18000000,"degrees":-10,"i":1,"q":2,"reading":"x"})"}) {
        EXPECT_THAT(complaintAbout(line),
                    StartsWith(file.string() + ":2: not a probe of a calibration journal: "));
    }
}

/** What is said to somebody who wants to go on with a journal after `change`. */
template <typename Change>
std::string complaintAfter(JournalHeader wanted, const Change& change) {
    const JournalHeader begun = wanted;
    change(wanted);
    try {
        requireSameCalibration(wanted, begun, "x.journal");
        return "none";
    } catch (const InputError& error) {
        return error.what();
    }
}

TEST_F(CalibrationJournal, GoesOnWithTheSameCalibrationOnly) {
    EXPECT_EQ(complaintAfter(header(), [](JournalHeader& /*wanted*/) {}), "none");
    EXPECT_EQ(complaintAfter(header(), [](JournalHeader& wanted) { wanted.settings.minDelta = 5; }),
              "x.journal:1: min_delta: begun with 2, now asked for with 5; --restart begins anew");
    EXPECT_EQ(complaintAfter(header(), [](JournalHeader& wanted) { wanted.serial = "T-2"; }),
              "x.journal:1: serial: begun with \"T-1\", now asked for with \"T-2\"; --restart begins anew");
    EXPECT_EQ(complaintAfter(header(), [](JournalHeader& wanted) { wanted.board = "Other"; }),
              "x.journal:1: board: begun with \"Test radio\", now asked for with \"Other\"; --restart begins "
              "anew");
    EXPECT_EQ(
        complaintAfter(header(), [](JournalHeader& wanted) { wanted.settings.useHighDetector = false; }),
        "x.journal:1: detector: begun with \"high\", now asked for with \"low\"; --restart begins anew");
}

TEST_F(CalibrationJournal, DateAndToolMayDiffer) {
    EXPECT_EQ(complaintAfter(header(), [](JournalHeader& wanted) { wanted.date = wanted.version = "x"; }),
              "none");
}

TEST(UtcText, IsThatOfTheSecond) {
    EXPECT_EQ(utcText(std::chrono::system_clock::from_time_t(0)), "1970-01-01T00:00:00Z");
    EXPECT_EQ(utcText(std::chrono::system_clock::from_time_t(86399)), "1970-01-01T23:59:59Z");
}

TEST(UtcText, HasMillisecondsWhenAskedTo) {
    EXPECT_EQ(preciseUtcText(std::chrono::system_clock::from_time_t(1) + std::chrono::milliseconds(7)),
              "1970-01-01T00:00:01.007Z");
    EXPECT_EQ(preciseUtcText(std::chrono::system_clock::from_time_t(1)), "1970-01-01T00:00:01.000Z");
}

} // namespace
} // namespace Radioctl::Calibration

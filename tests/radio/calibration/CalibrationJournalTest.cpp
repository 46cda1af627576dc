#include "radio/calibration/Journal.h"
#include "radio/files/Backup.h"
#include "tests/radio/support/DiskSteps.h"
#include "tests/radio/support/FileSizeLimit.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

namespace Radio::Calibration {
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
        return {"Test radio", "T-1", "2026-03-01T09:30:00Z", "0.1.0", "0123456789abcdef", settings};
    }
    void write(const std::string& text) const { std::ofstream(file, std::ios::binary) << text; }
    std::string text() const { return text(file); }
    static std::string text(const std::filesystem::path& of) {
        std::ifstream stream(of, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    std::string name() const { return file.filename().string(); }
    /** What is said about a journal whose second line is `line`, and whose third one is good. */
    std::string complaintAbout(const std::string& line) const {
        std::filesystem::remove(file);
        { Journal::begin(file, header()); }
        write(text() + line + "\n" + R"({"khz":18000000,"degrees":-10,"i":1,"q":2,"reading":3})" + "\n");
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
    EXPECT_EQ(read.transmitter, "0123456789abcdef");
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

TEST_F(CalibrationJournal, IsOnTheDiskBeforeTheFirstProbe) {
    DiskSteps::forget();
    const Journal journal = Journal::begin(file, header());
    const std::string size = std::to_string(text().size());
    EXPECT_EQ(DiskSteps::taken(),
              (std::vector<std::string>{"sync " + name() + ".part, " + size + " bytes",
                                        "rename " + name() + ".part to " + name(), "sync folder"}));
}

TEST_F(CalibrationJournal, EachProbeIsOnTheDiskBeforeTheNextOne) {
    Journal journal = Journal::begin(file, header());
    for (const std::int32_t i : {7, 70, 700}) {
        DiskSteps::forget();
        journal.enter(18000000, -10, {i, 8, 9});
        EXPECT_EQ(DiskSteps::taken(), (std::vector<std::string>{"sync " + name() + ", " +
                                                                std::to_string(text().size()) + " bytes"}));
    }
}

TEST_F(CalibrationJournal, OneThatIsPutAwayIsThereUnderEitherNameWhenThePowerGoes) {
    Journal::begin(file, header()).enter(18000000, -10, {7, 8, 9});
    const std::string old = text();
    const std::string backup = file.string() + ".~1~";
    // Its name, the folder, the text of the new one, its name, the folder, and none of them.
    for (const unsigned step : {1U, 2U, 3U, 4U, 5U, 0U}) {
        const pid_t child = fork();
        if (child == 0) {
            DiskSteps::forget();
            DiskSteps::endInPlaceOf(step);
            Journal held = Journal::hold(file);
            moveToBackup(file);
            { const Journal journal = Journal::begin(file, header(), held); }
            _exit(0);
        }
        waitpid(child, nullptr, 0);
        EXPECT_EQ(text(step == 1 ? file : std::filesystem::path(backup)), old) << step;
        EXPECT_EQ(std::filesystem::exists(file), step == 1 || step == 5 || step == 0) << step;
        if (step != 1) {
            EXPECT_NO_THROW(Journal::hold(backup)) << step; // its lock is free
            std::filesystem::rename(backup, file);
        }
    }
}

TEST_F(CalibrationJournal, LockThatWasLeftWhenThePowerWentIsTakenOver) {
    { Journal::begin(file, header()); }
    const pid_t child = fork();
    if (child == 0) {
        DiskSteps::forget();
        DiskSteps::endInPlaceOf(1);
        Journal::open(file).finish();
    }
    waitpid(child, nullptr, 0);
    EXPECT_TRUE(std::filesystem::exists(file.string() + ".lock"));
    Journal::open(file).enter(18000000, -10, {7, 8, 9});
    EXPECT_FALSE(std::filesystem::exists(file.string() + ".lock"));
}

TEST_F(CalibrationJournal, WhoMayOnlyReadItKeepsNobodyFromIt) {
    { Journal::begin(file, header()); }
    const int reader = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(flock(reader, LOCK_EX), 0);
    Journal::open(file).enter(18000000, -10, {7, 8, 9});
    EXPECT_EQ(readJournal(file).probes.size(), 1U);
    close(reader);
}

TEST_F(CalibrationJournal, TakesOverTheLockOfOneThatIsPutAway) {
    { Journal::begin(file, header()); }
    Journal held = Journal::hold(file);
    std::filesystem::rename(file, file.string() + ".old");
    const Journal journal = Journal::begin(file, header(), held);
    EXPECT_THROW(Journal::open(file), InputError);
}

TEST_F(CalibrationJournal, UmaskThatLetsNobodyWriteDoesNotKeepItFromBeingWrittenOn) {
    const mode_t before = umask(0277);
    { Journal::begin(file, header()); }
    umask(before);
    EXPECT_EQ(std::filesystem::status(file).permissions(), static_cast<std::filesystem::perms>(0600));
    Journal::open(file).enter(18000000, -10, {7, 8, 9});
    EXPECT_EQ(readJournal(file).probes.size(), 1U);
}

TEST_F(CalibrationJournal, OverTwoGibibytesIsGoneOnWith) {
    { Journal::begin(file, header()); }
    const std::uintmax_t before = text().size();
    if (truncate(file.c_str(), off_t{3} << 30U) != 0) { // it has a hole in it
        GTEST_SKIP() << "no file of 3 GiB can be made here";
    }
    {
        Journal journal = Journal::open(file);
        EXPECT_EQ(std::filesystem::file_size(file), 3221225472U);
        journal.cutOff((std::uintmax_t{3} << 30U) - 1);
        EXPECT_EQ(std::filesystem::file_size(file), 3221225471U);
        journal.cutOff(before);
        journal.enter(18000000, -10, {7, 8, 9});
    }
    EXPECT_EQ(readJournal(file).probes.size(), 1U);
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

TEST_F(CalibrationJournal, HeldJournalIsNotOpenedByOthers) {
    { Journal::begin(file, header()); }
    const Journal journal = Journal::hold(file);
    EXPECT_THROW(Journal::open(file), InputError);
    EXPECT_THROW(Journal::hold(file), InputError);
}

TEST_F(CalibrationJournal, JournalThatIsOnlyReadableCanBeHeld) {
    { Journal::begin(file, header()); }
    std::filesystem::permissions(file, std::filesystem::perms::owner_read);
    EXPECT_NO_THROW(Journal::hold(file));
}

TEST_F(CalibrationJournal, WhatIsNoOrdinaryFileIsRefusedWithoutOpeningIt) {
    const auto complaintAbout = [&](const std::filesystem::path& place) {
        try {
            return std::string(isOrdinaryFile(place) ? "there" : "free");
        } catch (const InputError& error) {
            return std::string(error.what()).substr(place.string().size());
        }
    };
    EXPECT_EQ(complaintAbout(file), "free");
    EXPECT_EQ(complaintAbout(file.parent_path()), ": is a directory, expected a calibration journal");
    EXPECT_EQ(complaintAbout("/dev/null"), ": no ordinary file, expected a calibration journal");
    std::filesystem::create_symlink("nowhere", file);
    EXPECT_EQ(complaintAbout(file), ": a symbolic link that leads nowhere, expected a calibration journal");
    std::filesystem::remove(file);
    std::filesystem::create_symlink(file, file);
    EXPECT_EQ(complaintAbout(file), ": a symbolic link that leads nowhere, expected a calibration journal");
    std::filesystem::remove(file);
    ASSERT_EQ(mkfifo(file.c_str(), S_IRUSR | S_IWUSR), 0);
    EXPECT_EQ(complaintAbout(file), ": no ordinary file, expected a calibration journal");
    std::filesystem::remove(file);
    write("mine\n");
    EXPECT_EQ(complaintAbout(file), "there");
    EXPECT_EQ(complaintAbout(file / "x"), "free"); // whoever writes there is told why not
}

TEST_F(CalibrationJournal, FullDiskIsToldAndNothingBeforeIsLost) {
    Journal journal = Journal::begin(file, header());
    journal.enter(18000000, -10, {7, 8, 9});
    const std::string whole = text();
    {
        const FileSizeLimit limit(whole.size() + 20); // ends within the next line
        try {
            journal.enter(18000000, -10, {1, 2, 3});
            FAIL() << "there was room";
        } catch (const InputError& error) {
            EXPECT_EQ(std::string(error.what()),
                      file.string() + ": could not be written: File too large: the disk is full as far as "
                                      "one file may fill it");
        }
    }
    EXPECT_TRUE(journal.isFull());
    EXPECT_EQ(text().size(), whole.size() + 20);
    const JournalContent content = readJournal(file);
    EXPECT_EQ(content.probes.at({-10, 18000000}).size(), 1U);
    EXPECT_EQ(content.size, whole.size());
}

TEST_F(CalibrationJournal, JournalThatWasNeverFullSaysSo) {
    EXPECT_FALSE(Journal::begin(file, header()).isFull());
}

TEST_F(CalibrationJournal, MissingFileIsNamed) {
    EXPECT_EQ(complaint(), file.string() + ": cannot be read: No such file or directory, expected a "
                                           "calibration journal");
}

TEST_F(CalibrationJournal, EmptyFileIsNoJournal) {
    write("");
    EXPECT_EQ(complaint(), file.string() + ": has no whole line, expected a calibration journal");
}

TEST_F(CalibrationJournal, HeaderThatWasCutOffIsNoJournal) {
    write(R"({"journal":"LO-leak)");
    EXPECT_EQ(complaint(), file.string() + ": has no whole line, expected a calibration journal");
}

TEST_F(CalibrationJournal, OtherFilesAreRefusedAtTheirFirstLine) {
    for (const char* const text : {"name = \"Test radio\"\n", "{}\n", "[1]\n", "7\n", "\n"}) {
        write(text);
        EXPECT_EQ(complaint(),
                  file.string() + ":1: expected the JSON object with which a calibration journal begins");
    }
}

TEST_F(CalibrationJournal, LaterFormatIsRefused) {
    { Journal::begin(file, header()); }
    std::string changed = text();
    changed.replace(changed.find("\"format\":1"), 10, "\"format\":2");
    write(changed);
    EXPECT_EQ(complaint(), file.string() + ":1: another kind of file, or of a later version of this program");
}

TEST_F(CalibrationJournal, HeaderWithNumbersOutOfRangeIsRefused) {
    { Journal::begin(file, header()); }
    const std::string whole = text();
    const auto complaintWith = [&](const std::string& part, const std::string& other) {
        std::string changed = whole;
        changed.replace(changed.find(part), part.size(), other);
        write(changed);
        return complaint();
    };
    EXPECT_EQ(complaintWith("\"min_delta\":2", "\"min_delta\":1e300"),
              file.string() + ":1: expected a whole number from 0 to 1000000000, found number");
    EXPECT_EQ(complaintWith("\"min_delta\":2", "\"min_delta\":18446744073709551615"),
              file.string() + ":1: expected a whole number from 0 to 1000000000, found number");
    EXPECT_EQ(complaintWith("18000000,18100000", "18100000,18000000"),
              file.string() + ":1: not ascending numbers");
    EXPECT_EQ(complaintWith("18000000,18100000", "18000000,18000000"),
              file.string() + ":1: not ascending numbers");
    EXPECT_EQ(complaintWith("[-1000,1000]", "[1000,1000]"), file.string() + ":1: not a range");
    EXPECT_EQ(complaintWith("[-1000,1000]", "[-1000.5,1000]"),
              file.string() + ":1: expected a whole number from -1000000000 to 1000000000, found number");
    EXPECT_EQ(complaintWith("18100000", "4294967295"),
              file.string() + ":1: expected a whole number from 1 to 2147483647, found number");
}

TEST_F(CalibrationJournal, LineThatIsNoProbeIsNamed) {
    const std::string wanted =
        file.string() + ":2: expected a JSON object with khz, degrees, i, q and reading";
    for (const char* const line :
         {"", "what", "[]", "7", "{}", R"({"khz":18000000,"degrees":-10,"i":1,"q":2})"}) {
        EXPECT_EQ(complaintAbout(line), wanted) << line;
    }
}

TEST_F(CalibrationJournal, NumberThatIsNoneIsNamed) {
    const std::string wanted =
        file.string() + ":2: expected a whole number from -2147483648 to 2147483647, found ";
    EXPECT_EQ(complaintAbout(R"({"khz":18000000,"degrees":-10,"i":1.5,"q":2,"reading":3})"),
              wanted + "number");
    EXPECT_EQ(complaintAbout(R"({"khz":18000000,"degrees":-10,"i":2147483648,"q":2,"reading":3})"),
              wanted + "number");
    EXPECT_EQ(complaintAbout(R"({"khz":18000000,"degrees":-10,"i":1,"q":-2147483649,"reading":3})"),
              wanted + "number");
    EXPECT_EQ(complaintAbout(R"({"khz":18000000,"degrees":-10,"i":1,"q":2,"reading":"x"})"),
              wanted + "string");
}

TEST_F(CalibrationJournal, ProbeElsewhereIsNamed) {
    EXPECT_EQ(complaintAbout(R"({"khz":18050000,"degrees":-10,"i":1,"q":2,"reading":3})"),
              file.string() + ":2: no point at 18050000 kHz, -10 degrees");
    EXPECT_EQ(complaintAbout(R"({"khz":4312967296,"degrees":-10,"i":1,"q":2,"reading":3})"),
              file.string() + ":2: expected a whole number from 0 to 4294967295, found number");
}

TEST_F(CalibrationJournal, LastLineThatCannotBeReadWasNeverEntered) {
    Journal::begin(file, header()).enter(18000000, -10, {7, 8, 9});
    const std::string whole = text();
    write(whole + std::string(100, '\0') + "\n");
    const JournalContent content = readJournal(file);
    EXPECT_EQ(content.probes.at({-10, 18000000}).size(), 1U);
    EXPECT_EQ(content.size, whole.size());
}

TEST_F(CalibrationJournal, NothingIsWrittenOver) {
    write("mine\n");
    EXPECT_THROW(Journal::begin(file, header()), InputError);
    EXPECT_EQ(text(), "mine\n");
}

TEST_F(CalibrationJournal, LineMayBeAMebibyteLong) {
    Journal::begin(file, header()).enter(18000000, -10, {7, 8, 9});
    const std::string blanks(1024 * 1024 - text().find('\n'), ' ');
    write(blanks + text());
    EXPECT_EQ(readJournal(file).probes.at({-10, 18000000}).size(), 1U);
    write(' ' + text());
    EXPECT_EQ(complaint(),
              file.string() + ": has a line of more than a mebibyte, expected a calibration journal");
}

TEST_F(CalibrationJournal, EndlessLineIsNotReadToItsEnd) {
    write(std::string(2000000, 'x'));
    EXPECT_EQ(complaint(),
              file.string() + ": has a line of more than a mebibyte, expected a calibration journal");
}

TEST_F(CalibrationJournal, DirectoryIsNone) {
    EXPECT_THROW(readJournal(file.parent_path()), InputError);
}

/** A leakage that has everything. */
LeakageDescription leakage() {
    LeakageDescription leakage;
    leakage.paths = {{}};
    leakage.highDetector = DetectorDescription();
    return leakage;
}

TEST(TransmitterFingerprint, ChangesWithEveryNumber) {
    const std::string plain = fingerprintOf(leakage());
    const std::vector<std::function<void(LeakageDescription&)>> changes = {
        [](auto& l) { l.reference = 1; },
        [](auto& l) { l.paths[0].level = 1; },
        [](auto& l) { l.paths[0].levelPerDegree = 1; },
        [](auto& l) { l.paths[0].levelPerGHz = 1; },
        [](auto& l) { l.paths[0].phase = 1; },
        [](auto& l) { l.paths[0].phasePerDegree = 1; },
        [](auto& l) { l.paths[0].delay = 1; },
        [](auto& l) { l.paths.push_back({}); },
        [](auto& l) { l.i.gain = 1; },
        [](auto& l) { l.i.step = 2; },
        [](auto& l) { l.q.low = 1; },
        [](auto& l) { l.q.high = 1; },
        [](auto& l) { l.skew = 1; },
        [](auto& l) { l.detector.slope = 1; },
        [](auto& l) { l.detector.zero = 1; },
        [](auto& l) { l.detector.floor = 1; },
        [](auto& l) { l.detector.noise = 1; },
        [](auto& l) { l.detector.settling = 1; },
        [](auto& l) { l.detector.step = 2; },
        [](auto& l) { l.detector.low = 1; },
        [](auto& l) { l.detector.high = 1; },
        [](auto& l) { l.highDetector->high = 1; },
        [](auto& l) { l.highDetector.reset(); },
        [](auto& l) { l.seed = 1; },
    };
    for (std::size_t i = 0; i < changes.size(); ++i) {
        LeakageDescription changed = leakage();
        changes[i](changed);
        EXPECT_NE(fingerprintOf(changed), plain) << "change " << i;
    }
    EXPECT_EQ(fingerprintOf(leakage()), plain);
}

/** What is said to somebody who wants to go on with a journal after `change`. */
template <typename Change>
std::string complaintAfter(JournalHeader wanted, const Change& change) {
    const JournalHeader begun = wanted;
    change(wanted);
    try {
        requireSameCalibration(wanted, begun, "x.journal");
        return "none";
    } catch (const ChoiceError& error) {
        return std::string(error.what()) + "; " + error.choice();
    }
}

TEST_F(CalibrationJournal, GoesOnWithTheSameCalibrationOnly) {
    EXPECT_EQ(complaintAfter(header(), [](JournalHeader& /*wanted*/) {}), "none");
    EXPECT_EQ(complaintAfter(header(), [](JournalHeader& wanted) { wanted.settings.minDelta = 5; }),
              "x.journal:1: min_delta: begun with 2, now asked for with 5; restart");
    EXPECT_EQ(complaintAfter(header(), [](JournalHeader& wanted) { wanted.serial = "T-2"; }),
              "x.journal:1: serial: begun with \"T-1\", now asked for with \"T-2\"; restart");
    EXPECT_EQ(complaintAfter(header(), [](JournalHeader& wanted) { wanted.board = "Other"; }),
              "x.journal:1: board: begun with \"Test radio\", now asked for with \"Other\"; restart");
    EXPECT_EQ(
        complaintAfter(header(), [](JournalHeader& wanted) { wanted.settings.useHighDetector = false; }),
        "x.journal:1: detector: begun with \"high\", now asked for with \"low\"; restart");
}

TEST_F(CalibrationJournal, LongListsAreCounted) {
    EXPECT_EQ(complaintAfter(header(),
                             [](JournalHeader& wanted) { wanted.settings.frequencies = {1, 2, 3, 4, 5, 6}; }),
              "x.journal:1: frequencies_khz: begun with [18000000,18100000], now asked for with 6 others; "
              "restart");
}

TEST_F(CalibrationJournal, DateAndToolMayDiffer) {
    EXPECT_EQ(complaintAfter(header(), [](JournalHeader& wanted) { wanted.date = wanted.version = "x"; }),
              "none");
}

TEST(UtcText, IsThatOfTheSecond) {
    EXPECT_EQ(utcText(std::chrono::system_clock::from_time_t(0)), "1970-01-01T00:00:00Z");
    EXPECT_EQ(utcText(std::chrono::system_clock::from_time_t(86399)), "1970-01-01T23:59:59Z");
    // Beyond what 32 bits count.
    const std::chrono::system_clock::time_point begin;
    EXPECT_EQ(utcText(begin + std::chrono::seconds(2147483648)), "2038-01-19T03:14:08Z");
    EXPECT_EQ(utcText(begin + std::chrono::seconds(4102444800)), "2100-01-01T00:00:00Z");
}

TEST(UtcText, HasMillisecondsWhenAskedTo) {
    EXPECT_EQ(preciseUtcText(std::chrono::system_clock::from_time_t(1) + std::chrono::milliseconds(7)),
              "1970-01-01T00:00:01.007Z");
    EXPECT_EQ(preciseUtcText(std::chrono::system_clock::from_time_t(1)), "1970-01-01T00:00:01.000Z");
}

} // namespace
} // namespace Radio::Calibration

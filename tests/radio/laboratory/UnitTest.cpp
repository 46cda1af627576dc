#include "radio/laboratory/Unit.h"

#include "radio/calibration/CalibrationRun.h"
#include "radio/laboratory/LaboratoryReader.h"
#include "tests/radio/support/FileFixture.h"
#include "tests/radio/support/LeakageBoard.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace Radio::Laboratory {
namespace {

using testing::HasSubstr;

class UnitTest : public FileFixture {
protected:
    UnitTest() { write("board.toml", leakageBoard()); }

    /** Probes of the unit at places as far apart as a search has them: rings of three sizes around the
     * bottom, and without noise. */
    static Measured measuredOf(const LeakageDescription& unit) {
        Measured measured;
        measured.unit = "8H-0042";
        measured.source = "night.journal";
        measured.date = "2026-03-01T09:30:00Z";
        for (const std::int32_t temperature : {-30, 0, 30, 60}) {
            for (const std::uint32_t carrier : {17800000U, 17900000U, 18000000U, 18100000U, 18200000U}) {
                const Surroundings there{carrier, static_cast<double>(temperature)};
                const LoCorrections best = idealLoCorrections(unit, there);
                for (const std::int32_t radius : {5, 40, 320}) {
                    // Between the axes, too: there skew shows.
                    for (const auto& [i, q] : {std::pair(1, 0), {0, 1}, {-1, 0}, {0, -1}, {1, 1}, {-1, 1}}) {
                        const LoCorrections at{best.i + i * radius, best.q + q * radius};
                        const double level = leakageLevel(unit, there, at);
                        measured.probes[{temperature, carrier}].push_back(
                            {{at.i, at.q,
                              detectorReading(unit.detector, detectorOutput(unit.detector, level))},
                             0});
                    }
                }
            }
        }
        return measured;
    }

    /** The board's transmitter as it is described, whose readings are fine enough not to matter. */
    static LeakageDescription described() {
        LeakageDescription leakage = loadLaboratoryBoard().leakages.front();
        leakage.detector.slope = 1000.0;
        leakage.detector.high = 200000;
        return leakage;
    }
    static Board loadLaboratoryBoard() {
        write("lab.toml", "board = \"board.toml\"\nchannel = 1\ncount = 1\nseed = 1\n\n[[settings]]\nname = "
                          "\"search\"\n");
        return loadLaboratory("lab.toml").board;
    }
    static std::string linesOf(const std::vector<Unit>& units) {
        return unitsText(units, loadLaboratoryBoard(), 1, "1.2");
    }
};

TEST_F(UnitTest, OnePathIsFoundAsItIs) {
    LeakageDescription real = described();
    real.paths = {{-30.0, 0.02, 1.5, 40.0, 0.3, 0.25}};
    real.i.gain = 1.1e-4;
    real.q.gain = 0.9e-4;
    real.skew = 4.0;
    const Unit unit = unitFrom(measuredOf(real), described());
    EXPECT_EQ(unit.name, "8H-0042");
    EXPECT_EQ(unit.places, 20U);
    ASSERT_EQ(unit.leakage.paths.size(), 1U);
    const LeakagePath& path = unit.leakage.paths.front();
    EXPECT_NEAR(path.level, -30.0, 0.01);
    EXPECT_NEAR(path.levelPerDegree, 0.02, 0.0005);
    EXPECT_NEAR(path.levelPerGHz, 1.5, 0.1);
    EXPECT_NEAR(path.phase, 40.0, 0.1);
    EXPECT_NEAR(path.phasePerDegree, 0.3, 0.005);
    EXPECT_NEAR(path.delay, 0.25, 0.005);
    EXPECT_NEAR(unit.leakage.i.gain, 1.1e-4, 1e-7);
    EXPECT_NEAR(unit.leakage.q.gain, 0.9e-4, 1e-7);
    EXPECT_NEAR(unit.leakage.skew, 4.0, 0.05);
    EXPECT_NEAR(unit.leakage.detector.slope, 1000.0, 2.0);
    EXPECT_NEAR(unit.leakage.detector.floor, -85.0, 0.5);
    EXPECT_LT(unit.misfit, -90.0);
}

TEST_F(UnitTest, BetweenThePlacesItLeaksAsTheRealOneWithSeveralPaths) {
    LeakageDescription real = described();
    real.paths = {{-26.0, 0.01, 1.0, -70.0, 0.2, 0.3},
                  {-40.0, 0.0, 0.0, 100.0, -0.3, 0.8},
                  {-42.0, 0.0, 0.0, 10.0, 0.0, 0.5}};
    const Unit unit = unitFrom(measuredOf(real), described());
    EXPECT_LT(unit.misfit, -85.0);
    for (const auto& [carrier, temperature] :
         {std::pair(17850000U, -15.0), {18050000U, 45.0}, {18150000U, 15.0}}) {
        const Surroundings there{carrier, temperature};
        // Apart by less than -75 dBc, 0.00018 of the signal.
        EXPECT_LT(std::abs(residualOf(unit.leakage, there, {0, 0}) - residualOf(real, there, {0, 0})),
                  0.00018)
            << carrier << " kHz, " << temperature << " degrees";
    }
}

TEST_F(UnitTest, ReadingsAtTheLimitsOfTheDetectorTellNothing) {
    LeakageDescription real = described();
    real.paths = {{-30.0, 0.0, 0.0, 40.0, 0.0, 0.0}};
    Measured measured = measuredOf(real);
    for (auto& [place, probes] : measured.probes) {
        probes.push_back({{1000, 1000, real.detector.high}, 0});
        probes.push_back({{0, 0, real.detector.low}, 0});
    }
    const Unit unit = unitFrom(measured, described());
    EXPECT_NEAR(unit.leakage.paths.front().level, -30.0, 0.01);
}

TEST_F(UnitTest, NoiseIsThatOfTheQualificationOrElseWhatProbesMissTheirBowlsBy) {
    LeakageDescription real = described();
    real.paths = {{-30.0, 0.0, 0.0, 40.0, 0.0, 0.0}};
    // So few that the slope is found as exactly as it can be told.
    real.detector.slope = 50.0;
    Measured measured = measuredOf(real);
    // Readings are whole: 0.29 units root mean square.
    EXPECT_NEAR(unitFrom(measured, described()).leakage.detector.noise, 0.29, 0.1);
    measured.qualification.emplace();
    measured.qualification->noise = 1.25;
    EXPECT_EQ(unitFrom(measured, described()).leakage.detector.noise, 1.25);
}

TEST_F(UnitTest, DetectorThatDoesNotFollowTellsNothing) {
    Measured measured = measuredOf(described());
    for (auto& [place, probes] : measured.probes) {
        for (Calibration::JournaledProbe& probe : probes) {
            probe.probe.reading = 1444;
        }
    }
    const std::string why =
        "night.journal: what was read does not follow the corrections, expected a detector that does";
    EXPECT_EQ(refusal([&] { unitFrom(measured, described()); }), why);
    // One whose readings are of anything else: they go up and down by 20 dB.
    int number = 0;
    for (auto& [place, probes] : measured.probes) {
        for (Calibration::JournaledProbe& probe : probes) {
            probe.probe.reading = number++ % 3 == 0 ? 60000 : 40000;
        }
    }
    EXPECT_EQ(refusal([&] { unitFrom(measured, described()); }), why);
}

TEST_F(UnitTest, JournalOfAnotherChannelIsRefused) {
    Calibration::JournalContent journal;
    journal.header.settings.channel = 2;
    EXPECT_EQ(refusal([&] { measuredIn(journal, 1, "night.journal"); }),
              "night.journal: of channel 2, expected one of channel 1");
}

Unit someUnit(const LeakageDescription& board) {
    Unit unit{"8H-0042", "run 1", "2026-03-01T09:30:00Z", 30, -81.5, board};
    unit.leakage.paths = {{-30.0, 0.5, 1.5, 40.0, 0.25, 0.125}};
    unit.leakage.skew = 4.0;
    unit.leakage.detector.noise = 1.25;
    return unit;
}

TEST_F(UnitTest, UnitsAreLinesOfJson) {
    EXPECT_EQ(linesOf({someUnit(loadLaboratoryBoard().leakages.front())}),
              R"({"units":1,"version":"1.2","board":"Test radio","channel":1,"count":1})"
              "\n"
              R"({"unit":"8H-0042","source":"run 1","date":"2026-03-01T09:30:00Z","places":30,)"
              R"("misfit_dbc":-81.5,"paths":[{"level":-30.0,"level_per_degree":0.5,"level_per_ghz":1.5,)"
              R"("phase":40.0,"phase_per_degree":0.25,"delay":0.125}],"skew":4.0,"i_gain":0.0001,)"
              R"("q_gain":0.0001,"detector":{"slope":25.0,"floor":-85.0,"noise":1.25},"high_detector":null})"
              "\n");
}

TEST_F(UnitTest, UnitsThatWereWrittenAreRead) {
    const Board board = loadLaboratoryBoard();
    const std::string text = linesOf({someUnit(board.leakages.front()), someUnit(board.leakages.front())});
    write("month.units", text);
    const std::vector<Unit> units = readUnits("month.units", board, 1);
    ASSERT_EQ(units.size(), 2U);
    EXPECT_EQ(units[1].leakage.paths.front().delay, 0.125);
    EXPECT_EQ(units[1].leakage.detector.zero, -95.0);
    EXPECT_EQ(linesOf(units), text);
}

TEST_F(UnitTest, UnitsThatCannotBeUsedAreNamedWithLineAndMember) {
    const Board board = loadLaboratoryBoard();
    const std::string text = linesOf({someUnit(board.leakages.front())});
    const auto refusalOf = [&](const std::string& from, const std::string& to) {
        std::string changed = text;
        changed.replace(changed.find(from), from.size(), to);
        write("month.units", changed);
        return refusal([&] { readUnits("month.units", board, 1); });
    };
    EXPECT_EQ(refusalOf("\"skew\":4.0", "\"skew\":61"),
              "month.units:2: skew is not from -60.0 to 60.0, expected a line of a laboratory's units");
    EXPECT_THAT(refusalOf("\"i_gain\":0.0001", "\"i_gain\":0"), HasSubstr("month.units:2: i_gain is 0"));
    EXPECT_THAT(refusalOf("\"noise\":1.25", "\"noise\":-1"), HasSubstr("noise is not from 0.0 to"));
    EXPECT_THAT(refusalOf("\"delay\":0.125", "\"daily\":0.125"), HasSubstr("delay is missing"));
    EXPECT_THAT(refusalOf("\"count\":1", "\"count\":2"), HasSubstr("is damaged: expected 2 units, found 1"));
    EXPECT_THAT(refusalOf("Test radio", "Other radio"),
                HasSubstr("month.units:1: units of \"Other radio\", channel 1, expected such of \"Test "
                          "radio\", channel 1"));
}

TEST_F(UnitTest, TransmittersOfALaboratoryAreLikeItsUnitsInTheirOrder) {
    const Board board = loadLaboratoryBoard();
    std::vector<Unit> units{someUnit(board.leakages.front()), someUnit(board.leakages.front())};
    units[1].name = "8H-0043";
    units[1].leakage.paths.front().level = -33.0;
    write("month.units", linesOf(units));
    const std::string text =
        "board = \"board.toml\"\nchannel = 1\nseed = 1\nunits = \"month.units\"\n"
        "[population.detector]\nnoise = 0\n[[settings]]\nname = \"search\"\nqualify = false\n";
    write("lab.toml", text);
    const Description laboratory = loadLaboratory("lab.toml");
    EXPECT_EQ(laboratory.count, 2U);
    const LeakageDescription second = laboratory.population.draw(laboratory.units[1].leakage, 1, 1);
    EXPECT_EQ(second.paths.front().level, -33.0);
    EXPECT_EQ(second.detector.noise, 0.0);
    const std::optional<Trial> trial = carryOut(laboratory, {1, 0}, [] { return true; });
    ASSERT_TRUE(trial);
    EXPECT_EQ(trial->unit, "8H-0043");
    ASSERT_TRUE(trial->uncorrected);
    // -33 dBc at 25 degrees and 18 GHz; 0.5 dB for each of 25 degrees more, and 1.5 dB / GHz for 0.1 GHz.
    EXPECT_NEAR(*trial->uncorrected, -20.35, 0.01);
    // Other units make another laboratory.
    units[1].leakage.paths.front().level = -34.0;
    write("month.units", linesOf(units));
    EXPECT_NE(loadLaboratory("lab.toml").fingerprint, laboratory.fingerprint);
}

TEST_F(UnitTest, LaboratoryCannotHaveMoreTransmittersThanUnitsNorPathsOfItsOwn) {
    write("month.units", linesOf({someUnit(loadLaboratoryBoard().leakages.front())}));
    const std::string header = "board = \"board.toml\"\nchannel = 1\nseed = 1\nunits = \"month.units\"\n";
    const std::string end = "[[settings]]\nname = \"search\"\n";
    const auto refusalOf = [&](const std::string& text) {
        write("lab.toml", header + text + end);
        return refusal([] { loadLaboratory("lab.toml"); });
    };
    EXPECT_THAT(
        refusalOf("count = 2\n"),
        HasSubstr("lab.toml:5: count: expected an integer from 1 to 1, since there are so many units"));
    EXPECT_THAT(
        refusalOf("[population]\npaths = [{ level = -30 }]\n"),
        HasSubstr("lab.toml:6: population.paths: the paths are those of the units, expected none here"));
}

} // namespace
} // namespace Radio::Laboratory

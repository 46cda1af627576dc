#include "radioctl/calibrate/page/CalibrationPage.h"

#include "tests/radio/support/MadeUpCalibration.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <numeric>
#include <regex>
#include <sstream>
#include <stdexcept>

namespace Radio::Calibration {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

class CalibrationPage : public testing::Test {
protected:
    CalibrationPage() {
        m_board.name = "Demonstration radio";
        m_board.file = "demo.toml";
    }

    std::string page() const {
        std::ostringstream out;
        writePage(out, m_board, m_leakage, m_result, "Stored: demo.csv");
        return out.str();
    }
    /** The names of the pictures, in their order. */
    static std::vector<std::string> picturesOf(const std::string& page) {
        const std::regex picture("<svg role=\"img\" id=\"([^\"]*)\"");
        std::vector<std::string> names;
        for (std::sregex_iterator found(page.begin(), page.end(), picture), end; found != end; ++found) {
            names.push_back((*found)[1]);
        }
        return names;
    }
    static bool isWellFormed(const std::string& page) {
        std::string file = testing::TempDir() + "pageXXXXXX";
        const int descriptor = mkstemp(file.data());
        if (descriptor == -1) {
            throw std::runtime_error("no temporary file");
        }
        close(descriptor);
        std::ofstream(file) << page;
        const int ending = std::system(("xmllint --noout " + file).c_str()); // NOLINT(cert-env33-c)
        unlink(file.c_str());
        return ending == 0;
    }

    Board m_board;
    LeakageDescription m_leakage = madeUpLeakage();
    Result m_result = madeUpResult({18000000u, 18100000u, 18200000u}, {-10, 30});
};

TEST_F(CalibrationPage, HasAllPictures) {
    m_result.points[0].probes.insert(m_result.points[0].probes.begin(), 4, Probe{100, 100, 95});
    EXPECT_THAT(picturesOf(page()), ElementsAre("before", "after", "between", "path", "path-end",
                                                "convergence", "correction-I", "correction-Q"));
}

TEST_F(CalibrationPage, IsWellFormed) {
    EXPECT_TRUE(isWellFormed(page()));
}

TEST_F(CalibrationPage, AsksNobodyForAnything) {
    const std::string text = page();
    EXPECT_THAT(text, Not(HasSubstr("src=")));
    EXPECT_THAT(text, Not(HasSubstr("<script")));
    EXPECT_THAT(text, Not(HasSubstr("<link")));
    EXPECT_FALSE(std::regex_search(text, std::regex("(href=.|url\\()[^#'\"]")));
}

TEST_F(CalibrationPage, NamesTheRadioAndWhatWasAskedFor) {
    const std::string text = page();
    EXPECT_THAT(text, HasSubstr("<th>board</th><td>Demonstration radio (demo.toml)</td>"));
    EXPECT_THAT(text, HasSubstr("<th>serial</th><td>SN-0042</td>"));
    EXPECT_THAT(text, HasSubstr("<th>channel</th><td>1</td>"));
    EXPECT_THAT(text, HasSubstr("<th>date</th><td>2026-03-01T09:30:00Z (UTC)</td>"));
    EXPECT_THAT(text, HasSubstr("<th>tool</th><td>radioctl 1.2.3</td>"));
    EXPECT_THAT(text, HasSubstr("<th>carriers</th><td>3 from 18000000 to 18200000 kHz</td>"));
    EXPECT_THAT(text, HasSubstr("<th>temperatures</th><td>2 from -10 to 30 °C</td>"));
    EXPECT_THAT(text, HasSubstr("<td>-200 to 300 (units of channel.1.tx.rf.mixer.i)</td>"));
    EXPECT_THAT(text, HasSubstr("<td>-250 to 350 (units of channel.1.tx.rf.mixer.q)</td>"));
    EXPECT_THAT(text, HasSubstr("<th>shrink factor</th><td>0.75</td>"));
    EXPECT_THAT(text, HasSubstr("<td>at a range of 2 or less, or after 40 iterations</td>"));
    EXPECT_THAT(text, HasSubstr("<th>settle time</th><td>7 ms</td>"));
}

TEST_F(CalibrationPage, NamesTheDetectorThatWasRead) {
    EXPECT_THAT(page(), HasSubstr("<th>detector</th><td>channel.1.tx.rf.detector.v</td>"));
    m_result.settings.useHighDetector = true;
    EXPECT_THAT(page(), HasSubstr("<td>high range, which the board does not have</td>"));
    m_leakage.highDetector.emplace().driver = "channel.1.tx.rf.detector.high.v.detect";
    EXPECT_THAT(page(), HasSubstr("<td>channel.1.tx.rf.detector.high.v.detect, high range</td>"));
    m_result.settings.useHighDetector = false;
    EXPECT_THAT(page(), HasSubstr("<td>channel.1.tx.rf.detector.v, low range</td>"));
}

TEST_F(CalibrationPage, SaysWhatLeaksMostAndWhere) {
    m_result.points[4].before = -18.5;
    m_result.points[1].after = -39.0;
    const std::string text = page();
    EXPECT_THAT(text, HasSubstr("<td>before, at the points</td><td class=\"number\">-18.50</td>"
                                "<td>18100000 kHz, 30 °C</td>"));
    EXPECT_THAT(text, HasSubstr("<td>after, at the points</td><td class=\"number\">-39.00</td>"
                                "<td>18100000 kHz, -10 °C</td>"));
    EXPECT_THAT(text, HasSubstr("<td>after, also between the points</td><td class=\"number\">-40.00</td>"
                                "<td>18000000 kHz, -10 °C</td>"));
}

TEST_F(CalibrationPage, HasTheVerdictBeforeAnythingElse) {
    m_board.limits.leakageAtNodes = -45.0;
    m_result.station = "Bench <3>";
    EXPECT_THAT(page(),
                HasSubstr("<body>\n<h1>Calibration of the LO leakage</h1>\n<div class=\"verdict fail\">\n"
                          "<p>FAIL: leakage at the nodes -40.00 dBc at 18000000 kHz, -10 degrees, limit "
                          "-45</p>\n<p>Stored: demo.csv</p>\n</div>\n<p>Demonstration radio, serial "
                          "SN-0042, channel 1, station Bench &lt;3&gt;, 2026-03-01T09:30:00Z, radioctl "
                          "1.2.3</p>\n"));
    m_board.limits.leakageAtNodes.reset();
    EXPECT_THAT(page(),
                HasSubstr("<div class=\"verdict none\">\n<p>NO VERDICT: the board states no leakage in its "
                          "[limits]</p>\n"));
}

TEST_F(CalibrationPage, PointThatMissedALimitIsCountedNamedAndMarked) {
    m_result.points[1].state = PointState::missed;
    m_result.points[1].remark = "it leaks -40.00 dBc, and leakage_at_nodes allows -45";
    const std::string text = page();
    EXPECT_THAT(text, HasSubstr("6 points: 5 good, 1 missed a limit, 0 at the edge"));
    EXPECT_THAT(text, HasSubstr("<li>18100000 kHz, -10 °C: missed, it leaks -40.00 dBc, and "));
    EXPECT_THAT(text, HasSubstr("<text>missed a limit</text>"));
}

TEST_F(CalibrationPage, CountsPointsIterationsAndProbes) {
    m_result.points[0].iterations = 9;
    m_result.points[1].iterations = 4;
    m_result.points[2].state = PointState::edge;
    makeFail(m_result.points[3]);
    EXPECT_THAT(page(), HasSubstr("6 points: 4 good, 1 at the edge of a search range, 1 failed. "
                                  "Iterations of a search: median 1, at most 9. 24 probes in total."));
}

TEST_F(CalibrationPage, ListsEachPoint) {
    m_result.points[5].q = 12;
    m_result.points[5].remark = "a hint";
    EXPECT_THAT(page(), HasSubstr("<tr><td class=\"number\">18200000</td><td class=\"number\">30</td>"
                                  "<td>good</td><td class=\"number\">-90</td><td class=\"number\">12</td>"
                                  "<td class=\"number\">-20.00</td><td class=\"number\">-40.00</td>"
                                  "<td class=\"number\">1</td><td>a hint</td></tr>"));
}

TEST_F(CalibrationPage, WarnsOfPointsThatAreNotGoodBeforeAnythingElseIsShown) {
    m_result.points[1].state = PointState::edge;
    m_result.points[1].remark = "I ended at the low edge of its range, -200";
    makeFail(m_result.points[5]);
    const std::string text = page();
    const std::string top = text.substr(0, text.find("<h2>"));
    EXPECT_THAT(top,
                HasSubstr("<li>18100000 kHz, -10 °C: edge, I ended at the low edge of its range, -200</li>"
                          "\n<li>18200000 kHz, 30 °C: failed, the detector could not be read</li>"));
    EXPECT_THAT(text, HasSubstr("<tr class=\"bad\"><td class=\"number\">18200000</td>"
                                "<td class=\"number\">30</td><td>failed</td><td class=\"number\">-</td>"));
}

TEST_F(CalibrationPage, WarnsOfNothingWhenAllPointsAreGood) {
    EXPECT_THAT(page(), Not(HasSubstr("class=\"warning\"")));
}

TEST_F(CalibrationPage, NamesTwentyPointsAndCountsTheOthers) {
    std::vector<std::uint32_t> frequencies(23);
    std::iota(frequencies.begin(), frequencies.end(), 18000000u);
    m_result = madeUpResult(frequencies, {25});
    for (Point& point : m_result.points) {
        makeFail(point);
    }
    EXPECT_THAT(page(), HasSubstr("<li>18000019 kHz, 25 °C: failed, the detector could not be read</li>\n"
                                  "<li>and 3 more, in the table at the end</li>"));
}

TEST_F(CalibrationPage, TextsFromOutsideAreNoMarkup) {
    const std::string nasty = "<b>&\"'\n!";
    m_board.name = nasty;
    m_board.file = nasty;
    m_leakage.i.driver = nasty;
    m_leakage.q.driver = nasty;
    m_leakage.detector.driver = nasty;
    m_result.serial = nasty;
    m_result.date = nasty;
    m_result.version = nasty;
    m_result.points[0].remark = nasty;
    const std::string text = page();
    EXPECT_THAT(text, Not(HasSubstr("<b>")));
    EXPECT_THAT(text, HasSubstr("<th>serial</th><td>&lt;b&gt;&amp;\"'\\x0a!</td>"));
    EXPECT_TRUE(isWellFormed(text));
}

TEST_F(CalibrationPage, AHoleHasNothingBetween) {
    makeFail(m_result.points[2]);
    const std::string text = page();
    EXPECT_THAT(picturesOf(text), Not(Contains("between")));
    EXPECT_THAT(text, HasSubstr("<td>after, also between the points</td><td class=\"number\">-</td>"
                                "<td>not every point has corrections</td>"));
    EXPECT_TRUE(isWellFormed(text));
}

TEST_F(CalibrationPage, WithoutAnyCorrectionsOnlyTheHolesAreShown) {
    for (Point& point : m_result.points) {
        makeFail(point);
    }
    const std::string text = page();
    EXPECT_THAT(picturesOf(text), ElementsAre("before", "after"));
    EXPECT_TRUE(isWellFormed(text));
}

TEST_F(CalibrationPage, ShowsTheSearchAtThePointThatLeakedMost) {
    m_result.points[4].before = -18.5;
    EXPECT_THAT(page(), HasSubstr("leaked most without corrections: 18100000 kHz, 30 °C"));
}

TEST_F(CalibrationPage, WithoutProbesNoSearchIsShown) {
    for (Point& point : m_result.points) {
        point.probes.clear();
    }
    EXPECT_THAT(picturesOf(page()),
                ElementsAre("before", "after", "between", "correction-I", "correction-Q"));
}

TEST_F(CalibrationPage, OnePointIsEnough) {
    m_result = madeUpResult({18000000u}, {25});
    const std::string text = page();
    EXPECT_THAT(picturesOf(text), Contains("between"));
    EXPECT_TRUE(isWellFormed(text));
}

TEST_F(CalibrationPage, ASearchInOneValueIsDrawn) {
    m_result.settings.i = {-90, -90};
    m_result.settings.q = {0, 0};
    EXPECT_THAT(picturesOf(page()), Contains("path"));
}

TEST_F(CalibrationPage, WhatWasReachedIsShown) {
    m_result.points.resize(2);
    const std::string text = page();
    EXPECT_THAT(text, HasSubstr("2 points: 2 good"));
    EXPECT_THAT(picturesOf(text), Not(Contains("between")));
}

TEST_F(CalibrationPage, OfHardwareHasReadings) {
    m_result.isHardware = true;
    m_board.drivers.resize(3);
    m_board.drivers[0].name = "channel.1.tx.rf.mixer.i";
    m_board.drivers[1].name = "channel.1.tx.rf.mixer.q";
    m_board.drivers[2].name = "channel.1.tx.rf.detector.v";
    m_board.channels.resize(1);
    m_board.channels[0].number = 1;
    for (Point& point : m_result.points) {
        point.before.reset();
        point.after.reset();
        point.firstReading = 90;
        point.lastReading = 10;
    }
    m_result.points[4].firstReading = 95;
    std::ostringstream out;
    writePage(out, m_board, m_result, "Stored: demo.csv");
    const std::string text = out.str();
    EXPECT_TRUE(isWellFormed(text));
    EXPECT_THAT(picturesOf(text),
                ElementsAre("first", "last", "path", "convergence", "correction-I", "correction-Q"));
    EXPECT_THAT(text, HasSubstr("<th>mode</th><td>hardware</td>"));
    EXPECT_THAT(text, HasSubstr("<td>at the first probe</td><td class=\"number\">95</td>"
                                "<td>18100000 kHz, 30 °C</td>"));
    EXPECT_THAT(text, HasSubstr("units of channel.1.tx.rf.mixer.i"));
    EXPECT_THAT(text, HasSubstr("<th>detector</th><td>channel.1.tx.rf.detector.v</td>"));
    EXPECT_THAT(text, HasSubstr("<th class=\"number\">first reading</th>"));
    EXPECT_THAT(text, Not(HasSubstr("dBc")));
    EXPECT_THAT(text, Not(HasSubstr("modelled")));
}

/** The page of a fit of two points, see madeUpFit(). */
class CalibrationPageOfAFit : public CalibrationPage {
protected:
    CalibrationPageOfAFit() { m_result = madeUpFit(); }

    std::string hardwarePage() {
        m_result.isHardware = true;
        m_board.drivers.resize(3);
        m_board.drivers[0].name = "channel.1.tx.rf.mixer.i";
        m_board.drivers[1].name = "channel.1.tx.rf.mixer.q";
        m_board.drivers[2].name = "channel.1.tx.rf.detector.v";
        m_board.channels.resize(1);
        m_board.channels[0].number = 1;
        for (std::vector<Point>* points : {&m_result.points, &m_result.nodes}) {
            for (Point& point : *points) {
                point.before.reset();
                point.after.reset();
            }
        }
        for (Point& point : m_result.points) {
            point.firstReading = 75;
            point.lastReading = 10;
        }
        std::ostringstream out;
        writePage(out, m_board, m_result, "Stored: demo.csv");
        return out.str();
    }
};

TEST_F(CalibrationPageOfAFit, HasThePicturesOfAFitAndNoneOfASearch) {
    const std::string text = page();
    EXPECT_TRUE(isWellFormed(text));
    EXPECT_THAT(picturesOf(text), ElementsAre("before", "after", "between", "places", "levels", "probes",
                                              "probes-end", "correction-I", "correction-Q"));
    EXPECT_THAT(text, Not(HasSubstr("search")));
    EXPECT_THAT(text, Not(HasSubstr("teration")));
}

TEST_F(CalibrationPageOfAFit, NamesWhatAFitIsAskedForAndNothingOfASearch) {
    const std::string text = page();
    EXPECT_THAT(text, HasSubstr("<th>method</th><td>fit</td>"));
    EXPECT_THAT(text, HasSubstr("<th>carriers</th><td>18000000 to 18200000 kHz</td>"));
    EXPECT_THAT(text, HasSubstr("<th>temperatures</th><td>-10 to 30 °C</td>"));
    EXPECT_THAT(text, HasSubstr("<th>probes</th><td>at most 400</td>"));
    EXPECT_THAT(text, HasSubstr("<th>to leak anywhere</th><td>at most -39.00 dBc</td>"));
    EXPECT_THAT(text, HasSubstr("<th>range of I</th><td>-200 to 300 (units of "));
    EXPECT_THAT(text, Not(HasSubstr("shrink")));
}

TEST_F(CalibrationPageOfAFit, ClaimStandsBesideWhatTheModelSays) {
    m_result.fit->reason = "up to -39.25 dBc may be left at 18150000 kHz & more";
    Qualification qualification;
    qualification.taken = 31;
    m_result.qualification = qualification;
    const std::string text = page();
    EXPECT_THAT(text,
                HasSubstr("<th>leaks anywhere, at most</th><td>-39.25 dBc, at 18150000 kHz, 30 °C</td>"));
    // I = -90 everywhere leaves 0.01 of the signal's amplitude.
    EXPECT_THAT(text,
                HasSubstr("<th>leaks anywhere, as modelled</th><td>-40.00 dBc, at 18000000 kHz, -10 °C"));
    EXPECT_THAT(text,
                HasSubstr("<th>what stands against them</th><td>up to -39.25 dBc may be left at 18150000 "
                          "kHz &amp; more</td>"));
    EXPECT_THAT(text, HasSubstr("<th>tables</th><td>3 carriers by 2 temperatures</td>"));
    EXPECT_THAT(text, HasSubstr("<th>tried at</th><td>2 places, 1 of them worse than foretold, and fitted "
                                "then</td>"));
    EXPECT_THAT(text, HasSubstr("<th>probes</th><td>43 of 400, 31 of them to qualify the detector</td>"));
    EXPECT_THAT(text, HasSubstr("<th>temperatures one after the other</th><td>3</td>"));
    EXPECT_THAT(text, HasSubstr("<th>slope of the detector</th><td>25.00 units for each dB</td>"));
}

TEST_F(CalibrationPageOfAFit, ListsThePointsAsFittedAndWhereTheTableWasTried) {
    m_result.points[1].state = PointState::missed;
    m_result.points[1].remark = "it leaks";
    const std::string text = page();
    EXPECT_THAT(text,
                HasSubstr("<tr><td class=\"number\">18000000</td><td class=\"number\">-10</td><td>good</td>"
                          "<td class=\"number\">-90</td><td class=\"number\">0</td>"
                          "<td class=\"number\">-20.00</td><td class=\"number\">-40.00</td>"
                          "<td class=\"number\">10</td><td class=\"number\">5</td><td></td></tr>"));
    EXPECT_THAT(text, HasSubstr("<li>18200000 kHz, 30 °C: missed, it leaks</li>"));
    EXPECT_THAT(text,
                HasSubstr("<tr><td class=\"number\">18050000</td><td class=\"number\">10</td>"
                          "<td class=\"number\">-90</td><td class=\"number\">1</td>"
                          "<td class=\"number\">11</td><td class=\"number\">-39.50</td><td>yes</td></tr>"));
    EXPECT_THAT(text,
                HasSubstr("<tr class=\"bad\"><td class=\"number\">18150000</td><td class=\"number\">11</td>"
                          "<td class=\"number\">-92</td><td class=\"number\">2</td>"
                          "<td class=\"number\">14</td><td class=\"number\">-36.25</td>"
                          "<td>no, it reads more</td></tr>"));
}

TEST_F(CalibrationPageOfAFit, WithoutTablesSaysWhyAndDrawsNone) {
    m_result.nodes.clear();
    m_result.fit->table = {};
    m_result.fit->claim.reset();
    m_result.fit->verifications.clear();
    m_result.fit->reason = "every reading is 1444: the detector is stuck or saturated";
    for (Point& point : m_result.points) {
        makeFail(point);
    }
    const std::string text = page();
    EXPECT_TRUE(isWellFormed(text));
    EXPECT_THAT(picturesOf(text), ElementsAre("places", "levels"));
    EXPECT_THAT(text, HasSubstr("<th>leaks anywhere, at most</th><td>nothing is claimed</td>"));
    EXPECT_THAT(text, HasSubstr("<th>tables</th><td>none</td>"));
    EXPECT_THAT(text, HasSubstr("There are no tables, and so there is no picture of them."));
    EXPECT_THAT(text, HasSubstr("every reading is 1444: the detector is stuck or saturated"));
}

TEST_F(CalibrationPageOfAFit, OfHardwareHasNoModelledLevels) {
    m_result.fit->isRelative = true;
    const std::string text = hardwarePage();
    EXPECT_TRUE(isWellFormed(text));
    EXPECT_THAT(picturesOf(text),
                ElementsAre("places", "levels", "probes", "probes-end", "correction-I", "correction-Q"));
    EXPECT_THAT(text, HasSubstr("<th>leaks anywhere, at most</th><td>-39.25 dB against what leaked without "
                                "corrections at the first point, at 18150000 kHz, 30 °C</td>"));
    EXPECT_THAT(text,
                HasSubstr("<th class=\"number\">first reading</th><th class=\"number\">last reading</th>"));
    EXPECT_THAT(text, HasSubstr("level, dB against the first probe"));
    EXPECT_THAT(text, Not(HasSubstr("modelled")));
    EXPECT_THAT(text, Not(HasSubstr("before, dBc")));
}

TEST_F(CalibrationPageOfAFit, OnePointIsEnough) {
    m_result.points.resize(1);
    m_result.fit->points.resize(1);
    m_result.fit->verifications.clear();
    m_result.settings.frequencies = {18000000u};
    m_result.settings.temperatures = {-10};
    m_result.nodes.resize(1);
    const std::string text = page();
    EXPECT_TRUE(isWellFormed(text));
    EXPECT_THAT(picturesOf(text), Contains("places"));
    EXPECT_THAT(text, Not(HasSubstr("Where the table was tried")));
}

TEST_F(CalibrationPageOfAFit, TextsFromOutsideAreNoMarkup) {
    m_result.fit->reason = "<b>&";
    m_result.points[0].remark = "<b>&";
    const std::string text = page();
    EXPECT_THAT(text, Not(HasSubstr("<b>")));
    EXPECT_TRUE(isWellFormed(text));
}

TEST_F(CalibrationPage, StaysOfASaneSizeWithThousandsOfPoints) {
    std::vector<std::uint32_t> frequencies(300);
    std::generate(frequencies.begin(), frequencies.end(), [at = 18000000u]() mutable { return at += 1000; });
    std::vector<std::int32_t> temperatures(20);
    std::iota(temperatures.begin(), temperatures.end(), 0);
    m_result = madeUpResult(frequencies, temperatures);
    makeFail(m_result.points.back());
    const std::string text = page();
    EXPECT_LT(text.size(), 2500000u);
    EXPECT_THAT(text, HasSubstr("Those that are not good, and some of the others: 2000 of 6000."));
    EXPECT_THAT(text, HasSubstr("<tr class=\"bad\"><td class=\"number\">18300000</td>"));
}

} // namespace
} // namespace Radio::Calibration

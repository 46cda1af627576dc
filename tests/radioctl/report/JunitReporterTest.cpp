#include "radioctl/report/JunitReporter.h"

#include "radioctl/report/TextReporter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iostream>
#include <regex>
#include <sstream>

namespace Radio {
namespace {

using testing::HasSubstr;
using testing::Not;

class JunitReporterTest : public testing::Test {
protected:
    /** The report without the times that it took. */
    std::string report(int exitCode = 0) const {
        std::ostringstream out;
        m_junit.write(out, exitCode);
        return std::regex_replace(out.str(), std::regex(R"( time="[0-9]+\.[0-9]{3}")"), "");
    }
    void carryOut(const Action& action, const std::string& text, unsigned line, std::int32_t code,
                  const std::string& note = "") {
        m_junit.commandStarted({{"my.script", line}, text, action});
        m_junit.commandFinished(code, note);
    }
    void judge(const Expectation& expectation, const std::string& text, unsigned line, bool held) {
        m_junit.judged({{"my.script", line}, text, expectation}, {held, "this", "that"});
    }
    void finish(int signal = 0) {
        RunSummary summary;
        summary.signal = signal;
        m_junit.summarised(summary, 0);
    }

    static constexpr ExpectResult resultFailed{ExpectResult::Kind::failed, 0};

    std::ostringstream m_shown;
    TextReporter m_text{m_shown, {}};
    JunitReporter m_junit{m_text, "my.script"};
};

TEST_F(JunitReporterTest, HasACaseForTheStartUpAndForEachExpectation) {
    m_junit.booted(true);
    carryOut(Tune{Direction::tx, 1, 1000}, "tune tx 1 1000", 1, 0);
    judge(ExpectWriteCount{1}, "expect writes 1", 2, true);
    judge(ExpectTrace{"no"}, "expect trace no", 3, false);
    finish();
    EXPECT_EQ(report(), R"(<?xml version="1.0" encoding="UTF-8"?>
<testsuites tests="3" failures="1" errors="0">
  <testsuite name="my.script" tests="3" failures="1" errors="0">
    <testcase classname="my.script" name="boot" file="my.script"/>
    <testcase classname="my.script" name="expect writes 1" file="my.script" line="2"/>
    <testcase classname="my.script" name="expect trace no" file="my.script" line="3">
      <failure message="expected this, found that">my.script:3: expect trace no</failure>
    </testcase>
  </testsuite>
</testsuites>
)");
}

TEST_F(JunitReporterTest, PassesEverythingOn) {
    m_junit.booted(true);
    m_junit.warned("careful");
    m_junit.valueRead({"a", 5});
    judge(ExpectWriteCount{1}, "expect writes 1", 2, true);
    EXPECT_THAT(m_shown.str(), HasSubstr("     warning: careful\n     a = 5\n  held    expect writes 1\n"));
}

TEST_F(JunitReporterTest, CommandThatFailsUnexpectedlyIsACase) {
    m_junit.booted(true);
    carryOut(ReadDriver{"a"}, "read a", 1, 0x8001);
    carryOut(Show{Show::Kind::drivers, ""}, "show drivers", 2, 0);
    carryOut(ReadDriver{"b"}, "read b", 3, 0x8000, "why");
    finish();
    EXPECT_THAT(report(), HasSubstr(R"(tests="3" failures="2" errors="0")"));
    EXPECT_THAT(report(), HasSubstr(R"(name="read a" file="my.script" line="1">
      <failure message="result 0x8001">my.script:1: read a</failure>)"));
    EXPECT_THAT(report(),
                HasSubstr(R"(<failure message="result 0x8000, why">my.script:3: read b</failure>)"));
}

TEST_F(JunitReporterTest, CommandWhoseResultIsExpectedIsNone) {
    m_junit.booted(true);
    carryOut(ReadDriver{"a"}, "read a", 1, 0x8001);
    judge(ExpectTrace{"no"}, "expect trace no", 2, true);
    judge(resultFailed, "expect result failed", 3, true);
    finish();
    EXPECT_THAT(report(), HasSubstr(R"(tests="3" failures="0" errors="0")"));
    EXPECT_THAT(report(), Not(HasSubstr("read a")));
}

TEST_F(JunitReporterTest, TurnsOfARepetitionAreCasesOfTheirOwn) {
    m_junit.booted(true);
    m_junit.commandStarted({{"my.script", 1}, "repeat 2 read a", Action(Repeat{2, {}})});
    carryOut(ReadDriver{"a"}, "read a", 1, 0x8001);
    carryOut(ReadDriver{"a"}, "read a", 1, 0x8001);
    m_junit.commandFinished(0, "2 turns");
    finish();
    EXPECT_THAT(report(), HasSubstr(R"(tests="3" failures="2" errors="0")"));
}

TEST_F(JunitReporterTest, StartUpThatFailsIsAFailureUnlessItIsExpected) {
    m_junit.booted(false);
    finish();
    EXPECT_THAT(report(),
                HasSubstr("name=\"boot\" file=\"my.script\">\n      <failure message=\"the radio did "
                          "not boot\">my.script: boot</failure>"));
}

TEST_F(JunitReporterTest, StartUpThatIsExpectedToFailPasses) {
    m_junit.booted(false);
    judge(resultFailed, "expect result failed", 1, true);
    finish();
    EXPECT_THAT(report(), HasSubstr(R"(tests="2" failures="0" errors="0")"));
    EXPECT_THAT(report(), HasSubstr(R"(name="boot" file="my.script"/>)"));
}

TEST_F(JunitReporterTest, RunThatWasInterruptedHasAnError) {
    m_junit.booted(true);
    finish(2);
    EXPECT_THAT(report(130), HasSubstr(R"(tests="2" failures="0" errors="1")"));
    EXPECT_THAT(report(130), HasSubstr(R"(<error message="interrupted by signal 2">my.script: run</error>)"));
}

TEST_F(JunitReporterTest, RunThatEndedBeforeItBeganHasAnError) {
    EXPECT_THAT(report(143), HasSubstr(R"(tests="1" failures="0" errors="1")"));
    EXPECT_THAT(report(143), HasSubstr("<error message=\"ended before its time, with exit code 143\">"));
}

TEST_F(JunitReporterTest, RefusedScriptIsAnErrorThatSaysWhy) {
    m_junit.refused("my.script:1: unknown command \"x\"");
    EXPECT_THAT(report(3), HasSubstr(R"(tests="1" failures="0" errors="1")"));
    EXPECT_THAT(report(3), HasSubstr(R"(<error message="my.script:1: unknown command &quot;x&quot;">)"));
}

TEST_F(JunitReporterTest, XmlHasNothingInItThatNoDocumentMayHave) {
    EXPECT_EQ(inXml("<a b=\"c\" & 'd'>"), "&lt;a b=&quot;c&quot; &amp; 'd'&gt;");
    EXPECT_EQ(inXml("a\tb\nc\rd"), "a&#9;b&#10;c&#13;d");
    EXPECT_EQ(inXml(std::string_view("\0\x1b[2J", 5)), "\\x00\\x1b[2J");
    EXPECT_EQ(inXml("\x7f\xC2\x9B\xE2\x80\xAE"), "\\x7f\\xc2\\x9b\\xe2\\x80\\xae");
    EXPECT_EQ(inXml("\xC3\xA4 \xE2\x82\xAC \xF0\x9F\x93\xA1"), "\xC3\xA4 \xE2\x82\xAC \xF0\x9F\x93\xA1");
    EXPECT_EQ(inXml("\xC3(\xFF\x80"), "\\xc3(\\xff\\x80");
    EXPECT_EQ(inXml("\xED\xA0\x80"), "\\xed\\xa0\\x80");
    EXPECT_EQ(inXml("\xEF\xBF\xBE\xEF\xBF\xBF\xEF\xBF\xBD"), "\\xef\\xbf\\xbe\\xef\\xbf\\xbf\xEF\xBF\xBD");
    EXPECT_EQ(inXml("\xE2\x82"), "\\xe2\\x82");
}

/** Each byte alone, and each before and behind a letter. */
TEST_F(JunitReporterTest, ReportIsWellFormedWhateverTheScriptHas) {
    std::string all;
    for (int byte = 0; byte < 256; ++byte) {
        all += static_cast<char>(byte);
        all += 'x';
    }
    judge(ExpectTrace{"no"}, all, 1, false);
    judge(ExpectTrace{"no"}, "]]> <!-- &#0; \xF4\x90\x80\x80", 2, false);
    finish();
    const std::string file = testing::TempDir() + "junit-reporter-test.xml";
    std::ofstream(file, std::ios::binary) << report();
    if (std::system("xmllint --version > /dev/null 2>&1") != 0) { // NOLINT(cert-env33-c): a fixed command
        GTEST_SKIP() << "xmllint is missing: nothing was tested; it is in the package libxml2-utils";
    }
    EXPECT_EQ(std::system(("xmllint --noout " + file).c_str()), 0); // NOLINT(cert-env33-c)
}

} // namespace
} // namespace Radio

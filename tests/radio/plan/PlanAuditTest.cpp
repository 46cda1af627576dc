#include "radio/board/PlatformWords.h"
#include "radio/plan/Audit.h"
#include "tests/radio/support/PlanBoards.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Radio::Plan {
namespace {

using ::FrequencyHandler;
using Standalone::Operation;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

/** Audits a board and keeps what was found, in short lines. */
class PlanAuditTest : public testing::Test, private AuditListener {
protected:
    using Lines = std::vector<std::string>;

    explicit PlanAuditTest(FrequencyHandler::FrequencyHandlerType type = FrequencyHandler::MicrowaveBoardIf)
        : m_board(PlanBoards::microwave(type)) {}

    void addRow(Direction direction, std::uint32_t first, std::uint32_t step, std::uint32_t count,
                const std::vector<std::int32_t>& channelSpacings = {}) {
        m_board.rasters.push_back(
            {"raster", {1}, {{direction == Direction::tx, first, step, count}}, channelSpacings, {}});
    }

    AuditEnd audit() { return auditWhole().end; }
    AuditResult auditWhole() {
        BootedRadio booted(m_board);
        EXPECT_TRUE(booted.isUp());
        if (m_doctor) {
            m_doctor(booted.radio().platform());
        }
        const auto goOn = [this](std::uint64_t done) {
            m_asked.push_back(done);
            return m_mayGoOn;
        };
        return auditBoard(booted, m_board, {this}, goOn, m_carriersPerQuestion);
    }
    /** Audits one carrier of the receiver; gives "kind: text" of what is outside its limits. */
    Lines auditRx(std::uint32_t carrier) {
        addRow(Direction::rx, carrier, 1, 1);
        audit();
        return m_found;
    }

    Board m_board;
    /** Changes the platform between start-up and audit. */
    std::function<void(Standalone::Platform&)> m_doctor;
    bool m_mayGoOn = true;
    std::uint64_t m_carriersPerQuestion = 1024;
    std::vector<std::uint64_t> m_asked;
    /** "kind: text" of every finding. */
    Lines m_found;
    /** "tx 18000000 spacing 50" of every carrier. */
    Lines m_audited;
    std::vector<RowResult> m_rows;

private:
    void carrierAudited(const AuditRow& row, const CarrierResult& result) override {
        const std::string spacing =
            row.channelSpacing ? " spacing " + std::to_string(*row.channelSpacing) : "";
        m_audited.push_back(std::string(Radio::toString(row.direction)) + " " +
                            std::to_string(result.carrier) + spacing);
        for (const CarrierFinding& finding : result.findings) {
            EXPECT_EQ(finding.carrier, result.carrier);
            m_found.push_back(std::string(toString(finding.kind)) + ": " + describe(finding));
        }
    }
    void rowAudited(const RowResult& result) override { m_rows.push_back(result); }
};

class PlanAuditDspOffsetTest : public PlanAuditTest {
protected:
    PlanAuditDspOffsetTest() : PlanAuditTest(FrequencyHandler::MicrowaveBoardDspOffset) {}
};

class PlanAuditOffsetArrayTest : public PlanAuditTest {
protected:
    PlanAuditOffsetArrayTest() : PlanAuditTest(FrequencyHandler::MicrowaveBoardHzCsOffset) {}
};

TEST_F(PlanAuditTest, EveryCarrierOfEveryRowIsAudited) {
    addRow(Direction::tx, 18'000'000, 28'000, 3);
    addRow(Direction::rx, 18'500'000, 7'000, 2);
    EXPECT_EQ(audit(), AuditEnd::complete);
    EXPECT_THAT(m_audited,
                ElementsAre("tx 18000000", "tx 18028000", "tx 18056000", "rx 18500000", "rx 18507000"));
    EXPECT_THAT(m_found, IsEmpty());
}

TEST_F(PlanAuditDspOffsetTest, ResultHasWhatTheListenerWasTold) {
    addRow(Direction::tx, 18'000'000, 250, 2); // the second one is no whole number of MHz
    addRow(Direction::rx, 18'500'000, 1000, 3);
    const AuditResult result = auditWhole();
    EXPECT_EQ(result.carriers, 5U);
    EXPECT_EQ(result.outside, 1U);
    ASSERT_EQ(result.rows.size(), 2U);
    EXPECT_EQ(result.rows[0].outside, 1U);
    EXPECT_EQ(result.rows[1].carriers, 3U);
}

TEST_F(PlanAuditTest, CarriersToAuditAreThoseOfAllRows) {
    addRow(Direction::tx, 18'000'000, 28'000, 3);
    addRow(Direction::rx, 18'500'000, 7'000, 2);
    EXPECT_EQ(carriersToAudit(m_board), 5U);
}

TEST_F(PlanAuditTest, BoardWithoutCarriersIsRefused) {
    try {
        carriersToAudit(m_board);
        FAIL() << "there are none";
    } catch (const InputError& error) {
        EXPECT_STREQ(error.what(), "board.toml: no carriers to audit; expected at least one [[raster]]");
    }
}

TEST_F(PlanAuditTest, RowHasItsCarriersCounted) {
    addRow(Direction::tx, 18'000'000, 28'000, 3);
    audit();
    ASSERT_EQ(m_rows.size(), 1U);
    EXPECT_EQ(m_rows[0].carriers, 3U);
    EXPECT_EQ(m_rows[0].outside, 0U);
    EXPECT_EQ(m_rows[0].worstError, 0);
}

TEST_F(PlanAuditTest, RasterIsForItsChannelsOnly) {
    m_board.rasters.push_back({"raster", {}, {{true, 18'000'000, 1, 1}}, {}, {}});
    EXPECT_THAT(rowsOf(m_board), IsEmpty());
}

TEST_F(PlanAuditTest, ChannelSpacingsMakeNoDifferenceToAnIfBoard) {
    addRow(Direction::rx, 18'000'000, 1, 1, {50, 100});
    audit();
    EXPECT_THAT(m_audited, ElementsAre("rx 18000000"));
}

TEST_F(PlanAuditOffsetArrayTest, ReceiverIsAuditedWithEachChannelSpacing) {
    addRow(Direction::rx, 18'000'000, 1, 1, {50, 100});
    addRow(Direction::tx, 18'000'000, 1, 1, {50, 100});
    audit();
    EXPECT_THAT(m_audited, ElementsAre("rx 18000000 spacing 50", "rx 18000000 spacing 100", "tx 18000000"));
    EXPECT_THAT(m_found, IsEmpty());
}

TEST_F(PlanAuditOffsetArrayTest, RasterWithoutChannelSpacingsHasThatOfTheDatabase) {
    addRow(Direction::rx, 18'000'000, 1, 1, {50});
    addRow(Direction::rx, 18'000'000, 1, 1);
    audit();
    EXPECT_THAT(m_audited, ElementsAre("rx 18000000 spacing 50", "rx 18000000 spacing 100"));
}

TEST_F(PlanAuditOffsetArrayTest, DefaultOffsetPutsTheCarrierOff) {
    addRow(Direction::rx, 18'000'000, 1, 1, {28000});
    audit();
    EXPECT_THAT(m_found,
                ElementsAre("carrier-off: carrier off by +3000000 Hz, allowed are 500 Hz: the array has no "
                            "entry for channel spacing 28000, and by default the LO moves by +3 MHz"));
}

TEST_F(PlanAuditOffsetArrayTest, ChargePumpIsReadAtTheCarrierWithOffset) {
    addRow(Direction::rx, 17'001'999, 1, 1, {50});
    audit();
    EXPECT_THAT(m_found, ElementsAre("charge-pump-clamped: charge pump read at 16999999 kHz, outside its "
                                     "table's 17000000 to 19000000 kHz"));
}

TEST_F(PlanAuditDspOffsetTest, UnhandledChannelSpacing) {
    addRow(Direction::rx, 18'000'000, 1000, 2, {500});
    audit();
    EXPECT_THAT(m_found,
                ElementsAre("unhandled-spacing: channel spacing 500 is not handled: nothing is written",
                            "unhandled-spacing: channel spacing 500 is not handled: nothing is "
                            "written"));
    EXPECT_EQ(m_rows[0].worstError, std::nullopt);
}

TEST_F(PlanAuditDspOffsetTest, LostResidueOfMoreThanIsAllowed) {
    addRow(Direction::tx, 18'000'500, 1, 1);
    audit();
    EXPECT_THAT(m_found, ElementsAre("carrier-off: carrier off by +500000 Hz, allowed are 500 Hz"));
    EXPECT_EQ(m_rows[0].worstError, 500'000);
    EXPECT_EQ(m_rows[0].worstCarrier, 18'000'500U);
}

TEST_F(PlanAuditDspOffsetTest, BoardSaysHowFarACarrierMayBeOff) {
    m_board.limits.carrierError = 250'000;
    addRow(Direction::tx, 18'000'250, 1, 2);
    audit();
    EXPECT_THAT(m_found, ElementsAre("carrier-off: carrier off by -251000 Hz, allowed are 250000 Hz"));
}

TEST_F(PlanAuditDspOffsetTest, FindingsOfARowAreCountedWithTheWorst) {
    addRow(Direction::tx, 18'000'100, 100, 4);
    audit();
    ASSERT_EQ(m_rows[0].groups.size(), 1U);
    EXPECT_EQ(m_rows[0].groups[0].count, 4U);
    EXPECT_EQ(m_rows[0].groups[0].worst.carrier, 18'000'400U);
    EXPECT_EQ(m_rows[0].outside, 4U);
}

TEST_F(PlanAuditDspOffsetTest, WordOfTheRfPllThatDoesNotFit32Bits) {
    PlanBoards::set(m_board, "channel.1.tx.mixer.multiplicationfactor", {1});
    m_board.limits.carrierError = 500'000;
    addRow(Direction::tx, 2'147'483'600, 1, 1);
    audit();
    EXPECT_THAT(m_found, Contains("word-overflow: RF PLL 2147484000 kHz does not fit the driver's 32-bit "
                                  "word, which becomes -2147483296"));
}

TEST_F(PlanAuditTest, IfPllOutsideItsRange) {
    m_board.limits.ifPll = Range{139'501, 140'499};
    EXPECT_THAT(auditRx(18'000'500),
                ElementsAre("if-pll-out-of-range: IF PLL 139500 kHz is outside 139501 to 140499 kHz"));
}

TEST_F(PlanAuditTest, IfPllAtTheEndOfItsRange) {
    m_board.limits.ifPll = Range{139'500, 140'499};
    EXPECT_THAT(auditRx(18'000'500), IsEmpty());
    EXPECT_THAT(auditRx(18'000'499), IsEmpty());
}

TEST_F(PlanAuditTest, RfPllOutsideItsRange) {
    m_board.limits.rfPll = Range{8'000'000, 8'929'999};
    EXPECT_THAT(auditRx(18'000'250),
                ElementsAre("rf-pll-out-of-range: RF PLL 8930000 kHz is outside 8000000 to 8929999 kHz"));
}

TEST_F(PlanAuditOffsetArrayTest, RangeOfAnRfPllInHzIsGivenInKHz) {
    m_board.limits.rfPll = Range{9'000'000, 9'500'000};
    addRow(Direction::tx, 17'999'999, 1, 2);
    audit();
    EXPECT_THAT(m_found, ElementsAre("rf-pll-out-of-range: RF PLL 8999999500 Hz is outside 9000000000 to "
                                     "9500000000 Hz"));
}

TEST_F(PlanAuditTest, ChargePumpReadOutsideItsTable) {
    EXPECT_THAT(auditRx(19'000'001),
                ElementsAre("charge-pump-clamped: charge pump read at 19000001 kHz, outside its table's "
                            "17000000 to 19000000 kHz"));
}

TEST_F(PlanAuditTest, FoldedLoPutsTheCarrierOff) {
    PlanBoards::remove(m_board, "Channel.1.Rx.Rf.Pll.Frequency.To.Chargepump.Setting");
    EXPECT_THAT(auditRx(100'000), Contains("carrier-off: carrier off by +80000000 Hz, allowed are 500 Hz"));
}

TEST_F(PlanAuditTest, ErrorOfTheLibraryIsAFinding) {
    PlanBoards::remove(m_board, "Channel.1.Rx.Rf.Pll.Frequency.To.Chargepump.Setting");
    EXPECT_THAT(auditRx(18'000'000),
                ElementsAre("failed: Unable to fetch value from table "
                            "Channel.1.Rx.Rf.Pll.Frequency.To.Chargepump.Setting (ECHResult = 0x8003)"));
}

TEST_F(PlanAuditTest, FailedWriteIsAFindingAndNoCarrierIsNotOneMore) {
    m_doctor = [](Standalone::Platform& platform) {
        platform.calls().inject({Operation::driverWrite, "channel.1.rx.if.frequency", 0x8001, {}, {}});
    };
    EXPECT_THAT(auditRx(18'000'000), ElementsAre("failed: Write to driver failed for "
                                                 "channel.1.Rx.if.frequency (EDriverResult = 0x8001)"));
}

TEST_F(PlanAuditTest, CarrierOfWhichNothingIsWrittenIsAFinding) {
    m_doctor = [](Standalone::Platform& platform) {
        platform.drivers().find("channel.1.rx.rf.lo.frequency")->setMissingWords(Standalone::wordWrite);
    };
    EXPECT_THAT(auditRx(18'000'000), ElementsAre("no-carrier: no carrier: not all words for it are written"));
}

/** Adds 1 to the fourth value that a driver is given, as one that remembers where it came from might. */
class ForgetfulDriver {
public:
    explicit ForgetfulDriver(DriverInterface& record) : m_driver(record) {
        record.context = this;
        record.write = &write;
    }

private:
    static EDriverResult write(void* context, int value) {
        auto& self = *static_cast<ForgetfulDriver*>(context);
        const int error = ++self.m_writes == 4 ? 1 : 0;
        return self.m_driver.write(self.m_driver.context, value + error);
    }

    DriverInterface m_driver;
    int m_writes = 0;
};

TEST_F(PlanAuditTest, RetuneThatGivesAnotherWordIsAFinding) {
    // The radio starts on the last carrier; then come the first one, its neighbour and the first one again.
    std::unique_ptr<ForgetfulDriver> driver;
    m_doctor = [&](Standalone::Platform& platform) {
        driver = std::make_unique<ForgetfulDriver>(
            *platform.drivers().find("channel.1.rx.if.frequency")->record());
    };
    addRow(Direction::rx, 18'000'000, 1000, 2);
    audit();
    EXPECT_THAT(m_found, ElementsAre("retune-differs: back from 18001000 kHz, channel.1.rx.if.frequency is "
                                     "140001, at first 140000"));
}

TEST_F(PlanAuditTest, WordThatIsMissingAfterARetuneIsAFinding) {
    m_doctor = [](Standalone::Platform& platform) {
        platform.calls().inject({Operation::driverWrite, "channel.1.rx.rf.pll.config", 0x8001, 2, {}});
    };
    addRow(Direction::rx, 18'000'000, 1000, 2);
    audit();
    EXPECT_THAT(m_found, ElementsAre("failed: Unable to write to driver channel.1.Rx.rf.pll.config "
                                     "(EDriverResult = 0x8001)",
                                     "retune-differs: back from 18001000 kHz, channel.1.rx.rf.pll.config is "
                                     "100, at first not written"));
}

TEST_F(PlanAuditTest, RfModulesAreHeldAgainstWhatTheyPassOn) {
    m_board = PlanBoards::rfModule();
    addRow(Direction::tx, 7'442'000, 28'000, 2);
    audit();
    EXPECT_THAT(m_audited, ElementsAre("tx 7442000", "tx 7470000"));
    EXPECT_THAT(m_found, IsEmpty());
    EXPECT_EQ(m_rows[0].worstError, 0);
}

TEST_F(PlanAuditTest, RemoteRadioUnitThatRefusesKeepsItsOldCarrier) {
    m_board = PlanBoards::rau();
    m_doctor = [](Standalone::Platform& platform) {
        platform.calls().inject({Operation::rauRx, "", 0x8001, {}, {}});
    };
    EXPECT_THAT(auditRx(17'728'750),
                ElementsAre("carrier-off: carrier off by -17728750000 Hz, allowed are 500 Hz"));
}

TEST_F(PlanAuditTest, StopsWhenItMayNotGoOn) {
    m_mayGoOn = false;
    addRow(Direction::rx, 18'000'000, 1, 5000);
    addRow(Direction::tx, 18'000'000, 1, 5000);
    EXPECT_EQ(audit(), AuditEnd::stopped);
    EXPECT_THAT(m_asked, ElementsAre(1024U));
    ASSERT_EQ(m_rows.size(), 1U);
    EXPECT_EQ(m_rows[0].carriers, 1024U);
}

TEST_F(PlanAuditTest, IsAskedAtEachCarrierWhereThatIsWorthIt) {
    m_carriersPerQuestion = 1;
    addRow(Direction::rx, 18'000'000, 1, 3);
    EXPECT_EQ(audit(), AuditEnd::complete);
    EXPECT_THAT(m_asked, ElementsAre(1U, 2U, 3U));
    m_mayGoOn = false;
    EXPECT_EQ(auditWhole().carriers, 1U);
}

TEST_F(PlanAuditOffsetArrayTest, ChannelThatDoesNotTakeTheSpacingEndsTheAudit) {
    m_doctor = [](Standalone::Platform& platform) {
        platform.calls().inject({Operation::variableAddress, "ChannelSpacing", 0x8001, {}, {}});
    };
    addRow(Direction::rx, 18'000'000, 1, 1, {50});
    EXPECT_EQ(audit(), AuditEnd::phaseFailed);
    EXPECT_THAT(m_audited, IsEmpty());
}

} // namespace
} // namespace Radio::Plan

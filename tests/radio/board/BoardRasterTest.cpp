#include "tests/radio/support/BoardFileFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace Radio {

static bool operator==(const CarrierRow& left, const CarrierRow& right) {
    return left.transmit == right.transmit && left.first == right.first && left.step == right.step &&
           left.count == right.count;
}

static void PrintTo(const CarrierRow& row, std::ostream* stream) {
    *stream << (row.transmit ? "tx" : "rx") << " from " << row.first << " by " << row.step << ", "
            << row.count;
}

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class BoardRasterTest : public BoardFileFixture {
protected:
    /** A board with the channels 1 and 2 whose file has `text` from line 8 on. */
    static Board loadAfterChannels(const std::string& text) {
        return load("name = \"Radio\"\n[[channel]]\nnumber = 1\ntype = \"rf-module\"\n[[channel]]\nnumber = "
                    "2\ntype = \"rf-module\"\n" +
                    text);
    }
    /** A board with one raster, which starts on line 8 with its name; `text` begins on line 10. */
    static Board loadRaster(const std::string& text) {
        return loadAfterChannels("[[raster]]\nname = \"R\"\n" + text);
    }
    static Board loadArrangement(const std::string& text) {
        return loadRaster("centre = 7575000\nspacing = 7000\ncount = 20\n" + text);
    }
    static Board loadRow(const std::string& text) {
        return loadRaster("direction = \"tx\"\nfirst = 7425000\n" + text);
    }
    static std::string refusedText(const std::string& text) {
        return refusal([&] { loadAfterChannels(text); });
    }
    static std::string refusedRaster(const std::string& text) {
        return refusal([&] { loadRaster(text); });
    }
    static std::string refusedArrangement(const std::string& text) {
        return refusal([&] { loadArrangement(text); });
    }
    static std::string refusedRow(const std::string& text) {
        return refusal([&] { loadRow(text); });
    }
};

// Arrangements.

TEST_F(BoardRasterTest, ArrangementCountsFromOne) {
    // 7575 - 154 + 7 n MHz and 7575 + 7 + 7 n MHz: 7428 and 7589 MHz for n = 1.
    const Board board = loadArrangement("tx = -154000\nrx = 7000\n");
    ASSERT_EQ(board.rasters.size(), 1U);
    EXPECT_EQ(board.rasters[0].name, "R");
    EXPECT_EQ(board.rasters[0].place.line, 8U);
    EXPECT_THAT(board.rasters[0].rows,
                ElementsAre(CarrierRow{true, 7428000, 7000, 20}, CarrierRow{false, 7589000, 7000, 20}));
}

TEST_F(BoardRasterTest, EitherHalfOfAnArrangementMayBeLeftOut) {
    EXPECT_THAT(loadArrangement("tx = -154000\n").rasters[0].rows,
                ElementsAre(CarrierRow{true, 7428000, 7000, 20}));
    EXPECT_THAT(loadArrangement("rx = 7000\n").rasters[0].rows,
                ElementsAre(CarrierRow{false, 7589000, 7000, 20}));
}

TEST_F(BoardRasterTest, ArrangementNeedsAHalf) {
    EXPECT_EQ(refusedArrangement(""), "board.toml:8: raster: expected tx, rx or both, found neither");
}

TEST_F(BoardRasterTest, ArrangementNeedsCentreSpacingAndCount) {
    EXPECT_EQ(refusedRaster("tx = 0\n"),
              "board.toml:8: raster.centre: missing, expected the centre of the arrangement, in kHz");
    EXPECT_EQ(refusedRaster("tx = 0\ncentre = 7575000\n"),
              "board.toml:8: raster.spacing: missing, expected the spacing of the carriers, in kHz");
    EXPECT_EQ(refusedRaster("tx = 0\ncentre = 7575000\nspacing = 7000\n"),
              "board.toml:8: raster.count: missing, expected the number of carriers in one direction");
}

TEST_F(BoardRasterTest, CentreSpacingAndCountAreAtLeastOne) {
    EXPECT_EQ(refusedRaster("centre = 0\n"),
              "board.toml:10: raster.centre: expected an integer from 1 to 2147483647, found 0");
    EXPECT_EQ(refusedRaster("centre = 7575000\nspacing = 0\n"),
              "board.toml:11: raster.spacing: expected an integer from 1 to 2147483647, found 0");
    EXPECT_EQ(refusedRaster("centre = 7575000\nspacing = 7000\ncount = -1\n"),
              "board.toml:12: raster.count: expected an integer from 1 to 2147483647, found -1");
}

TEST_F(BoardRasterTest, OffsetThatIsNoIntegerIsRefused) {
    EXPECT_EQ(
        refusedArrangement("tx = \"-154 MHz\"\n"),
        "board.toml:13: raster.tx: expected an integer from -2147483648 to 2147483647, found \"-154 MHz\"");
}

TEST_F(BoardRasterTest, CarrierBelowOneKilohertzIsRefused) {
    // 7575000 - 7581999 + 7000 = 1
    EXPECT_EQ(refusedArrangement("tx = -7581999\n"), "accepted");
    EXPECT_EQ(refusedArrangement("tx = -7582000\n"),
              "board.toml:8: raster: expected carriers from 1 to 4294967295 kHz, found 0 to 133000");
}

TEST_F(BoardRasterTest, CarrierBeyond32BitsIsRefused) {
    // 2147483647 + 2147483647 + 1 is the largest that fits.
    const std::string largest = "centre = 2147483647\ntx = 2147483647\nspacing = 1\ncount = ";
    EXPECT_THAT(loadRaster(largest + "1\n").rasters[0].rows,
                ElementsAre(CarrierRow{true, 4294967295U, 1, 1}));
    EXPECT_EQ(
        refusedRaster(largest + "2\n"),
        "board.toml:8: raster: expected carriers from 1 to 4294967295 kHz, found 4294967295 to 4294967296");
}

TEST_F(BoardRasterTest, HugeArrangementDoesNotOverflow) {
    // 1 + 2147483647 + (2147483647 - 1) * 2147483647
    EXPECT_EQ(refusedRaster("centre = 1\ntx = 0\nspacing = 2147483647\ncount = 2147483647\n"),
              "board.toml:8: raster: expected carriers from 1 to 4294967295 kHz, found 2147483648 to "
              "4611686014132420610");
}

// Plain rows.

TEST_F(BoardRasterTest, PlainRowHasBothEnds) {
    // (7725000 - 7425000) / 250 + 1
    EXPECT_THAT(loadRow("last = 7725000\nstep = 250\n").rasters[0].rows,
                ElementsAre(CarrierRow{true, 7425000, 250, 1201}));
}

TEST_F(BoardRasterTest, PlainRowEndsBeforeALastThatNoStepMeets) {
    // 7425, 7525, 7625 MHz
    EXPECT_THAT(loadRow("last = 7724999\nstep = 100000\n").rasters[0].rows,
                ElementsAre(CarrierRow{true, 7425000, 100000, 3}));
}

TEST_F(BoardRasterTest, PlainRowMayBeOneCarrier) {
    EXPECT_THAT(loadRow("last = 7425000\nstep = 2147483647\n").rasters[0].rows,
                ElementsAre(CarrierRow{true, 7425000, 2147483647, 1}));
}

TEST_F(BoardRasterTest, PlainRowIsOfEitherDirectionOrBoth) {
    const std::string row = "first = 7425000\nlast = 7425010\nstep = 10\ndirection = ";
    EXPECT_THAT(loadRaster(row + "\"rx\"\n").rasters[0].rows, ElementsAre(CarrierRow{false, 7425000, 10, 2}));
    EXPECT_THAT(loadRaster(row + "\"both\"\n").rasters[0].rows,
                ElementsAre(CarrierRow{true, 7425000, 10, 2}, CarrierRow{false, 7425000, 10, 2}));
}

TEST_F(BoardRasterTest, UnknownDirectionIsRefused) {
    EXPECT_EQ(refusedRaster("direction = \"tz\"\n"), "board.toml:10: raster.direction: unknown word \"tz\" "
                                                     "(did you mean \"tx\"?), expected one of tx, rx, both");
    EXPECT_EQ(refusedRaster("direction = 1\n"),
              "board.toml:10: raster.direction: expected one of the words tx, rx, both, found 1");
}

TEST_F(BoardRasterTest, PlainRowNeedsDirectionFirstLastAndStep) {
    EXPECT_EQ(refusedRaster("step = 250\n"),
              "board.toml:8: raster.direction: missing, expected one of the words tx, rx, both");
    EXPECT_EQ(refusedRaster("direction = \"tx\"\n"),
              "board.toml:8: raster.first: missing, expected the first carrier, in kHz");
    EXPECT_EQ(refusedRow(""), "board.toml:8: raster.last: missing, expected the last carrier, in kHz");
    EXPECT_EQ(refusedRow("last = 7725000\n"),
              "board.toml:8: raster.step: missing, expected the distance of two carriers, in kHz");
}

TEST_F(BoardRasterTest, FirstCarrierIsAtLeastOne) {
    EXPECT_EQ(refusedRaster("direction = \"tx\"\nfirst = 0\n"),
              "board.toml:11: raster.first: expected an integer from 1 to 2147483647, found 0");
}

TEST_F(BoardRasterTest, LastCarrierBelowTheFirstIsRefused) {
    EXPECT_EQ(refusedRow("last = 7424999\n"),
              "board.toml:12: raster.last: expected an integer from 7425000 to 2147483647, found 7424999");
}

TEST_F(BoardRasterTest, StepOfZeroIsRefused) {
    EXPECT_EQ(refusedRow("last = 7725000\nstep = 0\n"),
              "board.toml:13: raster.step: expected an integer from 1 to 2147483647, found 0");
}

// Both kinds.

TEST_F(BoardRasterTest, RasterIsOfOneKind) {
    const std::string expected = "board.toml:8: raster: expected either centre, spacing, count, tx and rx, "
                                 "or direction, first, last and step, found ";
    EXPECT_EQ(refusedRaster(""), expected + "neither");
    EXPECT_EQ(refusedArrangement("step = 250\n"), expected + "centre and step");
    EXPECT_EQ(refusedRow("rx = 7000\n"), expected + "rx and direction");
}

TEST_F(BoardRasterTest, TenMillionCarriersAreTheMost) {
    const std::string row = "direction = \"both\"\nfirst = 1\nstep = 1\nlast = ";
    EXPECT_EQ(refusedRaster(row + "5000000\n"), "accepted");
    EXPECT_EQ(refusedRaster(row + "5000001\n"),
              "board.toml:8: raster: expected at most 10000000 carriers, found 10000002");
    EXPECT_EQ(refusedRaster("centre = 1\ntx = 0\nspacing = 1\ncount = 10000001\n"),
              "board.toml:8: raster: expected at most 10000000 carriers, found 10000001");
}

TEST_F(BoardRasterTest, RasterIsForAllChannelsUnlessItSaysWhich) {
    EXPECT_THAT(loadArrangement("tx = 0\n").rasters[0].channels, ElementsAre(1, 2));
    EXPECT_THAT(loadArrangement("tx = 0\nchannels = [2]\n").rasters[0].channels, ElementsAre(2));
    EXPECT_THAT(loadArrangement("tx = 0\nchannels = [2, 1]\n").rasters[0].channels, ElementsAre(2, 1));
}

TEST_F(BoardRasterTest, ChannelThatTheBoardDoesNotHaveIsRefused) {
    EXPECT_EQ(refusedArrangement("tx = 0\nchannels = [1, 3]\n"),
              "board.toml:14: raster.channels: expected numbers of the board's channels, found 3");
}

TEST_F(BoardRasterTest, ChannelOrSpacingTwiceIsRefused) {
    EXPECT_EQ(refusedArrangement("tx = 0\nchannels = [1,\n1]\n"),
              "board.toml:15: raster.channels: expected each number once, found 1 twice");
    EXPECT_EQ(refusedArrangement("tx = 0\nchannel_spacings = [100, 250, 100]\n"),
              "board.toml:14: raster.channel_spacings: expected each number once, found 100 twice");
}

TEST_F(BoardRasterTest, ChannelSpacingsAreKept) {
    EXPECT_THAT(loadArrangement("tx = 0\n").rasters[0].channelSpacings, IsEmpty());
    EXPECT_THAT(loadArrangement("tx = 0\nchannel_spacings = [250, 50]\n").rasters[0].channelSpacings,
                ElementsAre(250, 50));
    EXPECT_EQ(refusedArrangement("tx = 0\nchannel_spacings = 250\n"),
              "board.toml:14: raster.channel_spacings: expected an array of at least one element, found 250");
}

TEST_F(BoardRasterTest, RasterNeedsAName) {
    EXPECT_EQ(refusedText("[[raster]]\ncentre = 1\n"),
              "board.toml:8: raster.name: missing, expected the name of the raster");
    EXPECT_EQ(refusedText("[[raster]]\nname = \"\"\n"),
              "board.toml:9: raster.name: expected the name of the raster, found \"\"");
}

TEST_F(BoardRasterTest, UnknownKeyOfARasterIsRefusedAndTheNearestOffered) {
    EXPECT_EQ(
        refusedArrangement("chanels = [1]\n"),
        "board.toml:13: raster.chanels: unknown key (did you mean \"channels\"?), expected one of name, "
        "channels, centre, spacing, count, tx, rx, direction, first, last, step, channel_spacings");
}

TEST_F(BoardRasterTest, RasterInSingleBracketsIsRefused) {
    EXPECT_EQ(refusedText("[raster]\nname = \"R\"\n"),
              "board.toml:8: raster: expected [[raster]] tables, one for each raster, found a table");
}

TEST_F(BoardRasterTest, RastersComeInTheOrderOfTheFile) {
    const std::string row = "direction = \"tx\"\nfirst = 1\nlast = 2\nstep = 1\n";
    const Board board = loadRaster(row + "[[raster]]\nname = \"A\"\n" + row);
    ASSERT_EQ(board.rasters.size(), 2U);
    EXPECT_EQ(board.rasters[0].name, "R");
    EXPECT_EQ(board.rasters[1].name, "A");
}

TEST_F(BoardRasterTest, BoardMayHaveNeitherRastersNorLimits) {
    const Board board = loadAfterChannels("");
    EXPECT_THAT(board.rasters, IsEmpty());
    EXPECT_FALSE(board.limits.ifPll || board.limits.rfPll || board.limits.carrierError);
}

// Limits.

TEST_F(BoardRasterTest, LimitsAreKept) {
    const Limits limits =
        loadAfterChannels(
            "[limits]\nif_pll = [130000, 150000]\nrf_pll = [3500000, 3500000]\ncarrier_error = 0\n")
            .limits;
    ASSERT_TRUE(limits.ifPll && limits.rfPll && limits.carrierError);
    EXPECT_EQ(limits.ifPll->low, 130000);
    EXPECT_EQ(limits.ifPll->high, 150000);
    EXPECT_EQ(limits.rfPll->low, 3500000);
    EXPECT_EQ(limits.rfPll->high, 3500000);
    EXPECT_EQ(*limits.carrierError, 0);
}

TEST_F(BoardRasterTest, LimitThatIsNotStatedIsNone) {
    const Limits limits = loadAfterChannels("[limits]\ncarrier_error = 500\n").limits;
    EXPECT_FALSE(limits.ifPll || limits.rfPll);
    EXPECT_EQ(limits.carrierError, 500);
}

TEST_F(BoardRasterTest, RangeUpsideDownIsRefused) {
    EXPECT_EQ(refusedText("[limits]\nif_pll = [150000, 130000]\n"),
              "board.toml:9: limits.if_pll: expected the lowest value first, found 130000 after 150000");
}

TEST_F(BoardRasterTest, RangeHasTwoEnds) {
    EXPECT_EQ(refusedText("[limits]\nrf_pll = [1, 2, 3]\n"),
              "board.toml:9: limits.rf_pll: expected the lowest and the highest value: 2, found 3");
    EXPECT_EQ(refusedText("[limits]\nrf_pll = 4000000\n"),
              "board.toml:9: limits.rf_pll: expected an array of at least one element, found 4000000");
}

TEST_F(BoardRasterTest, NegativeLimitIsRefused) {
    EXPECT_EQ(refusedText("[limits]\nrf_pll = [-1, 2]\n"),
              "board.toml:9: limits.rf_pll: expected an integer from 0 to 2147483647, found -1");
    EXPECT_EQ(refusedText("[limits]\ncarrier_error = -1\n"),
              "board.toml:9: limits.carrier_error: expected an integer from 0 to 2147483647, found -1");
}

TEST_F(BoardRasterTest, UnknownLimitIsRefusedAndTheNearestOffered) {
    EXPECT_EQ(refusedText("[limits]\nrf_ppl = [1, 2]\n"),
              "board.toml:9: limits.rf_ppl: unknown key (did you mean \"rf_pll\"?), expected one of if_pll, "
              "rf_pll, carrier_error, temperature, leakage, leakage_at_nodes, leakage_improvement, image, "
              "carrier_leakage");
}

TEST_F(BoardRasterTest, LimitsThatAreNoTableAreRefused) {
    EXPECT_EQ(refused("name = \"Radio\"\nlimits = 5\n[[channel]]\nnumber = 1\ntype = 1\n"),
              "board.toml:2: limits: expected a table, found 5");
}

TEST_F(BoardRasterTest, ThereAreAtMost10000) {
    std::string text;
    for (int raster = 0; raster < 10001; ++raster) {
        text += "[[raster]]\nname = \"R\"\ndirection = \"tx\"\nfirst = 1\nlast = 1\nstep = 1\n";
    }
    EXPECT_EQ(refusedText(text), "board.toml:60008: raster: expected at most 10000 rasters");
}

} // namespace
} // namespace Radio

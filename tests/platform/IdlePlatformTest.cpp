// A platform on which nobody listens carries calls out without describing them: what they do stays the same.

#include "CCalibrationHandler.h"
#include "PlatformFixture.h"

#include <array>

namespace {

namespace Codes = Standalone::Codes;

class IdlePlatformTest : public PlatformFixture {
protected:
    IdlePlatformTest() { platform.calls().setRecording(false); }

    std::int64_t value() { return platform.drivers().find("lo")->value(); }
    std::uint64_t writes() { return platform.drivers().find("lo")->writes(); }

    DriverInterface& lo = driver("lo");
    CalibrationTable& line = platform.tables().add({"line", {0, 10}, {}, {100, 200}});
    CalibrationTable& plane = platform.tables().add({"plane", {0, 10}, {0, 2}, {0, 20, 100, 120}});
};

TEST_F(IdlePlatformTest, WriteIsKeptAndCounted) {
    EXPECT_EQ(lo.write(lo.context, -7), 0);
    EXPECT_EQ(value(), -7);
    EXPECT_EQ(writes(), 1U);
}

TEST_F(IdlePlatformTest, BufferOfEightBytesIsKeptAsANumber) {
    const std::array<std::uint8_t, 8> bytes{1, 2, 3, 4, 5, 6, 7, 8};
    EXPECT_EQ(lo.writeBuffer(lo.context, bytes.data(), 8), 0);
    EXPECT_EQ(value(), 0x0807060504030201);
    EXPECT_EQ(writes(), 1U);
}

TEST_F(IdlePlatformTest, BufferOfThreeBytesIsKeptAsANumber) {
    const std::array<std::uint8_t, 3> bytes{1, 2, 0xFF};
    EXPECT_EQ(lo.writeBuffer(lo.context, bytes.data(), 3), 0);
    EXPECT_EQ(value(), 0xFF0201);
}

TEST_F(IdlePlatformTest, BufferOfNineBytesIsCountedAndNoNumber) {
    lo.write(lo.context, 5);
    const std::array<std::uint8_t, 9> bytes{};
    EXPECT_EQ(lo.writeBuffer(lo.context, bytes.data(), 9), 0);
    EXPECT_EQ(value(), 5);
    EXPECT_EQ(writes(), 2U);
}

TEST_F(IdlePlatformTest, MissingBufferIsRefused) {
    EXPECT_EQ(lo.writeBuffer(lo.context, nullptr, 1), Codes::badArgument);
    EXPECT_EQ(writes(), 0U);
}

TEST_F(IdlePlatformTest, TablesAreInterpolated) {
    int y = 0;
    EXPECT_EQ(CCalibrationTable_LinearInterpolate(&line, 3, &y), 0);
    EXPECT_EQ(y, 130);
    EXPECT_EQ(CCalibrationTable_BiLinearInterpolate(&plane, 5, 1, &y), 0);
    EXPECT_EQ(y, 60);
}

TEST_F(IdlePlatformTest, InterpolationThatCannotBeIsRefused) {
    int y = 7;
    EXPECT_EQ(CCalibrationTable_LinearInterpolate(nullptr, 3, &y), Codes::badArgument);
    EXPECT_EQ(CCalibrationTable_LinearInterpolate(&plane, 3, &y), Codes::badArgument);
    EXPECT_EQ(CCalibrationTable_BiLinearInterpolate(nullptr, 3, 4, &y), Codes::badArgument);
    EXPECT_EQ(CCalibrationTable_BiLinearInterpolate(&line, 3, 4, &y), Codes::badArgument);
    EXPECT_EQ(y, 7);
}

TEST_F(IdlePlatformTest, FaultIsHeededAlthoughNothingIsRecorded) {
    fail(Standalone::Operation::driverWrite, "lo", 0x8765);
    EXPECT_EQ(lo.write(lo.context, 1), 0x8765);
    EXPECT_EQ(writes(), 0U);
}

} // namespace

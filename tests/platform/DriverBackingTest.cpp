#include "PlatformFixture.h"

#include <array>

namespace {

namespace Codes = Standalone::Codes;

/** Stands for hardware: keeps what is written, unless it is to fail. */
class Backing : public Standalone::DriverBacking {
public:
    std::int32_t write(std::int64_t value) override {
        ++writes;
        if (code == 0) {
            kept = value;
        }
        return code;
    }
    std::int32_t read(std::int64_t& value) override {
        if (code == 0) {
            value = kept;
        }
        return code;
    }

    std::int32_t code = 0;
    std::int64_t kept = 0;
    int writes = 0;
};

class DriverBackingTest : public PlatformFixture {
protected:
    DriverBackingTest() { bank().setBacking(&backing); }

    Standalone::Driver& bank() { return *platform.drivers().find("lo"); }
    const Standalone::Call& lastCall() const { return platform.calls().journal().back(); }

    DriverInterface& lo = driver("lo");
    Backing backing;
};

TEST_F(DriverBackingTest, WriteGoesThrough) {
    EXPECT_EQ(lo.write(lo.context, -5), 0);
    EXPECT_EQ(backing.kept, -5);
    EXPECT_EQ(bank().value(), -5);
    EXPECT_EQ(bank().writes(), 1U);
    EXPECT_EQ(lastCall().value, -5);
    EXPECT_EQ(lastCall().code, 0);
}

TEST_F(DriverBackingTest, RefusedValueIsNotKept) {
    lo.write(lo.context, 5);
    backing.code = 0x816e;
    EXPECT_EQ(lo.write(lo.context, 6), 0x816e);
    EXPECT_EQ(bank().value(), 5);
    EXPECT_EQ(bank().writes(), 1U);
    EXPECT_EQ(lastCall().value, 6);
    EXPECT_EQ(lastCall().code, 0x816e);
}

TEST_F(DriverBackingTest, BufferOfEightBytesGoesThroughAsOneNumber) {
    // 7 450 000 000 Hz is 0x1BC0DFA80.
    const std::array<std::uint8_t, 8> bytes{0x80, 0xFA, 0x0D, 0xBC, 0x01, 0, 0, 0};
    EXPECT_EQ(lo.writeBuffer(lo.context, bytes.data(), 8), 0);
    EXPECT_EQ(backing.kept, 7450000000);
    EXPECT_EQ(bank().value(), 7450000000);
    EXPECT_EQ(lastCall().value, 7450000000);
    EXPECT_EQ(lastCall().bytes.size(), 8U);
}

TEST_F(DriverBackingTest, BufferThatIsNoNumberDoesNotReachTheHardware) {
    const std::array<std::uint8_t, 9> bytes{};
    EXPECT_EQ(lo.writeBuffer(lo.context, bytes.data(), 9), Codes::badArgument);
    EXPECT_EQ(lo.writeBuffer(lo.context, bytes.data(), 0), Codes::badArgument);
    EXPECT_EQ(lo.writeBuffer(lo.context, nullptr, 8), Codes::badArgument);
    EXPECT_EQ(backing.writes, 0);
    EXPECT_FALSE(bank().wasWritten());
}

TEST_F(DriverBackingTest, NullContextReachesNoHardware) {
    int value = 3;
    EXPECT_EQ(lo.write(nullptr, 8), Codes::badArgument);
    EXPECT_EQ(lo.writeBuffer(nullptr, "x", 1), Codes::badArgument);
    EXPECT_EQ(lo.read(nullptr, &value), Codes::badArgument);
    EXPECT_EQ(backing.writes, 0);
    EXPECT_EQ(value, 3);
}

TEST_F(DriverBackingTest, ReadComesFromTheHardware) {
    backing.kept = 0x1BC0DFA80;
    int value = 0;
    EXPECT_EQ(lo.read(lo.context, &value), 0);
    EXPECT_EQ(static_cast<std::uint32_t>(value), 0xBC0DFA80); // the low 32 bits
    EXPECT_EQ(bank().value(), 0x1BC0DFA80);
}

TEST_F(DriverBackingTest, ReadThatFailsLeavesTheValueUntouched) {
    lo.write(lo.context, 5);
    backing.code = 0x816e;
    int value = 3;
    EXPECT_EQ(lo.read(lo.context, &value), 0x816e);
    EXPECT_EQ(value, 3);
    EXPECT_EQ(bank().value(), 5);
    EXPECT_EQ(lastCall().code, 0x816e);
}

TEST_F(DriverBackingTest, FaultAnswersBeforeTheHardwareIsReached) {
    fail(Standalone::Operation::driverWrite, "lo", 0x8005);
    EXPECT_EQ(lo.write(lo.context, 5), 0x8005);
    EXPECT_EQ(backing.writes, 0);
}

TEST_F(DriverBackingTest, BackingTakesThePlaceOfASource) {
    bank().setSource([] { return 7; });
    backing.kept = 4;
    EXPECT_EQ(read(lo), 4);
}

TEST_F(DriverBackingTest, WithoutItTheDriverIsSimulatedAgain) {
    bank().setBacking(nullptr);
    EXPECT_EQ(lo.write(lo.context, 5), 0);
    EXPECT_EQ(read(lo), 5);
    EXPECT_EQ(backing.writes, 0);
}

TEST_F(DriverBackingTest, MissingWordsStayMissing) {
    bank().setBacking(nullptr);
    bank().setMissingWords(Standalone::wordWrite);
    bank().setBacking(&backing);
    EXPECT_EQ(lo.write, nullptr);
    EXPECT_NE(lo.writeBuffer, nullptr);
}

} // namespace

#include "radio/session/PeekPoke.h"

#include "ResultCode.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Radio {
namespace {

using Standalone::Operation;
using testing::ElementsAre;

class PeekPokeTest : public testing::Test {
protected:
    Standalone::Driver& driver(const std::string& name, unsigned missingWords = 0) {
        return m_platform.drivers().add(name, missingWords);
    }

    Standalone::Platform m_platform;
};

TEST_F(PeekPokeTest, ReadGoesThroughTheRecord) {
    driver("a").setValue(-7);
    const DriverAnswer answer = readDriver(driver("a"));
    EXPECT_EQ(answer.code, ResultOk);
    EXPECT_EQ(answer.value, -7);
    EXPECT_EQ(answer.note, "");
    EXPECT_EQ(m_platform.calls().journalOf(Operation::driverRead).size(), 1U);
}

TEST_F(PeekPokeTest, FaultStrikesReadsAndWrites) {
    m_platform.calls().inject({Operation::driverRead, "a", 0x8001});
    m_platform.calls().inject({Operation::driverWrite, "a", 0x8002});
    EXPECT_EQ(readDriver(driver("a")).code, 0x8001);
    EXPECT_EQ(writeDriver(driver("a"), 5).code, 0x8002);
    EXPECT_EQ(driver("a").value(), 0);
}

TEST_F(PeekPokeTest, ReadOfMoreThan32BitsGivesThemAll) {
    driver("a").setValue(4294967301);
    const DriverAnswer answer = readDriver(driver("a"));
    EXPECT_EQ(answer.value, 4294967301);
    EXPECT_EQ(answer.note, "");
}

TEST_F(PeekPokeTest, WriteGoesThroughTheRecord) {
    EXPECT_EQ(writeDriver(driver("a"), -5).code, ResultOk);
    EXPECT_EQ(driver("a").value(), -5);
    EXPECT_EQ(m_platform.calls().journalOf(Operation::driverWrite).size(), 1U);
}

TEST_F(PeekPokeTest, WriteOfMoreThan32BitsIsABufferOfEightBytes) {
    EXPECT_EQ(writeDriver(driver("a.in.hz"), 7442000000000).code, ResultOk);
    EXPECT_EQ(driver("a.in.hz").value(), 7442000000000);
    // 7442000000000 is 0x6c4b9c43400.
    EXPECT_THAT(m_platform.calls().journalOf(Operation::driverWriteBuffer).at(0).bytes,
                ElementsAre(0x00, 0x34, 0xc4, 0xb9, 0xc4, 0x06, 0x00, 0x00));
    EXPECT_EQ(writeDriver(driver("a.in.hz"), 2147483648).code, ResultOk);
    EXPECT_EQ(m_platform.calls().journalOf(Operation::driverWriteBuffer).size(), 2U);
    EXPECT_EQ(writeDriver(driver("a.in.hz"), 2147483647).code, ResultOk);
    EXPECT_EQ(m_platform.calls().journalOf(Operation::driverWriteBuffer).size(), 2U);
}

TEST_F(PeekPokeTest, DriverInHzThatTakesBuffersAloneIsWrittenOne) {
    EXPECT_EQ(writeDriver(driver("a.in.hz", Standalone::wordWrite), 5).code, ResultOk);
    EXPECT_EQ(driver("a.in.hz").value(), 5);
}

TEST_F(PeekPokeTest, MissingWordIsAFailureThatSaysWhichOne) {
    const auto noteOf = [](const DriverAnswer& answer) {
        EXPECT_EQ(answer.code, ResultFailed);
        return answer.note;
    };
    EXPECT_EQ(noteOf(readDriver(driver("a", Standalone::wordRead))), "the driver's record has no read");
    EXPECT_EQ(noteOf(writeDriver(driver("b", Standalone::wordWrite), 5)), "the driver's record has no write");
    EXPECT_EQ(noteOf(writeDriver(driver("c.in.hz", Standalone::wordWriteBuffer), 7442000000000)),
              "the driver's record has no writeBuffer");
    EXPECT_EQ(noteOf(readDriver(driver("d", Standalone::wordContext))), "the driver's record has no context");
    EXPECT_EQ(noteOf(writeDriver(driver("d"), 5)), "the driver's record has no context");
    EXPECT_TRUE(m_platform.calls().journal().empty());
}

TEST_F(PeekPokeTest, DriversInHzAreKnownByTheEndOfTheirNames) {
    EXPECT_TRUE(takesHz("channel.1.tx.rf.lo.frequency.in.hz"));
    EXPECT_FALSE(takesHz("channel.1.tx.rf.lo.frequency"));
    EXPECT_FALSE(takesHz("in.hz"));
    EXPECT_FALSE(takesHz("a.in.hz.b"));
}

} // namespace
} // namespace Radio

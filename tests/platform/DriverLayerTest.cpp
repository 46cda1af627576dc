#include "PlatformFixture.h"
#include "tests/support/Sanitized.h"

#include <array>

namespace {

using ::testing::ElementsAre;
namespace Codes = Standalone::Codes;

class DriverLayerTest : public PlatformFixture {
protected:
    Standalone::Driver& bank() { return *platform.drivers().find("lo"); }

    template <std::size_t Size>
    static EDriverResult writeBytes(DriverInterface& driver, const std::array<std::uint8_t, Size>& bytes) {
        return driver.writeBuffer(driver.context, bytes.data(), Size);
    }

    DriverInterface& lo = driver("lo");
};

TEST_F(DriverLayerTest, LookupGivesTheRecordOfTheNamedDriver) {
    DriverInterface* found = nullptr;
    EXPECT_EQ(lookUpDriver(&found, "lo"), 0);
    EXPECT_EQ(found, bank().record());
}

/** A client that outlives the platform. */
class LateClientTest : public ::testing::Test {
protected:
    LateClientTest() {
        Standalone::Platform platform;
        kept = platform.drivers().add("lo").record();
        copied = *kept;
    }
    void SetUp() override {
        if (!isSanitized) {
            GTEST_SKIP() << "only AddressSanitizer sees that memory of others is used";
        }
    }

    DriverInterface* kept = nullptr;
    DriverInterface copied{};
};

TEST_F(LateClientTest, RecordThatWasKeptBeyondThePlatformsEndIsPoisoned) {
    EXPECT_DEATH(kept->write(kept->context, 5), "heap-use-after-free");
}

TEST_F(LateClientTest, ContextThatWasKeptBeyondThePlatformsEndIsPoisoned) {
    EXPECT_DEATH(copied.write(copied.context, 5), "heap-use-after-free");
}

TEST_F(LateClientTest, WhatIsPoisonedIsNobodyElsesMemory) {
    Standalone::Platform other;
    for (int i = 0; i < 1000; ++i) {
        EXPECT_NE(other.drivers().add("driver." + std::to_string(i)).record(), kept);
    }
    EXPECT_DEATH(kept->write(kept->context, 5), "heap-use-after-free");
}

TEST_F(DriverLayerTest, UnknownNameFailsAndLeavesTheOutputUntouched) {
    DriverInterface* found = &lo;
    EXPECT_EQ(lookUpDriver(&found, "LO"), Codes::notFound);
    EXPECT_EQ(found, &lo);
}

TEST_F(DriverLayerTest, NullArgumentsOfTheLookupAreRefused) {
    DriverInterface* found = &lo;
    EXPECT_EQ(lookUpDriver(nullptr, "lo"), Codes::badArgument);
    EXPECT_EQ(lookUpDriver(&found, nullptr), Codes::badArgument);
    EXPECT_EQ(found, &lo);
}

TEST_F(DriverLayerTest, LookupCanBeToldToGiveANullRecord) {
    DriverInterface* found = &lo;
    platform.drivers().giveNullRecord("lo");
    EXPECT_EQ(lookUpDriver(&found, "lo"), 0);
    EXPECT_EQ(found, nullptr);
}

TEST_F(DriverLayerTest, ReadGivesWhatWasWrittenLast) {
    EXPECT_EQ(lo.write(lo.context, 5), 0);
    EXPECT_EQ(lo.write(lo.context, -7), 0);
    EXPECT_EQ(read(lo), -7);
    EXPECT_EQ(bank().value(), -7);
}

TEST_F(DriverLayerTest, ReadBeforeAnyWriteGivesTheValuePutThere) {
    bank().setValue(1234);
    EXPECT_EQ(read(lo), 1234);
    EXPECT_FALSE(bank().wasWritten());
}

TEST_F(DriverLayerTest, SuccessfulWritesOfBothKindsAreCounted) {
    lo.write(lo.context, 5);
    writeBytes(lo, std::array<std::uint8_t, 1>{1});
    EXPECT_TRUE(bank().wasWritten());
    EXPECT_EQ(bank().writes(), 2U);
}

TEST_F(DriverLayerTest, BufferOfEightBytesIsANumberWithItsLeastSignificantByteFirst) {
    // 7 450 000 000 Hz is 0x1BC0DFA80.
    EXPECT_EQ(writeBytes(lo, std::array<std::uint8_t, 8>{0x80, 0xFA, 0x0D, 0xBC, 0x01, 0, 0, 0}), 0);
    EXPECT_EQ(bank().value(), 7450000000);
}

TEST_F(DriverLayerTest, BufferOfTwoBytesIsAnUnsignedNumber) {
    writeBytes(lo, std::array<std::uint8_t, 2>{0xFE, 0xFF});
    EXPECT_EQ(bank().value(), 65534);
}

TEST_F(DriverLayerTest, ReadGivesTheLow32BitsOfALongNumber) {
    writeBytes(lo, std::array<std::uint8_t, 5>{4, 3, 2, 1, 9});
    EXPECT_EQ(read(lo), 0x01020304);
}

TEST_F(DriverLayerTest, BufferOfNineBytesIsNoNumberButIsJournaled) {
    lo.write(lo.context, 5);
    EXPECT_EQ(writeBytes(lo, std::array<std::uint8_t, 9>{1, 2, 3, 4, 5, 6, 7, 8, 9}), 0);
    EXPECT_EQ(bank().value(), 5);
    EXPECT_EQ(bank().writes(), 2U);
    EXPECT_THAT(platform.calls().journal().back().bytes, ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9));
}

TEST_F(DriverLayerTest, MissingBufferIsRefused) {
    EXPECT_EQ(lo.writeBuffer(lo.context, nullptr, 8), Codes::badArgument);
    EXPECT_FALSE(bank().wasWritten());
}

TEST_F(DriverLayerTest, MissingPlaceForTheValueReadIsRefused) {
    EXPECT_EQ(lo.read(lo.context, nullptr), Codes::badArgument);
}

TEST_F(DriverLayerTest, NullContextReachesNoDriver) {
    int value = 3;
    EXPECT_EQ(lo.write(nullptr, 8), Codes::badArgument);
    EXPECT_EQ(lo.writeBuffer(nullptr, "x", 1), Codes::badArgument);
    EXPECT_EQ(lo.read(nullptr, &value), Codes::badArgument);
    EXPECT_EQ(value, 3);
}

TEST_F(DriverLayerTest, ReadAsksTheSource) {
    int next = 5;
    bank().setSource([&next] { return next++; });
    EXPECT_EQ(read(lo), 5);
    EXPECT_EQ(read(lo), 6);
    EXPECT_EQ(platform.calls().journal().back().value, 6);
}

TEST_F(DriverLayerTest, ValueIsTheOneReadFromTheSourceOrWrittenSince) {
    bank().setSource([] { return 5; });
    EXPECT_EQ(bank().value(), 0);
    read(lo);
    EXPECT_EQ(bank().value(), 5);
    lo.write(lo.context, 8);
    EXPECT_EQ(bank().value(), 8);
    EXPECT_EQ(read(lo), 5);
}

TEST_F(DriverLayerTest, ReadThatFailsDoesNotAskTheSource) {
    int asked = 0;
    bank().setSource([&asked] { return ++asked; });
    EXPECT_EQ(lo.read(lo.context, nullptr), Codes::badArgument);
    fail(Standalone::Operation::driverRead, "lo", 0x8005);
    read(lo);
    EXPECT_EQ(asked, 0);
}

TEST_F(DriverLayerTest, EmptySourceIsNone) {
    bank().setSource([] { return 5; });
    bank().setSource({});
    bank().setValue(6);
    EXPECT_EQ(read(lo), 6);
}

TEST_F(DriverLayerTest, AddingADriverTwiceGivesTheSameOne) {
    bank().setValue(4);
    EXPECT_EQ(platform.drivers().add("lo").value(), 4);
    EXPECT_EQ(platform.drivers().drivers().size(), 1U);
}

struct MissingWordTest : DriverLayerTest {
    DriverInterface& withMissing(unsigned words) {
        bank().setMissingWords(words);
        return lo;
    }
};

TEST_F(MissingWordTest, EveryWordIsThereUnlessToldOtherwise) {
    EXPECT_EQ(bank().missingWords(), 0U);
    EXPECT_NE(lo.context, nullptr);
    EXPECT_NE(lo.write, nullptr);
    EXPECT_NE(lo.writeBuffer, nullptr);
    EXPECT_NE(lo.read, nullptr);
}

TEST_F(MissingWordTest, ContextCanBeMissing) {
    EXPECT_EQ(withMissing(Standalone::wordContext).context, nullptr);
    EXPECT_NE(lo.write, nullptr);
}

TEST_F(MissingWordTest, WriteCanBeMissing) {
    EXPECT_EQ(withMissing(Standalone::wordWrite).write, nullptr);
    EXPECT_NE(lo.writeBuffer, nullptr);
}

TEST_F(MissingWordTest, WriteBufferCanBeMissing) {
    EXPECT_EQ(withMissing(Standalone::wordWriteBuffer).writeBuffer, nullptr);
    EXPECT_NE(lo.read, nullptr);
}

TEST_F(MissingWordTest, ReadCanBeMissing) {
    EXPECT_EQ(withMissing(Standalone::wordRead).read, nullptr);
    EXPECT_NE(lo.context, nullptr);
}

TEST_F(MissingWordTest, WordsCanBeGivenBack) {
    withMissing(Standalone::wordContext | Standalone::wordWrite);
    withMissing(0);
    EXPECT_EQ(lo.write(lo.context, 6), 0);
    EXPECT_EQ(bank().value(), 6);
}

TEST_F(MissingWordTest, DriverCanBeAddedWithMissingWords) {
    EXPECT_EQ(platform.drivers().add("if", Standalone::wordWrite).record()->write, nullptr);
}

} // namespace

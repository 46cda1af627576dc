#include "service/radio/EventRing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Radio::Service {
namespace {

TEST(EventRing, EventIsToldWithItsNumberBehindThatOfTheRun) {
    EventRing ring(7, 10, 1000);
    ring.push("{\"a\":1}");
    EXPECT_EQ(ring.after(0, 1000)->text, "id: 7-1\ndata: {\"a\":1}\n\n");
}

TEST(EventRing, WhoHasSeenSomeIsGivenTheRestInOrder) {
    EventRing ring(7, 10, 1000);
    ring.push("1");
    ring.push("2");
    ring.push("3");
    const auto piece = ring.after(1, 1000);
    ASSERT_TRUE(piece);
    EXPECT_EQ(piece->text, "id: 7-2\ndata: 2\n\nid: 7-3\ndata: 3\n\n");
    EXPECT_EQ(piece->last, 3U);
    EXPECT_EQ(ring.after(3, 1000)->text, "");
}

TEST(EventRing, PieceEndsBehindTheEventThatFillsIt) {
    EventRing ring(7, 10, 1000);
    ring.push("1");
    ring.push("2");
    const auto piece = ring.after(0, 1);
    ASSERT_TRUE(piece);
    EXPECT_EQ(piece->text, "id: 7-1\ndata: 1\n\n");
    EXPECT_EQ(piece->last, 1U);
}

TEST(EventRing, OldestGoWhenThereAreTooMany) {
    EventRing ring(7, 2, 1000);
    ring.push("1");
    ring.push("2");
    ring.push("3");
    EXPECT_EQ(ring.first(), 2U);
    EXPECT_EQ(ring.last(), 3U);
    EXPECT_FALSE(ring.after(0, 1000));
    EXPECT_TRUE(ring.after(1, 1000));
}

TEST(EventRing, OldestGoWhenTheyTakeTooMuch) {
    EventRing ring(7, 100, 40); // each takes 17 bytes
    ring.push("1");
    ring.push("2");
    ring.push("3");
    EXPECT_EQ(ring.first(), 2U);
    EXPECT_EQ(ring.bytes(), 34U);
}

TEST(EventRing, OneThatIsLargerThanAllMayTakeIsNotKept) {
    EventRing ring(7, 100, 10);
    ring.push("a long one");
    EXPECT_EQ(ring.last(), 1U);
    EXPECT_EQ(ring.first(), 2U);
    EXPECT_EQ(ring.bytes(), 0U);
}

TEST(EventRing, NameOfAnotherRunOrOfNoEventIsUnknown) {
    EventRing ring(7, 10, 1000);
    ring.push("1");
    EXPECT_EQ(ring.numberOf("7-1"), 1U);
    EXPECT_EQ(ring.numberOf("7-0"), 0U);
    for (const char* const name :
         {"", "7", "7-", "7-2", "8-1", "17-1", "7--1", "7-1x", "7-99999999999999999999", "1"}) {
        EXPECT_FALSE(ring.numberOf(name)) << name;
    }
}

TEST(EventRing, ListenerIsToldOfEachEvent) {
    EventRing ring(7, 10, 1000);
    int told = 0;
    ring.setListener([&told] { ++told; });
    ring.push("1");
    ring.push("2");
    EXPECT_EQ(told, 2);
}

} // namespace
} // namespace Radio::Service

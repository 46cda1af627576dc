#include "radio/text/NearestName.h"

#include <gtest/gtest.h>

#include <optional>

namespace Radio {
namespace {

TEST(NearestNameTest, AddedDroppedReplacedAndSwappedLettersAreOneSlip) {
    EXPECT_EQ(nearestName("drivvers", {"drivers"}), "drivers");
    EXPECT_EQ(nearestName("driers", {"drivers"}), "drivers");
    EXPECT_EQ(nearestName("drixers", {"drivers"}), "drivers");
    EXPECT_EQ(nearestName("tpye", {"type"}), "type");
}

TEST(NearestNameTest, CaseDoesNotCount) {
    EXPECT_EQ(nearestName("CHANNELSPACING", {"ChannelSpacing"}), "ChannelSpacing");
}

TEST(NearestNameTest, CaseDecidesBetweenEquallyNearNames) {
    EXPECT_EQ(nearestName("Txifbb", {"txIFBB", "TxIfBb"}), "TxIfBb");
}

TEST(NearestNameTest, FirstOfEquallyNearNamesIsTaken) {
    EXPECT_EQ(nearestName("xx", {"rx", "tx"}), "rx");
}

TEST(NearestNameTest, QuestionIsAskedOnlyWhenANameIsNear) {
    EXPECT_EQ(didYouMean("tpye", {"type"}), " (did you mean \"type\"?)");
    EXPECT_EQ(didYouMean("colour", {"type"}), "");
}

TEST(NearestNameTest, NothingIsOfferedWhenNothingIsNear) {
    EXPECT_EQ(nearestName("colour", {"number", "type"}), std::nullopt);
    EXPECT_EQ(nearestName("channel.1.tx.rf.lo", {"channel.1.tx.bb.iq"}), std::nullopt);
    EXPECT_EQ(nearestName("tune", {}), std::nullopt);
}

} // namespace
} // namespace Radio

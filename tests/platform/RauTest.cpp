#include "IRauHandler.h"
#include "PlatformFixture.h"

namespace {

class RauTest : public PlatformFixture {
protected:
    static IRauHandler* find(const std::string& name) {
        return InterfaceBroker::getInstance().getInterface<IRauHandler>(name);
    }

    Standalone::RauService& rau = platform.addRau(2);
};

TEST_F(RauTest, IsPublishedWithItsChannel) {
    EXPECT_EQ(find("IRauHandler_2"), &rau);
}

TEST_F(RauTest, OtherChannelsAreNotPublished) {
    EXPECT_EQ(find("IRauHandler"), nullptr);
}

TEST_F(RauTest, Channel0IsPublishedByTheBareName) {
    Standalone::RauService& bare = platform.addRau(0);
    EXPECT_EQ(find("IRauHandler"), &bare);
}

TEST_F(RauTest, NegativeChannelKeepsItsSign) {
    EXPECT_EQ(platform.addRau(-1).name(), "IRauHandler_-1");
    EXPECT_NE(find("IRauHandler_-1"), nullptr);
}

TEST_F(RauTest, ChannelHasOneUnit) {
    EXPECT_EQ(&platform.addRau(2), &rau);
    EXPECT_EQ(platform.raus().size(), 1U);
}

TEST_F(RauTest, CarriersAreZeroAtFirst) {
    EXPECT_EQ(rau.txFrequency(), 0U);
    EXPECT_EQ(rau.rxFrequency(), 0U);
}

TEST_F(RauTest, LargestFrequencyArrivesUnchanged) {
    rau.setTxRadioFrequency(4294967295UL);
    EXPECT_EQ(rau.txFrequency(), 4294967295UL);
    EXPECT_EQ(platform.calls().journal().back().value, 4294967295);
}

TEST_F(RauTest, FailingCallLeavesTheCarrierAsItWas) {
    rau.setTxRadioFrequency(7450000);
    fail(Standalone::Operation::rauTx, "IRauHandler_2", 0x8010);
    EXPECT_EQ(rau.setTxRadioFrequency(7478000), 0x8010);
    EXPECT_EQ(rau.txFrequency(), 7450000U);
}

TEST_F(RauTest, FaultOfOneDirectionLeavesTheOtherAlone) {
    fail(Standalone::Operation::rauTx, "IRauHandler_2", 0x8010);
    EXPECT_EQ(rau.setRxRadioFrequency(7289000), 0);
    EXPECT_EQ(rau.rxFrequency(), 7289000U);
}

} // namespace

// A client in C meets the shared library: the radio is built in C++, all that the client does is C.

#include "FrequencyHandler.h"
#include "RadioTest.h"
#include "client.h"

using Standalone::Operation;

namespace {

/** A booted RF-module radio on channel 1. */
class CClientTest : public RadioTest {
protected:
    CClientTest() {
        platform.drivers().add("channel.1.tx.rf.frequency");
        platform.drivers().add("channel.1.rx.rf.frequency");
        for (const unsigned long phase : {11UL, 5UL, 20UL}) {
            EXPECT_TRUE(platform.modules().run(phase).succeeded());
        }
    }

    ::FrequencyHandler module{1, ::FrequencyHandler::RfModule};
    Heard heard{};
};

} // namespace

TEST_F(CClientTest, IsCalledBackWithChannelAndFrequency) {
    EXPECT_EQ(client_subscribe("IFrequencyHandler_Tx_1", &heard), ResultOk);
    module.setTxFrequency(7442000);
    EXPECT_EQ(heard.calls, 1);
    EXPECT_EQ(heard.channel, 1U);
    EXPECT_EQ(heard.frequency, 7442000U);
}

TEST_F(CClientTest, IsNotCalledBackForTheOtherDirection) {
    EXPECT_EQ(client_subscribe("IFrequencyHandler_Rx_1", &heard), ResultOk);
    module.setTxFrequency(7442000);
    EXPECT_EQ(heard.calls, 0);
}

TEST_F(CClientTest, IsCalledBackAlsoWhenTheWriteFailed) {
    client_subscribe("IFrequencyHandler_Tx_1", &heard);
    fail(Operation::driverWrite, "channel.1.tx.rf.frequency", 0x8001);
    module.setTxFrequency(7442000);
    EXPECT_EQ(heard.frequency, 7442000U);
}

TEST_F(CClientTest, ReadsTheChannelInTheRecord) {
    EXPECT_EQ(client_channel_of("IFrequencyHandler_Rx_1"), 1U);
}

TEST_F(CClientTest, FindsNoHandlerUnderAnotherName) {
    EXPECT_EQ(client_subscribe("IFrequencyHandler_Tx", &heard), ResultFailed);
    EXPECT_EQ(platform.interfaces().openHandles(), 0U);
}

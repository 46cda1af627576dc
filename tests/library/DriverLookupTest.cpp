#include "DriverLookup.h"

#include "RadioTest.h"

using RL::FrequencyHandler::canWrite;
using RL::FrequencyHandler::canWriteBuffer;
using RL::FrequencyHandler::DriverLookup;
using RL::FrequencyHandler::DriverLookupResult;
using RL::FrequencyHandler::NeededOperation;
using Standalone::Operation;
using Standalone::Presence;
using testing::IsEmpty;

namespace {

/** Looks for the one driver there is. */
class DriverLookupTest : public RadioTest {
protected:
    static constexpr const char* name = "channel.1.tx.rf.lo.frequency";

    DriverLookupResult find(NeededOperation needed) { return DriverLookup().find(name, needed, found); }

    Standalone::Driver& driver = platform.drivers().add(name);
    DriverInterface* found = nullptr;
};

/** A driver layer whose record has no lookup. */
class DriverLayerWithoutLookup final : public IInterface_c {
public:
    DriverLayerWithoutLookup() { m_pCStruct = &m_record; }

private:
    DriverLayerInterface m_record{};
};

class MissingDriverLayer : public RadioTest, public testing::WithParamInterface<Presence> {};

} // namespace

TEST_P(MissingDriverLayer, IsSeen) {
    platform.setPresence("IDriverLayer", GetParam());
    EXPECT_FALSE(DriverLookup().hasDriverLayer());
}

INSTANTIATE_TEST_SUITE_P(InTheBroker, MissingDriverLayer,
                         testing::Values(Presence::absent, Presence::null, Presence::foreign,
                                         Presence::nullRecord));

TEST_F(DriverLookupTest, GivesTheRecordOfTheNamedDriver) {
    EXPECT_TRUE(DriverLookup().hasDriverLayer());
    EXPECT_TRUE(find(NeededOperation::write).complete);
    EXPECT_EQ(found, driver.record());
}

TEST_F(DriverLookupTest, DriverLayerWithoutLookupFailsAsA0x8000Would) {
    DriverLayerWithoutLookup driverLayer;
    platform.interfaces().put("IDriverLayer", &driverLayer);
    const DriverLookupResult result = find(NeededOperation::write);
    EXPECT_EQ(static_cast<int>(result.code), 0x8000);
    EXPECT_FALSE(result.complete);
    EXPECT_THAT(platform.calls().journalOf(Operation::driverLookup), IsEmpty());
}

TEST_F(DriverLookupTest, OnlyTheNeededOperationHasToBeThere) {
    driver.setMissingWords(Standalone::wordWrite);
    EXPECT_FALSE(find(NeededOperation::write).complete);
    EXPECT_TRUE(find(NeededOperation::writeBuffer).complete);
    driver.setMissingWords(Standalone::wordWriteBuffer);
    EXPECT_TRUE(find(NeededOperation::write).complete);
    EXPECT_FALSE(find(NeededOperation::writeBuffer).complete);
}

TEST_F(DriverLookupTest, ContextHasToBeThere) {
    driver.setMissingWords(Standalone::wordContext);
    EXPECT_FALSE(find(NeededOperation::write).complete);
}

TEST_F(DriverLookupTest, IncompleteRecordStaysWithTheCaller) {
    driver.setMissingWords(Standalone::wordContext);
    find(NeededOperation::write);
    EXPECT_EQ(found, driver.record());
}

TEST_F(DriverLookupTest, FailedLookupLeavesTheCallerWhatTheDriverLayerLeft) {
    find(NeededOperation::write);
    fail(Operation::driverLookup, name, 0x8001);
    EXPECT_FALSE(find(NeededOperation::write).complete);
    EXPECT_EQ(found, driver.record());
}

TEST_F(DriverLookupTest, RecordThatCameWithAFailingCodeIsNotComplete) {
    platform.calls().inject({Operation::driverLookup, name, 0x8001, std::nullopt, std::nullopt, true});
    EXPECT_FALSE(find(NeededOperation::write).complete);
    EXPECT_EQ(found, driver.record());
}

TEST_F(DriverLookupTest, ValueNeedsWriteAndBytesNeedWriteBuffer) {
    EXPECT_FALSE(canWrite(nullptr) || canWriteBuffer(nullptr));
    EXPECT_TRUE(canWrite(driver.record()) && canWriteBuffer(driver.record()));
    driver.setMissingWords(Standalone::wordWrite);
    EXPECT_FALSE(canWrite(driver.record()));
    driver.setMissingWords(Standalone::wordWriteBuffer);
    EXPECT_FALSE(canWriteBuffer(driver.record()));
}

#include "DevicesFixture.h"

namespace {

TEST(DeviceCodesTest, CodeIsTheErrorNumberAbove0x8100) {
    EXPECT_EQ(Devices::codeOf(ETIMEDOUT), 0x816e);
    EXPECT_EQ(Devices::codeOf(ERANGE), 0x8122);
    EXPECT_EQ(Devices::errorOf(0x816e), ETIMEDOUT);
}

TEST(DeviceCodesTest, OtherCodesAreNoErrorNumbers) {
    EXPECT_EQ(Devices::errorOf(0), 0);
    EXPECT_EQ(Devices::errorOf(0x8001), 0);
    EXPECT_EQ(Devices::errorOf(0x8100), 0);
    EXPECT_EQ(Devices::errorOf(0x8200), 0);
}

TEST(DeviceCodesTest, MeaningIsPartOfASentenceWithTheNameInIt) {
    EXPECT_EQ(Devices::meaningOf(0x816e), "connection timed out (ETIMEDOUT)");
    EXPECT_EQ(Devices::meaningOf(0x8113), "no such device (ENODEV)");
    EXPECT_EQ(Devices::meaningOf(0x816b), "not connected (ENOTCONN)");
    EXPECT_EQ(Devices::meaningOf(0x81ff), "error 255");
    EXPECT_EQ(Devices::meaningOf(0x8003), "");
}

TEST(DeviceCodesTest, KindsThatWereBuiltAreNamedAndThoseLeftOutWithTheirPackage) {
    const std::string all = Devices::Hardware::kinds() + " / " + Devices::Hardware::leftOut();
    for (const char* const kind : {"iio", "hwmon", "scpi", "file"}) {
        EXPECT_THAT(all, ::testing::HasSubstr(kind));
    }
}

} // namespace

#include "CStorageManager.h"
#include "PlatformFixture.h"

#include <stdexcept>

namespace {

using ::testing::ElementsAre;
namespace Codes = Standalone::Codes;

class StorageManagerTest : public PlatformFixture {
protected:
    static StorageVariable* record(const char* name) {
        StorageVariable* found = nullptr;
        CStorageManager_GetVariableByName(name, &found);
        return found;
    }
    static const int* address(const char* name) {
        void* found = nullptr;
        CStorageManager_GetVariableContentAddressByName(name, &found, 0);
        return static_cast<const int*>(found);
    }

    Standalone::Variable& spacing = platform.variables().add("ChannelSpacing", {28});
    Standalone::Variable& offsets = platform.variables().add("offsets", {100, -4000, 56, 2000});
};

TEST_F(StorageManagerTest, ArrayIsReadThroughTheAddressOfItsFirstValue) {
    const int* const content = address("offsets");
    EXPECT_EQ(content[0], 100);
    EXPECT_EQ(content[1], -4000);
    EXPECT_EQ(content[3], 2000);
}

TEST_F(StorageManagerTest, FewerValuesLeaveTheRemainingOnes) {
    EXPECT_TRUE(offsets.set({200, 1}));
    EXPECT_THAT(offsets.values(), ElementsAre(200, 1, 56, 2000));
}

TEST_F(StorageManagerTest, VariableDoesNotGrow) {
    EXPECT_FALSE(spacing.set({1, 2}));
    EXPECT_THAT(spacing.values(), ElementsAre(28));
}

TEST_F(StorageManagerTest, SettingNoValueIsRefused) {
    EXPECT_FALSE(offsets.set({}));
    EXPECT_THAT(offsets.values(), ElementsAre(100, -4000, 56, 2000));
}

TEST_F(StorageManagerTest, VariableWithoutValueCannotBeAdded) {
    EXPECT_THROW(platform.variables().add("empty", {}), std::invalid_argument);
    EXPECT_EQ(platform.variables().find("empty"), nullptr);
}

TEST_F(StorageManagerTest, AddingAVariableTwiceGivesTheFirstUnchanged) {
    EXPECT_EQ(&platform.variables().add("ChannelSpacing", {7}), &spacing);
    EXPECT_THAT(spacing.values(), ElementsAre(28));
}

TEST_F(StorageManagerTest, UnknownNameFailsAndLeavesTheOutputUntouched) {
    StorageVariable* found = spacing.record();
    void* content = &found;
    EXPECT_EQ(CStorageManager_GetVariableByName("channelspacing", &found), Codes::notFound);
    EXPECT_EQ(CStorageManager_GetVariableContentAddressByName("channelspacing", &content, 0),
              Codes::notFound);
    EXPECT_EQ(found, spacing.record());
    EXPECT_EQ(content, &found);
}

TEST_F(StorageManagerTest, NullArgumentsAreRefused) {
    StorageVariable* found = nullptr;
    void* content = nullptr;
    EXPECT_EQ(CStorageManager_GetVariableByName(nullptr, &found), Codes::badArgument);
    EXPECT_EQ(CStorageManager_GetVariableByName("offsets", nullptr), Codes::badArgument);
    EXPECT_EQ(CStorageManager_GetVariableContentAddressByName(nullptr, &content, 0), Codes::badArgument);
    EXPECT_EQ(CStorageManager_GetVariableContentAddressByName("offsets", nullptr, 0), Codes::badArgument);
}

TEST_F(StorageManagerTest, ContentPointerCanBeMissing) {
    spacing.setContentMissing(true);
    EXPECT_EQ(record("ChannelSpacing")->content, nullptr);
    EXPECT_EQ(address("ChannelSpacing"), nullptr);
}

TEST_F(StorageManagerTest, NullRecordIsASuccessThatStoresNull) {
    platform.variables().giveNullRecord("ChannelSpacing");
    StorageVariable* found = offsets.record();
    EXPECT_EQ(CStorageManager_GetVariableByName("ChannelSpacing", &found), 0);
    EXPECT_EQ(found, nullptr);
    EXPECT_EQ(*address("ChannelSpacing"), 28);
}

TEST_F(StorageManagerTest, ContentPointerCanComeBack) {
    spacing.setContentMissing(true);
    spacing.setContentMissing(false);
    EXPECT_EQ(*address("ChannelSpacing"), 28);
}

} // namespace

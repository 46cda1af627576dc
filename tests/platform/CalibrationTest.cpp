#include "CCalibrationHandler.h"
#include "PlatformFixture.h"

#include <stdexcept>

namespace {

using Standalone::TableStore;
using ::testing::IsEmpty;
namespace Codes = Standalone::Codes;

class CalibrationTest : public PlatformFixture {
protected:
    static CalibrationTableHandle handle(const char* name) {
        CalibrationTableHandle found = nullptr;
        CCalibrationHandler_GetTable(name, &found);
        return found;
    }
    static int linear(CalibrationTableHandle table, int x) {
        int y = untouched;
        EXPECT_EQ(CCalibrationTable_LinearInterpolate(table, x, &y), 0);
        return y;
    }

    static constexpr int untouched = -99;
    int y = untouched;
    CalibrationTable& line = platform.tables().add({"Line", {0, 100}, {}, {0, 50}});
    CalibrationTable& plane = platform.tables().add({"Plane", {0, 10}, {0, 100}, {0, 100, 10, 110}});
};

TEST_F(CalibrationTest, TableIsFoundByItsName) {
    EXPECT_EQ(handle("Line"), &line);
}

TEST_F(CalibrationTest, UnknownNameFailsAndLeavesTheOutputUntouched) {
    CalibrationTableHandle found = &plane;
    EXPECT_EQ(CCalibrationHandler_GetTable("line", &found), Codes::notFound);
    EXPECT_EQ(found, &plane);
}

TEST_F(CalibrationTest, NullArgumentsOfTheLookupAreRefused) {
    CalibrationTableHandle found = &plane;
    EXPECT_EQ(CCalibrationHandler_GetTable(nullptr, &found), Codes::badArgument);
    EXPECT_EQ(CCalibrationHandler_GetTable("Line", nullptr), Codes::badArgument);
    EXPECT_EQ(found, &plane);
}

TEST_F(CalibrationTest, NullTableIsRefused) {
    EXPECT_EQ(CCalibrationTable_LinearInterpolate(nullptr, 1, &y), Codes::badArgument);
    EXPECT_EQ(CCalibrationTable_BiLinearInterpolate(nullptr, 1, 1, &y), Codes::badArgument);
    EXPECT_EQ(y, untouched);
}

TEST_F(CalibrationTest, NullPlaceForTheValueIsRefused) {
    EXPECT_EQ(CCalibrationTable_LinearInterpolate(&line, 1, nullptr), Codes::badArgument);
    EXPECT_EQ(CCalibrationTable_BiLinearInterpolate(&plane, 1, 1, nullptr), Codes::badArgument);
}

TEST_F(CalibrationTest, TableWithTwoAxesHasNoLinearValue) {
    EXPECT_EQ(CCalibrationTable_LinearInterpolate(&plane, 1, &y), Codes::badArgument);
    EXPECT_EQ(y, untouched);
}

TEST_F(CalibrationTest, TableWithOneAxisHasNoBilinearValue) {
    EXPECT_EQ(CCalibrationTable_BiLinearInterpolate(&line, 1, 1, &y), Codes::badArgument);
    EXPECT_EQ(y, untouched);
}

TEST_F(CalibrationTest, TableOfTheSameNameTakesOverTheHandle) {
    CalibrationTable* const before = handle("Line");
    platform.tables().add({"Line", {0, 100}, {}, {0, 70}});
    EXPECT_EQ(handle("Line"), before);
    EXPECT_EQ(linear(before, 100), 70);
}

TEST_F(CalibrationTest, TableOfAMillionNodesGivesItsOwnValues) {
    constexpr std::int32_t nodes = 1000000;
    CalibrationTable large{"Large", {}, {}, {}};
    for (std::int32_t i = 0; i < nodes; ++i) {
        large.axis1.push_back(4 * i);
        large.values.push_back(i % 2 == 0 ? 2 * i : -2 * i);
    }
    CalibrationTable& table = platform.tables().add(large);
    EXPECT_EQ(linear(&table, 4 * 654321), -1308642);
    EXPECT_EQ(linear(&table, 4 * 654320 + 1), 654320);
    EXPECT_EQ(linear(&table, 4 * 999999), -1999998);
}

TEST(TableCheckTest, GoodTablesHaveNothingWrong) {
    EXPECT_THAT(TableStore::whatIsWrongWith({"T", {-5, 0, 5}, {}, {1, 2, 3}}), IsEmpty());
    EXPECT_THAT(TableStore::whatIsWrongWith({"T", {1, 2}, {1, 2, 3}, {1, 2, 3, 4, 5, 6}}), IsEmpty());
    EXPECT_THAT(TableStore::whatIsWrongWith({"T", {7}, {}, {1}}), IsEmpty());
}

TEST(TableCheckTest, AxisWithoutNodesIsWrong) {
    EXPECT_EQ(TableStore::whatIsWrongWith({"T", {}, {}, {}}), "axis 1 has no nodes");
    EXPECT_EQ(TableStore::whatIsWrongWith({"T", {}, {1}, {}}), "axis 1 has no nodes");
}

TEST(TableCheckTest, FallingAxisIsWrong) {
    EXPECT_EQ(TableStore::whatIsWrongWith({"T", {10, 30, 20}, {}, {1, 2, 3}}),
              "axis 1 is not ascending: node 3 is 20 after 30");
}

TEST(TableCheckTest, RepeatedNodeIsWrong) {
    EXPECT_EQ(TableStore::whatIsWrongWith({"T", {1, 2}, {-4, -4}, {1, 2, 3, 4}}),
              "axis 2 is not ascending: node 2 is -4 after -4");
}

TEST(TableCheckTest, WrongNumberOfValuesIsWrong) {
    EXPECT_EQ(TableStore::whatIsWrongWith({"T", {1, 2, 3}, {}, {1, 2}}), "3 values are needed and 2 given");
    EXPECT_EQ(TableStore::whatIsWrongWith({"T", {1, 2}, {1, 2}, {1, 2, 3, 4, 5}}),
              "4 values are needed and 5 given");
}

TEST_F(CalibrationTest, WrongTableIsRefusedAndTheOldOneStays) {
    EXPECT_THROW(platform.tables().add({"Line", {2, 1}, {}, {1, 2}}), std::invalid_argument);
    EXPECT_EQ(linear(handle("Line"), 100), 50);
    EXPECT_THROW(platform.tables().add({"New", {}, {}, {}}), std::invalid_argument);
    EXPECT_EQ(platform.tables().find("New"), nullptr);
}

} // namespace

#include "radio/session/AlignedWrites.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace Radio {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Writes = std::vector<std::pair<std::string, std::int64_t>>;

/** Each line as "driver expected found", with "-" where a list has nothing. */
std::vector<std::string> aligned(const Writes& expected, const Writes& found) {
    const auto text = [](const std::optional<std::int64_t>& value) {
        return value ? std::to_string(*value) : std::string("-");
    };
    std::vector<std::string> lines;
    for (const AlignedWrite& write : alignWrites(expected, found)) {
        lines.push_back(write.driver + " " + text(write.expected) + " " + text(write.found));
    }
    return lines;
}

TEST(AlignedWrites, SameListsStandSideBySide) {
    EXPECT_THAT(aligned({{"a", 1}, {"b", 2}}, {{"a", 1}, {"b", 2}}), ElementsAre("a 1 1", "b 2 2"));
    EXPECT_THAT(aligned({}, {}), IsEmpty());
}

TEST(AlignedWrites, MissingWriteMovesNoneBehindIt) {
    EXPECT_THAT(aligned({{"a", 1}, {"b", 2}, {"a", 3}, {"b", 4}}, {{"b", 2}, {"a", 3}, {"b", 4}}),
                ElementsAre("a 1 -", "b 2 2", "a 3 3", "b 4 4"));
    EXPECT_THAT(aligned({{"a", 1}, {"b", 2}}, {{"a", 1}}), ElementsAre("a 1 1", "b 2 -"));
    EXPECT_THAT(aligned({{"a", 1}}, {}), ElementsAre("a 1 -"));
}

TEST(AlignedWrites, WriteTooManyMovesNoneBehindIt) {
    EXPECT_THAT(aligned({{"a", 1}, {"b", 2}}, {{"a", 1}, {"c", 5}, {"c", 6}, {"b", 2}}),
                ElementsAre("a 1 1", "c - 5", "c - 6", "b 2 2"));
    EXPECT_THAT(aligned({}, {{"a", 1}}), ElementsAre("a - 1"));
}

TEST(AlignedWrites, OtherValueOfTheSameDriverStandsBesideTheExpectedOne) {
    EXPECT_THAT(aligned({{"a", 1}, {"b", 2}, {"c", 3}}, {{"b", 20}, {"c", 3}}),
                ElementsAre("a 1 -", "b 2 20", "c 3 3"));
}

TEST(AlignedWrites, DifferentDriversStandOnLinesOfTheirOwn) {
    EXPECT_THAT(aligned({{"a", 1}, {"b", 2}}, {{"c", 1}, {"b", 2}}), ElementsAre("a 1 -", "c - 1", "b 2 2"));
}

TEST(AlignedWrites, SameWritesCountMoreThanSameDrivers) {
    EXPECT_THAT(aligned({{"a", 1}, {"a", 2}}, {{"a", 2}, {"a", 3}}), ElementsAre("a 1 -", "a 2 2", "a - 3"));
}

TEST(AlignedWrites, VeryLongListsAreComparedPlaceByPlaceWhereTheyDiffer) {
    Writes expected;
    Writes found;
    for (std::int64_t value = 0; value < 3000; ++value) {
        expected.emplace_back("a", value);
        found.emplace_back("a", value + 1);
    }
    expected.emplace_back("b", 7);
    found.emplace_back("b", 7);
    const std::vector<std::string> lines = aligned(expected, found);
    ASSERT_EQ(lines.size(), 3001U);
    EXPECT_EQ(lines.front(), "a 0 1");
    EXPECT_EQ(lines.back(), "b 7 7");
}

} // namespace
} // namespace Radio

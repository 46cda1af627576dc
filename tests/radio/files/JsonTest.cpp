#include "radio/files/Json.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace Radio {
namespace {

/** What stands for a byte that is no UTF-8: U+FFFD. */
const std::string replacement = "\xEF\xBF\xBD";

// Values.

TEST(Json, WordsOfTheLanguage) {
    EXPECT_EQ(toText(nullptr), "null");
    EXPECT_EQ(toText(true), "true");
    EXPECT_EQ(toText(false), "false");
}

TEST(Json, EachKindOfTextIsText) {
    const char* const pointer = "true";
    EXPECT_EQ(toText(pointer), R"("true")");
    EXPECT_EQ(toText(std::string_view("tx rx").substr(3)), R"("rx")");
    EXPECT_EQ(toText(std::string("rx")), R"("rx")");
    EXPECT_EQ(toText(""), R"("")");
}

TEST(Json, SignedNumbersReachTheLimitsOf64Bits) {
    EXPECT_EQ(toText(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808");
    EXPECT_EQ(toText(std::numeric_limits<std::int64_t>::max()), "9223372036854775807");
}

TEST(Json, UnsignedNumbersReachTheLimitsOf64Bits) {
    EXPECT_EQ(toText(std::numeric_limits<std::uint64_t>::max()), "18446744073709551615");
    EXPECT_EQ(toText(std::uint64_t{0}), "0");
}

TEST(Json, NarrowNumbersKeepTheirSign) {
    EXPECT_EQ(toText(std::int8_t{-128}), "-128");
    EXPECT_EQ(toText(std::uint8_t{255}), "255");
    EXPECT_EQ(toText(std::numeric_limits<std::int32_t>::min()), "-2147483648");
    EXPECT_EQ(toText(std::numeric_limits<std::uint32_t>::max()), "4294967295");
}

TEST(Json, FractionsHaveNoMoreDigitsThanTheyNeed) {
    EXPECT_EQ(toText(0.1), "0.1");
    EXPECT_EQ(toText(-71.25), "-71.25");
    EXPECT_EQ(toText(1e300), "1e+300");
}

TEST(Json, FractionThatIsWholeStaysAFraction) {
    EXPECT_EQ(toText(2.0), "2.0");
    EXPECT_EQ(toText(-0.0), "-0.0");
}

TEST(Json, WhatIsNoNumberIsNull) {
    EXPECT_EQ(toText(std::numeric_limits<double>::quiet_NaN()), "null");
    EXPECT_EQ(toText(std::numeric_limits<double>::infinity()), "null");
    EXPECT_EQ(toText(-std::numeric_limits<double>::infinity()), "null");
}

TEST(Json, WhatIsNotKnownIsNull) {
    EXPECT_EQ(toText(orNull(std::optional<int>())), "null");
    EXPECT_EQ(toText(orNull(std::optional<int>(0))), "0");
    EXPECT_EQ(toText(orNull(std::optional<std::string>("tx"))), R"("tx")");
}

// Text.

TEST(JsonText, QuotesAndBackslashesAreEscaped) {
    EXPECT_EQ(toText(R"(say "C:\boards")"), R"("say \"C:\\boards\"")");
}

TEST(JsonText, ControlCharactersAreEscaped) {
    EXPECT_EQ(toText("\b\t\n\f\r"), R"("\b\t\n\f\r")");
    EXPECT_EQ(toText("\x01\x1b[2J\x1f"), R"("\u0001\u001b[2J\u001f")");
    EXPECT_EQ(toText("\x7f\xC2\x9B\xE2\x80\xAE\xE2\x80\xA8"), R"("\u007f\u009b\u202e\u2028")");
    EXPECT_EQ(toText(std::string_view("a\0b", 3)), R"("a\u0000b")");
}

TEST(JsonText, OtherCharactersStayAsTheyAre) {
    // An a with dots, the euro sign and a clef, of 2, 3 and 4 bytes; and a slash.
    EXPECT_EQ(toText("\xC3\xA4/\xE2\x82\xAC/\xF0\x9D\x84\x9E"), "\"\xC3\xA4/\xE2\x82\xAC/\xF0\x9D\x84\x9E\"");
}

TEST(JsonText, ByteThatIsNoUtf8IsReplaced) {
    EXPECT_EQ(toText("a\xFFz"), "\"a" + replacement + "z\"");
}

TEST(JsonText, CharacterThatIsCutOffIsReplaced) {
    EXPECT_EQ(toText("a\xC3"), "\"a" + replacement + "\"");
    EXPECT_EQ(toText("\xC3z"), "\"" + replacement + "z\"");
}

TEST(JsonText, NamesOfMembersAreEscapedAndReplacedLikewise) {
    Json object = Json::object();
    object["a\"\n"] = 1;
    object["\xFF"] = 2;
    EXPECT_EQ(toText(object), R"({"a\"\n":1,")" + replacement + R"(":2})");
}

TEST(JsonText, WholeCharactersAreUtf8) {
    EXPECT_TRUE(isUtf8(""));
    EXPECT_TRUE(isUtf8("plain \"text\"\n"));
    EXPECT_TRUE(isUtf8("\xC3\xA4\xE2\x82\xAC\xF0\x9D\x84\x9E"));
    EXPECT_TRUE(isUtf8("\xF4\x8F\xBF\xBF")); // U+10FFFF, the last one
}

TEST(JsonText, WhatNoCharacterConsistsOfIsNotUtf8) {
    EXPECT_FALSE(isUtf8("\xFF"));
    EXPECT_FALSE(isUtf8("\x80"));             // goes on without a beginning
    EXPECT_FALSE(isUtf8("\xE2\x82"));         // cut off
    EXPECT_FALSE(isUtf8("\xC0\xAF"));         // a slash in more bytes than it needs
    EXPECT_FALSE(isUtf8("\xED\xA0\x80"));     // half of a pair
    EXPECT_FALSE(isUtf8("\xF4\x90\x80\x80")); // behind the last one
}

// Arrays.

TEST(JsonArray, ElementsStayInTheirOrder) {
    EXPECT_EQ(toText(Json::array({3, "two", nullptr, 1.5, true})), R"([3,"two",null,1.5,true])");
}

TEST(JsonArray, VectorIsAnArray) {
    EXPECT_EQ(toText(std::vector<int>{3, -1, 2}), "[3,-1,2]");
    EXPECT_EQ(toText(std::vector<std::string>{"tx", "rx"}), R"(["tx","rx"])");
    EXPECT_EQ(toText(std::vector<int>()), "[]");
}

TEST(JsonArray, ElementIsAddedAtTheEnd) {
    Json array = Json::array();
    array.push_back(1);
    array.push_back("two");
    array.push_back(Json::array({3}));
    EXPECT_EQ(toText(array), R"([1,"two",[3]])");
}

TEST(JsonArray, HasElementsAndNothingElseHas) {
    const Json array = Json::array({1, "two"});
    ASSERT_NE(array.elements(), nullptr);
    ASSERT_EQ(array.elements()->size(), 2U);
    EXPECT_TRUE(array.elements()->at(1) == Json("two"));
    EXPECT_EQ(Json::object().elements(), nullptr);
    EXPECT_EQ(Json("[]").elements(), nullptr);
    EXPECT_EQ(Json(nullptr).elements(), nullptr);
}

TEST(JsonArray, NothingElseTakesElements) {
    Json object = Json::object();
    EXPECT_THROW(object.push_back(1), std::bad_variant_access);
}

// Objects.

TEST(JsonObject, MembersStayInTheOrderInWhichTheyAreWritten) {
    const Json object = {{"zulu", 1}, {"alfa", 2}, {"mike", 3}};
    EXPECT_EQ(toText(object), R"({"zulu":1,"alfa":2,"mike":3})");
}

TEST(JsonObject, NewMemberIsTheLastAndNullAtFirst) {
    Json object = {{"zulu", 1}};
    EXPECT_TRUE(object["alfa"] == Json(nullptr));
    EXPECT_EQ(toText(object), R"({"zulu":1,"alfa":null})");
}

TEST(JsonObject, MemberThatIsThereIsFound) {
    Json object = {{"zulu", 1}, {"alfa", 2}};
    object["zulu"] = "new";
    EXPECT_EQ(toText(object), R"({"zulu":"new","alfa":2})");
}

TEST(JsonObject, MembersAreNamesWithTheirValues) {
    const Json object = {{"zulu", 1}, {"alfa", "two"}};
    ASSERT_EQ(object.members().size(), 2U);
    EXPECT_EQ(object.members()[0].first, "zulu");
    EXPECT_TRUE(object.members()[0].second == Json(1));
    EXPECT_EQ(object.members()[1].first, "alfa");
    EXPECT_TRUE(object.members()[1].second == Json("two"));
}

TEST(JsonObject, NothingElseHasMembers) {
    Json array = Json::array();
    EXPECT_THROW(array["name"], std::bad_variant_access);
    EXPECT_THROW(array.members(), std::bad_variant_access);
}

TEST(JsonObject, EmptyOnesStayWhatTheyAre) {
    EXPECT_EQ(toText(Json::object()), "{}");
    EXPECT_EQ(toText(Json::array()), "[]");
    EXPECT_EQ(toText(Json{{"object", Json::object()}, {"array", Json::array()}}),
              R"({"object":{},"array":[]})");
}

TEST(JsonObject, ObjectsAndArraysStandInEachOther) {
    const Json writes =
        Json::array({Json{{"driver", "a"}, {"value", 1}}, Json{{"driver", "b"}, {"value", -1}}});
    EXPECT_EQ(
        toText(Json{{"event", "tuned"}, {"writes", writes}, {"at", Json::array({Json::array({0})})}}),
        R"({"event":"tuned","writes":[{"driver":"a","value":1},{"driver":"b","value":-1}],"at":[[0]]})");
}

// Comparison.

TEST(JsonComparison, EqualIsWhatHasEqualParts) {
    const Json object = {{"a", Json::array({1, "x"})}, {"b", nullptr}};
    EXPECT_TRUE(object == (Json{{"a", Json::array({1, "x"})}, {"b", nullptr}}));
    EXPECT_FALSE(object != (Json{{"a", Json::array({1, "x"})}, {"b", nullptr}}));
    EXPECT_TRUE(object != (Json{{"a", Json::array({1, "y"})}, {"b", nullptr}}));
    EXPECT_TRUE(object != (Json{{"a", Json::array({1, "x"})}}));
}

TEST(JsonComparison, OrderOfMembersMatters) {
    EXPECT_TRUE((Json{{"a", 1}, {"b", 2}}) != (Json{{"b", 2}, {"a", 1}}));
}

TEST(JsonComparison, WhatLooksAlikeIsNotEqual) {
    EXPECT_TRUE(Json(nullptr) != Json(""));
    EXPECT_TRUE(Json(false) != Json(0));
    EXPECT_TRUE(Json("1") != Json(1));
    EXPECT_TRUE(Json::array() != Json::object());
}

} // namespace
} // namespace Radio

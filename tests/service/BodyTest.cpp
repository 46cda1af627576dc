#include "service/radio/Body.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>
#include <string>

namespace Radio::Service {
namespace {

/** Why `ask` cannot be given what it asks for; "taken" when it can. */
template <typename Ask>
std::string problemOf(const std::string& text, const Ask& ask) {
    try {
        Body body(text);
        ask(body);
        body.end();
        return "taken";
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
}

std::string khzProblem(const std::string& text) {
    return problemOf(text, [](Body& body) { body.integer("khz", 0, 4294967295); });
}

TEST(Body, WhatIsNoObjectIsRefused) {
    for (const std::string text : {"", "x", "1", "[]", "null", "{", "{}{}", "{\"khz\":1", "\xff{}"}) {
        EXPECT_EQ(khzProblem(text), "expected a JSON object") << text;
    }
}

TEST(Body, IntegerIsWholeAndInItsRange) {
    EXPECT_EQ(khzProblem("{\"khz\":4294967295}"), "taken");
    for (const std::string value :
         {"-1", "4294967296", "18446744073709551615", "1.5", "1e3", "\"1\"", "true", "null", "[1]"}) {
        EXPECT_EQ(khzProblem("{\"khz\":" + value + "}"),
                  "\"khz\": expected a whole number from 0 to 4294967295")
            << value;
    }
}

TEST(Body, MemberThatIsMissingIsAskedFor) {
    EXPECT_EQ(khzProblem("{}"), "\"khz\": expected a whole number from 0 to 4294967295");
    EXPECT_EQ(problemOf("{}", [](Body& body) { body.text("operation"); }), "\"operation\": expected a text");
}

TEST(Body, MemberThatNobodyKnowsIsRefused) {
    EXPECT_EQ(khzProblem("{\"khz\":1,\"mhz\":1}"), "unknown member \"mhz\", expected only khz");
}

TEST(Body, ListsAreBounded) {
    const auto ask = [](Body& body) { body.integers("values", 2); };
    EXPECT_EQ(problemOf("{\"values\":[1,-2]}", ask), "taken");
    for (const std::string values : {"[]", "[1,2,3]", "1", "null", "{}"}) {
        EXPECT_EQ(problemOf("{\"values\":" + values + "}", ask),
                  "\"values\": expected a list of 1 to 2 whole numbers")
            << values;
    }
    EXPECT_EQ(problemOf("{\"values\":[2147483648]}", ask),
              "\"values\": expected a whole number from -2147483648 to 2147483647");
}

TEST(Body, ListThatMayBeMissingHasItsLengthAndItsRange) {
    const auto ask = [](Body& body) { body.optionalIntegers("band_khz", 2, 2, 1, 9); };
    for (const std::string text : {"{}", "{\"band_khz\":null}", "{\"band_khz\":[1,9]}"}) {
        EXPECT_EQ(problemOf(text, ask), "taken") << text;
    }
    for (const std::string values : {"[]", "[1]", "[1,2,3]", "2"}) {
        EXPECT_EQ(problemOf("{\"band_khz\":" + values + "}", ask),
                  "\"band_khz\": expected a list of 2 whole numbers")
            << values;
    }
    EXPECT_EQ(problemOf("{\"band_khz\":[0,9]}", ask), "\"band_khz\": expected a whole number from 1 to 9");
}

TEST(Body, NumberMayHaveAFraction) {
    Body body("{\"shrink_factor\":0.75,\"whole\":2}");
    EXPECT_EQ(body.optionalNumber("shrink_factor"), 0.75);
    EXPECT_EQ(body.optionalNumber("whole"), 2.0);
    EXPECT_EQ(body.optionalNumber("other"), std::nullopt);
    EXPECT_EQ(problemOf("{\"a\":\"0.75\"}", [](Body& asked) { asked.optionalNumber("a"); }),
              "\"a\": expected a number");
}

TEST(Body, FlagIsFalseUnlessItIsThere) {
    Body body("{\"force\":true}");
    EXPECT_TRUE(body.flag("force"));
    EXPECT_FALSE(body.flag("other"));
    EXPECT_TRUE(body.flag("other", true));
    EXPECT_EQ(problemOf("{\"force\":1}", [](Body& asked) { asked.flag("force"); }),
              "\"force\": expected true or false");
}

TEST(Body, DeepNestingIsNoObjectOfOurs) {
    const std::string deep = std::string(30000, '[') + std::string(30000, ']');
    EXPECT_EQ(khzProblem("{\"khz\":" + deep + "}"), "\"khz\": expected a whole number from 0 to 4294967295");
}

} // namespace
} // namespace Radio::Service

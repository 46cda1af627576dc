#include "radio/files/InputError.h"

#include <gtest/gtest.h>

namespace Radio {
namespace {

TEST(InputErrorTest, WhatATerminalWouldObeyIsInNoMessage) {
    const InputError error({"a\x1b", 3}, "b\nc\xC2\x9B");
    EXPECT_STREQ(error.what(), "a\\x1b:3: b\\x0ac\\xc2\\x9b");
    EXPECT_EQ(error.text(), "b\\x0ac\\xc2\\x9b");
    EXPECT_EQ(error.place().file, "a\x1b");
}

TEST(InputErrorTest, PlaceAndTextAreToldApart) {
    const InputError error({"board.toml", 3}, "no name, expected one");
    EXPECT_STREQ(error.what(), "board.toml:3: no name, expected one");
    EXPECT_EQ(error.place().file, "board.toml");
    EXPECT_EQ(error.place().line, 3U);
    EXPECT_EQ(error.text(), "no name, expected one");
}

TEST(InputErrorTest, ChoiceKeepsThePlaceOfWhatItIsMadeOf) {
    const ChoiceError error(InputError({"j", 0}, "is there"), "restart");
    EXPECT_STREQ(error.what(), "j: is there");
    EXPECT_EQ(error.place().file, "j");
    EXPECT_EQ(error.text(), "is there");
    EXPECT_EQ(error.choice(), "restart");
}

} // namespace
} // namespace Radio

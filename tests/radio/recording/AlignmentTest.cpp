#include "radio/recording/Alignment.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <string>

namespace Radio::Recordings {

namespace {

/** An item for each letter: which letter it is, in upper or in lower case, is what it does, and the case is
 * its argument. */
std::vector<Item> itemsOf(const std::string& letters) {
    std::vector<Item> items;
    for (const char letter : letters) {
        const auto full = static_cast<unsigned char>(letter);
        items.push_back({items.size(), full | 0x20U, full, full});
    }
    return items;
}

/** One letter below the other: "." where one side has none. */
std::string shown(const std::string& before, const std::string& after, const std::vector<Match>& matches) {
    std::string upper;
    std::string lower;
    std::size_t nextBefore = 0;
    std::size_t nextAfter = 0;
    const auto add = [&](std::size_t endBefore, std::size_t endAfter) {
        for (; nextBefore < endBefore; ++nextBefore) {
            upper += before[nextBefore];
            lower += '.';
        }
        for (; nextAfter < endAfter; ++nextAfter) {
            upper += '.';
            lower += after[nextAfter];
        }
    };
    for (const Match& match : matches) {
        add(match.before, match.after);
        for (std::size_t index = 0; index < match.count; ++index) {
            upper += before[nextBefore++];
            lower += after[nextAfter++];
        }
    }
    add(before.size(), after.size());
    return upper + " " + lower;
}

std::string aligned(const std::string& before, const std::string& after) {
    return shown(before, after, align(itemsOf(before), itemsOf(after)));
}

std::string aligned(const std::string& before, const std::string& after, std::size_t reach) {
    return shown(before, after, align(itemsOf(before), itemsOf(after), reach));
}

std::size_t lengthOf(const std::vector<Match>& matches) {
    std::size_t length = 0;
    for (const Match& match : matches) {
        length += match.count;
    }
    return length;
}

/** How many letters two words have in common, in their order. */
std::size_t longestCommon(const std::string& one, const std::string& other) {
    std::vector<std::size_t> row(other.size() + 1);
    for (const char letter : one) {
        std::size_t diagonal = 0;
        for (std::size_t index = 0; index < other.size(); ++index) {
            const std::size_t above = row[index + 1];
            row[index + 1] = letter == other[index] ? diagonal + 1 : std::max(above, row[index]);
            diagonal = above;
        }
    }
    return row.back();
}

std::string word(std::mt19937& random, std::size_t longest, int letters) {
    std::string text(random() % (longest + 1), ' ');
    for (char& letter : text) {
        letter = static_cast<char>('a' + static_cast<int>(random() % static_cast<unsigned>(letters)));
    }
    return text;
}

} // namespace

TEST(Alignment, WhatIsEqualBelongsTogether) {
    EXPECT_EQ(aligned("abc", "abc"), "abc abc");
    EXPECT_EQ(aligned("", ""), " ");
    EXPECT_EQ(aligned("abc", ""), "abc ...");
    EXPECT_EQ(aligned("", "abc"), "... abc");
}

TEST(Alignment, WhatOneSideHasAloneStaysAlone) {
    EXPECT_EQ(aligned("abcd", "abd"), "abcd ab.d");
    EXPECT_EQ(aligned("abd", "abxyd"), "ab..d abxyd");
    EXPECT_EQ(aligned("abcd", "axcy"), "ab.cd. a.xc.y");
}

TEST(Alignment, WhatDoesTheSameWithOtherArgumentsBelongsTogetherBetweenThat) {
    EXPECT_EQ(aligned("abc", "aBc"), "abc aBc");
    EXPECT_EQ(aligned("axbc", "aBc"), "axbc a.Bc");
    EXPECT_EQ(aligned("ab", "BA"), "ab. .BA");
}

TEST(Alignment, EqualArgumentsComeFirst) {
    EXPECT_EQ(aligned("aA", "A"), "aA .A");
    EXPECT_EQ(aligned("aAa", "AA"), "aAa .AA");
}

TEST(Alignment, ASearchWithTooManyDifferencesHoldsFastWhatIsThereOnce) {
    // With one difference at a time nobody comes past "xxxxx"; c, d and e are on either side once.
    EXPECT_EQ(aligned("abxxxxxcdeab", "abcdeyyyyab", 1), "abxxxxxcde....ab ab.....cdeyyyyab");
}

TEST(Alignment, WhereNothingIsThereOnceASearchGoesOnFromWhereItCame) {
    EXPECT_EQ(aligned("abababab", "babababa", 1), ".abababab babababa.");
    EXPECT_EQ(aligned("aabbaabb", "bbbbaaaa", 1), "....aabbaabb.. bbbbaa......aa");
}

TEST(Alignment, IsTheLongestOfAnyTwoWords) {
    std::mt19937 random(1);
    for (int turn = 0; turn < 3000; ++turn) {
        const std::string before = word(random, 30, 1 + turn % 6);
        const std::string after = word(random, 30, 1 + turn % 6);
        EXPECT_EQ(lengthOf(align(itemsOf(before), itemsOf(after))), longestCommon(before, after))
            << before << " " << after;
    }
}

TEST(Alignment, IsOneWithAnyReach) {
    std::mt19937 random(1);
    for (int turn = 0; turn < 3000; ++turn) {
        const std::string before = word(random, 60, 2 + turn % 20);
        const std::string after = word(random, 60, 2 + turn % 20);
        const std::vector<Match> matches = align(itemsOf(before), itemsOf(after), 1 + random() % 8);
        std::size_t nextBefore = 0;
        std::size_t nextAfter = 0;
        for (const Match& match : matches) {
            ASSERT_GE(match.before, nextBefore);
            ASSERT_GE(match.after, nextAfter);
            nextBefore = match.before + match.count;
            nextAfter = match.after + match.count;
            ASSERT_EQ(before.substr(match.before, match.count), after.substr(match.after, match.count));
        }
        ASSERT_LE(nextBefore, before.size());
        ASSERT_LE(nextAfter, after.size());
    }
}

TEST(Alignment, ManyItemsWithNothingInCommonOrWithLittleAreAligned) {
    std::mt19937 random(1);
    std::vector<Item> before(100000);
    std::vector<Item> after(200000);
    for (std::size_t place = 0; place < before.size(); ++place) {
        const std::uint64_t one = random() % 3;
        const std::uint64_t other = random() % 3;
        before[place] = {place, one, one, 0};
        after[place] = {place, other, other, 0};
    }
    EXPECT_GT(lengthOf(align(before, after)), 60000U);
    for (Item& item : after) {
        item.full += 3;
        item.rough += 3;
    }
    EXPECT_EQ(lengthOf(align(before, after)), 0U);
}

} // namespace Radio::Recordings

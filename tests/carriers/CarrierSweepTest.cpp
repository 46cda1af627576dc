// A sweep looks at each carrier once, on all threads, and gives the lowest difference.

#include "Sweep.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <mutex>
#include <optional>
#include <set>
#include <vector>

namespace Carriers {
namespace {

void saidNothing(std::uint64_t /*done*/) {}

Difference differenceAt(std::uint64_t carrier) {
    return {"RF LO", static_cast<std::uint32_t>(carrier), {}, 0, 1};
}

} // namespace

TEST(CarrierRangeTest, CountsWhatItHas) {
    EXPECT_EQ(CarrierRange{}.count(), 4'294'967'296U);
    EXPECT_EQ((CarrierRange{10, 20, 3}.count()), 4U); // 10, 13, 16, 19
    EXPECT_EQ((CarrierRange{10, 19, 3}.count()), 3U);
    EXPECT_EQ((CarrierRange{10, 10, 3}.count()), 0U);
}

TEST(CarrierRangeTest, StrideThatDividesTheLastCarrierMeetsIt) {
    // 2^32 - 1 is 3 x 5 x 17 x 257 x 65537.
    constexpr CarrierRange sample{0, std::uint64_t{1} << 32U, 65'537};
    EXPECT_EQ(sample.count(), 65'536U);
    EXPECT_EQ(sample.first + (sample.count() - 1) * sample.stride, 4'294'967'295U);
}

TEST(CarrierSweepTest, EveryCarrierIsInOnePart) {
    constexpr CarrierRange carriers{5, 20'000'000, 3};
    std::mutex mutex;
    std::set<std::uint64_t> firsts;
    std::uint64_t count = 0;
    const auto note = [&](const CarrierRange& part) -> std::optional<Difference> {
        const std::lock_guard lock(mutex);
        EXPECT_EQ(part.first % 3, 2U);
        EXPECT_EQ(part.stride, 3U);
        firsts.insert(part.first);
        count += part.count();
        return std::nullopt;
    };
    EXPECT_FALSE(sweep(carriers, note, 3, saidNothing));
    EXPECT_EQ(count, 6'666'665U);
    // Parts of 2^20 carriers, 3 kHz apart.
    EXPECT_EQ(firsts, (std::set<std::uint64_t>{5, 3'145'733, 6'291'461, 9'437'189, 12'582'917, 15'728'645,
                                               18'874'373}));
}

TEST(CarrierSweepTest, LowestDifferenceIsGiven) {
    const auto differs = [](const CarrierRange& part) -> std::optional<Difference> {
        return part.first >= 3'145'728 ? std::optional(differenceAt(part.first + 7)) : std::nullopt;
    };
    for (const unsigned threads : {1U, 2U, 5U}) {
        const std::optional<Difference> difference = sweep({}, differs, threads, saidNothing);
        ASSERT_TRUE(difference);
        EXPECT_EQ(difference->carrier, 3'145'735U);
    }
}

TEST(CarrierSweepTest, NothingIsLookedAtBehindADifference) {
    std::vector<std::uint64_t> parts;
    const auto differs = [&](const CarrierRange& part) -> std::optional<Difference> {
        parts.push_back(part.first);
        return parts.size() == 2 ? std::optional(differenceAt(part.first)) : std::nullopt;
    };
    EXPECT_TRUE(sweep({}, differs, 1, saidNothing));
    EXPECT_EQ(parts, (std::vector<std::uint64_t>{0, 1'048'576}));
}

TEST(CarrierSweepTest, NoCarriersAreNoDifference) {
    const auto differs = [](const CarrierRange& part) { return std::optional(differenceAt(part.first)); };
    EXPECT_FALSE(sweep({0, 0, 1}, differs, 2, saidNothing));
}

} // namespace Carriers

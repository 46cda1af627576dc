#include "radio/board/BoardFile.h"
#include "radio/fit/Fit.h"
#include "tests/radio/fit/PlayedTransmitter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <iostream>
#include <random>
#include <string>
#include <vector>

namespace Radio::Fit {
namespace {

/** Numbers that are the same with every standard library. */
class Numbers {
public:
    explicit Numbers(std::uint32_t seed) : m_random(seed) {}
    double between(double low, double high) {
        return low + (high - low) * static_cast<double>(m_random() >> 11U) / 9007199254740992.0;
    }

private:
    std::mt19937_64 m_random;
};

LeakagePath pathOf(Numbers& numbers, double lowLevel, double highLevel, double lowDelay, double highDelay) {
    LeakagePath path;
    path.level = numbers.between(lowLevel, highLevel);
    path.levelPerDegree = numbers.between(-0.02, 0.02);
    path.levelPerGHz = numbers.between(-1.5, 1.5);
    path.phase = numbers.between(-180.0, 180.0);
    path.phasePerDegree = numbers.between(-0.4, 0.4);
    path.delay = numbers.between(lowDelay, highDelay);
    return path;
}

LeakageDescription transmitter(std::uint32_t seed) {
    Numbers numbers(1000 + seed);
    LeakageDescription leakage;
    leakage.channel = 1;
    leakage.seed = seed;
    leakage.reference = 18'195'000;
    const int paths = numbers.between(0.0, 1.0) < 0.5 ? 2 : 3;
    leakage.paths.push_back(pathOf(numbers, -30.0, -23.0, 0.0, 0.4));
    for (int n = 1; n < paths; ++n) {
        leakage.paths.push_back(pathOf(numbers, -45.0, -35.0, 0.2, 0.9));
    }
    leakage.skew = numbers.between(-6.0, 6.0);
    for (CorrectionBranch* const branch : {&leakage.i, &leakage.q}) {
        branch->gain = 1e-4 * numbers.between(0.9, 1.1);
        branch->low = -1500;
        branch->high = 1500;
    }
    leakage.detector.noise = numbers.between(0.5, 3.0);
    leakage.detector.slope = numbers.between(15.0, 40.0);
    leakage.detector.floor = numbers.between(-90.0, -75.0);
    leakage.detector.zero = -95.0;
    leakage.detector.high = 8191;
    leakage.detector.settling = 1.0;
    return leakage;
}

/** Ten kinds, one after the other. */
struct Nasty {
    std::string kind;
    LeakageDescription leakage;
    Nastiness nastiness{};
    double slopeFactor = 1.0;
};

Nasty nastyTransmitter(std::uint32_t seed) {
    Numbers numbers(7000 + seed);
    Nasty nasty{"", transmitter(5000 + seed), {}, 1.0};
    DetectorDescription& detector = nasty.leakage.detector;
    switch (seed % 10) {
    case 0:
        nasty.kind = "kink over frequency";
        nasty.nastiness.kinkAt = numbers.between(17.9e6, 18.5e6);
        nasty.nastiness.kinkDelay = numbers.between(-0.4, 0.4);
        break;
    case 1:
        nasty.kind = "jump over frequency";
        nasty.nastiness.kinkAt = numbers.between(17.9e6, 18.5e6);
        nasty.nastiness.jump = numbers.between(-0.3, 0.3);
        break;
    case 2:
        nasty.kind = "detector that bends much";
        nasty.nastiness.bend = numbers.between(-0.004, 0.004);
        break;
    case 3:
        nasty.kind = "detector that bends little";
        nasty.nastiness.bend = numbers.between(-0.0008, 0.0008);
        break;
    case 4:
        nasty.kind = "range that ends before the bottom";
        nasty.leakage.i.low = -300;
        nasty.leakage.i.high = 300;
        break;
    case 5:
        nasty.kind = "range that ends unseen";
        nasty.nastiness.hiddenLow = -300;
        nasty.nastiness.hiddenHigh = 300;
        break;
    case 6:
        nasty.kind = "wrong slope";
        nasty.slopeFactor =
            numbers.between(0.0, 1.0) < 0.5 ? numbers.between(0.7, 0.97) : numbers.between(1.03, 1.3);
        break;
    case 7:
        nasty.kind = "skewed branch";
        nasty.leakage.skew = numbers.between(-45.0, 45.0);
        break;
    case 8:
        nasty.kind = "saturation at both ends";
        detector.high = static_cast<std::int32_t>(detector.slope * numbers.between(45.0, 70.0));
        detector.low = static_cast<std::int32_t>(detector.slope * numbers.between(5.0, 25.0));
        break;
    default:
        nasty.kind = "high floor";
        detector.floor = numbers.between(-72.0, -60.0);
        break;
    }
    return nasty;
}

std::string quantiles(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    std::string text;
    const std::size_t last = values.size() - 1;
    for (const std::size_t n : {std::size_t{0}, last / 10, last / 2, last * 9 / 10, last}) {
        std::array<char, 32> number{};
        static_cast<void>(std::snprintf(number.data(), number.size(), " %9.2f", values[n]));
        text += number.data();
    }
    return text;
}

/** Times 89 temperatures: more than 10 000 places. */
constexpr std::uint32_t carriers = 120;

void demonstrate(double limit, std::uint32_t budget, double wanted) {
    const Board board = loadBoard(RADIO_BOARDS "/lo-leakage-18ghz.toml");
    ASSERT_EQ(board.leakages.size(), 2U);
    for (const LeakageDescription& leakage : board.leakages) {
        PlayedTransmitter played(leakage);
        const Order order = orderFor(leakage, limit, budget);
        const Outcome outcome = calibrate(order, played);
        ASSERT_TRUE(outcome.claim) << outcome.reason;
        const double worst = played.worst(order, outcome.table, 937);
        std::cout << "demonstration, channel " << leakage.channel << ", limit " << limit
                  << " dBc: " << outcome.probes << " probes, " << outcome.points.size() << " points, "
                  << outcome.verifications.size() << " verifications, " << outcome.temperatureChanges
                  << " temperature changes, claimed " << outcome.claim->level << ", really " << worst
                  << " dBc\n";
        EXPECT_LE(outcome.probes, budget);
        EXPECT_LE(worst, wanted);
        EXPECT_LE(worst, outcome.claim->level);
    }
}

TEST(StudyTest, DemonstrationBoardIsBelow74WithFourHundredProbes) {
    demonstrate(-74.0, 400, -74.0);
}

TEST(StudyTest, DemonstrationBoardIsBelow77WithWhatASearchTakes) {
    demonstrate(-77.0, 2760, -77.0);
}

TEST(StudyTest, DemonstrationBoardIsBelow70WithAQuarterThousandProbes) {
    demonstrate(-70.0, 250, -70.0);
}

TEST(StudyTest, RandomTransmittersAreBelow68AndBelowTheirClaims) {
    std::vector<double> levels;
    std::vector<double> probes;
    std::vector<double> margins;
    for (std::uint32_t seed = 0; seed < 200; ++seed) {
        PlayedTransmitter played(transmitter(seed));
        const Order order = orderFor(played.leakage(), -68.0, 600);
        const Outcome outcome = calibrate(order, played);
        ASSERT_EQ(outcome.verdict, Verdict::held) << "seed " << seed << ": " << outcome.reason;
        levels.push_back(played.worst(order, outcome.table, carriers));
        probes.push_back(outcome.probes);
        margins.push_back(outcome.claim->level - levels.back());
        EXPECT_LE(levels.back(), -68.0) << "seed " << seed;
        EXPECT_LE(outcome.probes, 600U) << "seed " << seed;
        EXPECT_GE(margins.back(), 0.0) << "seed " << seed;
    }
    std::cout << "random, 200 of them      min       10 %    median      90 %       max\n"
              << "really left, dBc  " << quantiles(levels) << "\nclaimed above, dB " << quantiles(margins)
              << "\nprobes            " << quantiles(probes) << "\n";
}

TEST(StudyTest, NastyTransmittersAreMetOrFailByNameAndNeverPassWrongly) {
    for (std::uint32_t seed = 0; seed < 50; ++seed) {
        const Nasty nasty = nastyTransmitter(seed);
        PlayedTransmitter played(nasty.leakage, nasty.nastiness);
        Order order = orderFor(nasty.leakage, -68.0, 600);
        *order.detector.slope *= nasty.slopeFactor;
        const Outcome outcome = calibrate(order, played);
        std::cout << nasty.kind << " (" << seed << "), " << outcome.probes << " probes: ";
        if (outcome.verdict == Verdict::held) {
            const double worst = played.worst(order, outcome.table, carriers);
            std::cout << "held, claimed " << outcome.claim->level << ", really " << worst << " dBc\n";
            EXPECT_LE(worst, outcome.claim->level) << nasty.kind << ", seed " << seed;
            EXPECT_LE(worst, -68.0) << nasty.kind << ", seed " << seed;
        } else {
            std::cout << outcome.reason << "\n";
            EXPECT_FALSE(outcome.reason.empty()) << nasty.kind << ", seed " << seed;
        }
        EXPECT_LE(outcome.probes, 600U);
    }
}

} // namespace
} // namespace Radio::Fit

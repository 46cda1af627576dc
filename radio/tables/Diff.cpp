#include "radio/tables/Diff.h"

#include "radio/board/BoardNames.h"
#include "radio/files/InputError.h"
#include "radio/text/Words.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <string>

namespace Radio::Tables {

namespace {

/** Axes that have nothing in common make very many nodes. */
constexpr std::uint64_t mostNodes = 1'000'000;

std::vector<std::int32_t> merged(const std::vector<std::int32_t>& a, const std::vector<std::int32_t>& b) {
    std::vector<std::int32_t> all;
    std::set_union(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(all));
    return all;
}

/** A channel in both files. */
struct Pair {
    std::optional<int> channel;
    const Corrections* before;
    const Corrections* after;
};

std::vector<std::int32_t> unionOf(const Pair& pair, std::vector<std::int32_t> CalibrationTable::*axis) {
    return merged(merged(pair.before->i.*axis, pair.before->q.*axis),
                  merged(pair.after->i.*axis, pair.after->q.*axis));
}

bool haveSameAxes(const CalibrationTable& a, const CalibrationTable& b) {
    return a.axis1 == b.axis1 && a.axis2 == b.axis2;
}

std::optional<double> levelOf(const LeakageDescription* leakage, const Surroundings& surroundings,
                              const LoCorrections& corrections) {
    return leakage == nullptr ? std::nullopt
                              : std::optional(leakageLevel(*leakage, surroundings, corrections));
}

ChannelDifference compareNodes(const Pair& pair, const LeakageDescription* leakage, const Source& after) {
    ChannelDifference difference{pair.channel,
                                 !haveSameAxes(pair.before->i, pair.after->i) ||
                                     !haveSameAxes(pair.before->q, pair.after->q),
                                 {}};
    const std::vector<std::int32_t> carriers = unionOf(pair, &CalibrationTable::axis1);
    const std::vector<std::int32_t> temperatures = unionOf(pair, &CalibrationTable::axis2);
    if (std::uint64_t{carriers.size()} * temperatures.size() > mostNodes) {
        throw InputError({after.file.string(), 0},
                         "more than a million nodes together with the other tables, expected axes that have "
                         "more in common with theirs");
    }
    for (const std::int32_t carrier : carriers) {
        for (const std::int32_t temperature : temperatures) {
            const Surroundings surroundings{static_cast<std::uint32_t>(carrier),
                                            static_cast<double>(temperature)};
            NodeDifference node{carrier,
                                temperature,
                                pair.before->at(carrier, temperature),
                                pair.after->at(carrier, temperature),
                                {},
                                {}};
            node.levelBefore = levelOf(leakage, surroundings, node.before);
            node.levelAfter = levelOf(leakage, surroundings, node.after);
            difference.nodes.push_back(node);
        }
    }
    return difference;
}

bool isWanted(std::optional<int> channel, std::optional<int> wanted) {
    return !channel || !wanted || *channel == *wanted;
}

bool mayBeSame(std::optional<int> a, std::optional<int> b) {
    return !a || !b || *a == *b;
}

/** Pairs the channels of both files; those without a partner go into the difference. */
std::vector<Pair> pairUp(const Source& before, const Source& after, std::optional<int> wanted,
                         Difference& difference) {
    std::vector<Pair> pairs;
    std::vector<const Corrections*> paired;
    for (const Corrections& one : before.channels) {
        const std::size_t count = pairs.size();
        for (const Corrections& other : after.channels) {
            if (mayBeSame(one.channel, other.channel) && isWanted(one.channel, wanted) &&
                isWanted(other.channel, wanted)) {
                const std::optional<int> said = one.channel ? one.channel : other.channel;
                pairs.push_back({said ? said : wanted, &one, &other});
                paired.push_back(&other);
            }
        }
        if (pairs.size() == count && one.channel && isWanted(one.channel, wanted)) {
            difference.onlyBefore.push_back(*one.channel);
        }
    }
    for (const Corrections& other : after.channels) {
        const bool isPaired = std::find(paired.begin(), paired.end(), &other) != paired.end();
        if (!isPaired && other.channel && isWanted(other.channel, wanted)) {
            difference.onlyAfter.push_back(*other.channel);
        }
    }
    return pairs;
}

std::string channelsOf(const Source& source) {
    std::vector<std::string> numbers;
    for (const Corrections& corrections : source.channels) {
        numbers.push_back(corrections.channel ? std::to_string(*corrections.channel) : "any");
    }
    return joined(numbers, ", ");
}

/** A file that does not say its channel goes with any, but only with one. */
void requireOneChannel(const Source& unsaid, const Source& other, std::optional<int> wanted) {
    if (!unsaid.channels.front().channel && other.channels.size() > 1 && !wanted) {
        throw ChoiceError({unsaid.file.string(), 0}, "no line \"# channel: ...\", expected it", "channel",
                          "one of those of " + harmless(other.file.string()) + ": " + channelsOf(other));
    }
}

} // namespace

double NodeDifference::move() const {
    return std::hypot(static_cast<double>(after.i) - before.i, static_cast<double>(after.q) - before.q);
}

double NodeDifference::worsening() const {
    return levelBefore && levelAfter ? std::max(0.0, *levelAfter - *levelBefore) : 0.0;
}

std::size_t ChannelDifference::moved() const {
    return static_cast<std::size_t>(std::count_if(
        nodes.begin(), nodes.end(), [](const NodeDifference& node) { return node.hasMoved(); }));
}

bool Difference::isThere() const {
    return !onlyBefore.empty() || !onlyAfter.empty() ||
           std::any_of(channels.begin(), channels.end(),
                       [](const ChannelDifference& channel) { return channel.moved() != 0; });
}

const Board* modelOf(const std::optional<Board>& named, const Source& before, const Source& after) {
    for (const std::optional<Board>* const board : {&named, &after.board, &before.board}) {
        if (board->has_value()) {
            return &**board;
        }
    }
    return nullptr;
}

Difference compare(const Source& before, const Source& after, const Board* model,
                   std::optional<int> channel) {
    requireOneChannel(before, after, channel);
    requireOneChannel(after, before, channel);
    Difference difference;
    for (const Pair& pair : pairUp(before, after, channel, difference)) {
        const LeakageDescription* const leakage =
            model != nullptr && pair.channel ? findLeakage(*model, *pair.channel) : nullptr;
        difference.channels.push_back(compareNodes(pair, leakage, after));
    }
    if (difference.channels.empty()) {
        throw InputError({after.file.string(), 0},
                         "no channel " + (channel ? std::to_string(*channel) + " " : std::string()) +
                             "in common with " + harmless(before.file.string()) + "; that has channel " +
                             channelsOf(before) + ", this " + channelsOf(after));
    }
    return difference;
}

} // namespace Radio::Tables

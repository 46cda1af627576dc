#include "radioctl/tables/DiffReport.h"

#include "radio/text/Words.h"
#include "radioctl/report/JsonLine.h"
#include "radioctl/report/TextTable.h"

#include <algorithm>
#include <cstdlib>

namespace Radio::Tables {

namespace {

/** More than a person reads at once. */
constexpr std::size_t nodesShown = 10;

using Member = std::int32_t LoCorrections::*;

std::int64_t moveOf(const NodeDifference& node, Member branch) {
    return std::int64_t{node.after.*branch} - node.before.*branch;
}

/** "-47 -> 12". */
std::string change(const NodeDifference& node, Member branch) {
    return std::to_string(node.before.*branch) + " -> " + std::to_string(node.after.*branch);
}

std::string placeOf(const NodeDifference& node) {
    return std::to_string(node.carrier) + " kHz at " + std::to_string(node.temperature) + " degrees";
}

/** The node for which `measure` gives the most. */
template <typename Measure>
const NodeDifference& most(const ChannelDifference& channel, Measure measure) {
    return *std::max_element(
        channel.nodes.begin(), channel.nodes.end(),
        [&](const NodeDifference& a, const NodeDifference& b) { return measure(a) < measure(b); });
}

const NodeDifference& largestMove(const ChannelDifference& channel, Member branch) {
    return most(channel, [branch](const NodeDifference& node) { return std::abs(moveOf(node, branch)); });
}

const NodeDifference& worst(const ChannelDifference& channel, std::optional<double> NodeDifference::*level) {
    return most(channel, [level](const NodeDifference& node) { return *(node.*level); });
}

std::size_t gotWorse(const ChannelDifference& channel) {
    return static_cast<std::size_t>(
        std::count_if(channel.nodes.begin(), channel.nodes.end(),
                      [](const NodeDifference& node) { return node.worsening() > 0; }));
}

std::vector<const NodeDifference*> movedNodes(const ChannelDifference& channel) {
    std::vector<const NodeDifference*> nodes;
    for (const NodeDifference& node : channel.nodes) {
        if (node.hasMoved()) {
            nodes.push_back(&node);
        }
    }
    std::stable_sort(nodes.begin(), nodes.end(),
                     [](const NodeDifference* a, const NodeDifference* b) { return a->move() > b->move(); });
    return nodes;
}

void writeLevels(TextTable& table, const ChannelDifference& channel) {
    if (!channel.nodes.front().levelBefore) {
        return;
    }
    const NodeDifference& before = worst(channel, &NodeDifference::levelBefore);
    const NodeDifference& after = worst(channel, &NodeDifference::levelAfter);
    table.add({"worst leakage before", levelText(*before.levelBefore), placeOf(before)});
    table.add({"worst leakage after", levelText(*after.levelAfter), placeOf(after)});
    const std::size_t count = gotWorse(channel);
    const NodeDifference& node = most(channel, [](const NodeDifference& n) { return n.worsening(); });
    table.add({"got worse", counted(count, "node"),
               count == 0 ? "" : "most by " + inTwoDecimals(node.worsening()) + " dB, " + placeOf(node)});
}

void writeSummary(std::ostream& out, const ChannelDifference& channel) {
    out << "channel " << (channel.channel ? std::to_string(*channel.channel) : "unknown") << ": "
        << counted(channel.nodes.size(), "node") << " compared, " << channel.moved() << " moved\n";
    if (channel.axesDiffer) {
        out << "  The tables have other axes; they are compared at the nodes of both.\n";
    }
    TextTable table;
    if (channel.moved() != 0) {
        for (const auto& [name, branch] : {std::pair("I", &LoCorrections::i), {"Q", &LoCorrections::q}}) {
            const NodeDifference& node = largestMove(channel, branch);
            table.add({std::string("largest move in ") + name, std::to_string(std::abs(moveOf(node, branch))),
                       moveOf(node, branch) == 0 ? "" : placeOf(node)});
        }
    }
    writeLevels(table, channel);
    table.write(out);
}

void writeNodes(std::ostream& out, const ChannelDifference& channel, bool all) {
    const std::vector<const NodeDifference*> nodes = movedNodes(channel);
    if (nodes.empty()) {
        return;
    }
    TextTable table;
    for (const std::size_t column : {0U, 1U, 2U, 3U, 4U, 5U}) {
        table.alignRight(column);
    }
    const bool hasLevels = channel.nodes.front().levelBefore.has_value();
    table.add({"kHz", "degrees", "I", "Q", "move", hasLevels ? "leakage in dBc" : ""});
    const std::size_t shown = all ? nodes.size() : std::min(nodes.size(), nodesShown);
    for (std::size_t index = 0; index < shown; ++index) {
        const NodeDifference& node = *nodes[index];
        table.add(
            {std::to_string(node.carrier), std::to_string(node.temperature), change(node, &LoCorrections::i),
             change(node, &LoCorrections::q), inDecimals(node.move(), 1),
             hasLevels ? inTwoDecimals(*node.levelBefore) + " -> " + inTwoDecimals(*node.levelAfter) : ""});
    }
    out << "\n";
    table.write(out);
    if (shown < nodes.size()) {
        out << "  and " << nodes.size() - shown << " more; --all shows them\n";
    }
}

void writeOnly(std::ostream& out, const std::vector<int>& channels, const std::string& file) {
    for (const int channel : channels) {
        out << "channel " << channel << ": only in " << harmless(file) << "\n";
    }
}

} // namespace

void writeText(std::ostream& out, const Difference& difference, const std::string& before,
               const std::string& after, bool all) {
    out << harmless(before) << " -> " << harmless(after) << "\n";
    for (const ChannelDifference& channel : difference.channels) {
        out << "\n";
        writeSummary(out, channel);
        writeNodes(out, channel, all);
    }
    if (!difference.onlyBefore.empty() || !difference.onlyAfter.empty()) {
        out << "\n";
    }
    writeOnly(out, difference.onlyBefore, before);
    writeOnly(out, difference.onlyAfter, after);
}

void writeJson(std::ostream& out, const Difference& difference, const std::string& before,
               const std::string& after) {
    for (const ChannelDifference& channel : difference.channels) {
        for (const NodeDifference* const node : movedNodes(channel)) {
            writeJsonLine(out, {{"event", "moved"},
                                {"channel", orNull(channel.channel)},
                                {"khz", node->carrier},
                                {"degrees", node->temperature},
                                {"i_before", node->before.i},
                                {"i_after", node->after.i},
                                {"q_before", node->before.q},
                                {"q_after", node->after.q},
                                {"move", node->move()},
                                {"dbc_before", orNull(node->levelBefore)},
                                {"dbc_after", orNull(node->levelAfter)}});
        }
        const bool hasLevels = channel.nodes.front().levelBefore.has_value();
        writeJsonLine(
            out,
            {{"event", "channel"},
             {"channel", orNull(channel.channel)},
             {"nodes", channel.nodes.size()},
             {"moved", channel.moved()},
             {"axes_differ", channel.axesDiffer},
             {"largest_i", std::abs(moveOf(largestMove(channel, &LoCorrections::i), &LoCorrections::i))},
             {"largest_q", std::abs(moveOf(largestMove(channel, &LoCorrections::q), &LoCorrections::q))},
             {"worst_dbc_before",
              hasLevels ? orNull(worst(channel, &NodeDifference::levelBefore).levelBefore) : Json(nullptr)},
             {"worst_dbc_after",
              hasLevels ? orNull(worst(channel, &NodeDifference::levelAfter).levelAfter) : Json(nullptr)},
             {"got_worse", hasLevels ? Json(gotWorse(channel)) : Json(nullptr)}});
    }
    writeJsonLine(out, {{"event", "compared"},
                        {"before", before},
                        {"after", after},
                        {"only_before", difference.onlyBefore},
                        {"only_after", difference.onlyAfter},
                        {"different", difference.isThere()}});
}

} // namespace Radio::Tables

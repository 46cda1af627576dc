#include "radioctl/tables/WhyReport.h"

#include "ResultCode.h"
#include "radio/text/Words.h"
#include "radioctl/report/JsonLine.h"
#include "radioctl/report/TextTable.h"

namespace Radio::Tables {

namespace {

double asDouble(const MixedNumber& number) {
    return static_cast<double>(number.whole) +
           static_cast<double>(number.numerator) / static_cast<double>(number.divisor);
}

std::string weightText(const WeighedNode& node, const Lookup& lookup) {
    return std::to_string(node.weight1) + "/" + std::to_string(lookup.axis1.width) + " x " +
           std::to_string(node.weight2) + "/" + std::to_string(lookup.axis2.width);
}

void writeClamping(std::ostream& out, const AxisLookup& axis, const std::string& unit, std::int32_t node) {
    if (axis.isClamped) {
        out << "  " << axis.at << " " << unit << " is " << (axis.at < node ? "below" : "above")
            << " the table's axis: its node at " << node << " holds\n";
    }
}

void writeLookup(std::ostream& out, const Lookup& lookup) {
    TextTable table;
    for (const std::size_t column : {0U, 1U, 2U}) {
        table.alignRight(column);
    }
    table.add({"kHz", "degrees", "value", "weight"});
    for (const WeighedNode& node : lookup.nodes) {
        table.add({std::to_string(node.x1), std::to_string(node.x2), std::to_string(node.value),
                   weightText(node, lookup)});
    }
    table.write(out);
    writeClamping(out, lookup.axis1, "kHz", lookup.nodes.front().x1);
    writeClamping(out, lookup.axis2, "degrees", lookup.nodes.front().x2);
    out << "  exactly " << toString(lookup.value);
    if (lookup.value.numerator != 0) {
        out << ", which is about " << inDecimals(asDouble(lookup.value), 3) << "; rounded "
            << lookup.value.rounded();
    }
    out << "\n";
}

void writeBranch(std::ostream& out, const BranchReason& branch) {
    out << "\n" << branch.branch << ": table " << harmless(branch.table);
    if (!branch.file.empty()) {
        out << ", from " << harmless(branch.file) << ", column " << harmless(branch.column);
    }
    out << "\n";
    if (branch.lookup) {
        writeLookup(out, *branch.lookup);
    } else {
        out << "  No value: " << harmless(branch.whyNoValue) << ". The library writes 0 then.\n";
    }
    if (branch.written) {
        out << "  " << harmless(branch.driver) << " <- " << *branch.written
            << (isFailure(branch.code) ? "  FAILED " + codeText(branch.code) : "") << "\n";
    }
}

Json jsonOf(const BranchReason& branch) {
    Json event = {{"event", "correction"}, {"branch", branch.branch}, {"table", branch.table}};
    if (!branch.file.empty()) {
        event["file"] = branch.file;
        event["column"] = branch.column;
    }
    if (branch.lookup) {
        const Lookup& lookup = *branch.lookup;
        Json nodes = Json::array();
        for (const WeighedNode& node : lookup.nodes) {
            nodes.push_back({{"khz", node.x1},
                             {"degrees", node.x2},
                             {"value", node.value},
                             {"khz_weight", Json::array({node.weight1, lookup.axis1.width})},
                             {"degrees_weight", Json::array({node.weight2, lookup.axis2.width})}});
        }
        event["nodes"] = nodes;
        event["khz_clamped"] = lookup.axis1.isClamped;
        event["degrees_clamped"] = lookup.axis2.isClamped;
        event["exact"] = Json::array({lookup.value.whole, lookup.value.numerator, lookup.value.divisor});
    } else {
        event["no_value"] = branch.whyNoValue;
    }
    event["computed"] = branch.computed;
    event["driver"] = branch.driver;
    event["written"] = orNull(branch.written);
    event["code"] = branch.code;
    return event;
}

} // namespace

void writeText(std::ostream& out, const Board& board, const Reason& reason) {
    out << harmless(board.name + " (" + board.file.string() + ")") << "\n  tx " << reason.channel.number
        << ", " << Radio::toString(reason.channel.type) << ": " << reason.carrier << " kHz at "
        << reason.temperature << " degrees\n";
    if (!reason.whyNone.empty()) {
        out << "\n" << harmless(reason.whyNone) << "\n";
    }
    for (const BranchReason& branch : reason.branches) {
        writeBranch(out, branch);
    }
    out << "\n";
    if (reason.level) {
        out << "Modelled leakage: " << levelText(*reason.level) << ", and " << levelText(*reason.levelWithout)
            << " with both corrections 0.\n";
    }
    for (const std::string& complaint : reason.complaints) {
        out << "The library reports: " << harmless(complaint) << "\n";
    }
    for (const std::string& disagreement : reason.disagreements) {
        out << "DIFFERENT " << harmless(disagreement) << "\n";
    }
    if (reason.disagreements.empty()) {
        out << (reason.branches.empty() ? "The library wrote no correction.\n"
                                        : "The library wrote what the tables say.\n");
    }
}

void writeJson(std::ostream& out, const Board& board, const Reason& reason) {
    writeJsonLine(out, {{"event", "carrier"},
                        {"file", board.file.string()},
                        {"channel", reason.channel.number},
                        {"type", Radio::toString(reason.channel.type)},
                        {"khz", reason.carrier},
                        {"degrees", reason.temperature}});
    for (const BranchReason& branch : reason.branches) {
        writeJsonLine(out, jsonOf(branch));
    }
    writeJsonLine(out, {{"event", "explained"},
                        {"no_correction", reason.whyNone.empty() ? Json(nullptr) : Json(reason.whyNone)},
                        {"dbc", orNull(reason.level)},
                        {"dbc_without", orNull(reason.levelWithout)},
                        {"complaints", reason.complaints},
                        {"disagreements", reason.disagreements},
                        {"ok", reason.disagreements.empty()}});
}

} // namespace Radio::Tables

#include "radio/board/Verdict.h"

#include "radio/text/Words.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <sstream>

namespace Radio {

namespace {

struct LimitWords {
    std::string_view name;
    std::string_view quantity;
    std::string_view unit;
    /** What is found has to be this high at least; the others allow so much at most. */
    bool isLeast;
};

constexpr std::array<LimitWords, 5> limitWords{{
    {"leakage", "leakage anywhere", " dBc", false},
    {"leakage_at_nodes", "leakage at the nodes", " dBc", false},
    {"leakage_improvement", "improvement", " dB", true},
    {"image", "image", " dBc", false},
    {"carrier_leakage", "carrier leakage", " dBc", false},
}};

const LimitWords& wordsOfLimit(std::string_view name) {
    return *std::find_if(limitWords.begin(), limitWords.end(),
                         [name](const LimitWords& words) { return words.name == name; });
}

/** "leakage at the nodes -77.28 dBc" */
std::string foundText(const JudgedLimit& limit) {
    const LimitWords& words = wordsOfLimit(limit.name);
    return std::string(words.quantity) + " " +
           (limit.found ? inTwoDecimals(*limit.found) + std::string(words.unit) : "unknown");
}

/** " of channel 2 at 17823750 kHz, -22 degrees" */
std::string placeOf(const JudgedLimit& limit) {
    std::vector<std::string> parts;
    if (limit.frequency) {
        parts.push_back(std::to_string(*limit.frequency) + " kHz");
    }
    if (limit.temperature) {
        parts.push_back(std::to_string(*limit.temperature) + " degrees");
    }
    return (limit.channel ? " of channel " + std::to_string(*limit.channel) : "") +
           (parts.empty() ? "" : " at " + joined(parts, ", "));
}

std::string heldText(const std::vector<JudgedLimit>& limits) {
    std::vector<std::string> texts;
    for (const JudgedLimit& limit : limits) {
        if (limit.isHeld()) {
            texts.push_back(foundText(limit) + " (limit " + limitText(limit.limit) + ")");
        }
    }
    return joined(texts, ", ");
}

} // namespace

double toHundredth(double level) {
    return std::round(level * 100) / 100;
}

bool meetsLimit(std::string_view name, double found, double limit) {
    return wordsOfLimit(name).isLeast ? found >= limit : found <= limit;
}

std::string limitText(double limit) {
    std::ostringstream text;
    text << limit;
    return text.str();
}

std::string missedText(const JudgedLimit& limit) {
    return foundText(limit) + placeOf(limit) + ", limit " + limitText(limit.limit) +
           (limit.found ? "" : ": " + limit.whyUnknown);
}

bool JudgedLimit::isHeld() const {
    return found && meetsLimit(name, *found, limit);
}

std::string_view toString(VerdictKind kind) {
    switch (kind) {
    case VerdictKind::pass:
        return "PASS";
    case VerdictKind::fail:
        return "FAIL";
    case VerdictKind::none:
        break;
    }
    return "";
}

VerdictKind Verdict::kind() const {
    if (limits.empty()) {
        return VerdictKind::none;
    }
    return std::all_of(limits.begin(), limits.end(), [](const JudgedLimit& limit) { return limit.isHeld(); })
               ? VerdictKind::pass
               : VerdictKind::fail;
}

std::vector<std::string> linesOf(const Verdict& verdict) {
    if (verdict.kind() == VerdictKind::none) {
        return {"NO VERDICT: " + verdict.whyNone};
    }
    if (verdict.kind() == VerdictKind::pass) {
        return {"PASS: " + heldText(verdict.limits)};
    }
    std::vector<std::string> lines;
    for (const JudgedLimit& limit : verdict.limits) {
        if (!limit.isHeld()) {
            lines.push_back("FAIL: " + missedText(limit));
        }
    }
    const std::string held = heldText(verdict.limits);
    if (!held.empty()) {
        lines.push_back("Held: " + held);
    }
    return lines;
}

} // namespace Radio

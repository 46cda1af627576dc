#include "radio/tables/TableLint.h"

#include "radio/board/TableCheck.h"
#include "radio/tables/Misfits.h"
#include "radio/text/Median.h"
#include "radio/text/Words.h"

#include <cmath>
#include <string_view>

namespace Radio::Tables {

namespace {

/** Two nodes so many times as far apart as is usual are looked at. */
constexpr std::int64_t gapFactor = 3;

/** An axis, and how it is spoken of. */
struct AxisWords {
    std::string_view what;
    std::string_view unit;
    std::string_view need;
};

constexpr AxisWords carrierWords{"carriers", "kHz", "the rasters"};
constexpr AxisWords temperatureWords{"temperatures", "degrees", "the limits"};

void lintGaps(const std::string& prefix, const std::vector<std::int32_t>& axis, const AxisWords& words,
              const Place& place, std::vector<Finding>& findings) {
    std::vector<std::int64_t> gaps;
    for (std::size_t index = 1; index < axis.size(); ++index) {
        gaps.push_back(std::int64_t{axis[index]} - axis[index - 1]);
    }
    const std::int64_t usual = median(gaps);
    for (std::size_t index = 0; index < gaps.size(); ++index) {
        if (gaps[index] > gapFactor * usual) {
            findings.push_back({Severity::warning, place,
                                prefix + std::to_string(gaps[index]) + " " + std::string(words.unit) +
                                    " without a node, from " + std::to_string(axis[index]) + " to " +
                                    std::to_string(axis[index + 1]) + "; usual are " +
                                    std::to_string(usual)});
        }
    }
}

void lintEnds(const std::string& prefix, const std::vector<std::int32_t>& axis, const AxisWords& words,
              const std::optional<Range>& needed, const Place& place, std::vector<Finding>& findings) {
    if (!needed) {
        return;
    }
    const auto add = [&](const char* verb, std::int64_t end, const char* way, std::int64_t wanted) {
        findings.push_back({Severity::warning, place,
                            prefix + std::string(words.what) + " " + verb + " at " + std::to_string(end) +
                                " " + std::string(words.unit) + ", " + std::string(words.need) + " go " +
                                way + " to " + std::to_string(wanted) + ": for the " +
                                std::to_string(std::abs(wanted - end)) +
                                " between, the outermost node holds"});
    };
    if (axis.front() > needed->low) {
        add("begin", axis.front(), "down", needed->low);
    }
    if (axis.back() < needed->high) {
        add("end", axis.back(), "up", needed->high);
    }
}

/** Values of one kind: the first is named, the others are counted. */
class ValueGroup {
public:
    ValueGroup(const LintedTable& linted, std::string what) : m_linted(linted), m_what(std::move(what)) {}

    void add(std::size_t node) {
        m_first = m_count == 0 ? node : m_first;
        ++m_count;
    }
    void report(std::vector<Finding>& findings) const {
        if (m_count == 0) {
            return;
        }
        findings.push_back({Severity::warning, m_linted.placeOf(m_first),
                            m_linted.label + ": " + nodeText(m_linted.table, m_first) + ": " +
                                std::to_string(m_linted.table.values[m_first]) + m_what +
                                (m_count == 1 ? "" : "; so it is at " + counted(m_count - 1, "other node"))});
    }

private:
    const LintedTable& m_linted;
    std::string m_what;
    std::size_t m_first = 0;
    std::size_t m_count = 0;
};

std::string describe(const LintedTable& linted, const Misfit& misfit, double usualDeviation) {
    const std::string value =
        linted.label + ": " + nodeText(linted.table, misfit.node) + ": " + std::to_string(misfit.value);
    const std::string suggested = std::to_string(std::llround(misfit.suggested));
    return misfit.isSignFlip
               ? value + " has another sign than all its neighbours, which suggest " + suggested
               : value + " does not go with its neighbours, which suggest " + suggested +
                     "; usually they are off by " + std::to_string(std::llround(usualDeviation));
}

} // namespace

Place LintedTable::placeOf(std::size_t node) const {
    return lines.empty() ? place : Place{place.file, lines[node]};
}

std::string nodeText(const CalibrationTable& table, std::size_t node) {
    return std::to_string(table.axis1[node / table.axis2.size()]) + " kHz at " +
           std::to_string(table.axis2[node % table.axis2.size()]) + " degrees";
}

void lintAxes(const std::string& label, const LintedTable& linted, const Coverage& needed,
              std::vector<Finding>& findings) {
    const std::string prefix = label.empty() ? "" : label + ": ";
    if (const auto swapped = swappedAxes(linted.table)) {
        findings.push_back({Severity::error, linted.place, prefix + *swapped});
        return;
    }
    lintGaps(prefix, linted.table.axis1, carrierWords, linted.place, findings);
    lintGaps(prefix, linted.table.axis2, temperatureWords, linted.place, findings);
    lintEnds(prefix, linted.table.axis1, carrierWords, needed.carriers, linted.place, findings);
    lintEnds(prefix, linted.table.axis2, temperatureWords, needed.temperatures, linted.place, findings);
}

void lintValues(const LintedTable& linted, std::vector<Finding>& findings) {
    const Misfits misfits = findMisfits(linted.table);
    for (const Misfit& misfit : misfits.nodes) {
        findings.push_back({Severity::warning, linted.placeOf(misfit.node),
                            describe(linted, misfit, misfits.usualDeviation)});
    }
    if (misfits.isCut) {
        findings.push_back({Severity::warning, linted.place,
                            linted.label + ": more nodes that do not go with their neighbours; the table as "
                                           "a whole is rough"});
    }
}

void lintConverter(const LintedTable& linted, const CorrectionBranch& converter,
                   std::vector<Finding>& findings) {
    const std::string range = std::to_string(converter.low) + " to " + std::to_string(converter.high);
    ValueGroup beyond(linted, " is beyond the DAC's range, " + range + ", and is cut off");
    ValueGroup atEnd(linted, " is at the end of the DAC's range, " + range + ": more may be needed");
    ValueGroup between(linted, " is no value of the DAC, which goes from " + std::to_string(converter.low) +
                                   " in steps of " + std::to_string(converter.step));
    for (std::size_t node = 0; node < linted.table.values.size(); ++node) {
        const std::int64_t value = linted.table.values[node];
        if (value < converter.low || value > converter.high) {
            beyond.add(node);
        } else if (value == converter.low || value == converter.high) {
            atEnd.add(node);
        } else if ((std::int64_t{value} - converter.low) % converter.step != 0) {
            between.add(node);
        }
    }
    for (const ValueGroup* const group : {&beyond, &atEnd, &between}) {
        group->report(findings);
    }
}

} // namespace Radio::Tables

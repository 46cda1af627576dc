#include "radioctl/record/ComparisonReport.h"

#include "radio/recording/RecordingTime.h"
#include "radio/recording/RecordingWords.h"
#include "radio/text/Words.h"
#include "radioctl/record/RecordingJson.h"
#include "radioctl/record/RecordingText.h"
#include "radioctl/report/JsonLine.h"

namespace Radio::Recordings {

namespace {

bool isOperation(const std::optional<Seen>& seen) {
    return seen && seen->record.depth == 0 && isIncoming(seen->record.kind);
}

std::string secondsOf(const Seen& seen) {
    return secondsText(seen.record.nanoseconds()) + " s";
}

// For people

std::string orUnknown(const std::string& text) {
    return text.empty() ? "unknown" : harmless(text);
}

class ComparisonText {
public:
    ComparisonText(std::ostream& out, const Comparison& comparison, const ComparisonStyle& style)
        : m_out(out),
          m_comparison(comparison),
          m_style(style) {}

    void write() {
        m_out << harmless(m_style.before) << " -> " << harmless(m_style.after) << "\n";
        writeHeader();
        writeObjects();
        writeOperations();
        writeSummary();
    }

private:
    void writeHeader() {
        for (const HeaderDifference& difference : m_comparison.header()) {
            m_out << "  " << difference.what << ": " << orUnknown(difference.before) << " -> "
                  << orUnknown(difference.after) << "\n";
        }
    }

    void writeObjects() {
        for (const ObjectDifference& object : m_comparison.objects()) {
            m_out << (object.isInBefore ? "  - " : "  + ") << toString(object.kind) << " "
                  << harmless(object.name)
                  << (object.isAskedForByTheOther ? ", which the other was asked for and has not" : "")
                  << "\n";
        }
    }

    void writeOperations() {
        const Counts& counts = m_comparison.operations();
        const std::uint64_t all = counts.different + counts.onlyBefore + counts.onlyAfter;
        std::uint64_t shown = 0;
        bool hadCalls = true;
        m_comparison.operations([&](const Difference& difference) {
            if (shown == m_style.limit) {
                return false;
            }
            ++shown;
            const bool hasCalls = isOperation(difference.before) || isOperation(difference.after);
            m_out << (hasCalls || hadCalls ? "\n" : "");
            hadCalls = hasCalls;
            writeBegin(difference);
            if (hasCalls) {
                writeCalls(difference);
            }
            return true;
        });
        if (shown < all) {
            m_out << "\nand " << all - shown << " more\n";
        }
    }

    void writeBegin(const Difference& difference) {
        const std::string before = difference.before ? lineOf(file(true), *difference.before) : "";
        const std::string after = difference.after ? lineOf(file(false), *difference.after) : "";
        if (before == after && isOperation(difference.before) && isOperation(difference.after)) {
            m_out << "> " << before << "  (" << secondsOf(*difference.before) << "; "
                  << secondsOf(*difference.after) << ")\n";
            return;
        }
        writeOne("- ", difference.before, before);
        writeOne("+ ", difference.after, after);
    }

    void writeOne(const char* sign, const std::optional<Seen>& seen, const std::string& line) {
        if (seen) {
            m_out << sign << line << (isOperation(seen) ? "  (" + secondsOf(*seen) + ")" : "") << "\n";
        }
    }

    void writeCalls(const Difference& operation) {
        const bool areAllOfThem = !operation.before || !operation.after;
        if (areAllOfThem && !m_style.verbose) {
            return;
        }
        std::uint64_t shown = 0;
        const Counts counts = m_comparison.calls(operation, [&](const Difference& call) {
            if (shown == m_style.limit) {
                return false;
            }
            ++shown;
            if (call.before) {
                m_out << "    - " << lineOf(file(true), *call.before) << "\n";
            }
            if (call.after) {
                m_out << "    + " << lineOf(file(false), *call.after) << "\n";
            }
            return true;
        });
        const std::uint64_t all = counts.different + counts.onlyBefore + counts.onlyAfter;
        if (shown < all) {
            m_out << "    and " << all - shown << " more\n";
        }
    }

    void writeSummary() {
        const Counts& counts = m_comparison.operations();
        m_out << "\n"
              << counted(counts.same, "operation") << " the same, " << counts.different << " different, "
              << counts.onlyBefore << " only in " << harmless(m_style.before) << ", " << counts.onlyAfter
              << " only in " << harmless(m_style.after) << "\n";
        writeLosses(m_style.before, m_comparison.before());
        writeLosses(m_style.after, m_comparison.after());
    }

    void writeLosses(const std::string& name, const ComparedRecording& recording) {
        const std::string text = lossesText(recording.losses(), recording.file().header().passedOver);
        if (!text.empty()) {
            m_out << harmless(name) << ": " << text << "\n";
        }
    }

    const RecordingFile& file(bool isBefore) const {
        return isBefore ? m_comparison.before().file() : m_comparison.after().file();
    }

    std::ostream& m_out;
    const Comparison& m_comparison;
    const ComparisonStyle& m_style;
};

// For programs

Json jsonOf(const RecordingFile& file, const std::optional<Seen>& seen) {
    if (!seen) {
        return nullptr;
    }
    Json record = Json::object();
    addRecord(record, *seen);
    record["text"] = lineOf(file, *seen);
    return record;
}

Json jsonOf(const Comparison& comparison, const Difference& difference) {
    return {{"before", jsonOf(comparison.before().file(), difference.before)},
            {"after", jsonOf(comparison.after().file(), difference.after)}};
}

Json jsonOf(const ComparedRecording& recording) {
    return {{"overwritten_slots", recording.losses().overwritten},
            {"unfinished_slots", recording.losses().unfinished},
            {"passed_over", recording.file().header().passedOver}};
}

void writeOperation(std::ostream& out, const Comparison& comparison, const Difference& operation,
                    std::uint64_t limit) {
    Json calls = Json::array();
    const Counts counts = comparison.calls(operation, [&](const Difference& call) {
        if (calls.elements()->size() == limit) {
            return false;
        }
        calls.push_back(jsonOf(comparison, call));
        return true;
    });
    writeJsonLine(out, {{"event", "operation_difference"},
                        {"before", jsonOf(comparison.before().file(), operation.before)},
                        {"after", jsonOf(comparison.after().file(), operation.after)},
                        {"calls", std::move(calls)},
                        {"same_calls", counts.same},
                        {"different_calls", counts.different},
                        {"calls_only_before", counts.onlyBefore},
                        {"calls_only_after", counts.onlyAfter}});
}

} // namespace

void writeText(std::ostream& out, const Comparison& comparison, const ComparisonStyle& style) {
    ComparisonText(out, comparison, style).write();
}

void writeJson(std::ostream& out, const Comparison& comparison, const ComparisonStyle& style) {
    for (const HeaderDifference& difference : comparison.header()) {
        writeJsonLine(out, {{"event", "header_difference"},
                            {"what", difference.what},
                            {"before", difference.before},
                            {"after", difference.after}});
    }
    for (const ObjectDifference& object : comparison.objects()) {
        writeJsonLine(out, {{"event", "object_difference"},
                            {"kind", toString(object.kind)},
                            {"name", object.name},
                            {"only_in", object.isInBefore ? "before" : "after"},
                            {"asked_for_by_other", object.isAskedForByTheOther}});
    }
    std::uint64_t shown = 0;
    comparison.operations([&](const Difference& difference) {
        if (shown == style.limit) {
            return false;
        }
        ++shown;
        writeOperation(out, comparison, difference, style.limit);
        return true;
    });
    const Counts& counts = comparison.operations();
    writeJsonLine(out, {{"event", "recordings_compared"},
                        {"before", style.before},
                        {"after", style.after},
                        {"same", counts.same},
                        {"operations_different", counts.different},
                        {"only_before", counts.onlyBefore},
                        {"only_after", counts.onlyAfter},
                        {"different", counts.isDifferent()},
                        {"losses_before", jsonOf(comparison.before())},
                        {"losses_after", jsonOf(comparison.after())}});
}

} // namespace Radio::Recordings

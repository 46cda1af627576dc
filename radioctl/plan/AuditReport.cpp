#include "radioctl/plan/AuditReport.h"

#include "radio/text/Spreadsheet.h"
#include "radio/text/Words.h"
#include "radioctl/report/JsonLine.h"
#include "radioctl/report/TextTable.h"
#include "radioctl/report/Wrapped.h"

#include <algorithm>
#include <iomanip>

namespace Radio::Plan {

namespace {

/** More than a person reads at once; whoever wants all asks for CSV or JSON. */
constexpr std::size_t findingsShown = 10;

std::string spacingText(const AuditRow& row) {
    return row.channelSpacing ? std::to_string(*row.channelSpacing) : "-";
}

/** "rx 1, F.595, spacing 250". */
std::string nameOf(const AuditRow& row) {
    return std::string(toString(row.direction)) + " " + std::to_string(row.channel.number) + ", " +
           row.raster + (row.channelSpacing ? ", spacing " + spacingText(row) : "");
}

std::string errorText(std::int64_t hz) {
    return (hz == 0 ? "0" : signedText(hz)) + " Hz";
}

std::string groupText(const RowResult& result, const FindingGroup& group) {
    const std::string carrier = std::to_string(group.worst.carrier) + " kHz";
    const std::string worst = group.worst.excess != 0 ? "worst at " : "first at ";
    return nameOf(result.row) + ": " + std::to_string(group.count) + " of " +
           counted(result.carriers, "carrier") + ", " + (group.count == 1 ? "at " : worst) + carrier + ": " +
           describe(group.worst);
}

/** The members of an event that say which row it is about. */
Json rowEvent(const char* event, const Board& board, const AuditRow& row) {
    return {{"event", event},
            {"file", board.file.string()},
            {"channel", row.channel.number},
            {"direction", toString(row.direction)},
            {"raster", row.raster},
            {"channel_spacing", orNull(row.channelSpacing)}};
}

void writeCell(std::ostream& out, const std::optional<std::int64_t>& number) {
    out << ',';
    if (number) {
        out << *number;
    }
}

} // namespace

void AuditReport::count(const RowResult& result) {
    m_carriers += result.carriers;
    m_outside += result.outside;
}

void AuditText::rowAudited(const RowResult& result) {
    count(result);
    m_rows.push_back(result);
}

void AuditText::finished(const AuditSummary& summary) {
    writeBoardName(m_out, m_board.name, harmless(m_board.file.string()));
    showRows();
    showFindings();
    if (summary.signal != 0 || summary.isCutShort) {
        m_out << (summary.signal != 0 ? "Interrupted" : "Broken off") << ": not all carriers were audited.\n";
    }
    m_out << counted(carriers(), "carrier") << " in " << std::fixed << std::setprecision(2) << summary.seconds
          << " s: " << (outside() == 0 ? "all" : std::to_string(outside()) + " not") << " within limits.\n"
          << std::flush;
}

void AuditText::showRows() {
    TextTable table;
    for (const std::size_t column : {0U, 2U, 3U, 4U, 5U, 6U}) {
        table.alignRight(column);
    }
    table.add({"channel", "", "spacing", "carriers", "worst error", "at", "outside"});
    std::string raster;
    for (const RowResult& result : m_rows) {
        if (result.row.raster != raster || &result == &m_rows.front()) {
            raster = result.row.raster;
            table.addHeading(raster);
        }
        const bool isOff = result.worstError.value_or(0) != 0;
        table.add({std::to_string(result.row.channel.number), std::string(toString(result.row.direction)),
                   spacingText(result.row), std::to_string(result.carriers),
                   result.worstError ? errorText(*result.worstError) : "no carrier",
                   isOff ? std::to_string(result.worstCarrier) + " kHz" : "-",
                   std::to_string(result.outside)});
    }
    table.write(m_out);
}

void AuditText::showFindings() {
    std::vector<std::string> lines;
    for (const RowResult& result : m_rows) {
        for (const FindingGroup& group : result.groups) {
            lines.push_back(groupText(result, group));
        }
    }
    const std::size_t shown = std::min(lines.size(), findingsShown);
    for (std::size_t i = 0; i < shown; ++i) {
        m_out << (i == 0 ? "Outside the limits\n" : "");
        writeWrapped(m_out, lines[i], 2, 6);
    }
    if (lines.size() > shown) {
        m_out << "  and " << lines.size() - shown << " more; --json and --csv have all\n";
    }
}

void AuditJson::carrierAudited(const AuditRow& row, const CarrierResult& result) {
    for (const CarrierFinding& finding : result.findings) {
        Json event = rowEvent("outside", m_board, row);
        event["khz"] = finding.carrier;
        event["kind"] = toString(finding.kind);
        event["text"] = describe(finding);
        writeJsonLine(m_out, event);
    }
}

void AuditJson::rowAudited(const RowResult& result) {
    count(result);
    Json event = rowEvent("row", m_board, result.row);
    event["first_khz"] = result.row.carriers.first;
    event["step_khz"] = result.row.carriers.step;
    event["carriers"] = result.carriers;
    event["worst_error_hz"] = orNull(result.worstError);
    event["worst_khz"] = result.worstError ? Json(result.worstCarrier) : Json(nullptr);
    event["outside"] = result.outside;
    writeJsonLine(m_out, event);
}

void AuditJson::finished(const AuditSummary& summary) {
    writeJsonLine(m_out, {{"event", "audited"},
                          {"file", m_board.file.string()},
                          {"carriers", carriers()},
                          {"outside", outside()},
                          {"seconds", summary.seconds},
                          {"interrupted", summary.signal != 0},
                          {"exit_code", summary.exitCode}});
}

void AuditCsv::writeHeading(std::ostream& out) {
    out << "board,channel,direction,raster,channel_spacing,carrier_khz,dsp_offset_khz,if_pll_khz,rf_pll,"
           "rf_pll_unit,charge_pump,mixer_i,mixer_q,passed_on_khz,produced_hz,error_hz,findings\n";
}

void AuditCsv::carrierAudited(const AuditRow& row, const CarrierResult& result) {
    const std::optional<Build> build = buildOf(row.channel.type, row.direction);
    m_out << asCell(m_board.file.string()) << ',' << row.channel.number << ',' << toString(row.direction)
          << ',' << asCell(row.raster);
    writeCell(m_out, row.channelSpacing);
    writeCell(m_out, result.carrier);
    writeCell(m_out, result.words[Word::dspOffset]);
    writeCell(m_out, result.words[Word::ifPll]);
    writeCell(m_out, result.words[Word::rfPll]);
    m_out << ',' << (!build ? "" : build->hasLoInHz ? "Hz" : "kHz");
    writeCell(m_out, result.words[Word::chargePump]);
    writeCell(m_out, result.words[Word::mixerI]);
    writeCell(m_out, result.words[Word::mixerQ]);
    writeCell(m_out, result.words[Word::carrier]);
    writeCell(m_out, result.produced);
    writeCell(m_out, result.error);
    m_out << ',';
    const char* separator = "";
    for (const CarrierFinding& finding : result.findings) {
        m_out << separator << toString(finding.kind);
        separator = ";";
    }
    m_out << '\n';
}

} // namespace Radio::Plan

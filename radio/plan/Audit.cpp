#include "radio/plan/Audit.h"

#include "ResultCode.h"
#include "radio/board/PlatformWords.h"
#include "radio/files/InputError.h"
#include "radio/plan/CarrierCheck.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <utility>

namespace Radio::Plan {

namespace {

constexpr const char* channelSpacingName = "ChannelSpacing";

/** The channel spacings of a raster; without any, the one of the board's database. */
std::vector<std::int32_t> spacingsOf(const RasterDescription& raster, const Board& board) {
    if (!raster.channelSpacings.empty()) {
        return raster.channelSpacings;
    }
    const auto variable = std::find_if(
        board.variables.begin(), board.variables.end(),
        [](const VariableDescription& candidate) { return candidate.name == channelSpacingName; });
    return {variable == board.variables.end() ? 0 : variable->values.front()};
}

bool readsChannelSpacing(const ChannelDescription& channel, Direction direction) {
    const std::optional<Build> build = buildOf(channel.type, direction);
    return build && build->readsChannelSpacing();
}

/** Adds a finding to those of its kind and text. */
void addTo(std::vector<FindingGroup>& groups, const CarrierFinding& finding) {
    const auto group = std::find_if(groups.begin(), groups.end(), [&](const FindingGroup& candidate) {
        const bool saysTheSame = finding.kind != FindingKind::failed || finding.text == candidate.worst.text;
        return candidate.worst.kind == finding.kind && candidate.worst.word == finding.word && saysTheSame;
    });
    if (group == groups.end()) {
        groups.push_back({1, finding});
        return;
    }
    ++group->count;
    if (finding.excess > group->worst.excess) {
        group->worst = finding;
    }
}

void addTo(RowResult& row, const CarrierResult& result) {
    ++row.carriers;
    row.outside += result.findings.empty() ? 0 : 1;
    if (result.error && (!row.worstError || std::abs(*result.error) > std::abs(*row.worstError))) {
        row.worstError = result.error;
        row.worstCarrier = result.carrier;
    }
    for (const CarrierFinding& finding : result.findings) {
        addTo(row.groups, finding);
    }
}

/** Audits one row after the other. */
class Auditor {
public:
    Auditor(BootedRadio& booted, const Board& board, const std::vector<AuditListener*>& listeners,
            const std::function<bool(std::uint64_t)>& goOn, std::uint64_t carriersPerQuestion)
        : m_booted(booted),
          m_limits(board.limits),
          m_listeners(listeners),
          m_goOn(goOn),
          m_carriersPerQuestion(carriersPerQuestion) {}

    AuditEnd audit(const AuditRow& row, AuditResult& result);

private:
    bool setChannelSpacing(std::int32_t spacing);
    void visit(WordSources& sources, const AuditRow& row, std::uint32_t carrier, Visit& visit);
    bool mayGoOn() { return ++m_done % m_carriersPerQuestion != 0 || m_goOn(m_done); }

    BootedRadio& m_booted;
    Limits m_limits;
    const std::vector<AuditListener*>& m_listeners;
    const std::function<bool(std::uint64_t)>& m_goOn;
    const std::uint64_t m_carriersPerQuestion;
    std::uint64_t m_done = 0;
    std::optional<std::int32_t> m_spacing;
};

bool Auditor::setChannelSpacing(std::int32_t spacing) {
    if (m_spacing == spacing) {
        return true;
    }
    RadioUnit& radio = m_booted.radio();
    Standalone::Variable* const variable = radio.platform().variables().find(channelSpacingName);
    m_spacing = spacing;
    return variable != nullptr && variable->set({spacing}) &&
           radio.runPhase(Standalone::phasePostFrameformatLoad).succeeded();
}

void Auditor::visit(WordSources& sources, const AuditRow& row, std::uint32_t carrier, Visit& visit) {
    m_booted.forget();
    sources.mark();
    m_booted.radio().tune(row.direction, row.channel.number, carrier);
    visit.words = sources.read();
    visit.complaints = m_booted.complaints();
}

AuditEnd Auditor::audit(const AuditRow& row, AuditResult& total) {
    if (row.channelSpacing && !setChannelSpacing(*row.channelSpacing)) {
        return AuditEnd::phaseFailed;
    }
    Standalone::Platform& platform = m_booted.radio().platform();
    const CarrierCheck check(platform, m_limits, row.channel, row.direction);
    WordSources sources(platform, row.channel, row.direction);
    RowResult rowResult{row, 0, 0, {}, 0, {}};
    CarrierResult result;
    Visit first;
    Visit other;
    Visit again;
    const std::uint32_t count = row.carriers.count;
    const auto carrierAt = [&](std::uint32_t index) {
        return row.carriers.first + index % count * row.carriers.step;
    };
    // Each carrier is reached from the one before it and again from the one after it; the last one and the
    // first one are neighbours too.
    visit(sources, row, carrierAt(count - 1), other);
    bool goesOn = true;
    for (std::uint32_t index = 0; goesOn && index < count; ++index) {
        visit(sources, row, carrierAt(index), first);
        visit(sources, row, carrierAt(index + 1), other);
        visit(sources, row, carrierAt(index), again);
        check.check(result, carrierAt(index), first, again, carrierAt(index + 1));
        addTo(rowResult, result);
        for (AuditListener* const listener : m_listeners) {
            listener->carrierAudited(row, result);
        }
        goesOn = mayGoOn();
    }
    for (AuditListener* const listener : m_listeners) {
        listener->rowAudited(rowResult);
    }
    total.carriers += rowResult.carriers;
    total.outside += rowResult.outside;
    total.rows.push_back(std::move(rowResult));
    return goesOn ? AuditEnd::complete : AuditEnd::stopped;
}

} // namespace

std::vector<AuditRow> rowsOf(const Board& board) {
    std::vector<AuditRow> rows;
    for (const RasterDescription& raster : board.rasters) {
        const std::vector<std::int32_t> spacings = spacingsOf(raster, board);
        for (const std::int32_t spacing : spacings) {
            const bool isFirst = spacing == spacings.front();
            for (const ChannelDescription& channel : board.channels) {
                if (std::find(raster.channels.begin(), raster.channels.end(), channel.number) ==
                    raster.channels.end()) {
                    continue;
                }
                for (const CarrierRow& carriers : raster.rows) {
                    const Direction direction = carriers.transmit ? Direction::tx : Direction::rx;
                    const bool readsSpacing = readsChannelSpacing(channel, direction);
                    if (carriers.count != 0 && (readsSpacing || isFirst)) {
                        rows.push_back({channel, direction, raster.name,
                                        readsSpacing ? std::optional(spacing) : std::nullopt, carriers});
                    }
                }
            }
        }
    }
    return rows;
}

std::uint64_t carriersToAudit(const Board& board) {
    std::uint64_t carriers = 0;
    for (const AuditRow& row : rowsOf(board)) {
        carriers += row.carriers.count;
    }
    if (carriers == 0) {
        throw InputError({board.file.string(), 0}, "no carriers to audit; expected at least one [[raster]]");
    }
    return carriers;
}

AuditResult auditBoard(BootedRadio& booted, const Board& board, const std::vector<AuditListener*>& listeners,
                       const std::function<bool(std::uint64_t)>& goOn, std::uint64_t carriersPerQuestion) {
    booted.stopNotingWrites();
    Auditor auditor(booted, board, listeners, goOn, carriersPerQuestion);
    AuditResult result;
    const auto start = std::chrono::steady_clock::now();
    for (const AuditRow& row : rowsOf(board)) {
        result.end = auditor.audit(row, result);
        if (result.end != AuditEnd::complete) {
            break;
        }
    }
    result.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return result;
}

} // namespace Radio::Plan

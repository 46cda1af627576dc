#ifndef RADIO_PLAN_AUDIT_H
#define RADIO_PLAN_AUDIT_H

#include "radio/board/PlatformWords.h"
#include "radio/plan/AuditFinding.h"
#include "radio/plan/HardwareWords.h"
#include "radio/session/BootedRadio.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace Radio::Plan {

/** By how much a carrier may be off when the board does not say, in Hz: half of the kHz that carriers are
 * given in. */
constexpr std::int64_t defaultCarrierError = 500;

/** The carriers of one channel, direction, raster and channel spacing. */
struct AuditRow {
    ChannelDescription channel;
    Direction direction;
    std::string raster;
    /** The code that the database has for it; nothing for a direction to which it makes no difference. */
    std::optional<std::int32_t> channelSpacing;
    CarrierRow carriers;
};

/**
 * What a board has to be audited with: every row of every raster, for each of its channels, with each of its
 * channel spacings where they make a difference. In the order in which they are audited.
 */
std::vector<AuditRow> rowsOf(const Board& board);
/** How many carriers these rows have. Throws InputError for a board that has none to audit. */
std::uint64_t carriersToAudit(const Board& board);

/** What came of one carrier. */
struct CarrierResult {
    /** In kHz. */
    std::uint32_t carrier = 0;
    HardwareWords words;
    /** In Hz; nothing when no carrier comes of the words. */
    std::optional<std::int64_t> produced;
    std::optional<std::int64_t> error;
    std::vector<CarrierFinding> findings;
};

/** All findings of one row that say the same of different carriers. */
struct FindingGroup {
    std::uint64_t count = 0;
    /** The one furthest outside its limits; the first one among equals. */
    CarrierFinding worst;
};

/** What came of one row. */
struct RowResult {
    AuditRow row;
    std::uint64_t carriers = 0;
    /** Carriers with findings. */
    std::uint64_t outside = 0;
    /** The error of largest magnitude, in Hz, and the first carrier that has it. */
    std::optional<std::int64_t> worstError;
    std::uint32_t worstCarrier = 0;
    std::vector<FindingGroup> groups;
};

/** Is told of the audit while it goes on, on the thread of the audit; what it is given is valid during the
 * call. */
class AuditListener {
public:
    AuditListener() = default;
    AuditListener(const AuditListener&) = delete;
    AuditListener& operator=(const AuditListener&) = delete;
    virtual ~AuditListener() = default;

    virtual void carrierAudited(const AuditRow& row, const CarrierResult& result) = 0;
    virtual void rowAudited(const RowResult& result) = 0;
};

/** How an audit ended. */
enum class AuditEnd : std::uint8_t {
    complete,
    stopped,     ///< because it was told not to go on
    phaseFailed, ///< a channel did not take a channel spacing
};

/** What an audit came to. */
struct AuditResult {
    AuditEnd end = AuditEnd::complete;
    /** Those that were begun; the last one is not whole when the audit was stopped. */
    std::vector<RowResult> rows;
    /** Carriers audited, and those of them with findings. */
    std::uint64_t carriers = 0;
    std::uint64_t outside = 0;
    /** How long it took. */
    double seconds = 0;
};

/**
 * Tunes every carrier of every row, the one after it and the carrier again, and looks at the words.
 * `booted` is a radio of `board` that is up; no write of it is noted from then on, so that
 * explainCorrections() and replay() would see none; and its carriers and channel spacing are left as the last
 * row that was begun had them. `goOn` is asked after every `carriersPerQuestion` carriers, with the number of
 * those done, whether to; it is not empty. Real hardware takes so long for each that it is worth asking at
 * each.
 *
 * To be called on the thread that drives `booted`. What is given is borrowed during the call only; none of
 * the `listeners` is null.
 */
AuditResult auditBoard(BootedRadio& booted, const Board& board, const std::vector<AuditListener*>& listeners,
                       const std::function<bool(std::uint64_t)>& goOn,
                       std::uint64_t carriersPerQuestion = 1024);

} // namespace Radio::Plan

#endif

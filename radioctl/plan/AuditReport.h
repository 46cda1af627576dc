#ifndef RADIOCTL_PLAN_AUDITREPORT_H
#define RADIOCTL_PLAN_AUDITREPORT_H

#include "radio/plan/Audit.h"

#include <cstdint>
#include <ostream>
#include <vector>

namespace Radio::Plan {

/** How the audit of a board ended, and how long it took. */
struct AuditSummary {
    /** The signal that ended it early; 0 for none. */
    int signal = 0;
    double seconds = 0;
    int exitCode = 0;
    /** It ended early, for whatever reason. */
    bool isCutShort = false;
};

/** Tells whoever runs the program what came of the audit of one board. */
class AuditReport : public AuditListener {
public:
    virtual void finished(const AuditSummary& summary) = 0;

protected:
    void count(const RowResult& result);
    std::uint64_t carriers() const { return m_carriers; }
    std::uint64_t outside() const { return m_outside; }

private:
    std::uint64_t m_carriers = 0;
    std::uint64_t m_outside = 0;
};

/** For people: one line a row, and the first findings. */
class AuditText final : public AuditReport {
public:
    /** `out` and `board` must outlive the object. */
    AuditText(std::ostream& out, const Board& board) : m_out(out), m_board(board) {}

    void carrierAudited(const AuditRow& /*row*/, const CarrierResult& /*result*/) override {}
    void rowAudited(const RowResult& result) override;
    void finished(const AuditSummary& summary) override;

private:
    void showRows();
    void showFindings();

    std::ostream& m_out;
    const Board& m_board;
    std::vector<RowResult> m_rows;
};

/** For programs: one JSON object for each finding, each row and the end. */
class AuditJson final : public AuditReport {
public:
    /** `out` and `board` must outlive the object. */
    AuditJson(std::ostream& out, const Board& board) : m_out(out), m_board(board) {}

    void carrierAudited(const AuditRow& row, const CarrierResult& result) override;
    void rowAudited(const RowResult& result) override;
    void finished(const AuditSummary& summary) override;

private:
    std::ostream& m_out;
    const Board& m_board;
};

/** One line for each carrier, with its words. The first line, with the names of the columns, is written by
 * writeHeading(). */
class AuditCsv final : public AuditListener {
public:
    /** `out` and `board` must outlive the object. */
    AuditCsv(std::ostream& out, const Board& board) : m_out(out), m_board(board) {}

    static void writeHeading(std::ostream& out);
    void carrierAudited(const AuditRow& row, const CarrierResult& result) override;
    void rowAudited(const RowResult& /*result*/) override {}

private:
    std::ostream& m_out;
    const Board& m_board;
};

} // namespace Radio::Plan

#endif

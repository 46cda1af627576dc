#ifndef PYTHON_BINDING_AUDITRECORDS_H
#define PYTHON_BINDING_AUDITRECORDS_H

#include "python/binding/Values.h"
#include "radio/plan/Audit.h"

#include <pybind11/numpy.h>

#include <array>
#include <cstdint>

namespace Radio::Python {

/** One carrier as numpy has it: frequencyhandler/plan.py has the same as a dtype. */
struct AuditedCarrier {
    std::int32_t channel;
    /** As numpy keeps texts of two letters. */
    std::array<char32_t, 2> direction;
    /** Which of the rows it belongs to. */
    std::int32_t row;
    /** In kHz. */
    std::uint32_t carrier;
    /** A bit for each kind of finding, and for each word that was written. */
    std::uint32_t findings;
    std::uint32_t written;
    /** In Hz; not a number when no carrier comes of the words. */
    double produced;
    double error;
    std::array<std::int64_t, Plan::wordCount> words;
};

/** Writes what an audit tells into an array of numpy, without the interpreter. Made and given with its lock.
 */
class AuditRecords final : public Plan::AuditListener {
public:
    /** Room for `total` carriers of `dtype`; with None nothing is kept. */
    AuditRecords(const py::object& dtype, std::uint64_t total);

    void carrierAudited(const Plan::AuditRow& row, const Plan::CarrierResult& result) override;
    void rowAudited(const Plan::RowResult& /*result*/) override { ++m_row; }

    /** Of the carriers that were audited; None when nothing was kept. */
    py::object array() const;

private:
    py::object m_array = py::none();
    AuditedCarrier* m_records = nullptr;
    std::size_t m_count = 0;
    std::int32_t m_row = 0;
};

/** The words for the bits of `findings` and `written`, from the lowest. */
py::list findingKinds();
py::list wordNames();

} // namespace Radio::Python

#endif

#include "python/binding/AuditRecords.h"

#include <limits>

namespace Radio::Python {

namespace {

double orNan(const std::optional<std::int64_t>& number) {
    return number ? static_cast<double>(*number) : std::numeric_limits<double>::quiet_NaN();
}

constexpr std::size_t kindCount = static_cast<std::size_t>(Plan::FindingKind::retuneDiffers) + 1;

} // namespace

AuditRecords::AuditRecords(const py::object& dtype, std::uint64_t total) {
    if (dtype.is_none()) {
        return;
    }
    const py::dtype type = py::dtype::from_args(dtype);
    if (type.itemsize() != static_cast<py::ssize_t>(sizeof(AuditedCarrier))) {
        throw std::logic_error("the records of an audit are not as the package has them");
    }
    py::array array(type, static_cast<py::ssize_t>(total));
    m_records = static_cast<AuditedCarrier*>(array.mutable_data());
    m_array = std::move(array);
}

void AuditRecords::carrierAudited(const Plan::AuditRow& row, const Plan::CarrierResult& result) {
    if (m_records == nullptr) {
        return;
    }
    AuditedCarrier& record = m_records[m_count++];
    record.channel = row.channel.number;
    record.direction = row.direction == Direction::tx ? std::array<char32_t, 2>{U't', U'x'}
                                                      : std::array<char32_t, 2>{U'r', U'x'};
    record.row = m_row;
    record.carrier = result.carrier;
    record.produced = orNan(result.produced);
    record.error = orNan(result.error);
    record.findings = 0;
    for (const Plan::CarrierFinding& finding : result.findings) {
        record.findings |= 1U << static_cast<unsigned>(finding.kind);
    }
    record.written = 0;
    for (std::size_t word = 0; word < Plan::wordCount; ++word) {
        const std::optional<std::int64_t>& value = result.words[static_cast<Plan::Word>(word)];
        record.written |= value ? 1U << word : 0U;
        record.words[word] = value.value_or(0);
    }
}

py::object AuditRecords::array() const {
    if (m_records == nullptr) {
        return py::none();
    }
    return m_array[py::slice(0, static_cast<py::ssize_t>(m_count), 1)];
}

py::list findingKinds() {
    py::list words;
    for (std::size_t kind = 0; kind < kindCount; ++kind) {
        words.append(text(Plan::toString(static_cast<Plan::FindingKind>(kind))));
    }
    return words;
}

py::list wordNames() {
    py::list words;
    for (std::size_t word = 0; word < Plan::wordCount; ++word) {
        words.append(text(Plan::toString(static_cast<Plan::Word>(word))));
    }
    return words;
}

} // namespace Radio::Python

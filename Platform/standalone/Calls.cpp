#include "standalone/Calls.h"

#include <cxxabi.h>

#include <algorithm>
#include <iterator>

namespace Standalone {

namespace {

struct OperationWord {
    Operation operation;
    std::string_view word;
};

/** In the order of the enumeration. */
constexpr std::array<OperationWord, 22> operationWords{{
    {Operation::brokerRegister, "broker-register"},
    {Operation::brokerUnregister, "broker-unregister"},
    {Operation::brokerLookup, "broker-lookup"},
    {Operation::brokerOpen, "broker-open"},
    {Operation::brokerGet, "broker-get"},
    {Operation::brokerClose, "broker-close"},
    {Operation::moduleRegister, "module-register"},
    {Operation::moduleUnregister, "module-unregister"},
    {Operation::moduleRegisterC, "module-register-c"},
    {Operation::callbackRegister, "callback-register"},
    {Operation::driverLookup, "driver-lookup"},
    {Operation::driverWrite, "driver-write"},
    {Operation::driverWriteBuffer, "driver-write-buffer"},
    {Operation::driverRead, "driver-read"},
    {Operation::variableGet, "variable-get"},
    {Operation::variableAddress, "variable-address"},
    {Operation::tableLookup, "table-lookup"},
    {Operation::tableLinear, "table-linear"},
    {Operation::tableBilinear, "table-bilinear"},
    {Operation::temperatureRegister, "temperature-register"},
    {Operation::rauTx, "rau-tx"},
    {Operation::rauRx, "rau-rx"},
}};

} // namespace

std::string_view toString(Operation operation) {
    for (const OperationWord& entry : operationWords) {
        if (entry.operation == operation) {
            return entry.word;
        }
    }
    return "unknown";
}

std::optional<Operation> operationFromString(std::string_view word) {
    for (const OperationWord& entry : operationWords) {
        if (entry.word == word) {
            return entry.operation;
        }
    }
    return std::nullopt;
}

const std::vector<Operation>& allOperations() {
    static const std::vector<Operation> all = [] {
        std::vector<Operation> operations;
        operations.reserve(operationWords.size());
        for (const OperationWord& entry : operationWords) {
            operations.push_back(entry.operation);
        }
        return operations;
    }();
    return all;
}

void Calls::inject(Fault fault) {
    if (fault.times != 0U) {
        m_faults.push_back(std::move(fault));
        updateIdle();
    }
}

std::size_t Calls::clear(Operation operation, std::string_view object) {
    const auto matches = [&](const Fault& fault) {
        return fault.operation == operation && (object.empty() || fault.object == object);
    };
    const auto firstCleared = std::remove_if(m_faults.begin(), m_faults.end(), matches);
    const auto cleared = static_cast<std::size_t>(std::distance(firstCleared, m_faults.end()));
    m_faults.erase(firstCleared, m_faults.end());
    updateIdle();
    return cleared;
}

void Calls::clearAll() {
    m_faults.clear();
    updateIdle();
}

void Calls::setRecording(bool recording) {
    m_recording = recording;
    updateIdle();
}

void Calls::setListener(std::function<void(const Call&)> listener) {
    m_listener =
        listener ? std::make_shared<const std::function<void(const Call&)>>(std::move(listener)) : nullptr;
    updateIdle();
}

std::vector<Call> Calls::journalOf(Operation operation) const {
    std::vector<Call> calls;
    std::copy_if(m_journal.begin(), m_journal.end(), std::back_inserter(calls),
                 [&](const Call& call) { return call.operation == operation; });
    return calls;
}

std::optional<Calls::Verdict> Calls::judge(Operation operation, std::string_view object) {
    const auto fault = std::find_if(m_faults.rbegin(), m_faults.rend(), [&](const Fault& candidate) {
        return candidate.operation == operation && (candidate.object.empty() || candidate.object == object);
    });
    if (fault == m_faults.rend()) {
        return std::nullopt;
    }
    const bool isCarriedOut = !fault->isLeftUndone && (fault->isCarriedOut || isSuccess(fault->code));
    std::optional<Verdict> verdict =
        Verdict{fault->code, fault->output, isCarriedOut, fault->givesNull, fault->thrown};
    std::optional<std::uint32_t>& times = fault->times;
    if (times && --*times == 0) {
        m_faults.erase(std::next(fault).base());
        updateIdle();
    }
    return verdict;
}

std::int32_t Calls::enter(std::string_view object, const Request& request, std::int64_t given,
                          std::int32_t code) {
    Call call{request.operation, std::move(m_object), given, request.at, {}, code};
    try {
        call.object = object;
        call.bytes.assign(request.bytes, request.bytes + request.byteCount);
        if (m_recording) {
            m_journal.push_back(call);
        }
    } catch (const std::bad_alloc&) { // NOLINT(bugprone-empty-catch): the answer counts more
    }
    tell(call);
    m_object = std::move(call.object);
    return code;
}

// Of the unwinding there is no object to refer to on 32-bit ARM, and none is looked at.
__attribute__((no_sanitize("undefined"))) void Calls::tell(const Call& call) const {
    const std::shared_ptr<const std::function<void(const Call&)>> listener = m_listener;
    if (listener == nullptr) {
        return;
    }
    try {
        (*listener)(call);
    } catch (const abi::__forced_unwind&) { // the thread is cancelled
        throw;
    } catch (...) { // NOLINT(bugprone-empty-catch): what is called from C has nobody to throw to
    }
}

void Calls::updateIdle() {
    m_idle = !m_recording && !m_listener && m_faults.empty();
}

} // namespace Standalone

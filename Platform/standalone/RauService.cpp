#include "standalone/RauService.h"

#include <utility>

IRadio::~IRadio() = default;

IRauHandler::~IRauHandler() = default;

namespace Standalone {

RauService::RauService(std::string name, Calls& calls)
    : IInterface(name),
      m_name(std::move(name)),
      m_calls(calls) {}

EAFResult RauService::setTxRadioFrequency(unsigned long frequency) {
    return set(Operation::rauTx, frequency, m_txFrequency);
}

EAFResult RauService::setRxRadioFrequency(unsigned long frequency) {
    return set(Operation::rauRx, frequency, m_rxFrequency);
}

EAFResult RauService::set(Operation operation, unsigned long frequency, unsigned long& kept) {
    const auto keep = [&](std::int64_t& /*given*/) {
        kept = frequency;
        return ResultOk;
    };
    return static_cast<EAFResult>(
        m_calls.answer(m_name, {operation, static_cast<std::int64_t>(frequency)}, keep));
}

} // namespace Standalone

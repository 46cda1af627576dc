#include "Refusal.h"

namespace RL::FrequencyHandler {

namespace {

/** The innermost that hears. */
thread_local RefusalHeard* hearing = nullptr;

} // namespace

RefusalHeard::RefusalHeard(const Common::FrequencyHandler* handler) : m_handler(handler), m_outer(hearing) {
    hearing = this;
}

RefusalHeard::~RefusalHeard() {
    hearing = m_outer;
}

EAFResult refused(const Common::FrequencyHandler* handler, std::int32_t code) {
    for (RefusalHeard* heard = hearing; heard != nullptr; heard = heard->m_outer) {
        if (heard->m_handler == handler && heard->m_code == 0) {
            heard->m_code = code;
        }
    }
    return ResultFailed;
}

} // namespace RL::FrequencyHandler

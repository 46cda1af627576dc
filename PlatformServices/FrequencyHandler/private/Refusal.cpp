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

void notWritten(const Common::FrequencyHandler* handler) {
    if (hearing != nullptr && hearing->m_handler == handler) {
        hearing->m_isWritten = false;
    }
}

EAFResult refused(const Common::FrequencyHandler* handler, std::int32_t code) {
    notWritten(handler);
    return refusedBesides(handler, code);
}

EAFResult refusedBesides(const Common::FrequencyHandler* handler, std::int32_t code) {
    if (hearing != nullptr && hearing->m_handler == handler) {
        hearing->m_code = code;
    }
    return ResultFailed;
}

} // namespace RL::FrequencyHandler

/**
 * Whether the hardware of a carrier was written, and why not, for whoever wants to know it of one frequency
 * change: a change answers 0 whatever becomes of it. Costs something only where something fails or is
 * missing.
 */
#ifndef FREQUENCYHANDLER_PRIVATE_REFUSAL_H
#define FREQUENCYHANDLER_PRIVATE_REFUSAL_H

#include "FrequencyHandler_Common.h"
#include "ResultCode.h"

#include <cstdint>

namespace RL::FrequencyHandler {

/** Hears of one handler, on the thread on which it is made and as long as it lives. Not of what an observer
 * tunes meanwhile: of that hears who is made for it. */
class RefusalHeard {
public:
    explicit RefusalHeard(const Common::FrequencyHandler* handler);
    RefusalHeard(const RefusalHeard&) = delete;
    RefusalHeard& operator=(const RefusalHeard&) = delete;
    ~RefusalHeard();

    /** What was answered; 0: nothing was refused. */
    std::int32_t code() const { return m_code; }
    /** Whether what makes the carrier was there and took it. */
    bool isWritten() const { return m_isWritten; }

private:
    friend void notWritten(const Common::FrequencyHandler* handler);
    friend EAFResult refusedBesides(const Common::FrequencyHandler* handler, std::int32_t code);

    const Common::FrequencyHandler* m_handler;
    std::int32_t m_code = 0;
    bool m_isWritten = true;
    RefusalHeard* m_outer;
};

/** Tells that `handler` has nothing that could be written with its carrier. */
[[gnu::cold]] void notWritten(const Common::FrequencyHandler* handler);
/** Tells that what makes the carrier of `handler` was not written, with what was answered; gives 0x8000. */
[[gnu::cold]] EAFResult refused(const Common::FrequencyHandler* handler, std::int32_t code = ResultFailed);
/** The same of what is written after that. */
[[gnu::cold]] EAFResult refusedBesides(const Common::FrequencyHandler* handler, std::int32_t code);

} // namespace RL::FrequencyHandler

#endif

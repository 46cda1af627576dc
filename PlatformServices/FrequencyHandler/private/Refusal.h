/**
 * Why hardware was not written, for whoever wants to know it of one frequency change: a change answers 0
 * whatever becomes of it. Costs something only where something fails.
 */
#ifndef FREQUENCYHANDLER_PRIVATE_REFUSAL_H
#define FREQUENCYHANDLER_PRIVATE_REFUSAL_H

#include "ResultCode.h"

#include <cstdint>

namespace RL::FrequencyHandler {

namespace Common {
class FrequencyHandler;
}

/** Hears of the first refusal of one handler, on the thread on which it is made and as long as it lives. Not
 * that of another handler that an observer tunes meanwhile. */
class RefusalHeard {
public:
    explicit RefusalHeard(const Common::FrequencyHandler* handler);
    RefusalHeard(const RefusalHeard&) = delete;
    RefusalHeard& operator=(const RefusalHeard&) = delete;
    ~RefusalHeard();

    /** What was answered; 0: nothing was refused. */
    std::int32_t code() const { return m_code; }

private:
    friend EAFResult refused(const Common::FrequencyHandler* handler, std::int32_t code);

    const Common::FrequencyHandler* m_handler;
    std::int32_t m_code = 0;
    RefusalHeard* m_outer;
};

/** Tells that hardware of `handler` was not written, with what was answered; gives 0x8000. */
[[gnu::cold]] EAFResult refused(const Common::FrequencyHandler* handler, std::int32_t code = ResultFailed);

} // namespace RL::FrequencyHandler

#endif

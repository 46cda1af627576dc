#ifndef PLATFORM_DEVICES_IIOSESSION_H
#define PLATFORM_DEVICES_IIOSESSION_H

#include "devices/Quiet.h"
#include "devices/Threads.h"

#include <iio.h>

#include <cerrno>
#include <chrono>
#include <memory>

namespace Devices {

/** A connection of libiio, and what all its attributes share. Changes threads as its link does: made on the
 * one that connects, used on the one that drives, without a lock. */
class IioSession {
public:
    IioSession(iio_context* context, std::chrono::milliseconds timeLimit);

    iio_context* context() const { return m_context.get(); }
    bool isLocal() const { return m_isLocal; }
    bool isBroken() const { return m_isBroken; }

    /** Carries out `call`, which gives a length, or an error number below 0; 0, or an error number. */
    template <typename Call>
    int carryOut(Call call) {
        if (m_isLocal) {
            const auto result = call();
            return result < 0 ? static_cast<int>(-result) : 0;
        }
        if (m_isBroken) {
            return ENOTCONN;
        }
        const Quiet quiet;
        BrokenPipeGuard guard;
        const Clock::time_point begin = Clock::now();
        const auto result = call();
        if (result >= 0) {
            return 0;
        }
        guard.failed();
        return judge(static_cast<int>(-result), Clock::now() - begin);
    }

private:
    using Clock = std::chrono::steady_clock;

    struct Deleter {
        void operator()(iio_context* context) const;
    };

    int judge(int error, Clock::duration elapsed);

    std::unique_ptr<iio_context, Deleter> m_context;
    std::chrono::milliseconds m_timeLimit;
    bool m_isLocal;
    bool m_isUsb;
    bool m_isBroken = false;
};

} // namespace Devices

#endif

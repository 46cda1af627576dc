#ifndef PLATFORM_DEVICES_IIOSESSION_H
#define PLATFORM_DEVICES_IIOSESSION_H

#include "devices/Patience.h"
#include "devices/Quiet.h"
#include "devices/Threads.h"

#include <iio.h>
#include <sys/types.h>

#include <cerrno>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace Devices {

/** A connection of libiio, and what all its attributes share. Changes threads as its link does: made on the
 * one that connects, used on the one that drives, without a lock. */
class IioSession {
public:
    IioSession(iio_context* context, std::chrono::milliseconds timeLimit);

    iio_context* context() const { return m_context.get(); }
    bool isLocal() const { return m_isLocal; }
    bool isBroken() const { return m_isBroken; }

    /** Carries out `call`, which gives a length, or an error number below 0; 0, or an error number. It may be
     * left to itself when nobody wants to wait for a server: what it uses must live as long as it does. */
    template <typename Call>
    int carryOut(Call call) {
        if (m_isLocal) {
            const auto result = call();
            return result < 0 ? static_cast<int>(-result) : 0;
        }
        if (m_isBroken) {
            return ENOTCONN;
        }
        const Clock::time_point begin = Clock::now();
        const std::optional<ssize_t> result =
            Patience::isLimited() ? carryOutAside(call) : carryOutHere(call);
        if (!result) {
            m_isBroken = true;
            return ETIMEDOUT;
        }
        return *result >= 0 ? 0 : judge(static_cast<int>(-*result), Clock::now() - begin);
    }

private:
    using Clock = std::chrono::steady_clock;

    struct Deleter {
        void operator()(iio_context* context) const;
    };

    static ssize_t carryOutHere(const std::function<ssize_t()>& call);
    std::optional<ssize_t> carryOutAside(std::function<ssize_t()> call);
    int judge(int error, Clock::duration elapsed);

    /** Of a call that was left to itself as well. */
    std::shared_ptr<iio_context> m_context;
    std::chrono::milliseconds m_timeLimit;
    bool m_isLocal;
    bool m_isUsb;
    bool m_isBroken = false;
};

} // namespace Devices

#endif

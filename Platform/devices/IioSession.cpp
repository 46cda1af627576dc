#include "devices/IioSession.h"

#include <string_view>

namespace Devices {

namespace {

/** These say that there is nobody at the other end any more. */
bool isOfConnection(int error) {
    switch (error) {
    case EPIPE:
    case ECONNRESET:
    case ECONNABORTED:
    case ENOTCONN:
    case ESHUTDOWN:
    case EBADF:
    case EHOSTUNREACH:
    case ENETUNREACH:
    case ENETDOWN:
    case ENODEV:
        return true;
    default:
        return false;
    }
}

} // namespace

IioSession::IioSession(iio_context* context, std::chrono::milliseconds timeLimit)
    : m_context(context),
      m_timeLimit(timeLimit),
      m_isLocal(std::string_view(iio_context_get_name(context)) == "local") {
    static_cast<void>(iio_context_set_timeout(context, static_cast<unsigned>(timeLimit.count())));
}

void IioSession::Deleter::operator()(iio_context* context) const {
    const Quiet quiet;
    BrokenPipeGuard guard; // it takes leave of a server, which may have gone
    guard.failed();
    iio_context_destroy(context);
}

int IioSession::judge(int error, Clock::duration elapsed) {
    // A server that says nothing in time is told apart by the time that passed: libiio calls it a broken
    // pipe. What it says later would be taken for the next answer.
    const bool isLate = elapsed >= m_timeLimit * 9 / 10;
    m_isBroken = isOfConnection(error) || isLate;
    return isLate && (isOfConnection(error) || error == EAGAIN) ? ETIMEDOUT : error;
}

} // namespace Devices

#include "devices/IioSession.h"

#include <string_view>

namespace Devices {

namespace {

/** These say that there is nobody at the other end any more. ENODEV does not: a server gives it for one of
 * its devices, while the others are there. */
bool isOfTransport(int error) {
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
    case ETIMEDOUT:
        return true;
    default:
        return false;
    }
}

} // namespace

IioSession::IioSession(iio_context* context, std::chrono::milliseconds timeLimit)
    : m_context(context),
      m_timeLimit(timeLimit),
      m_isLocal(std::string_view(iio_context_get_name(context)) == "local"),
      m_isUsb(std::string_view(iio_context_get_name(context)) == "usb") {
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
    const bool isUnplugged = m_isUsb && error == ENODEV; // libusb's for what was pulled out
    const bool isOfConnection = isOfTransport(error) || isUnplugged;
    m_isBroken = isOfConnection || isLate;
    return isLate && (isOfConnection || error == EAGAIN) ? ETIMEDOUT : error;
}

} // namespace Devices

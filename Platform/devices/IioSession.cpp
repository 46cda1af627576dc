#include "devices/IioSession.h"

#include <condition_variable>
#include <mutex>
#include <string_view>
#include <thread>
#include <utility>

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
    : m_context(context, Deleter()),
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

ssize_t IioSession::carryOutHere(const std::function<ssize_t()>& call) {
    const Quiet quiet;
    BrokenPipeGuard guard;
    const ssize_t result = call();
    if (result < 0) {
        guard.failed();
    }
    return result;
}

/** libiio waits for its server whatever happens: somebody else does that, and is left to himself when nobody
 * wants the answer any more. Nothing then. */
std::optional<ssize_t> IioSession::carryOutAside(std::function<ssize_t()> call) {
    struct Shared {
        std::mutex mutex;
        std::condition_variable changed;
        std::optional<ssize_t> result;
    };
    const auto shared = std::make_shared<Shared>();
    std::thread thread = startThread([shared, context = m_context, call = std::move(call)] {
        const ssize_t result = carryOutHere(call);
        const std::lock_guard lock(shared->mutex);
        shared->result = result;
        shared->changed.notify_all();
    });
    const Patience patience;
    std::unique_lock lock(shared->mutex);
    while (!shared->result && !patience.isOver()) {
        shared->changed.wait_until(lock, patience.nextLook());
    }
    const std::optional<ssize_t> result = shared->result;
    lock.unlock();
    if (result) {
        thread.join();
    } else {
        thread.detach();
    }
    return result;
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

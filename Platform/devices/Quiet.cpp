#include "devices/Quiet.h"

#include <sys/types.h>

#include <atomic>
#include <cstdio>
#include <mutex>

namespace Devices {

#ifdef __GLIBC__

namespace {

thread_local int quietDepth = 0;

/** Stands in the place of standard error while some thread is quiet, and passes on what the others print. */
class Filter {
public:
    void enter() {
        const std::lock_guard lock(m_mutex);
        if (m_users == 0 && isOpen()) {
            m_original = stderr;
            stderr = m_filter;
        }
        ++m_users;
    }

    void leave() {
        const std::lock_guard lock(m_mutex);
        --m_users;
        if (m_users == 0 && stderr == m_filter) {
            stderr = m_original;
        }
    }

private:
    bool isOpen() {
        if (m_filter == nullptr) {
            cookie_io_functions_t functions{};
            functions.write = &Filter::write;
            m_filter = fopencookie(this, "w", functions);
            if (m_filter != nullptr) {
                static_cast<void>(std::setvbuf(m_filter, nullptr, _IONBF, 0));
            }
        }
        return m_filter != nullptr;
    }

    static ssize_t write(void* cookie, const char* text, size_t size) {
        if (quietDepth > 0) {
            return static_cast<ssize_t>(size);
        }
        // Who comes here found the filter in place, so that the original had been kept before. Not under the
        // mutex: what is printed may block, and whoever becomes quiet would wait for it.
        return static_cast<ssize_t>(
            std::fwrite(text, 1, size, static_cast<Filter*>(cookie)->m_original.load()));
    }

    std::mutex m_mutex;
    int m_users = 0;
    /** A thread that found the filter in place may still use this when it is kept anew. */
    std::atomic<std::FILE*> m_original{nullptr};
    std::FILE* m_filter = nullptr;
};

/** Never destroyed: a thread may still be printing when the program ends. */
Filter& filter() {
    static auto* const instance = new Filter;
    return *instance;
}

} // namespace

Quiet::Quiet() {
    ++quietDepth;
    filter().enter();
}

Quiet::~Quiet() {
    filter().leave();
    --quietDepth;
}

#else

// Elsewhere the C library's standard error cannot be replaced.
Quiet::Quiet() = default;
Quiet::~Quiet() = default;

#endif

} // namespace Devices

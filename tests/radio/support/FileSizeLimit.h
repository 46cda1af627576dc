#ifndef TESTS_RADIO_SUPPORT_FILESIZELIMIT_H
#define TESTS_RADIO_SUPPORT_FILESIZELIMIT_H

#include <sys/resource.h>

#include <csignal>

/** No file of this process may become larger than this, as on a full disk. */
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t size) : m_handler(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{size, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &m_before);
        static_cast<void>(std::signal(SIGXFSZ, m_handler));
    }

private:
    rlimit m_before{};
    void (*m_handler)(int);
};

#endif

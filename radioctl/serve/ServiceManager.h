#ifndef RADIOCTL_SERVE_SERVICEMANAGER_H
#define RADIOCTL_SERVE_SERVICEMANAGER_H

#include <chrono>
#include <string>

namespace Radio::Serving {

/**
 * Who has started the program as a service and wants to be told how it is, systemd for example: by lines on
 * the socket that NOTIFY_SOCKET names. Nobody, where there is no such variable.
 */
class ServiceManager {
public:
    ServiceManager();
    ServiceManager(const ServiceManager&) = delete;
    ServiceManager& operator=(const ServiceManager&) = delete;
    ~ServiceManager();

    /** Clients may come. `status` is one line for people. */
    void ready(const std::string& status);
    /** To be called again and again: says that the radio's thread goes on as often as the manager wants to
     * hear it. */
    void alive();
    /** The radio is being left. */
    void stopping();

private:
    void tell(const std::string& text) const;

    /** Abstract names begin with a zero byte. */
    std::string m_address;
    int m_socket = -1;
    /** 0: nobody waits for it. */
    std::chrono::microseconds m_interval{};
    std::chrono::steady_clock::time_point m_next{};
};

} // namespace Radio::Serving

#endif

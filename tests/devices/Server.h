#ifndef TESTS_DEVICES_SERVER_H
#define TESTS_DEVICES_SERVER_H

#include <sys/types.h>

#include <string>

namespace DeviceTests {

/** A port of the loopback that nobody listens at. */
int freePort();
/** Somebody listens at the port of the loopback. */
bool isListening(int port);

/** The real server of IIO devices, which sees what the test program sees, at a port of its own. */
class Server {
public:
    Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;
    ~Server() { kill(); }

    std::string uri() const { return "ip:127.0.0.1:" + std::to_string(m_port); }
    /** Starts it, and waits until it listens. */
    void start();
    /** Ends it, as a power cut does. */
    void kill();
    /** It is there, and does not answer. */
    void freeze() const;
    void thaw() const;

private:
    int m_port;
    pid_t m_process = 0;
};

} // namespace DeviceTests

#endif

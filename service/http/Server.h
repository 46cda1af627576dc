#ifndef SERVICE_HTTP_SERVER_H
#define SERVICE_HTTP_SERVER_H

#include "service/radio/EventRing.h"
#include "service/radio/Exchange.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Radio::Service {

/** Where the service is reached, and by whom. */
struct ServerOptions {
    /** "127.0.0.1:8080" or "[::1]:8080"; port 0 is any that is free. */
    std::string listen{};
    /** Files; empty for none. */
    std::string token{};
    std::string certificate{};
    std::string key{};
    /** Hosts by whose names clients may ask, besides the address. */
    std::vector<std::string> names{};
};

/**
 * Carries requests and answers over HTTP, and events to those who follow them, on a thread of its own. What
 * it reads is bounded in size and time, and so is what it keeps for who does not read.
 */
class Server {
public:
    /** Is given a request and whom to tell its answer, on any thread; false when it takes no more. */
    using Ask = std::function<bool(Request request, std::function<void(Answer)> tell)>;

    /**
     * Takes the address, and serves nobody yet. `events` must outlive the object. Throws InputError for an
     * address that cannot be taken, files that cannot be used, and an address beyond the loopback without
     * token and certificate.
     */
    Server(const ServerOptions& options, Ask ask, EventRing& events);
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;
    /** Stops. */
    ~Server();

    /** Where a browser finds it: "http://127.0.0.1:8080/". */
    std::string address() const;
    /** Begins to serve. Signals are for other threads. */
    void start();
    /** Lets answers go that are there already, and hangs up. */
    void stop();

private:
    class Works;
    std::unique_ptr<Works> m_works;
};

} // namespace Radio::Service

#endif

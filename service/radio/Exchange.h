#ifndef SERVICE_RADIO_EXCHANGE_H
#define SERVICE_RADIO_EXCHANGE_H

#include <string>
#include <utility>
#include <vector>

/** What passes between a client and the radio, whatever carries it. */
namespace Radio::Service {

struct Request {
    /** "GET", "PUT", ... */
    std::string method{};
    /** As it came, percent signs included, without the query. */
    std::string path{};
    /** Behind the question mark; empty for none. */
    std::string query{};
    /** What the body is said to be; empty when nothing is said. */
    std::string contentType{};
    std::string body{};
    /** Who asks, for the log: "127.0.0.1:40112". */
    std::string who{};
};

struct Answer {
    int status = 200;
    std::string contentType = "application/json";
    std::string body{};
    /** Besides those that every answer has. */
    std::vector<std::pair<std::string, std::string>> headers{};
};

} // namespace Radio::Service

#endif

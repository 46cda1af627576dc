#ifndef SERVICE_HTTP_GATE_H
#define SERVICE_HTTP_GATE_H

#include "service/radio/Problem.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Radio::Service {

/** Who may ask: decided on the beginning of a request, before its body is read. */
class Gate {
public:
    /** By which ways clients come. */
    struct Way {
        /** Of this end of the connection: "127.0.0.1" or "[::1]". */
        std::string address{};
        unsigned short port = 0;
        bool isLoopback = false;
        bool isEncrypted = false;
    };
    /** What the beginning of a request says; null for a header that is not there. */
    struct Claims {
        const std::string* host = nullptr;
        const std::string* origin = nullptr;
        const std::string* authorization = nullptr;
        /** What is asked for is no secret. */
        bool isForAll = false;
    };

    /** An empty token: none is asked for. `names` are hosts by whose names the service is reached. */
    Gate(const std::string& token, std::vector<std::string> names);

    /** Why somebody may not; nothing when they may. */
    std::optional<Problem> whyNot(const Way& way, const Claims& claims) const;

private:
    bool isOurName(const Way& way, std::string_view host) const;
    bool isToken(std::string_view text) const;

    bool m_wantsToken;
    /** Digests are compared, which all have one length. */
    std::array<unsigned char, 32> m_token{};
    std::vector<std::string> m_names;
};

/** The token that a file has, in one line. Throws InputError for one that is too short, has other characters
 * than a header can hold, or can be read by everybody. */
std::string readToken(const std::string& file);

} // namespace Radio::Service

#endif

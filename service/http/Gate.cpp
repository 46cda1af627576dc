#include "service/http/Gate.h"

#include "radio/files/InputError.h"
#include "radio/files/TextFile.h"
#include "radio/text/Words.h"

#include <openssl/crypto.h>
#include <openssl/sha.h>
#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <cstddef>

namespace Radio::Service {

namespace {

std::array<unsigned char, 32> digestOf(std::string_view text) {
    std::array<unsigned char, 32> digest{};
    static_assert(SHA256_DIGEST_LENGTH == 32);
    SHA256(reinterpret_cast<const unsigned char*>(text.data()), text.size(), digest.data());
    return digest;
}

std::string lowered(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return result;
}

} // namespace

Gate::Gate(const std::string& token, std::vector<std::string> names)
    : m_wantsToken(!token.empty()),
      m_token(digestOf(token)),
      m_names(std::move(names)) {
    std::transform(m_names.begin(), m_names.end(), m_names.begin(), lowered);
}

bool Gate::isToken(std::string_view text) const {
    const auto digest = digestOf(text);
    return CRYPTO_memcmp(digest.data(), m_token.data(), digest.size()) == 0;
}

/** Whether `host`, with a port or without, is this service as its clients know it: whoever has a name of
 * their own lead here is none of them. */
bool Gate::isOurName(const Way& way, std::string_view host) const {
    const std::size_t colon = host.rfind(':');
    const bool hasPort = colon != std::string_view::npos && host.find(']', colon) == std::string_view::npos;
    const std::string name = lowered(host.substr(0, hasPort ? colon : host.size()));
    if (std::find(m_names.begin(), m_names.end(), name) != m_names.end()) {
        return true;
    }
    const std::string usual = way.isEncrypted ? "443" : "80";
    const std::string port = hasPort ? std::string(host.substr(colon + 1)) : usual;
    const bool isHere = name == way.address || (way.isLoopback && name == "localhost");
    return isHere && port == std::to_string(way.port);
}

std::optional<Problem> Gate::whyNot(const Way& way, const Claims& claims) const {
    if (claims.host == nullptr || !isOurName(way, *claims.host)) {
        return Problem(ProblemKind::forbidden,
                       (claims.host == nullptr ? "there is no header \"Host\""
                                               : "\"Host\" is " + inQuotes(*claims.host)) +
                           ", expected " + way.address + ":" + std::to_string(way.port) +
                           " or a name that was given with --name");
    }
    if (claims.origin != nullptr) {
        const std::size_t scheme = claims.origin->find("://");
        if (scheme == std::string::npos ||
            lowered(claims.origin->substr(scheme + 3)) != lowered(*claims.host)) {
            return Problem(ProblemKind::forbidden, "a page of " + inQuotes(*claims.origin) +
                                                       " asks, expected one of " + inQuotes(*claims.host));
        }
    }
    if (!m_wantsToken || claims.isForAll) {
        return std::nullopt;
    }
    constexpr std::string_view scheme = "bearer ";
    const std::string_view said =
        claims.authorization == nullptr ? std::string_view() : std::string_view(*claims.authorization);
    if (lowered(said.substr(0, scheme.size())) != scheme ||
        !isToken(said.substr(std::min(scheme.size(), said.size())))) {
        return Problem(ProblemKind::unauthorised, "expected the header \"Authorization: Bearer TOKEN\"");
    }
    return std::nullopt;
}

std::string readToken(const std::string& file) {
    constexpr std::size_t most = 4096;
    constexpr std::size_t least = 16;
    std::string token = readTextFile(file, most, "a token");
    struct stat status {};
    if (stat(file.c_str(), &status) == 0 && (status.st_mode & S_IROTH) != 0) {
        throw InputError({file, 0},
                         "can be read by everybody, expected a file for its owner alone (chmod 600)");
    }
    while (!token.empty() && (token.back() == '\n' || token.back() == '\r')) {
        token.pop_back();
    }
    const bool isPlain = std::all_of(token.begin(), token.end(),
                                     [](unsigned char letter) { return letter > ' ' && letter < 0x7F; });
    if (token.size() < least || token.size() > most || !isPlain) {
        throw InputError({file, 0}, "expected one line of " + std::to_string(least) + " to " +
                                        std::to_string(most) + " visible characters without blanks");
    }
    return token;
}

} // namespace Radio::Service

#include "radio/store/Address.h"

#include "radio/files/StateFolder.h"
#include "radio/text/WordError.h"
#include "radio/text/Words.h"

#include <algorithm>

namespace Radio::Store {

namespace {

bool beginsWith(std::string_view text, std::string_view beginning) {
    return text.substr(0, beginning.size()) == beginning;
}

/** A secret, or written so that it may be one. */
bool isSecret(std::string_view parameter) {
    constexpr std::string_view secret = "password"; // and "sslpassword"
    const std::string_view key = parameter.substr(0, parameter.find('='));
    return key.find('%') != std::string_view::npos ||
           (key.size() >= secret.size() && key.substr(key.size() - secret.size()) == secret);
}

/** A URI, or what was to be one, without what stands between the name of a user and his host, and without
 * parameters that are secret. */
std::string withoutPassword(std::string uri) {
    const std::size_t scheme = uri.find("://");
    const std::size_t user = scheme == std::string::npos ? 0 : scheme + 3;
    // A question mark before the "@" is one of the password.
    const std::size_t at = uri.rfind('@', uri.find('/', user));
    const std::size_t colon = uri.find(':', user);
    std::size_t host = user;
    if (at != std::string::npos && at > user) {
        host = at;
        if (colon < at) {
            uri.erase(colon, at - colon);
            host = colon;
        }
    }
    const std::size_t question = uri.find('?', host);
    if (question == std::string::npos) {
        return uri;
    }
    std::string shown = uri.substr(0, question);
    char separator = '?';
    for (std::size_t begin = question + 1; begin < uri.size();) {
        const std::size_t end = std::min(uri.find('&', begin), uri.size());
        const std::string parameter = uri.substr(begin, end - begin);
        if (!isSecret(parameter)) {
            shown += separator + parameter;
            separator = '&';
        }
        begin = end + 1;
    }
    return shown;
}

} // namespace

std::string Address::shown() const {
    return backend == Backend::sqlite ? "sqlite:" + file.string() : withoutPassword(uri);
}

Address addressFrom(const std::string& word) {
    constexpr std::string_view sqlite = "sqlite:";
    if (word == "default") {
        const std::filesystem::path folder = dataFolder();
        if (folder.empty()) {
            throw WordError("there is no folder for the store of this user: neither XDG_DATA_HOME nor HOME "
                            "is set; expected sqlite:FILE or postgresql://...");
        }
        return {Backend::sqlite, folder / "store.sqlite", {}};
    }
    if (beginsWith(word, sqlite) && word.size() > sqlite.size() && word.find('"') == std::string::npos) {
        return {
            Backend::sqlite, std::filesystem::absolute(word.substr(sqlite.size())).lexically_normal(), {}};
    }
    if (beginsWith(word, "postgresql://") || beginsWith(word, "postgres://")) {
        return {Backend::postgresql, {}, word};
    }
    throw WordError(inQuotes(withoutPassword(word)) +
                    ", expected sqlite:FILE, postgresql://USER@HOST/DATABASE or default");
}

std::string whyNoAddress(const std::string& word) {
    try {
        addressFrom(word);
        return {};
    } catch (const WordError& error) {
        return error.what();
    }
}

} // namespace Radio::Store

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

/** A URI without what stands between the name of a user and his host, and without "password=...". */
std::string withoutPassword(std::string uri) {
    const std::size_t user = uri.find("://") + 3;
    const std::size_t end = std::min(uri.find_first_of("/?", user), uri.size());
    const std::size_t at = uri.rfind('@', end);
    const std::size_t colon = uri.find(':', user);
    if (at != std::string::npos && at > user && colon < at) {
        uri.erase(colon, at - colon);
    }
    const std::size_t question = uri.find('?');
    for (std::size_t begin = uri.find("password=", question); begin != std::string::npos;
         begin = uri.find("password=", begin)) {
        const std::size_t behind = uri.find('&', begin);
        uri.erase(begin, behind == std::string::npos ? behind : behind + 1 - begin);
    }
    if (question != std::string::npos && (uri.back() == '?' || uri.back() == '&')) {
        uri.pop_back();
    }
    return uri;
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
    throw WordError(inQuotes(word) + ", expected sqlite:FILE, postgresql://USER@HOST/DATABASE or default");
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

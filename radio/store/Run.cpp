#include "radio/store/Run.h"

#include "radio/text/Words.h"

#include <sys/random.h>

#include <algorithm>
#include <array>
#include <ctime>
#include <stdexcept>

namespace Radio::Store {

namespace {

/** True when `text` has what `pattern` says: "h" for a hexadecimal digit, "d" for a decimal one, and
 * everything else for itself. */
bool hasForm(std::string_view text, std::string_view pattern) {
    return text.size() == pattern.size() &&
           std::equal(text.begin(), text.end(), pattern.begin(), [](char character, char wanted) {
               const bool isDigit = character >= '0' && character <= '9';
               return wanted == 'h'   ? isDigit || (character >= 'a' && character <= 'f')
                      : wanted == 'd' ? isDigit
                                      : character == wanted;
           });
}

} // namespace

const RunFile* findFile(const Run& run, std::string_view name) {
    const auto found = std::find_if(run.files.begin(), run.files.end(),
                                    [name](const RunFile& file) { return file.name == name; });
    return found == run.files.end() ? nullptr : &*found;
}

std::string_view wordOf(VerdictKind verdict) {
    return verdict == VerdictKind::pass ? "pass" : verdict == VerdictKind::fail ? "fail" : "none";
}

std::optional<VerdictKind> verdictFromWord(std::string_view word) {
    for (const VerdictKind kind : {VerdictKind::none, VerdictKind::pass, VerdictKind::fail}) {
        if (wordOf(kind) == word) {
            return kind;
        }
    }
    return std::nullopt;
}

std::string newRunId() {
    std::array<unsigned char, 16> bytes{};
    if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
        throw std::runtime_error("there are no random numbers for the name of a run");
    }
    bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0FU) | 0x40U); // version 4: by chance
    bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3FU) | 0x80U);
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (std::size_t n = 0; n < bytes.size(); ++n) {
        if (n == 4 || n == 6 || n == 8 || n == 10) {
            text += '-';
        }
        text += digits[bytes[n] >> 4U];
        text += digits[bytes[n] & 0x0FU];
    }
    return text;
}

bool isRunId(std::string_view text) {
    return hasForm(text, "hhhhhhhh-hhhh-hhhh-hhhh-hhhhhhhhhhhh");
}

std::string utcNow() {
    const std::time_t now = std::time(nullptr);
    std::tm utc{};
    gmtime_r(&now, &utc);
    std::array<char, 32> text{};
    static_cast<void>(std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &utc));
    return text.data();
}

bool isUtcTime(std::string_view text) {
    return hasForm(text, "dddd-dd-ddTdd:dd:ddZ");
}

std::string whyNoDay(const std::string& word) {
    return hasForm(word, "dddd-dd-dd") ? "" : inQuotes(word) + ", expected a day such as 2026-03-01";
}

} // namespace Radio::Store

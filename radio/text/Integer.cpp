#include "radio/text/Integer.h"

#include <charconv>
#include <string>
#include <system_error>

namespace Radio {

std::optional<std::int64_t> parseInteger(std::string_view word) {
    const bool negative = !word.empty() && word.front() == '-';
    std::string_view digits = word.substr(negative ? 1 : 0);
    const bool hexadecimal = digits.size() > 2 && digits[0] == '0' && (digits[1] == 'x' || digits[1] == 'X');
    digits.remove_prefix(hexadecimal ? 2 : 0);
    if (digits.empty() || digits.front() == '-') {
        return std::nullopt;
    }
    const std::string signedDigits = (negative ? "-" : "") + std::string(digits);
    const char* const end = signedDigits.data() + signedDigits.size();
    std::int64_t value = 0;
    const auto [rest, error] = std::from_chars(signedDigits.data(), end, value, hexadecimal ? 16 : 10);
    return error == std::errc() && rest == end ? std::optional(value) : std::nullopt;
}

} // namespace Radio

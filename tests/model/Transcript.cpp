#include "Transcript.h"

#include <algorithm>
#include <charconv>

namespace Told {

namespace {

/** From the start of the line at `position` of `text` to its end. */
std::string_view lineAt(std::string_view text, std::size_t position) {
    if (position >= text.size()) {
        return "(nothing)";
    }
    const std::size_t start = position == 0 ? 0 : text.rfind('\n', position - 1) + 1;
    return text.substr(start, text.find('\n', position) - start);
}

/** Where the `count`-th line before the one at `position` starts. */
std::size_t linesBefore(std::string_view text, std::size_t position, int count) {
    std::size_t start = position == 0 ? std::string_view::npos : text.rfind('\n', position - 1);
    for (; count > 0 && start != std::string_view::npos && start > 0; --count) {
        start = text.rfind('\n', start - 1);
    }
    return start == std::string_view::npos ? 0 : start + 1;
}

} // namespace

char* Transcript::room(std::size_t count) {
    if (m_room.size() < m_size + count) {
        m_room.resize(2 * (m_size + count));
    }
    return m_room.data() + m_size;
}

void Transcript::put(std::string_view text) {
    std::copy(text.begin(), text.end(), room(text.size()));
    m_size += text.size();
}

void Transcript::number(std::int64_t number) {
    constexpr std::size_t most = 24;
    char* const place = room(most);
    *place = ' ';
    m_size += static_cast<std::size_t>(std::to_chars(place + 1, place + most, number).ptr - place);
}

void Transcript::call(std::string_view operation, std::string_view object, std::int64_t value,
                      std::int32_t x1, std::int32_t x2, std::int32_t code, const std::uint8_t* bytes,
                      std::size_t byteCount) {
    put(operation);
    put(" ");
    put(object);
    number(value);
    number(x1);
    number(x2);
    put(" ->");
    number(code);
    for (std::size_t i = 0; i < byteCount; ++i) {
        number(bytes[i]);
    }
    put("\n");
}

void Transcript::trace(std::int32_t level, std::string_view text) {
    put("    trace");
    number(level);
    put(" ");
    put(text);
    put("\n");
}

void Transcript::note(std::string_view what, std::int64_t number) {
    note(what, {}, number);
}

void Transcript::note(std::string_view what, std::string_view about, std::int64_t number) {
    put("  ");
    put(what);
    if (!about.empty()) {
        put(" ");
        put(about);
    }
    put(":");
    this->number(number);
    put("\n");
}

std::string firstDifference(const Transcript& library, const Transcript& model) {
    constexpr int linesShown = 25;
    const std::string_view one = library.text();
    const std::string_view other = model.text();
    if (one == other) {
        return {};
    }
    const auto same = std::mismatch(one.begin(), one.end(), other.begin(), other.end());
    const auto position = static_cast<std::size_t>(same.first - one.begin());
    const std::size_t start = linesBefore(one, position, linesShown);
    const std::size_t lineStart = linesBefore(one, position, 0);
    return std::string(one.substr(start, lineStart - start)) +
           "library: " + std::string(lineAt(one, position)) +
           "\nmodel:   " + std::string(lineAt(other, position)) + "\n";
}

} // namespace Told

#ifndef TESTS_MODEL_TRANSCRIPT_H
#define TESTS_MODEL_TRANSCRIPT_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Told {

/** What happened, one line for each thing. Two transcripts agree when their texts do. */
class Transcript {
public:
    /** A call of the platform, and its answer. */
    void call(std::string_view operation, std::string_view object, std::int64_t value, std::int32_t x1,
              std::int32_t x2, std::int32_t code, const std::uint8_t* bytes = nullptr,
              std::size_t byteCount = 0);
    /** A trace message; `level` is the platform's. */
    void trace(std::int32_t level, std::string_view text);
    /** Anything else that has a number: a result, a value read back, what an observer was told. */
    void note(std::string_view what, std::int64_t number);
    void note(std::string_view what, std::string_view about, std::int64_t number);

    std::string_view text() const { return {m_room.data(), m_size}; }
    /** Forgets all, but keeps the memory. */
    void clear() { m_size = 0; }

private:
    /** Where the next characters go: there is room for so many. */
    char* room(std::size_t count);
    void put(std::string_view text);
    void number(std::int64_t number);

    /** The text, and behind it room for more. */
    std::vector<char> m_room;
    std::size_t m_size = 0;
};

/** The first line in which two transcripts differ, from both sides, with the lines before it; empty: none. */
std::string firstDifference(const Transcript& library, const Transcript& model);

} // namespace Told

#endif

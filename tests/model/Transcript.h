#ifndef TESTS_MODEL_TRANSCRIPT_H
#define TESTS_MODEL_TRANSCRIPT_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

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

    const std::string& text() const { return m_text; }
    /** Forgets all, but keeps the memory. */
    void clear() { m_text.clear(); }

private:
    void number(std::int64_t number);

    std::string m_text;
};

/** The first line in which two transcripts differ, from both sides, with the lines before it; empty: none. */
std::string firstDifference(const Transcript& library, const Transcript& model);

} // namespace Told

#endif

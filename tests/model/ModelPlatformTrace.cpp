// How messages are emitted, and what is left open at the end of a step.

#include "ModelPlatform.h"

#include <array>
#include <cstdarg>
#include <cstdio>

namespace Told {

namespace {

std::int32_t mapped(Code numericLevel) {
    if (isBad(numericLevel)) {
        return 1;
    }
    return numericLevel == 256 ? 3 : numericLevel == 2048 ? 4 : 2;
}

} // namespace

void ModelPlatform::say(Code numericLevel, const char* format, ...) {
    m_transcript.note("level", numericLevel);
    if (m_lostAt == TracePlace::mapping || m_board.threshold < mapped(numericLevel)) {
        return;
    }
    std::array<char, 200> text{};
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text.data(), text.size(), format, arguments);
    va_end(arguments);
    if (m_lostAt == TracePlace::stream) {
        m_openMessages.emplace_back(text.data()); // it was opened, and is not ended
        return;
    }
    m_transcript.trace(mapped(numericLevel), text.data());
}

void ModelPlatform::sayOpenly(std::int32_t level, const std::string& text) {
    if (m_lostAt != TracePlace::stream) {
        m_transcript.trace(level, text);
    }
    m_openMessages.push_back(text);
}

void ModelPlatform::endStep() {
    for (const std::string& text : m_openMessages) {
        m_transcript.note("not ended", text, 0);
    }
    m_openMessages.clear();
    if (m_openHandles != 0) {
        m_transcript.note("broker handles not given back", m_openHandles);
    }
}

} // namespace Told

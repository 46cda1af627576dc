#include "service/radio/Metrics.h"

#include <array>
#include <cstddef>
#include <cstdio>

namespace Radio::Service {

namespace {

/** With what would end it, or its line, behind a backslash. */
std::string escaped(std::string_view text) {
    std::string result;
    for (const char letter : text) {
        if (letter == '\n') {
            result += "\\n";
            continue;
        }
        if (letter == '\\' || letter == '"') {
            result += '\\';
        }
        result += letter;
    }
    return result;
}

std::string numberText(double value) {
    std::array<char, 32> text{};
    const int size = std::snprintf(text.data(), text.size(), "%.15g", value);
    return {text.data(), static_cast<std::size_t>(size)};
}

} // namespace

void Metrics::family(std::string_view name, std::string_view type, std::string_view help) {
    m_name = name;
    m_text.append("# HELP ").append(name).append(" ").append(help).append("\n# TYPE ");
    m_text.append(name).append(" ").append(type).append("\n");
}

void Metrics::sample(double value, Labels labels) {
    m_text += m_name;
    const char* separator = "{";
    for (const auto& [label, text] : labels) {
        m_text.append(separator).append(label).append("=\"").append(escaped(text)).append("\"");
        separator = ",";
    }
    m_text += labels.size() == 0 ? " " : "} ";
    m_text += numberText(value) + "\n";
}

} // namespace Radio::Service

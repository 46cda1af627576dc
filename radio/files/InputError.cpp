#include "radio/files/InputError.h"

#include "radio/text/Words.h"

namespace Radio {

InputError::InputError(const Place& place, const std::string& message)
    : std::runtime_error(toString(place) + ": " + harmless(message)),
      m_place(place),
      m_text(harmless(message)) {}

std::string toString(const Place& place) {
    const std::string file = place.file.empty() ? inQuotes(place.file) : harmless(place.file);
    return place.line == 0 ? file : file + ":" + std::to_string(place.line);
}

} // namespace Radio

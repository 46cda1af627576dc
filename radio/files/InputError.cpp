#include "radio/files/InputError.h"

#include "radio/text/Words.h"

namespace Radio {

std::string toString(const Place& place) {
    const std::string file = place.file.empty() ? inQuotes(place.file) : harmless(place.file);
    return place.line == 0 ? file : file + ":" + std::to_string(place.line);
}

} // namespace Radio

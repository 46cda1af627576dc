#include "InputError.h"

#include "Words.h"

namespace Radioctl {

std::string toString(const Place& place) {
    const std::string file = place.file.empty() ? inQuotes(place.file) : harmless(place.file);
    return place.line == 0 ? file : file + ":" + std::to_string(place.line);
}

} // namespace Radioctl

#include "InputError.h"

namespace Radioctl {

std::string toString(const Place& place) {
    return place.line == 0 ? place.file : place.file + ":" + std::to_string(place.line);
}

} // namespace Radioctl

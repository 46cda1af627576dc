// What the sources of the platform share.
#ifndef MINIMAL_KEPT_H
#define MINIMAL_KEPT_H

#include "IInterface_c.h"

#include <string>

namespace Minimal {

constexpr int notFound = 0x8001;

/** An object that is made when it is first wanted, and never destroyed: the library outlives static objects. */
template <typename Object>
Object& kept() {
    static Object& object = *new Object;
    return object;
}

/** What stands under the name; null: nothing does. */
template <typename Map>
auto* find(Map& map, const std::string& name) {
    const auto found = map.find(name);
    return found != map.end() ? &found->second : nullptr;
}

/** What is published as "IDriverLayer". */
IInterface_c& driverLayer();

} // namespace Minimal

#endif

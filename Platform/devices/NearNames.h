#ifndef PLATFORM_DEVICES_NEARNAMES_H
#define PLATFORM_DEVICES_NEARNAMES_H

#include <string>
#include <vector>

namespace Devices {

/** What there is in place of a `wanted` name that there is not, for people: "; there are a, b and 3 more",
 * the most alike first; "; there is none" where there is nothing. */
std::string alternatives(const std::string& wanted, std::vector<std::string> names);

} // namespace Devices

#endif

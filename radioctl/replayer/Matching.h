#ifndef RADIOCTL_REPLAYER_MATCHING_H
#define RADIOCTL_REPLAYER_MATCHING_H

#include "radioctl/replayer/Player.h"

namespace Replayer {

/** The library calls now what was recorded, with the same arguments. Addresses, handles, lines of sources and
 * what stood in the place of an answer are not looked at. */
bool isSameCall(const Record& recorded, const Call& now);

/** The recording says of which object it is: without that, nobody knows whether it is that of `now`. */
bool isIdentified(const Record& recorded, const Call& now);

/** The same of the same object, with whatever arguments. */
bool isSameThing(const Record& recorded, const Call& now);

} // namespace Replayer

#endif

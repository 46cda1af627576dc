#ifndef RADIOCTL_LISTINGS_H
#define RADIOCTL_LISTINGS_H

#include "Command.h"
#include "Radio.h"
#include "Reporter.h"

namespace Radioctl {

/** What the command show lists, at this moment. */
Listing makeListing(const Show& command, Radio& radio);

} // namespace Radioctl

#endif

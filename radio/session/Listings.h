#ifndef RADIO_SESSION_LISTINGS_H
#define RADIO_SESSION_LISTINGS_H

#include "radio/session/ChannelFailures.h"
#include "radio/session/Command.h"
#include "radio/session/RadioUnit.h"
#include "radio/session/SessionListener.h"

namespace Radio {

/** What the command show lists, at this moment. */
Listing makeListing(const Show& command, RadioUnit& radio, const ChannelFailures& failures);

} // namespace Radio

#endif

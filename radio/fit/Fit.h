#ifndef RADIO_FIT_FIT_H
#define RADIO_FIT_FIT_H

#include "radio/fit/Order.h"
#include "radio/fit/Outcome.h"
#include "radio/fit/Prober.h"

namespace Radio::Fit {

/**
 * Calibrates one transmitter over its band and temperatures. What is wrong with the transmitter is in the
 * outcome; an order that makes no sense throws std::invalid_argument.
 */
Outcome calibrate(const Order& order, Prober& prober);

} // namespace Radio::Fit

#endif

#ifndef RADIO_FIT_CONCLUSION_H
#define RADIO_FIT_CONCLUSION_H

#include "radio/fit/Knowledge.h"
#include "radio/fit/Outcome.h"
#include "radio/fit/Surface.h"

namespace Radio::Fit {

/** Where a course ended. */
struct CourseEnd {
    const Order& order;
    const Knowledge& knowledge;
    const Surface& surface;
    bool isInterrupted = false;
    /** The whole range was fitted and tried. */
    bool isComplete = false;
    /** Places at which the table left more than was foretold, as far as that was not mended. */
    int misses = 0;
};

/**
 * Makes the tables of what was found, if they can be made, with their claim, and judges it. `outcome` has
 * points and verifications, and a reason if there was nothing to begin with.
 */
void conclude(Outcome& outcome, const CourseEnd& end);

} // namespace Radio::Fit

#endif

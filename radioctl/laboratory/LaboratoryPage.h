#ifndef RADIOCTL_LABORATORY_LABORATORYPAGE_H
#define RADIOCTL_LABORATORY_LABORATORYPAGE_H

#include "radio/laboratory/Results.h"
#include "radio/laboratory/Study.h"

#include <ostream>

namespace Radio::Laboratory {

/** The page of a laboratory: what is recommended and why, the trade-off, how the figures spread, and who
 * failed. The same results are the same page. Throws InputError when gnuplot fails. */
void writePage(std::ostream& out, const Results& results, const Study& study);

} // namespace Radio::Laboratory

#endif

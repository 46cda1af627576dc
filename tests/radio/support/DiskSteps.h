#ifndef TESTS_RADIO_SUPPORT_DISKSTEPS_H
#define TESTS_RADIO_SUPPORT_DISKSTEPS_H

#include <string>
#include <vector>

/**
 * What this process asks of the disk, in its order: what is to be there from then on, and what is to have
 * another name. A program with DiskSteps.cpp has these operations watched.
 */
namespace DiskSteps {

/** Since forget(): "sync out.csv, 4 bytes", "sync folder" and "rename a to b". The letters by which a file
 * that becomes another one is told from others of its kind are left out: "out.csv.part". */
std::vector<std::string> taken();
void forget();
/** As the power goes: the process ends in place of the step of this number, counted from 1 on; 0: of none. */
void endInPlaceOf(unsigned step);

} // namespace DiskSteps

#endif

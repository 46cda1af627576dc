#ifndef RADIOCTL_CALIBRATE_ATTENDANT_H
#define RADIOCTL_CALIBRATE_ATTENDANT_H

#include "radio/calibration/CalibrationBench.h"
#include "radioctl/console/Interrupt.h"

#include <ostream>
#include <string>

namespace Radio::Calibration {

/** Standard input and output are a terminal: somebody is there. */
bool isAttendedTerminal();

/** Who is at the bench, and says by Enter or a number on standard input that a temperature is there. */
class Attendant {
public:
    /** What is borrowed must outlive the object. */
    Attendant(const Interrupt& interrupt, std::ostream& out) : m_interrupt(interrupt), m_out(out) {}

    /** Whatever was said since the last call; does not wait. */
    PersonsWord listen();

private:
    PersonsWord understand(const std::string& line);

    const Interrupt& m_interrupt;
    std::ostream& m_out;
    std::string m_begun;
};

} // namespace Radio::Calibration

#endif

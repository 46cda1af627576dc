#ifndef RADIOCTL_CONSOLE_PATIENTOUTPUT_H
#define RADIOCTL_CONSOLE_PATIENTOUTPUT_H

#include "radioctl/console/Interrupt.h"

#include <array>
#include <streambuf>

namespace Radio {

/**
 * Standard output that a signal gets through to: where nobody reads it, a program that drives hardware would
 * wait for ever, and could not be told to leave. In place of the stream's own buffer as long as it lives; one
 * at a time.
 */
class PatientOutput final : public std::streambuf {
public:
    /** `interrupt` must outlive the object. */
    explicit PatientOutput(const Interrupt& interrupt);
    PatientOutput(const PatientOutput&) = delete;
    PatientOutput& operator=(const PatientOutput&) = delete;
    ~PatientOutput() override;

    /** Nobody can read it any more: the pipe or the terminal is gone. */
    static bool isGone();

protected:
    int_type overflow(int_type character) override;
    int sync() override;

private:
    bool writeAll();
    bool waitUntilWritable();

    const Interrupt& m_interrupt;
    std::array<char, 4096> m_buffer{};
    std::streambuf* m_before;
};

} // namespace Radio

#endif

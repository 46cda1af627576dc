#ifndef RADIOCTL_CONSOLE_PATIENTOUTPUT_H
#define RADIOCTL_CONSOLE_PATIENTOUTPUT_H

#include <array>
#include <ostream>
#include <streambuf>

namespace Radio {

/**
 * Standard output, or that of errors, which a signal gets through to: where nobody reads it, a program that
 * holds signals back would wait for ever, and could not be told to leave. In place of the stream's own buffer
 * as long as it lives.
 */
class PatientOutput final : public std::streambuf {
public:
    /** For std::cout or std::cerr, and the descriptor that it is of. */
    PatientOutput(std::ostream& stream, int descriptor);
    PatientOutput(const PatientOutput&) = delete;
    PatientOutput& operator=(const PatientOutput&) = delete;
    ~PatientOutput() override;

    /** Nobody can read standard output any more: the pipe or the terminal is gone. */
    static bool isGone();

protected:
    int_type overflow(int_type character) override;
    int sync() override;

private:
    bool writeAll();
    bool waitUntilWritable();

    std::ostream& m_stream;
    int m_descriptor;
    std::array<char, 4096> m_buffer{};
    std::streambuf* m_before;
};

} // namespace Radio

#endif

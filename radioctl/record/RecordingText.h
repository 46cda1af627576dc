#ifndef RADIOCTL_RECORD_RECORDINGTEXT_H
#define RADIOCTL_RECORD_RECORDINGTEXT_H

#include "radio/recording/Selection.h"

#include <ostream>
#include <string>

namespace Radio::Recordings {

/** A record in one line: with everything that counts when two are compared, and without a time. */
std::string lineOf(const RecordingFile& file, const Seen& seen);

/** What is not there of a recording; empty when nothing is missing. */
std::string lossesText(const Losses& losses, std::uint32_t passedOver);

/** Shows a recording as lines for people, as "radioctl run" shows a radio. */
class RecordingText {
public:
    /** `out` and `file` must outlive the object. */
    RecordingText(std::ostream& out, const RecordingFile& file, bool verbose)
        : m_out(out),
          m_file(file),
          m_verbose(verbose) {}

    /** `name` is the name of the file. */
    void begin(const std::string& name);
    void show(const Seen& seen);
    void end();

private:
    void showOperation(const Seen& seen);
    void showEnd(const Record& record);
    void showWrite(const Record& record);
    void showRead(const Record& record);
    void showTrace(const Seen& seen);
    void showTold(const Seen& seen);
    void showContent(const Record& record);
    void showCall(const Record& record);

    std::ostream& m_out;
    const RecordingFile& m_file;
    bool m_verbose;
    unsigned m_writes = 0;
    std::uint64_t m_records = 0;
};

} // namespace Radio::Recordings

#endif

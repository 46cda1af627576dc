#ifndef RADIOCTL_RECORD_RECORDINGJSON_H
#define RADIOCTL_RECORD_RECORDINGJSON_H

#include "radio/files/Json.h"
#include "radio/recording/Selection.h"

#include <ostream>
#include <string>

namespace Radio::Recordings {

/** Adds the members that tell of a record. */
void addRecord(Json& event, const Seen& seen);

/** Shows a recording as events, one JSON object a line. */
class RecordingJson {
public:
    /** `out` must outlive the object. */
    explicit RecordingJson(std::ostream& out) : m_out(out) {}

    void begin(const std::string& name, const RecordingFile& file);
    void show(const Seen& seen);
    void end(const RecordingFile& file);

private:
    std::ostream& m_out;
    std::uint64_t m_records = 0;
};

} // namespace Radio::Recordings

#endif

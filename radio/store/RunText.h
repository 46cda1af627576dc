#ifndef RADIO_STORE_RUNTEXT_H
#define RADIO_STORE_RUNTEXT_H

#include "radio/files/InputError.h"
#include "radio/files/Json.h"
#include "radio/store/Run.h"

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>

/** Runs as lines of JSON, one each: as they are exported, imported, and kept until a database takes them. */
namespace Radio::Store {

/** The number of the form of these lines, their member "run_schema". */
constexpr int runSchema = 1;

/** A run, or its head alone, on one line without its end. `store`, if it is not empty, is for whom it waits.
 */
std::string toLine(const Run& run, const std::string& store = {});

/** The members of a measurement, as a run has it. */
Json toJson(const Measurement& measurement);
/** Those of a head. Its settings are left out: they are JSON already. */
Json toJson(const RunHead& head);

/** What toLine() has written. */
struct ReadRun {
    Run run;
    /** For whom it waits; empty for one that was exported. */
    std::string store;
};

/** Reads what toLine() gives. Members that are not known are passed over. Throws InputError, which names the
 * place and the member. */
ReadRun readRun(std::string_view line, const Place& place);

/** The lines of a file, each a run; no more than one in memory. */
class RunReader {
public:
    /** Throws InputError when the file cannot be read. */
    explicit RunReader(const std::filesystem::path& file);
    /** The next; nothing at the end. Throws InputError for a line that is none; the one after it can be read
     * then. */
    std::optional<ReadRun> next();

private:
    std::ifstream m_stream;
    Place m_place;
};

} // namespace Radio::Store

#endif

#ifndef RADIO_STORE_SPOOL_H
#define RADIO_STORE_SPOOL_H

#include "radio/store/Address.h"
#include "radio/store/Database.h"
#include "radio/store/Run.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

/**
 * Runs that wait for their database, each in a file of its own, ID.run. The file is on the disk before the
 * database is asked, and goes once the run is in there: whatever ends the program, the run is in one of the
 * two, or in both, and the database knows it by its id.
 */
namespace Radio::Store {

/** Writes the run into `folder`, or where that cannot be, into the user's stateFolder(); gives the file.
 * Throws InputError when it can be in neither. */
std::filesystem::path spool(const Run& run, const Address& address, const std::filesystem::path& folder);

/** The files that wait in `folder` and in the user's stateFolder(), in the order of their names. */
std::vector<std::filesystem::path> waitingRuns(const std::filesystem::path& folder);

/** What became of runs that waited. */
struct Pushed {
    /** Runs that are in the database now, and those that were there already. */
    std::size_t stored = 0;
    std::size_t known = 0;
    /** Runs that wait for another store. */
    std::size_t others = 0;
    /** What is wrong with the rest, each with its file. */
    std::vector<std::string> problems{};
};

/** Adds the runs of `files` that wait for the store at `address`, or `all` of them, and takes the files away.
 * Throws InputError when the database fails; the files that are left are as they were. */
Pushed push(Database& database, const Address& address, const std::vector<std::filesystem::path>& files,
            bool all);

} // namespace Radio::Store

#endif

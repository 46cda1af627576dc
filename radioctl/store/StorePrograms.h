#ifndef RADIOCTL_STORE_STOREPROGRAMS_H
#define RADIOCTL_STORE_STOREPROGRAMS_H

#include "radio/store/Database.h"

#include <optional>
#include <string>
#include <vector>

/** What "radioctl store" does. These functions give the exit code. */
namespace Radio::Store {

/** What the user chose on the command line; each command takes of it what is for it. */
struct StoreOptions {
    bool json = false;
    /** An address; empty: that of the settings file, or else the default. */
    std::string store{};
    Selection selection{};
    /** A serial number, or the beginning of a run's id. */
    std::string unit{};
    std::string otherUnit{};
    std::optional<int> channel{};
    /** A file; empty: standard output. */
    std::string out{};
    std::string html{};
    /** "csv", "json" or "junit". */
    std::string format{};
    std::vector<std::string> files{};
    std::string folder{};
    bool all = false;
    std::string user{};
};

int runList(const StoreOptions& options);
int runShow(const StoreOptions& options);
int runTables(const StoreOptions& options);
int runCompare(const StoreOptions& options);
int runReport(const StoreOptions& options);
int runExport(const StoreOptions& options);
int runImport(const StoreOptions& options);
int runCheck(const StoreOptions& options);
int runPush(const StoreOptions& options);
int runGrant(const StoreOptions& options);

} // namespace Radio::Store

#endif

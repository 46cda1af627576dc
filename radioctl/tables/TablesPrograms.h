#ifndef RADIOCTL_TABLES_TABLESPROGRAMS_H
#define RADIOCTL_TABLES_TABLESPROGRAMS_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/** What "radioctl tables" does, one function for each of its commands. They give the exit code. */
namespace Radio::Tables {

struct LintOptions {
    bool json = false;
    /** Boards and CSV files. */
    std::vector<std::string> files;
};

struct DiffOptions {
    bool json = false;
    std::string before;
    std::string after;
    /** Describes the leakage; empty: one of the two above, if it is a board. */
    std::string board;
    /** Nothing: all that both have. */
    std::optional<int> channel;
    /** Show every node that moved. */
    bool all = false;
};

struct WhyOptions {
    bool json = false;
    std::string board;
    int channel = 0;
    /** In kHz. */
    std::uint32_t carrier = 0;
    /** In degrees Celsius. */
    std::int32_t temperature = 0;
};

/** Looks for what is not as it should be in LO-cancellation tables. */
int runLint(const LintOptions& options);
/** Shows where corrections moved, and what that does to the leakage. */
int runDiff(const DiffOptions& options);
/** Shows how a carrier and a temperature come to the corrections that are written. */
int runWhy(const WhyOptions& options);

} // namespace Radio::Tables

#endif

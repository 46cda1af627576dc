#ifndef RADIOCTL_LABORATORY_LABORATORYPROGRAMS_H
#define RADIOCTL_LABORATORY_LABORATORYPROGRAMS_H

#include "radio/laboratory/Results.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Radio::Laboratory {

struct LaboratoryOptions {
    std::string file;
    /** Nothing: as many as there are processors. */
    std::optional<std::uint32_t> jobs;
    Shard shard{};
    bool isShard = false;
    /** Empty: the usual file. */
    std::string out;
    std::string html;
    bool restarts = false;
    bool json = false;
};

struct MergeOptions {
    std::vector<std::string> files;
    /** Empty: they are only shown. */
    std::string out;
    std::string html;
    bool json = false;
};

// Both give the exit code.

int runLaboratory(const LaboratoryOptions& options);
int runMerge(const MergeOptions& options);

} // namespace Radio::Laboratory

#endif

#ifndef RADIOCTL_PLAN_PLANPROGRAMS_H
#define RADIOCTL_PLAN_PLANPROGRAMS_H

#include "radio/board/PlatformWords.h"
#include "radioctl/bench/HardwareOptions.h"
#include "radioctl/keep/KeepOptions.h"

#include <cstdint>
#include <string>
#include <vector>

/** What "radioctl plan" does, one function for each of its commands. They give the exit code. */
namespace Radio::Plan {

struct ExplainOptions {
    bool json = false;
    std::string board;
    int channel = 0;
    Direction direction = Direction::tx;
    /** In kHz. */
    std::uint32_t carrier = 0;
};

struct AuditOptions {
    bool json = false;
    HardwareOptions hardware{};
    std::vector<std::string> boards;
    KeepOptions keep{};
    /** A file, "-" for standard output, or empty. */
    std::string csv;
};

/** Shows how one carrier becomes words for the hardware. */
int runExplain(const ExplainOptions& options);
/** Tunes every carrier of the boards' rasters and holds what comes of it against their limits. */
int runAudit(const AuditOptions& options);

} // namespace Radio::Plan

#endif

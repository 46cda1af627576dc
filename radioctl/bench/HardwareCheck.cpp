#include "radioctl/bench/HardwareCheck.h"

#include "devices/Hardware.h"
#include "radio/files/InputError.h"
#include "radioctl/bench/HardwareReport.h"
#include "radioctl/options/ExitCode.h"

#include <algorithm>
#include <iostream>

namespace Radio {

namespace {

/** What becomes of connections is in the findings. */
class Silence final : public Devices::HardwareListener {
public:
    void lost(const std::string& /*device*/, const std::string& /*why*/) override {}
    void back(const std::string& /*device*/) override {}
    void failed(const std::string& /*driver*/, const std::string& /*attribute*/,
                std::int32_t /*code*/) override {}
    void sensorFailed(const std::string& /*why*/) override {}
};

} // namespace

int checkHardware(const Board& board, bool json) {
    if (board.hardware.description.isEmpty()) {
        throw InputError({board.file.string(), 0},
                         "no hardware, expected a section [hardware] that says what drivers are");
    }
    Silence silence;
    Devices::Hardware hardware(board.hardware.description, silence);
    HardwareReport report(std::cout, json);
    const std::vector<Devices::AttributeFinding> findings = hardware.examine(true);
    report.found(board.file.string(), findings);
    const bool isGood = std::all_of(findings.begin(), findings.end(),
                                    [](const auto& finding) { return finding.problem.empty(); });
    return isGood ? ExitCode::good : ExitCode::outsideLimits;
}

} // namespace Radio

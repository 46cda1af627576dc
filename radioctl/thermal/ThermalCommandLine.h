#ifndef RADIOCTL_THERMAL_THERMALCOMMANDLINE_H
#define RADIOCTL_THERMAL_THERMALCOMMANDLINE_H

#include "radioctl/options/Options.h"
#include "radioctl/thermal/ThermalPrograms.h"

#include <string>
#include <vector>

namespace Radio::Thermal {

/** The command line of "radioctl thermal". */
class ThermalCommandLine final : public CommandLine::Verb {
public:
    /** Adds "thermal" to the program's commands. Must outlive the parsing. */
    explicit ThermalCommandLine(CommandLine::Command program);

    bool isCalled() const override { return m_thermal.isCalled(); }
    int run(bool json) override;

private:
    CommandLine::Command m_thermal;
    ThermalOptions m_options;
    std::vector<std::string> m_carriers;
};

} // namespace Radio::Thermal

#endif

#ifndef RADIOCTL_THERMAL_THERMALCOMMANDLINE_H
#define RADIOCTL_THERMAL_THERMALCOMMANDLINE_H

#include "thermal/ThermalPrograms.h"

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace Radioctl::Thermal {

/** The command line of "radioctl thermal". */
class ThermalCommandLine {
public:
    /** Adds "thermal" to the program's commands. Must outlive the parsing. */
    explicit ThermalCommandLine(CLI::App& app);
    ThermalCommandLine(const ThermalCommandLine&) = delete;
    ThermalCommandLine& operator=(const ThermalCommandLine&) = delete;

    bool parsed() const { return m_thermal.parsed(); }
    /** Does what was asked for; gives the exit code. `json`: also asked for in front of the command. */
    int run(bool json);

private:
    CLI::App& m_thermal;
    ThermalOptions m_options;
    std::vector<std::string> m_carriers;
};

} // namespace Radioctl::Thermal

#endif

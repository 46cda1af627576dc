#include "radioctl/new/NewCommandLine.h"

#include "radio/board/BoardCheck.h"
#include "radio/board/BoardDraft.h"
#include "radio/board/BoardFile.h"
#include "radio/board/CalibrationBounds.h"
#include "radio/files/AtomicFile.h"
#include "radio/text/BrokenLines.h"
#include "radio/text/Frequency.h"
#include "radio/text/Words.h"
#include "radioctl/options/ExitCode.h"
#include "radioctl/options/Values.h"
#include "radioctl/report/JsonLine.h"
#include "radioctl/report/Output.h"

#include <algorithm>
#include <iostream>

namespace Radio {

NewCommandLine::NewCommandLine(CommandLine::Command program)
    : m_new(program.command("new", "Write a board file to begin with")) {
    m_new.option("FILE", m_file, "Where it goes; there must be nothing yet").required().file({".toml"});
    const std::vector<std::string_view> types = handlerTypeWords();
    constexpr std::size_t helpWidth = 48;
    const std::string help =
        joined(brokenLines("What its channel is: " + joined(types, ", "), helpWidth), "\n");
    m_new.option("--type", m_type, help.c_str())
        .required()
        .named("TYPE")
        .oneOf(std::vector<std::string>(types.begin(), types.end()));
    m_new
        .option("--band", m_band,
                "First and last carrier: kHz, or each with a\nunit behind it, such as 7.4 GHz 7.7 GHz")
        .required()
        .named("F F")
        .values(2)
        .check(whyNoFrequency);
    m_new.json(m_json);
}

int NewCommandLine::run(bool json) {
    m_json |= json;
    const Range band{parseFrequency(m_band[0], ""), parseFrequency(m_band[1], "")};
    if (band.low > band.high) {
        return refuse("--band: " + m_band[0] + " and " + m_band[1] + ", expected the lowest carrier first",
                      m_json, ExitCode::wrongCommandLine);
    }
    if (band.low < carrierBounds.low || band.high > carrierBounds.high) {
        return refuse("--band: " + m_band[0] + " and " + m_band[1] + ", expected carriers from " +
                          std::to_string(carrierBounds.low) + " to " + std::to_string(carrierBounds.high) +
                          " kHz",
                      m_json, ExitCode::wrongCommandLine);
    }
    return refusing(m_json, [&] { return create(band); });
}

int NewCommandLine::create(Range band) const {
    const std::filesystem::path place(m_file);
    std::error_code unknown;
    if (std::filesystem::exists(std::filesystem::symlink_status(place, unknown))) {
        throw InputError(Place{place, 0}, "is there already, expected a name for a new file");
    }
    AtomicFile file(place);
    file.stream() << draftBoard(*handlerTypeFromString(m_type), band, place.stem().string());
    file.commitNew();

    const std::vector<Finding> findings = checkBoard(loadBoard(place));
    const auto errors = static_cast<std::size_t>(std::count_if(findings.begin(), findings.end(), isError));
    const std::size_t warnings = findings.size() - errors;
    if (m_json) {
        writeJsonLine(std::cout, {{"event", "created"},
                                  {"file", m_file},
                                  {"type", m_type},
                                  {"errors", errors},
                                  {"warnings", warnings}});
    } else {
        const std::string name = harmless(m_file);
        std::cout << name << ": written; radioctl check finds "
                  << (findings.empty()
                          ? "nothing that is missing"
                          : counted(errors, "error") + " and " + counted(warnings, "warning") + " to fill in")
                  << "\n";
    }
    return ExitCode::good;
}

} // namespace Radio

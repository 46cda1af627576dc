#include "CommandLine.h"

#include "Output.h"
#include "Programs.h"
#include "Words.h"
#include "calibration/CalibrationCommandLine.h"
#include "plan/PlanCommandLine.h"
#include "tables/TablesCommandLine.h"
#include "thermal/ThermalCommandLine.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iostream>
#include <string>
#include <vector>

namespace Radioctl {

namespace {

constexpr const char* exitCodes =
    "Exit codes:\n"
    "  0    good\n"
    "  1    an expectation failed, a command failed without an \"expect result\"\n"
    "       behind it, check or tables lint found errors, plan found something\n"
    "       outside its limits, the radio complained during thermal, calibrate had\n"
    "       points without good corrections, tables diff found differences, or the\n"
    "       library wrote something else than tables why computed\n"
    "  2    wrong command line\n"
    "  3    a board, a script, a log, a table or a journal cannot be used, a line\n"
    "       for console through a pipe was refused, a board has no raster to audit,\n"
    "       no compensation to replay or no tables to look at, gnuplot is missing,\n"
    "       or output cannot be written; the message is on standard error\n"
    "  4    the radio did not boot, and the script does not begin with an\n"
    "       \"expect result\"\n"
    "  130  interrupted by Ctrl-C (129 and 143: by SIGHUP and SIGTERM)\n";

void addJson(CLI::App& app, Options& options) {
    app.add_flag("--json", options.json, "One JSON object per event and line");
}

/** Adds what run and console have in common. */
CLI::App& addRadioCommand(CLI::App& app, const char* name, const char* help, Options& options,
                          std::string& trace) {
    CLI::App& command = *app.add_subcommand(name, help);
    command.add_option("BOARD", options.board, "Board description (TOML)")->required()->type_name("FILE");
    addJson(command, options);
    command.add_option("--trace", trace, "Trace messages to show")
        ->type_name("LEVEL")
        ->check(CLI::IsMember({"off", "error", "warning", "notice", "information"}))
        ->capture_default_str();
    command.add_flag("-v,--verbose", options.verbose,
                     "Show every call to the platform, and where\nmessages come from");
    return command;
}

std::string failureMessage(const CLI::App* /*app*/, const CLI::Error& error) {
    return std::string("radioctl: ") + error.what() + "\nRun with --help for more information.\n";
}

} // namespace

int runCommandLine(int argumentCount, const char* const* arguments) {
    Options options;
    std::string trace = "notice";
    std::string script;
    std::string shell;
    CLI::App app("Boots a described radio, tunes it and shows every value that reaches its\nhardware.",
                 "radioctl");
    app.set_version_flag("--version", "radioctl " RADIOCTL_VERSION);
    addJson(app, options);
    app.require_subcommand(0, 1);
    app.footer(exitCodes);
    app.failure_message(failureMessage);

    CLI::App& run = addRadioCommand(app, "run", "Boot a board and carry out a script", options, trace);
    const CLI::Option& scriptOption =
        *run.add_option("SCRIPT", script,
                        "Commands, one a line; - reads them from\nstandard input, and so does leaving it\n"
                        "out when standard input is no terminal")
             ->type_name("FILE");
    CLI::App& console =
        addRadioCommand(app, "console", "Boot a board and carry out what is typed", options, trace);
    CLI::App& check =
        *app.add_subcommand("check", "Say what a board lacks or has too much of,\nwithout booting it");
    check.add_option("BOARD", options.boards, "Board descriptions (TOML)")->required()->type_name("FILE");
    addJson(check, options);
    Plan::PlanCommandLine plan(app);
    Thermal::ThermalCommandLine thermal(app);
    Calibration::CalibrationCommandLine calibration(app);
    Tables::TablesCommandLine tables(app);
    CLI::App& completion = *app.add_subcommand("completion", "Print the completion script for a shell");
    completion.add_option("SHELL", shell, "bash")->required()->check(CLI::IsMember({"bash"}));

    try {
        std::vector<std::string> words = Plan::withUnitsJoined(argumentCount, arguments);
        std::reverse(words.begin(), words.end()); // as the parser wants them
        app.parse(words);
        if (app.get_subcommands().empty()) {
            throw CLI::RequiredError(
                "One of run, console, check, plan, thermal, calibrate, tables and completion");
        }
    } catch (const CLI::ParseError& error) {
        const int code = app.exit(error);
        return code == 0 ? ExitCode::good : ExitCode::wrongCommandLine;
    }
    options.trace = *traceLevelFromString(trace);
    if (scriptOption.count() != 0) {
        options.script = script;
    }
    if (run.parsed()) {
        return runScript(options);
    }
    if (console.parsed()) {
        return runConsole(options);
    }
    if (plan.parsed()) {
        return plan.run(options.json);
    }
    if (thermal.parsed()) {
        return thermal.run(options.json);
    }
    if (calibration.parsed()) {
        return calibration.run(options.json);
    }
    if (tables.parsed()) {
        return tables.run(options.json);
    }
    return check.parsed() ? runCheck(options) : printCompletion();
}

} // namespace Radioctl

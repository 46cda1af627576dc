#include "radioctl/run/RunCommandLine.h"

#include "radio/board/PlatformWords.h"

namespace Radio {

RunCommandLine::RunCommandLine(CommandLine::Command program)
    : m_run(add(program, "run", "Boot a board and carry out a script")),
      m_console(add(program, "console", "Boot a board and carry out what is typed")) {
    m_run
        .option("SCRIPT", m_script,
                "Commands, one a line; - reads them from\nstandard input, and so does leaving it\n"
                "out when standard input is no terminal")
        .file({".script"});
    m_run.option("--junit", m_options.junit, "Write what came of the expectations, as\nJUnit's XML").file();
    addStoreOptions(m_run, m_options.keep);
    addUnitOptions(m_run, m_options.keep);
}

CommandLine::Command RunCommandLine::add(CommandLine::Command& program, const char* name, const char* help) {
    CommandLine::Command command = program.command(name, help);
    command.option("BOARD", m_options.board, "Board description (TOML)").required().file({".toml"});
    addHardwareOptions(command, m_options.hardware);
    command.json(m_options.json);
    command.option("--trace", m_trace, "Trace messages to show")
        .named("LEVEL")
        .oneOf({"off", "error", "warning", "notice", "information"})
        .showDefault();
    command.flag("-v,--verbose", m_options.verbose,
                 "Show every call to the platform, and where\nmessages come from");
    return command;
}

int RunCommandLine::run(bool json) {
    m_options.json |= json;
    m_options.trace = *traceLevelFromString(m_trace);
    if (m_run.has("SCRIPT")) {
        m_options.script = m_script;
    }
    return m_run.isCalled() ? runScript(m_options) : runConsole(m_options);
}

} // namespace Radio

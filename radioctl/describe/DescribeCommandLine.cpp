#include "radioctl/describe/DescribeCommandLine.h"

namespace Radio::Describing {

DescribeCommandLine::DescribeCommandLine(CommandLine::Command program)
    : m_describe(program.command("describe", "Write the board file of a recorded radio to\n"
                                             "standard output")) {
    m_describe.option("FILE", m_options.file, "Recording, from librecordingplatform.so").required().file();
    m_describe
        .option("--script", m_options.script,
                "Also write what was done as a script, which\nexpects what was written then")
        .file();
    m_describe.json(m_options.json);
}

int DescribeCommandLine::run(bool json) {
    m_options.json |= json;
    return runDescribe(m_options);
}

} // namespace Radio::Describing

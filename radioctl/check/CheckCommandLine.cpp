#include "radioctl/check/CheckCommandLine.h"

#include "radio/board/BoardCheck.h"
#include "radio/board/BoardFile.h"
#include "radioctl/bench/HardwareCheck.h"
#include "radioctl/options/ExitCode.h"
#include "radioctl/report/FindingReport.h"
#include "radioctl/report/Output.h"

#include <algorithm>

namespace Radio {

CheckCommandLine::CheckCommandLine(CommandLine::Command program)
    : m_check(program.command("check", "Say what a board lacks or has too much of,\nwithout booting it")) {
    m_check.option("BOARD", m_boards, "Board descriptions (TOML)").required().named("FILE");
    m_check.flag("--hardware", m_hardware,
                 "Also find every device and attribute, readable\nand writable, writing nothing");
    m_check.json(m_json);
}

int CheckCommandLine::run(bool json) {
    m_json |= json;
    int worst = ExitCode::good;
    for (const std::string& board : m_boards) {
        worst = std::max(worst, refusing(m_json, [&] {
                             const Board read = loadBoard(board);
                             const int code = showFindings(board, checkBoard(read), m_json);
                             return m_hardware ? std::max(code, checkHardware(read, m_json)) : code;
                         }));
    }
    return worst;
}

} // namespace Radio

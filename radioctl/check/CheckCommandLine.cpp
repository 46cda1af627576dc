#include "radioctl/check/CheckCommandLine.h"

#include "radio/board/BoardCheck.h"
#include "radio/board/BoardFile.h"
#include "radioctl/options/ExitCode.h"
#include "radioctl/report/FindingReport.h"
#include "radioctl/report/Output.h"

#include <algorithm>

namespace Radio {

CheckCommandLine::CheckCommandLine(CommandLine::Command program)
    : m_check(program.command("check", "Say what a board lacks or has too much of,\nwithout booting it")) {
    m_check.option("BOARD", m_boards, "Board descriptions (TOML)").required().named("FILE");
    m_check.json(m_json);
}

int CheckCommandLine::run(bool json) {
    m_json |= json;
    int worst = ExitCode::good;
    for (const std::string& board : m_boards) {
        worst = std::max(worst, refusing(m_json, [&] {
                             return showFindings(board, checkBoard(loadBoard(board)), m_json);
                         }));
    }
    return worst;
}

} // namespace Radio

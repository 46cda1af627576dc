#include "radioctl/check/CheckCommandLine.h"

#include "radio/board/BoardCheck.h"
#include "radio/board/BoardFile.h"
#include "radio/files/InputError.h"
#include "radioctl/report/ExitCode.h"
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
        try {
            worst = std::max(worst, showFindings(board, checkBoard(loadBoard(board)), m_json));
        } catch (const InputError& error) {
            worst = std::max(worst, refuse(error.what(), m_json, ExitCode::unusableInput));
        }
    }
    return worst;
}

} // namespace Radio

#include "radio/description/Description.h"

#include "radio/board/BoardCheck.h"
#include "radio/board/BoardFile.h"
#include "radio/description/BoardText.h"
#include "radio/description/ScriptText.h"
#include "radio/files/InputError.h"

#include <algorithm>
#include <optional>

namespace Radio::Describing {

namespace {

/** Of a board file. */
constexpr std::size_t mostBoard = std::size_t{4} << 20U;

std::vector<std::string> originOf(const Recordings::Header& header, const std::string& name,
                                  const std::string& when) {
    return {"Described from the recording " + name + ",",
            "made " + when + " of " + header.program + " (" + header.machine + ", " +
                std::to_string(header.wordBits) + " bits) with " + header.library + ", build id " +
                (header.buildId.empty() ? "unknown" : header.buildId) + "."};
}

template <typename List, typename IsThere>
std::size_t countOf(const List& list, IsThere isThere) {
    return static_cast<std::size_t>(std::count_if(list.begin(), list.end(), isThere));
}

/** What `check` finds wrong with the board; the recorded radio was so all the same. */
void noteErrors(Description& description) {
    try {
        const Board board =
            readBoard(description.board, "board", [](const auto& /*file*/) { return std::nullopt; });
        const std::vector<Finding> findings = checkBoard(board);
        const auto isError = [](const Finding& finding) { return finding.severity == Severity::error; };
        const auto first = std::find_if(findings.begin(), findings.end(), isError);
        if (first != findings.end()) {
            const auto more = std::count_if(first + 1, findings.end(), isError);
            description.unknown.push_back("a board that check accepts (" + first->text +
                                          (more != 0 ? "; " + std::to_string(more) + " more" : "") + ")");
        }
    } catch (const InputError& error) {
        description.unknown.push_back(std::string("a board that can be read (") + error.what() + ")");
    }
}

} // namespace

Description describe(Recordings::RecordingFile& file, const std::string& name, const std::string& when) {
    const Inventory inventory(file);
    if (inventory.channels().empty()) {
        const bool isNobodyThere = inventory.channelsWithoutType().empty();
        throw InputError({name, 0}, isNobodyThere
                                        ? "no channel is in it: expected one that was built or initialised"
                                        : "nothing in it tells of which type its channels are");
    }
    Description description;
    const std::vector<std::string> origin = originOf(file.header(), name, when);
    description.board = boardText(inventory, file.header(), origin, description.unknown);
    description.script = scriptText(inventory, file, origin, description.unknown);
    description.channels = inventory.channels().size();
    description.drivers =
        countOf(inventory.drivers(), [](const SeenDriver& driver) { return driver.isThere(); });
    description.variables =
        countOf(inventory.variables(), [](const SeenVariable& variable) { return variable.isThere; });
    description.tables = countOf(inventory.tables(), [](const SeenTable& table) { return table.isThere; });
    if (description.board.size() > mostBoard) {
        description.unknown.emplace_back("how to make it shorter: board files have at most 4 MiB");
    } else {
        noteErrors(description);
    }
    if (file.header().passedOver != 0) {
        description.unknown.push_back(std::to_string(file.header().passedOver) +
                                      " things for which the recorder had no room");
    }
    return description;
}

} // namespace Radio::Describing

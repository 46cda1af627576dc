#include "radio/calibration/OwnFiles.h"

#include "radio/files/AtomicFile.h"
#include "radio/text/Words.h"

namespace Radio::Calibration {

std::string whyNotOwnFiles(const std::vector<std::pair<const char*, std::filesystem::path>>& files) {
    for (std::size_t i = 0; i < files.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            const auto& [what, file] = files[i];
            const auto& [other, otherFile] = files[j];
            if (!file.empty() && !otherFile.empty() && isSameFile(file, otherFile)) {
                return std::string(what) + ": " + harmless(file.string()) + " is " + other +
                       ", expected a file of its own";
            }
        }
    }
    return {};
}

std::string whyNoJournal(const Board& board, const std::filesystem::path& journal) {
    for (const TableDescription& table : board.tables) {
        if (!table.file.empty() && isSameFile(journal, table.file)) {
            return "the journal: " + harmless(journal.string()) +
                   " is a table of the board, expected a file of its own";
        }
    }
    return {};
}

} // namespace Radio::Calibration

#ifndef TESTS_RADIO_SUPPORT_BOARDFILEFIXTURE_H
#define TESTS_RADIO_SUPPORT_BOARDFILEFIXTURE_H

#include "radio/board/BoardFile.h"
#include "tests/radio/support/FileFixture.h"

#include <filesystem>
#include <string>

namespace Radio {

/** Works with a board in "board.toml". */
class BoardFileFixture : public FileFixture {
protected:
    static Board load(const std::string& text) {
        write("board.toml", text);
        return loadBoard("board.toml");
    }

    /** A board whose first four lines are in order, so that `text` begins on line 5. */
    static Board loadAfterChannel(const std::string& text) {
        return load("name = \"Radio\"\n[[channel]]\nnumber = 1\ntype = \"rf-module\"\n" + text);
    }

    static std::string refused(const std::string& text) {
        return refusal([&] { load(text); });
    }
    static std::string refusedAfterChannel(const std::string& text) {
        return refusal([&] { loadAfterChannel(text); });
    }
    static std::string refusedFile(const std::filesystem::path& file) {
        return refusal([&] { loadBoard(file); });
    }
};

} // namespace Radio

#endif

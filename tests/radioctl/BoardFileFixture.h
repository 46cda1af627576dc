#ifndef TESTS_RADIOCTL_BOARDFILEFIXTURE_H
#define TESTS_RADIOCTL_BOARDFILEFIXTURE_H

#include "Board.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace Radioctl {

/** Works in a directory of its own, so that messages name the file as "board.toml". */
class BoardFileFixture : public testing::Test {
public:
    BoardFileFixture() {
        std::string directory = testing::TempDir() + "boardXXXXXX";
        if (mkdtemp(directory.data()) == nullptr) {
            throw std::runtime_error("no temporary directory");
        }
        m_directory = directory;
        std::filesystem::current_path(m_directory);
    }
    ~BoardFileFixture() override {
        std::filesystem::current_path(m_before);
        std::filesystem::remove_all(m_directory);
    }

protected:
    static Board load(const std::string& text) {
        std::ofstream("board.toml", std::ios::binary) << text;
        return loadBoard("board.toml");
    }

    /** A board whose first four lines are in order, so that `text` begins on line 5. */
    static Board loadAfterChannel(const std::string& text) {
        return load("name = \"Radio\"\n[[channel]]\nnumber = 1\ntype = \"rf-module\"\n" + text);
    }

    /** The message with which `load` refuses a file. */
    template <typename Load>
    static std::string refusal(Load load) {
        try {
            load();
        } catch (const InputError& error) {
            return error.what();
        }
        return "accepted";
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

private:
    std::filesystem::path m_before = std::filesystem::current_path();
    std::filesystem::path m_directory;
};

} // namespace Radioctl

#endif

#ifndef TESTS_RADIO_SUPPORT_FILEFIXTURE_H
#define TESTS_RADIO_SUPPORT_FILEFIXTURE_H

#include "radio/files/InputError.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace Radio {

/** Works with files in a directory of its own, so that messages name them as they are. */
class FileFixture : public testing::Test {
public:
    FileFixture() {
        std::string directory = testing::TempDir() + "boardXXXXXX";
        if (mkdtemp(directory.data()) == nullptr) {
            throw std::runtime_error("no temporary directory");
        }
        m_directory = directory;
        std::filesystem::current_path(m_directory);
    }
    ~FileFixture() override {
        std::filesystem::current_path(m_before);
        std::filesystem::remove_all(m_directory);
    }

protected:
    static void write(const std::string& file, const std::string& text) {
        std::ofstream(file, std::ios::binary) << text;
    }
    static std::string contentOf(const std::string& file) {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
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

private:
    std::filesystem::path m_before = std::filesystem::current_path();
    std::filesystem::path m_directory;
};

} // namespace Radio

#endif

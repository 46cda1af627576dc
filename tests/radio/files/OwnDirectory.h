#ifndef TESTS_RADIO_FILES_OWNDIRECTORY_H
#define TESTS_RADIO_FILES_OWNDIRECTORY_H

#include "radio/files/AtomicFile.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace Radio {

/** Works in an empty directory of its own. */
class OwnDirectory : public testing::Test {
public:
    OwnDirectory() {
        std::string directory = testing::TempDir() + "atomicXXXXXX";
        if (mkdtemp(directory.data()) == nullptr) {
            throw std::runtime_error("no temporary directory");
        }
        m_directory = directory;
        std::filesystem::current_path(m_directory);
    }
    ~OwnDirectory() override {
        std::filesystem::current_path(m_before);
        std::filesystem::remove_all(m_directory);
    }

protected:
    static void write(const std::filesystem::path& file, const std::string& text) {
        AtomicFile atomic(file);
        atomic.stream() << text;
        atomic.commit();
    }
    static std::string contentOf(const std::filesystem::path& file) {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    static std::ptrdiff_t filesHere() {
        return std::distance(std::filesystem::directory_iterator("."), std::filesystem::directory_iterator());
    }

private:
    std::filesystem::path m_before = std::filesystem::current_path();
    std::filesystem::path m_directory;
};

} // namespace Radio

#endif

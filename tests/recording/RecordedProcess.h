#ifndef TESTS_RECORDING_RECORDEDPROCESS_H
#define TESTS_RECORDING_RECORDEDPROCESS_H

#include "radioctl/record/RecordingText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>

/** Runs processes with the recorder before them, in a directory of its own. */
class RecordedProcess : public testing::Test {
protected:
    RecordedProcess() {
        std::string directory = testing::TempDir() + "recordingXXXXXX";
        if (mkdtemp(directory.data()) == nullptr) {
            throw std::runtime_error("no temporary directory");
        }
        m_directory = directory;
    }
    ~RecordedProcess() override { std::filesystem::remove_all(m_directory); }

    struct Ending {
        int exitCode;
        std::string output;
        std::string errors;
    };

    /** A process with the minimal platform. */
    static std::string radio(const std::string& what) { return std::string(RECORDED_RADIO) + " " + what; }

    /** What a shell makes of `command`, in which the name of a program stands alone. */
    Ending shell(const std::string& before, const std::string& command) const {
        const std::string whole = "cd " + m_directory.string() + "; " + before + " " + EMULATOR + " " +
                                  command + " > output 2> errors < /dev/null";
        const int status = std::system(whole.c_str()); // NOLINT(concurrency-mt-unsafe)
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, contentOf("output"), contentOf("errors")};
    }
    Ending unrecorded(const std::string& command) const { return shell("", command); }
    /** With `variables` in its environment beside those that have it recorded to the file "recording". */
    Ending recorded(const std::string& command, const std::string& variables = "") const {
        return shell(environment() + variables, command);
    }
    static std::string environment() { return std::string("env ") + PRELOAD + " RADIO_RECORDING=recording "; }

    Radio::Recordings::RecordingFile recording() const {
        return Radio::Recordings::readRecording((m_directory / "recording").string());
    }
    /** What there is in the directory beside what the shell has written. */
    std::set<std::string> files() const {
        std::set<std::string> found;
        for (const auto& entry : std::filesystem::directory_iterator(m_directory)) {
            found.insert(entry.path().filename().string());
        }
        found.erase("output");
        found.erase("errors");
        return found;
    }
    bool isRecorded() const { return std::filesystem::exists(m_directory / "recording"); }

    /** What "radioctl record show" shows, without times, lines of sources, and the first two lines. */
    std::string shown(const Radio::Recordings::Wanted& wanted = {}, bool verbose = false) const {
        Radio::Recordings::RecordingFile file = recording();
        std::ostringstream out;
        Radio::Recordings::RecordingText text(out, file, verbose);
        text.begin("recording");
        Radio::Recordings::Selection selection(file, wanted);
        while (const auto seen = selection.next()) {
            text.show(*seen);
        }
        text.end();
        const std::string timeless =
            std::regex_replace(out.str(), std::regex("  \\([0-9]+\\.[0-9]{6} s\\)"), "");
        const std::string whole = std::regex_replace(timeless, std::regex("\\.cpp:[0-9]+\\]"), ".cpp]");
        return whole.substr(whole.find("\n\n") + 1);
    }

    std::string contentOf(const std::string& file) const {
        std::ifstream stream(m_directory / file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    void put(const std::string& file, const std::string& content) const {
        std::ofstream(m_directory / file, std::ios::binary) << content;
    }
    const std::filesystem::path& directory() const { return m_directory; }

private:
    std::filesystem::path m_directory;
};

#endif

#ifndef TESTS_RADIOCTL_PROGRAM_HARDWARETEST_H
#define TESTS_RADIOCTL_PROGRAM_HARDWARETEST_H

#include "tests/radioctl/program/ProgramTest.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

/** Runs radioctl on radios whose drivers are files of the test's directory, and keeps its marks there, too.
 */
class HardwareTest : public ProgramTest {
protected:
    HardwareTest() : m_folder(std::filesystem::current_path().string()) {
        for (const char* const file : {"tx", "rx", "amplifier"}) {
            write(file, "0\n");
        }
        write("board.toml", boardOnFiles());
    }

    /** The RF-module radio, with a power amplifier that is switched off in the end. */
    std::string boardOnFiles(const std::string& more = "") const {
        return std::string(rfModuleBoard) + "\"amplifier\" = {}\n" +
               onFile("channel.1.tx.rf.frequency", "tx") + "scale = 1000\nrange = [7428000, 7582000]\n" +
               onFile("channel.1.rx.rf.frequency", "rx") + onFile("amplifier", "amplifier") +
               "on_exit = 0\nrange = [0, 1]\n" + more;
    }
    std::string onFile(const std::string& driver, const std::string& file) const {
        return "[hardware.\"" + driver + "\"]\nwrite = \"" + m_folder + "/" + file + "\"\n";
    }
    const std::string& folder() const { return m_folder; }

    static std::string contentOf(const std::string& file) {
        std::ifstream stream(file);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    Invocation invoke(std::vector<std::string> arguments, bool atTerminal = false) const {
        return {std::move(arguments), {{"XDG_STATE_HOME", m_folder}, {"TERM", "xterm"}}, atTerminal};
    }
    Ending run(std::vector<std::string> arguments, const std::string& input = "") const {
        return runProgram(invoke(std::move(arguments)), input);
    }
    /** Carries out `script` on the hardware of board.toml. */
    Ending runOnHardware(const std::string& script, const std::vector<std::string>& options = {}) const {
        write("script", script);
        std::vector<std::string> arguments{"run", "--hardware", "board.toml", "script"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return run(arguments);
    }

private:
    std::string m_folder;
};

#endif

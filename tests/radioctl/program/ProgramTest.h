#ifndef TESTS_RADIOCTL_PROGRAM_PROGRAMTEST_H
#define TESTS_RADIOCTL_PROGRAM_PROGRAMTEST_H

#include "tests/radioctl/program/Process.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

/** Runs radioctl in a directory of its own, in which "board.toml" is a small RF-module radio. */
class ProgramTest : public testing::Test {
public:
    ~ProgramTest() override {
        std::filesystem::current_path(m_before);
        std::filesystem::remove_all(m_directory);
    }

protected:
    ProgramTest() {
        // In memory where that can be: some tests have thousands of lines reach the disk one after the other.
        constexpr const char* memory = "/dev/shm/";
        std::string directory = (access(memory, W_OK) == 0 ? memory : testing::TempDir()) + "radioctlXXXXXX";
        if (mkdtemp(directory.data()) == nullptr) {
            throw std::runtime_error("no temporary directory");
        }
        m_directory = directory;
        std::filesystem::current_path(m_directory);
        write("board.toml", rfModuleBoard);
    }
    static void write(const std::string& file, const std::string& text) {
        std::ofstream(file, std::ios::binary) << text;
    }

    /** Carries out `script`, a file called "script", on board.toml. */
    static Ending runScript(const std::string& script, std::vector<std::string> options = {}) {
        write("script", script);
        options.insert(options.begin(), {"run", "board.toml", "script"});
        return runProgram({options});
    }

    static constexpr const char* rfModuleBoard = R"(name = "Test radio"

[[channel]]
number = 1
type = "rf-module"

[drivers]
"channel.1.tx.rf.frequency" = {}
"channel.1.rx.rf.frequency" = {}
)";

    /** A radio of one channel with IQ compensation; ThermalProgramTest says what it makes of its transmitter.
     */
    static constexpr const char* compensatedBoard = R"(name = "Test radio"

[[channel]]
number = 1
type = "rf-module"
iq_compensation = true

[[transmitter]]
channel = 1
gain_imbalance = [0.2222222222, 0.0, 0.0]
phase_imbalance = [0.0, 0.0, 0.0]
dc_offset_i = [0.1, 0.0, 0.0]
dc_offset_q = [0.0, 0.0, 0.0]
gain_step = 0.01
phase_step = 0.01
dc_step = 0.01

[drivers]
"channel.1.tx.rf.frequency" = {}
"channel.1.rx.rf.frequency" = {}
"channel.1.dsp.tx.dc.compensation.i" = {}
"channel.1.dsp.tx.dc.compensation.q" = {}
"channel.1.dsp.tx.quadrature.gain.offset.compensation" = {}
"channel.1.dsp.tx.quadrature.phase.offset.compensation" = {}

[tables]
"Channel.1.Tx.Dsp.Temperature.To.Dc.I.Compensation" = { axis = [0, 10], values = [-10, -9] }
"Channel.1.Tx.Dsp.Temperature.To.Dc.Q.Compensation" = { axis = [0, 10], values = [0, 0] }
"Channel.1.Tx.Dsp.Temperature.To.Gain.Offset.Compensation" = { axis = [0, 10], values = [-18, 0] }
"Channel.1.Tx.Dsp.Temperature.To.Phase.Offset.Compensation" = { axis = [0, 10], values = [0, 0] }
)";

    static constexpr const char* rauBoard = R"(name = "Remote radio"

[[channel]]
number = 2
type = "rau"

[interfaces]
"IRauHandler_2" = "present"
)";

    /** An RF-module radio without its transmit driver: it does not boot. */
    static constexpr const char* brokenBoard = R"(name = "Broken radio"

[[channel]]
number = 1
type = "rf-module"

[drivers]
"channel.1.rx.rf.frequency" = {}
)";

private:
    std::filesystem::path m_before = std::filesystem::current_path();
    std::filesystem::path m_directory;
};

#endif

#include "tests/devices/Server.h"
#include "tests/radioctl/program/HardwareTest.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace {

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

/**
 * The Ka-band radio of boards/, on devices that umockdev makes up in sysfs: through libiio on this computer,
 * and through a real server. The test program and all that it starts see the same devices.
 */
class KaBandTest : public HardwareTest {
protected:
    KaBandTest() {
        if (std::getenv("UMOCKDEV_DIR") == nullptr) {
            return;
        }
        std::filesystem::copy(RADIOCTL_BOARDS "/ka-band-28ghz.channel-1.csv", "ka-band-28ghz.channel-1.csv");
        std::filesystem::copy(RADIOCTL_BOARDS "/ka-band-28ghz.script", "script");
        use("local:");
    }
    void SetUp() override {
        if (std::getenv("UMOCKDEV_DIR") == nullptr) {
            GTEST_SKIP() << "umockdev makes up no devices here, where an emulator stands between";
        }
    }

    /** Has the board reach its devices at `uri`. */
    static void use(const std::string& uri, bool hasSensor = false) {
        std::string board = contentOf(RADIOCTL_BOARDS "/ka-band-28ghz.toml");
        const std::string address = "ip:192.168.2.1";
        board.replace(board.find(address), address.size(), uri);
        if (!hasSensor) {
            const std::size_t begin = board.find("[sensor]");
            board.erase(begin, board.find("[[raster]]") - begin);
        }
        write("board.toml", board);
    }

    static std::string attribute(const std::string& name) {
        return contentOf("/sys/bus/iio/devices/" + name);
    }
    static void setAttribute(const std::string& name, const std::string& value) {
        write("/sys/bus/iio/devices/" + name, value);
    }

    /** What was written, line by line, and how the expectations turned out. */
    static std::string transcript(std::string output) {
        output.erase(0, output.find('\n') + 1);
        const std::size_t leaving = output.find("Leaving:\n");
        return leaving == std::string::npos
                   ? output
                   : output.erase(leaving, output.find("\n\n", leaving) - leaving + 1);
    }
};

TEST_F(KaBandTest, AcceptanceIsTheSameSimulatedHereAndThroughAServer) {
    const Ending simulated = run({"run", "board.toml", "script"});
    EXPECT_EQ(simulated.exitCode, 0) << simulated.output;
    const Ending here = run({"run", "--hardware", "board.toml", "script"});
    EXPECT_EQ(here.exitCode, 0) << here.output << here.errors;
    DeviceTests::Server server;
    server.start();
    use(server.uri());
    const Ending served = run({"run", "--hardware", "board.toml", "script"});
    EXPECT_EQ(served.exitCode, 0) << served.output << served.errors;
    EXPECT_THAT(served.output, StartsWith("HARDWARE: 9 drivers on radio (" + server.uri() +
                                          "); simulated: "
                                          "channel.1.tx.rf.lo.frequency, channel.1.rx.rf.lo.frequency\n"));
    EXPECT_EQ(transcript(here.output), transcript(simulated.output));
    EXPECT_EQ(transcript(served.output), transcript(simulated.output));
}

TEST_F(KaBandTest, AttributesGetWhatTheTranscriptSays) {
    write("script", "tune tx 1 27562.5 MHz\ntune rx 1 28570.5 MHz\n");
    const Ending ending = run({"run", "--hardware", "board.toml", "script"});
    EXPECT_EQ(ending.exitCode, 0) << ending.output << ending.errors;
    EXPECT_EQ(attribute("iio:device0/out_altvoltage0_frequency"), "6890625000\n");
    EXPECT_EQ(attribute("iio:device1/out_altvoltage0_frequency"), "7142625000\n");
    // I is -23 and Q -21 there: the positive sides are 0.
    EXPECT_EQ(attribute("iio:device2/in_altvoltage0_i_calibbias"), "0\n");
    EXPECT_EQ(attribute("iio:device2/in_altvoltage1_i_calibbias"), "23\n");
    EXPECT_EQ(attribute("iio:device2/in_altvoltage0_q_calibbias"), "0\n");
    EXPECT_EQ(attribute("iio:device2/in_altvoltage1_q_calibbias"), "21\n");
    // Left, the transmitter is silent.
    EXPECT_EQ(attribute("iio:device0/out_altvoltage0_powerdown"), "1\n");
    EXPECT_EQ(attribute("iio:device1/out_altvoltage0_powerdown"), "1\n");
}

TEST_F(KaBandTest, DetectorIsReadInMillivolts) {
    setAttribute("iio:device4/in_voltage0_raw", "1365\n");
    write("script", "read channel.1.tx.rf.detector.v\n");
    // 1365 / 1.6384 = 833.1
    EXPECT_THAT(run({"run", "--hardware", "board.toml", "script"}).output,
                HasSubstr("channel.1.tx.rf.detector.v = 833\n"));
}

TEST_F(KaBandTest, NumberOfMoreThan32BitsIsReadAsItIs) {
    write("script", "tune tx 1 27562.5 MHz\nread channel.1.tx.rf.lo.frequency.in.hz\n");
    EXPECT_THAT(run({"run", "--hardware", "board.toml", "script"}).output,
                HasSubstr("channel.1.tx.rf.lo.frequency.in.hz = 6890625000\n"));
}

TEST_F(KaBandTest, LeakageOfARealTransmitterIsNotModelled) {
    write("script", "expect leakage 1 below -40\n");
    const Ending ending = run({"run", "--hardware", "board.toml", "script"});
    EXPECT_EQ(ending.exitCode, 1);
    EXPECT_THAT(ending.output,
                HasSubstr("expected less than -40.00 dBc, found no model: the hardware is real\n"));
    EXPECT_THAT(ending.output, HasSubstr("Leaving:\n"));
}

TEST_F(KaBandTest, CarrierIsRefusedWhileAChangedVariableWaitsForItsPhase) {
    write(
        "script",
        "set channel.1.tx.mixer.multiplicationfactor 1\ntune tx 1 27562.5 MHz\nexpect result failed\nexpect "
        "writes 0\nphase storage\ntune tx 1 27562.5 MHz\nexpect result failed\n"
        "set channel.1.tx.mixer.multiplicationfactor 4\nphase storage\ntune tx 1 27562.5 MHz\n");
    const Ending ending = run({"run", "--hardware", "board.toml", "script"});
    EXPECT_EQ(ending.exitCode, 0) << ending.output;
    EXPECT_THAT(ending.output,
                HasSubstr("\"channel.1.tx.mixer.multiplicationfactor\" was changed, and the handlers take it "
                          "over in the next phase storage: what the carrier comes to is not known\n"));
    EXPECT_EQ(attribute("iio:device0/out_altvoltage0_frequency"), "6890625000\n");
}

TEST_F(KaBandTest, CheckFindsAllOfIt) {
    use("local:", true);
    const Ending ending = run({"check", "--hardware", "board.toml"});
    EXPECT_EQ(ending.exitCode, 0) << ending.output;
    EXPECT_THAT(ending.output, HasSubstr("\n    write: radio: adf4371-tx/out_altvoltage0_frequency\n"
                                         "      readable, writable, now "));
    EXPECT_THAT(ending.output, HasSubstr("\nboard.toml: 12 attributes, all found\n"));
}

TEST_F(KaBandTest, CheckNamesWhatIsThereInPlaceOfWhatIsNot) {
    std::string board = contentOf("board.toml");
    board.replace(board.find("admv1013/in_altvoltage0_i_calibbias"), 8, "admv1031");
    board.replace(board.find("admv1013/in_altvoltage0_q_calibbias"), 35,
                  "admv1013/in_altvoltage0_q_calibias_");
    write("board.toml", board);
    const Ending ending = run({"check", "--hardware", "board.toml"});
    EXPECT_EQ(ending.exitCode, 1);
    EXPECT_THAT(ending.output, ContainsRegex("PROBLEM: there is no device admv1031.*admv1013"));
    EXPECT_THAT(ending.output, ContainsRegex("PROBLEM: admv1013 has no attribute in_altvoltage0_q_calibias_.*"
                                             "in_altvoltage0_q_calibbias"));
}

TEST_F(KaBandTest, ServerKilledAndStartedAgainInMidScript) {
    DeviceTests::Server server;
    server.start();
    use(server.uri());
    Process process(invoke({"console", "--hardware", "board.toml"}));
    ASSERT_TRUE(process.waitFor("The radio is up."));
    process.type("tune rx 1 28570.5 MHz\n");
    ASSERT_TRUE(process.waitFor("rx.rf.lo.frequency.in.hz <- 7142625000 (8 bytes)\n"));
    server.kill();
    process.type("tune rx 1 28598.5 MHz\n");
    ASSERT_TRUE(process.waitFor("LOST radio: "));
    ASSERT_TRUE(
        process.waitFor("  -  channel.1.rx.rf.lo.frequency.in.hz <- 7149625000 (8 bytes)  FAILED 0x81"));
    process.type("tune rx 1 28626.5 MHz\n");
    ASSERT_TRUE(
        process.waitFor("  -  channel.1.rx.rf.lo.frequency.in.hz <- 7156625000 (8 bytes)  FAILED 0x81"));
    server.start();
    ASSERT_TRUE(process.waitFor("radio is back"));
    process.type("tune rx 1 28654.5 MHz\n");
    ASSERT_TRUE(process.waitFor("rx.rf.lo.frequency.in.hz <- 7163625000 (8 bytes)\n"));
    process.closeInput();
    const Ending ending = process.finish();
    EXPECT_EQ(attribute("iio:device1/out_altvoltage0_frequency"), "7163625000\n");
    const std::size_t lost = ending.output.find("LOST radio");
    EXPECT_EQ(ending.output.find("LOST radio", lost + 1), std::string::npos) << "told once";
    EXPECT_THAT(ending.output,
                HasSubstr("Leaving:\n  channel.1.tx.rf.lo.config <- 0\n  channel.1.rx.rf.lo.config <- 0\n"));
}

TEST_F(KaBandTest, TemperatureCorrectsTheTransmitter) {
    // 1/128 of a degree: 25 degrees.
    setAttribute("iio:device5/in_temp_raw", "3200\n");
    use("local:", true);
    write("script", "show channels\n");
    EXPECT_THAT(run({"run", "--hardware", "board.toml", "script"}).output,
                HasSubstr("     sensor: 25 degrees, 1 observer told\n"));
}

TEST_F(KaBandTest, AuditGoesThroughTheRealSynthesisers) {
    const Ending ending = run({"plan", "audit", "--hardware", "board.toml"});
    EXPECT_EQ(ending.exitCode, 0) << ending.output << ending.errors;
    EXPECT_THAT(ending.output, StartsWith("HARDWARE: 9 drivers on radio (local:)"));
    EXPECT_THAT(ending.output, HasSubstr("64 carriers in "));
    EXPECT_THAT(ending.output, HasSubstr("Leaving:\n"));
    EXPECT_EQ(attribute("iio:device0/out_altvoltage0_powerdown"), "1\n");
    EXPECT_THAT(attribute("iio:device0/out_altvoltage0_frequency"), Not("6900000000\n"));
}

/** An audit of a hundred thousand carriers through a server: it is over long after the first. */
class KaBandAuditTest : public KaBandTest {
protected:
    void SetUp() override {
        KaBandTest::SetUp();
        if (IsSkipped()) {
            return;
        }
        m_server.start();
        use(m_server.uri());
        std::string board = contentOf("board.toml");
        board.erase(board.find("[[raster]]"), board.find("[limits]") - board.find("[[raster]]"));
        write("board.toml", board +
                                "\n[[raster]]\nname = \"R\"\ndirection = \"rx\"\nfirst = 28570000\nlast = "
                                "28670000\nstep = 1\n");
        setAttribute(carrier, "0\n");
        m_process.emplace(invoke({"plan", "audit", "--hardware", "board.toml"}));
        for (int waits = 0; waits < 1000 && attribute(carrier) == "0\n"; ++waits) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        ASSERT_NE(attribute(carrier), "0\n");
    }

    static constexpr const char* carrier = "iio:device1/out_altvoltage0_frequency";
    DeviceTests::Server m_server;
    std::optional<Process> m_process;
};

TEST_F(KaBandAuditTest, LostConnectionEndsIt) {
    m_server.kill();
    const Ending ending = m_process->finish();
    EXPECT_EQ(ending.exitCode, 1);
    EXPECT_EQ(ending.errors, "radioctl: the connection to radio was lost\n");
    EXPECT_THAT(ending.output, HasSubstr("LOST radio: "));
    EXPECT_THAT(ending.output, HasSubstr("Leaving:\n"));
    EXPECT_THAT(ending.output, HasSubstr("\nBroken off: not all carriers were audited.\n"));
    EXPECT_THAT(ending.output, HasSubstr(" s: 1 not within limits.\n")); // not all that were to come
}

TEST_F(KaBandAuditTest, InterruptionEndsItAtTheNextCarrier) {
    m_process->signal(SIGINT);
    const Ending ending = m_process->finish();
    EXPECT_EQ(ending.exitCode, 130);
    EXPECT_THAT(ending.output, HasSubstr("Interrupted: not all carriers were audited.\n"));
    EXPECT_EQ(attribute("iio:device0/out_altvoltage0_powerdown"), "1\n");
}

} // namespace

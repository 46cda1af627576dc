#include "DevicesFixture.h"
#include "Instrument.h"
#include "Server.h"

#include <csignal>

namespace {

using namespace DeviceTests;

class IioServerTest : public MockedDevices {
protected:
    IioServerTest() {
        description.devices.push_back(
            {"remote", Devices::DeviceDescription::Kind::iio, server.uri(), milliseconds(300)});
        addDriver("lo", "remote", "adf4371/altvoltage0/frequency").conversion.scale = 1000;
        addDriver("mux", "remote", "adf4371/muxout");
    }
    void SetUp() override {
        MockedDevices::SetUp();
        if (!IsSkipped()) {
            server.start();
        }
    }
    ~IioServerTest() override {
        hardware.reset();
        if (!mocked().empty()) {
            restore(frequency, "8000000000\n");
        }
    }

    const std::string frequency = attributePath("iio:device0", "out_altvoltage0_frequency");
    Server server;
};

TEST_F(IioServerTest, AttributesAreWrittenAndReadOverTheNetwork) {
    up();
    EXPECT_EQ(write("lo", 6300000), 0);
    EXPECT_EQ(contentOf(frequency), "6300000000\n");
    EXPECT_EQ(read("lo"), 6300000);
    EXPECT_EQ(read("mux"), 3);
    EXPECT_EQ(listener.told(), Lines{});
}

TEST_F(IioServerTest, WhatMayBeWrittenIsNotKnownOverTheNetwork) {
    const auto found = up().examine(true);
    EXPECT_EQ(found.at(0).isWritable, std::nullopt);
    EXPECT_EQ(found.at(0).isReadable, true);
    EXPECT_EQ(found.at(0).value, "8000000000");
    EXPECT_EQ(hardware->examine(false).at(0).isReadable, std::nullopt);
}

TEST_F(IioServerTest, RefusalOfTheOtherSideLosesNoConnection) {
    up();
    replaceByLink(frequency, "/dev/full");
    EXPECT_EQ(write("lo", 1), 0x8100 + ENOSPC);
    restore(frequency, "8000000000\n");
    EXPECT_EQ(write("lo", 2), 0);
    EXPECT_EQ(listener.told(), (Lines{"failed lo at remote: adf4371/altvoltage0/frequency: no space left on "
                                      "device (ENOSPC)"}));
}

TEST_F(IioServerTest, ServerThatDiesIsToldOnceAndComesBackByItself) {
    up();
    EXPECT_EQ(write("lo", 1), 0);
    server.kill();
    EXPECT_LT(elapsed([&] { EXPECT_NE(write("lo", 2), 0); }), milliseconds(600));
    EXPECT_LT(elapsed([&] { EXPECT_EQ(write("mux", 2), 0x8100 + ENOTCONN); }), milliseconds(250));
    EXPECT_EQ(read("lo"), std::nullopt);
    EXPECT_EQ(code, 0x8100 + ENOTCONN);
    const Lines told = listener.told();
    ASSERT_EQ(told.size(), 4U);
    EXPECT_THAT(told[0], ::testing::StartsWith("lost remote: "));
    EXPECT_THAT(told[1], ::testing::StartsWith("failed lo at "));
    EXPECT_EQ(contentOf(frequency), "1000\n");

    server.start();
    awaitNews();
    EXPECT_EQ(listener.told(), (Lines{"back remote"}));
    EXPECT_EQ(write("lo", 3), 0);
    EXPECT_EQ(contentOf(frequency), "3000\n");
}

TEST_F(IioServerTest, WriteTakesANewConnectionEvenWhenNobodyPolls) {
    up();
    EXPECT_EQ(write("lo", 1), 0);
    server.kill();
    EXPECT_NE(write("lo", 2), 0);
    listener.told();
    server.start();
    int attempts = 0;
    while (write("lo", 3) != 0 && attempts < 500) {
        std::this_thread::sleep_for(milliseconds(10));
        ++attempts;
    }
    EXPECT_EQ(contentOf(frequency), "3000\n");
    EXPECT_EQ(listener.told().back(), "back remote");
}

TEST_F(IioServerTest, ServerThatWasOffAndOnAgainUnnoticedIsWrittenInTheEnd) {
    description.devices[0].timeLimit = milliseconds(1000);
    description.drivers[0].onExit = 0;
    up();
    EXPECT_EQ(write("lo", 1), 0);
    server.kill();
    server.start();
    const auto writes = hardware->leave();
    ASSERT_EQ(writes.size(), 1U);
    EXPECT_EQ(writes[0].code, 0);
    EXPECT_EQ(contentOf(frequency), "0\n");
}

TEST_F(IioServerTest, TwoServersThatAreSilentAreWaitedForAtTheSameTime) {
    Instrument silent([](const std::string&) { return Reaction{}; });
    description.devices[0] = {"remote", Devices::DeviceDescription::Kind::iio, "ip:" + silent.address(),
                              milliseconds(500)};
    description.devices.push_back(description.devices[0]);
    description.devices[1].name = "other";
    addDriver("gain", "other", "amplifier/gain");
    up();
    EXPECT_LT(elapsed([&] { EXPECT_EQ(hardware->examine(false).size(), 3U); }), milliseconds(900));
    EXPECT_LT(elapsed([&] { hardware.reset(); }), milliseconds(900));
}

TEST_F(IioServerTest, ServerThatHangsIsLostAtTheTimeLimitAndItsLateAnswerNobodysAnswer) {
    up();
    EXPECT_EQ(write("lo", 1), 0);
    server.freeze();
    const milliseconds time = elapsed([&] { EXPECT_EQ(write("lo", 2), 0x8100 + ETIMEDOUT); });
    EXPECT_GE(time, milliseconds(250));
    EXPECT_LT(time, milliseconds(900));
    EXPECT_EQ(listener.told().at(0), "lost remote: connection timed out (ETIMEDOUT)");
    server.thaw();
    awaitNews();
    EXPECT_EQ(listener.told(), (Lines{"back remote"}));
    EXPECT_EQ(read("mux"), 3);
}

TEST_F(IioServerTest, ServerThatHangsDelaysNeitherTheExaminationNorTheEnd) {
    server.freeze();
    up();
    EXPECT_LT(elapsed([&] {
                  EXPECT_EQ(hardware->examine(true).at(0).problem, "remote cannot be reached at " +
                                                                       server.uri() +
                                                                       ": connection timed out (ETIMEDOUT)");
              }),
              milliseconds(900));
    EXPECT_LT(elapsed([&] { hardware.reset(); }), milliseconds(900));
}

TEST_F(IioServerTest, EndComesAtOnceWhileConnectionsAreDown) {
    up();
    EXPECT_EQ(write("lo", 1), 0);
    server.kill();
    EXPECT_NE(write("lo", 2), 0);
    std::this_thread::sleep_for(milliseconds(100));
    EXPECT_LT(elapsed([&] { hardware.reset(); }), milliseconds(400));
}

TEST_F(IioServerTest, ServerThatIsNotThereIsToldWithItsAddress) {
    server.kill();
    EXPECT_EQ(up().examine(true).at(1).problem,
              "remote cannot be reached at " + server.uri() + ": connection refused (ECONNREFUSED)");
    EXPECT_EQ(listener.told(), Lines{});
}

TEST_F(IioServerTest, DeviceThatWasUnpluggedBehindAServerLosesNoConnection) {
    const std::string context = R"(<?xml version="1.0"?><context name="network" description="x">)"
                                R"(<device id="iio:device0" name="adf4371"><attribute name="muxout"/>)"
                                R"(</device></context>)";
    Instrument other([context](const std::string& line) {
        const std::string word = line.substr(0, line.find_first_of(" \r"));
        if (word == "VERSION") {
            return Reaction{"0.24.unknown\n"};
        }
        if (word == "PRINT") {
            return Reaction{std::to_string(context.size()) + "\n" + context + "\n"};
        }
        // The number follows the line that says where it is to be written.
        return Reaction{word == "WRITE" || word == "EXIT" ? "" : word == "TIMEOUT" ? "0\n" : "-19\n"};
    });
    description.devices[0].address = "ip:" + other.address();
    up();
    EXPECT_EQ(write("mux", 1), 0x8100 + ENODEV);
    EXPECT_EQ(write("mux", 1), 0x8100 + ENODEV);
    EXPECT_EQ(listener.told(), (Lines{"failed mux at remote: adf4371/muxout: no such device (ENODEV)",
                                      "failed mux at remote: adf4371/muxout: no such device (ENODEV)"}));
}

TEST_F(IioServerTest, SomethingElseAtThePortIsNoServer) {
    Instrument other([](const std::string&) { return Reaction{"Welcome\n"}; });
    description.devices[0].address = "ip:" + other.address();
    EXPECT_THAT(up().examine(true).at(0).problem, ::testing::EndsWith("protocol error (EPROTO)"));
}

TEST_F(IioServerTest, NothingIsPrintedAndNoSignalDeliveredWhenAConnectionBreaks) {
    // SIGPIPE, whose default would have ended the test program, is delivered to nobody.
    static int signals;
    signals = 0;
    const auto before = std::signal(SIGPIPE, [](int) { ++signals; });
    testing::internal::CaptureStderr();
    up();
    EXPECT_EQ(write("lo", 1), 0);
    server.kill();
    EXPECT_NE(write("lo", 2), 0);
    server.start();
    awaitNews();
    listener.told();
    awaitNews();
    server.freeze();
    EXPECT_NE(write("lo", 3), 0);
    hardware.reset();
    std::fprintf(stderr, "the program's own\n");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "the program's own\n");
    EXPECT_EQ(signals, 0);
    std::signal(SIGPIPE, before);
    server.thaw();
}

} // namespace

#include "DevicesFixture.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace {

using namespace DeviceTests;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

class FileTest : public DevicesFixture {};

TEST_F(FileTest, NumberIsWrittenWithTheEndOfALine) {
    const std::string path = file("lo", "0\n");
    addDriver("lo", "", path).conversion.scale = 1000;
    up();
    EXPECT_EQ(write("lo", 6300000), 0);
    EXPECT_EQ(contentOf(path), "6300000000\n");
    EXPECT_EQ(read("lo"), 6300000);
    EXPECT_EQ(listener.told(), Lines{});
}

TEST_F(FileTest, NothingIsLeftOfALongerNumber) {
    const std::string path = file("lo", "8000000000\n");
    addDriver("lo", "", path);
    up();
    EXPECT_EQ(write("lo", 7), 0);
    EXPECT_EQ(contentOf(path), "7\n");
}

TEST_F(FileTest, FileThatIsNotThereIsNotMade) {
    const std::string path = directory / "none";
    addDriver("lo", "", path);
    up();
    EXPECT_EQ(write("lo", 7), 0x8100 + ENOENT);
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_EQ(read("lo"), std::nullopt);
    EXPECT_EQ(code, 0x8100 + ENOENT);
    const std::string line = "failed lo at " + path + ": no such file or directory (ENOENT)";
    EXPECT_EQ(listener.told(), (Lines{line, line}));
}

TEST_F(FileTest, RefusalIsToldWithItsErrorNumber) {
    addDriver("full", "", "/dev/full");
    addDriver("directory", "", directory);
    up();
    EXPECT_EQ(write("full", 7), 0x8100 + ENOSPC);
    EXPECT_EQ(write("directory", 7), 0x8100 + EISDIR);
}

TEST_F(FileTest, WhatIsNoNumberIsAProtocolError) {
    addDriver("lo", "", file("lo", "on\n"));
    up();
    EXPECT_EQ(read("lo"), std::nullopt);
    EXPECT_EQ(code, 0x8100 + EPROTO);
}

TEST_F(FileTest, PipeWithoutAReaderIsRefusedAtOnce) {
    const std::string path = directory / "pipe";
    mkfifo(path.c_str(), 0600);
    addDriver("lo", "", path);
    up();
    EXPECT_EQ(write("lo", 7), 0x8100 + ENXIO);
}

TEST_F(FileTest, NumberGoesThroughAPipe) {
    const std::string path = directory / "pipe";
    mkfifo(path.c_str(), 0600);
    addDriver("lo", "", path);
    up();
    const int reader = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    EXPECT_EQ(write("lo", 7), 0);
    char bytes[10] = {};
    EXPECT_EQ(::read(reader, bytes, sizeof bytes), 2);
    EXPECT_STREQ(bytes, "7\n");
    close(reader);
}

TEST_F(FileTest, FullPipeEndsTheWriteAtTheTimeLimit) {
    const std::string path = directory / "pipe";
    mkfifo(path.c_str(), 0600);
    const int pipe = open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    const std::string much(65536, 'x');
    ASSERT_EQ(::write(pipe, much.data(), much.size()), 65536);
    addDriver("lo", "", path);
    up();
    const milliseconds time = elapsed([&] { EXPECT_EQ(write("lo", 7), 0x8100 + ETIMEDOUT); });
    EXPECT_GE(time, milliseconds(900));
    EXPECT_LT(time, milliseconds(2000));
    close(pipe);
}

TEST_F(FileTest, LineOfAPipeIsAwaitedUntilTheTimeLimit) {
    const std::string path = directory / "pipe";
    mkfifo(path.c_str(), 0600);
    addDriver("lo", "", path);
    up();
    std::thread writer([&] {
        std::this_thread::sleep_for(milliseconds(100));
        std::ofstream(path) << "4" << std::flush << "2\n";
    });
    EXPECT_EQ(read("lo"), 42);
    writer.join();
    const milliseconds time = elapsed([&] { EXPECT_EQ(read("lo"), std::nullopt); });
    EXPECT_EQ(code, 0x8100 + ETIMEDOUT);
    EXPECT_LT(time, milliseconds(2000));
}

TEST_F(FileTest, ExaminationTellsWhatMayBeDoneWithAFileAndWritesNothing) {
    const std::string path = file("lo", "8000\n");
    addDriver("lo", "", path);
    addDriver("none", "", directory / "none");
    addDriver("directory", "", directory);
    const std::vector<Devices::AttributeFinding> found = up().examine(true);
    ASSERT_EQ(found.size(), 3U);
    EXPECT_EQ(found[0].driver, "lo");
    EXPECT_EQ(found[0].attribute, path);
    EXPECT_EQ(found[0].use, "write");
    EXPECT_EQ(found[0].isReadable, true);
    EXPECT_EQ(found[0].isWritable, true);
    EXPECT_EQ(found[0].value, "8000");
    EXPECT_EQ(found[0].problem, "");
    EXPECT_THAT(found[1].problem, HasSubstr("no such file or directory (ENOENT)"));
    EXPECT_THAT(found[2].problem, HasSubstr("is a directory"));
    EXPECT_EQ(contentOf(path), "8000\n");
    EXPECT_EQ(listener.told(), Lines{});
}

TEST_F(FileTest, ExaminationReadsNothingUnlessToldTo) {
    addDriver("lo", "", file("lo", "8000\n"));
    EXPECT_EQ(up().examine(false).at(0).value, "");
}

TEST_F(FileTest, WhatIsReadBackHasToBeANumber) {
    addDriver("lo", "", file("lo", "8000\n")).read = Devices::AttributeName{"", file("lock", "yes\n")};
    const auto found = up().examine(true);
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[1].use, "read");
    EXPECT_EQ(found[1].problem, "gives \"yes\", which is no number");
}

} // namespace

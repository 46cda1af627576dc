#include "DevicesFixture.h"
#include "Instrument.h"

namespace {

using namespace DeviceTests;

class DriverAttributeTest : public DevicesFixture {};

TEST_F(DriverAttributeTest, DriverWithoutHardwareHasNothingBehindIt) {
    EXPECT_EQ(up().backing("lo"), nullptr);
    EXPECT_TRUE(hardware->description().isEmpty());
}

TEST_F(DriverAttributeTest, NothingOutsideTheRangeIsWritten) {
    const std::string path = file("lo", "0\n");
    Devices::DriverHardware& lo = addDriver("lo", "", path);
    lo.lowest = 100;
    lo.highest = 200;
    up();
    EXPECT_EQ(write("lo", 99), 0x8100 + ERANGE);
    EXPECT_EQ(write("lo", 201), 0x8100 + ERANGE);
    EXPECT_EQ(contentOf(path), "0\n");
    EXPECT_EQ(write("lo", 100), 0);
    EXPECT_EQ(write("lo", 200), 0);
    EXPECT_EQ(contentOf(path), "200\n");
    const std::string line = "failed lo at " + path + ": numerical result out of range (ERANGE)";
    EXPECT_EQ(listener.told(), (Lines{line, line}));
}

TEST_F(DriverAttributeTest, ForcedEverythingIsWrittenThatANumberCanSay) {
    const std::string path = file("lo", "0\n");
    addDriver("lo", "", path).highest = 200;
    up().setForced(true);
    EXPECT_EQ(write("lo", 201), 0);
    EXPECT_EQ(contentOf(path), "201\n");
    EXPECT_EQ(write("lo", 9007199254740993), 0x8100 + ERANGE);
    hardware->setForced(false);
    EXPECT_EQ(write("lo", 202), 0x8100 + ERANGE);
}

TEST_F(DriverAttributeTest, FrequencyInHertzHas64Bits) {
    const std::string path = file("lo", "0\n");
    addDriver("lo", "", path);
    up();
    EXPECT_EQ(write("lo", 80'000'000'000), 0);
    EXPECT_EQ(contentOf(path), "80000000000\n");
    EXPECT_EQ(read("lo"), 80'000'000'000);
}

TEST_F(DriverAttributeTest, ReadAsksTheAttributeThatIsForReading) {
    Devices::DriverHardware& lo = addDriver("lo", "", file("lo", "5\n"));
    lo.read = Devices::AttributeName{"", file("readback", "7500\n")};
    lo.conversion.scale = 1000;
    up();
    EXPECT_EQ(read("lo"), 8);
}

TEST_F(DriverAttributeTest, DriverThatIsOnlyReadRefusesWrites) {
    Devices::DriverHardware& lo = addDriver("lo", "", "");
    lo.write.reset();
    lo.read = Devices::AttributeName{"", file("readback", "7\n")};
    up();
    EXPECT_EQ(read("lo"), 7);
    EXPECT_EQ(write("lo", 1), 0x8100 + EPERM);
}

TEST_F(DriverAttributeTest, AttributeOfADeviceThatNobodyDescribedIsAProblem) {
    addDriver("lo", "synthesiser", "adf4371/frequency");
    EXPECT_EQ(up().examine(true).at(0).problem, "no device synthesiser is described");
    EXPECT_EQ(write("lo", 1), 0x8100 + ENODEV);
}

/** An offset of which each side is a command of an instrument, which tells the order. */
class TwoSidesTest : public DevicesFixture {
protected:
    TwoSidesTest() {
        description.devices.push_back(
            {"instrument", Devices::DeviceDescription::Kind::scpi, instrument.address()});
        description.devices.back().errorQuery = "E?";
        addDriver("offset", "instrument", "PLUS {}").negative =
            Devices::AttributeName{"instrument", "MINUS {}"};
        description.drivers.back().lowest = -100;
        up();
    }

    Lines heard() {
        Lines lines;
        for (const std::string& line : instrument.heard()) {
            if (line != "E?") {
                lines.push_back(line);
            }
        }
        return lines;
    }

    std::string m_errors = "0";
    Instrument instrument{
        [this](const std::string& line) { return line == "E?" ? Reaction{m_errors + "\n"} : Reaction{}; }};
};

TEST_F(TwoSidesTest, SideThatBecomesZeroIsWrittenFirst) {
    EXPECT_EQ(write("offset", 5), 0);
    EXPECT_EQ(heard(), (Lines{"MINUS 0", "PLUS 5"}));
    EXPECT_EQ(write("offset", -7), 0);
    EXPECT_EQ(heard(), (Lines{"PLUS 0", "MINUS 7"}));
    EXPECT_EQ(write("offset", 0), 0);
    EXPECT_EQ(heard(), (Lines{"MINUS 0", "PLUS 0"}));
}

TEST_F(TwoSidesTest, OtherSideIsNotWrittenWhenTheFirstIsRefused) {
    write("offset", 5);
    heard();
    instrument.setScript([](const std::string& line) { return Reaction{line == "E?" ? "-1\n" : ""}; });
    EXPECT_EQ(write("offset", -7), 0x8100 + EREMOTEIO);
    EXPECT_EQ(heard(), (Lines{"PLUS 0"}));
    EXPECT_EQ(read("offset"), 5); // what was written last, and taken
}

Lines planned(const Devices::DriverHardware& hardware, std::int64_t value) {
    Lines lines;
    for (const Devices::PlannedWrite& write : Devices::plannedWrites(hardware, value)) {
        lines.push_back(write.attribute.device + ": " + write.attribute.attribute + ": " + write.text);
    }
    return lines;
}

TEST_F(TwoSidesTest, PlanIsWhatIsWrittenInItsOrder) {
    const Devices::DriverHardware& offset = description.drivers[0];
    EXPECT_EQ(planned(offset, 5), (Lines{"instrument: MINUS {}: MINUS 0", "instrument: PLUS {}: PLUS 5"}));
    EXPECT_EQ(planned(offset, 0), (Lines{"instrument: MINUS {}: MINUS 0", "instrument: PLUS {}: PLUS 0"}));
    EXPECT_EQ(planned(offset, -7), (Lines{"instrument: PLUS {}: PLUS 0", "instrument: MINUS {}: MINUS 7"}));
}

TEST_F(TwoSidesTest, PlanHasNoTextForWhatCannotBeSaid) {
    const Lines nothing{"instrument: PLUS {}: ", "instrument: MINUS {}: "};
    EXPECT_EQ(planned(description.drivers[0], INT64_MIN), nothing);
    EXPECT_EQ(planned(description.drivers[0], INT64_MAX), nothing);
}

TEST_F(DriverAttributeTest, PlanOfAFileIsTheNumberWhateverItsPath) {
    Devices::DriverHardware& lo = addDriver("lo", "", "/dev/{}");
    lo.conversion.scale = 1000;
    EXPECT_EQ(planned(lo, -6300), (Lines{": /dev/{}: -6300000"}));
    EXPECT_EQ(planned(lo, INT64_MIN), (Lines{": /dev/{}: "}));
    lo.write.reset();
    EXPECT_EQ(planned(lo, 1), Lines{});
}

TEST_F(TwoSidesTest, NeitherSideIsWrittenOutsideTheRange) {
    EXPECT_EQ(write("offset", -101), 0x8100 + ERANGE);
    hardware->setForced(true);
    EXPECT_EQ(write("offset", INT64_MIN), 0x8100 + ERANGE);
    EXPECT_EQ(heard(), Lines{});
}

TEST_F(DriverAttributeTest, TwoSidesAreReadAsTheirDifference) {
    addDriver("offset", "", file("plus", "0\n")).negative =
        Devices::AttributeName{"", file("minus", "7000\n")};
    description.drivers.back().conversion.scale = 1000;
    up();
    EXPECT_EQ(read("offset"), -7);
    EXPECT_EQ(write("offset", 3), 0);
    EXPECT_EQ(contentOf(directory / "plus"), "3000\n");
    EXPECT_EQ(contentOf(directory / "minus"), "0\n");
    EXPECT_EQ(read("offset"), 3);
}

} // namespace

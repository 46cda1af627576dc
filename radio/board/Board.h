#ifndef RADIO_BOARD_BOARD_H
#define RADIO_BOARD_BOARD_H

#include "FrequencyHandler.h"
#include "devices/Description.h"
#include "radio/files/InputError.h"
#include "radio/model/LeakageModel.h"
#include "radio/model/TransmitterModel.h"
#include "standalone/Platform.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Radio {

struct ChannelDescription {
    int number = 0;
    ::FrequencyHandler::FrequencyHandlerType type = ::FrequencyHandler::MicrowaveBoardIf;
    Place place;
    /** The channel corrects its transmitter's IQ imbalance over temperature. */
    bool iqCompensation = false;
};

struct DriverDescription {
    std::string name;
    /** A combination of Standalone::DriverWord. */
    unsigned missingWords = 0;
    /** What a read gives before the first write. */
    std::int32_t value = 0;
    Place place;
};

struct VariableDescription {
    std::string name;
    /** One value, or those of an array. */
    std::vector<std::int32_t> values;
    bool isArray = false;
    Place place;
};

/** What the file of a table says of whom it was made for. */
struct TableOrigin {
    /** "serial" or "channel". */
    std::string key;
    std::string text;
    Place place;
};

struct TableDescription {
    /** Without nodes when it is to come from a file that is not there: nothing has been calibrated yet. */
    CalibrationTable table;
    Place place;
    /** The CSV file that it comes from; empty for a table that stands in the board file itself. */
    std::filesystem::path file{};
    /** The column of that file that has its values. */
    std::string column{};
    std::vector<TableOrigin> origins{};

    bool isThere() const { return !table.axis1.empty(); }
};

/** How an interface of the platform shows itself; remote radio units exist only if they are described. */
struct InterfaceDescription {
    std::string name;
    Standalone::Presence presence;
    Place place;
};

/** A row of carriers of one direction: `first`, `first` + `step`, ... `count` of them, in kHz. */
struct CarrierRow {
    bool transmit;
    std::uint32_t first;
    std::uint32_t step;
    std::uint32_t count;
};

/** Carriers for which radio channels are made: an arrangement of a recommendation, or a plain row. */
struct RasterDescription {
    std::string name;
    /** Radio channel numbers, each one of the board's. */
    std::vector<int> channels;
    /** At most one row for each direction. */
    std::vector<CarrierRow> rows;
    /** Channel spacing codes with which the carriers are used; empty: whatever the database says. */
    std::vector<std::int32_t> channelSpacings;
    Place place;
};

/** A closed range. */
struct Range {
    std::int64_t low;
    std::int64_t high;
};

/** How the corrections of the LO leakage are found. */
enum class CalibrationMethod : std::uint8_t {
    search, ///< by the library's own search, at every node of the tables
    fit,    ///< by fitting what leaks over corrections, carrier and temperature
};

/** "search" or "fit". */
std::string_view toString(CalibrationMethod method);
/** The method that `word` stands for; nothing for another word. */
std::optional<CalibrationMethod> calibrationMethodFromString(std::string_view word);

/** How the LO leakage of a channel is calibrated, as far as the board says it. */
struct CalibrationDescription {
    /** The radio channel. */
    int channel = 0;
    std::optional<CalibrationMethod> method;
    /** How many probes a fit may make in all. */
    std::optional<std::uint32_t> probes;
    /** First and last transmit carrier, in kHz, and the distance of two. */
    std::optional<Range> band;
    std::optional<std::uint32_t> step;
    /** In degrees Celsius, ascending. */
    std::vector<std::int32_t> temperatures;
    /** Where the corrections are searched, in units of their drivers. */
    std::optional<Range> iRange;
    std::optional<Range> qRange;
    std::optional<double> shrinkFactor;
    std::optional<std::int32_t> minDelta;
    std::optional<std::uint32_t> maxIterations;
    /** In ms. */
    std::optional<std::uint32_t> settleTime;
    std::optional<bool> useHighDetector;
    /** Of the real detector: units of its reading for each dB, and the level at which it reads 0, in dBc. */
    std::optional<double> detectorSlope{};
    std::optional<double> detectorZero{};
    /** The driver of a temperature chamber, which takes degrees Celsius; empty: there is none. */
    std::string chamber{};
    /** The driver of a spectrum analyser, which reads hundredths of dBc; empty: there is none. */
    std::string analyser{};
    /** So many degrees beside a temperature will do, and so many seconds they have to last. */
    std::optional<std::uint32_t> tolerance{};
    std::optional<std::uint32_t> dwell{};
    /** How long a temperature may take to come about, in minutes. */
    std::optional<std::uint32_t> awaitLimit{};
};

/** What the hardware of a board can do; what is not stated is not limited. */
struct Limits {
    /** IF PLL, in kHz. */
    std::optional<Range> ifPll;
    /** RF PLL, in kHz. */
    std::optional<Range> rfPll;
    /** By how much the produced carrier may be off the asked one, in Hz. */
    std::optional<std::int64_t> carrierError;
    /** Where the radio works, in degrees Celsius. */
    std::optional<Range> temperature;
    /** The highest leakage of the LO with its corrections, in dBc: anywhere in band and temperature, and at
     * the points of a calibration. */
    std::optional<double> leakage{};
    std::optional<double> leakageAtNodes{};
    /** By how many dB the corrections have to lower it at least, at each point. */
    std::optional<double> leakageImprovement{};
    /** The highest image and carrier leakage of a compensated IQ modulator, in dBc. */
    std::optional<double> image{};
    std::optional<double> carrierLeakage{};
};

/** What of a board is real hardware, where it is on a bench. */
struct HardwareOnBench {
    Devices::HardwareDescription description;
    /** Where the file says so, by the names of the drivers. */
    std::map<std::string, Place> places{};
    Place sensorPlace{};
};

/** A radio as its board file describes it, checked key by key, but not yet against what its handlers ask for.
 */
struct Board {
    std::filesystem::path file;
    std::string name;
    /** Of this one radio; empty when the board does not say. */
    std::string serial;
    std::string description;
    /** In the order of the file, numbers unique. */
    std::vector<ChannelDescription> channels;
    /** The modelled transmitters: at most one for each channel, and only for channels of the board. */
    std::vector<TransmitterDescription> transmitters;
    /** The modelled LO leakages: at most one for each channel, bound to drivers of the board. */
    std::vector<LeakageDescription> leakages;
    /** At most one for each channel. */
    std::vector<CalibrationDescription> calibrations;
    std::vector<DriverDescription> drivers;
    std::vector<VariableDescription> variables;
    std::vector<TableDescription> tables;
    std::vector<InterfaceDescription> interfaces;
    std::vector<RasterDescription> rasters;
    Limits limits;
    HardwareOnBench hardware{};
};

/** The word for a handler type in board files, for example "rf-module". */
std::string_view toString(::FrequencyHandler::FrequencyHandlerType type);
/** All of these words, in the order of the types. */
std::vector<std::string_view> handlerTypeWords();
/** The handler type that `word` stands for; nothing for an unknown word. */
std::optional<::FrequencyHandler::FrequencyHandlerType> handlerTypeFromString(std::string_view word);

/** The words in board files for a combination of Standalone::DriverWord, for example {"write", "read"}. */
std::vector<std::string_view> toStrings(unsigned driverWords);

} // namespace Radio

#endif

#ifndef RADIO_LABORATORY_RESULTS_H
#define RADIO_LABORATORY_RESULTS_H

#include "radio/files/InputError.h"
#include "radio/files/Json.h"
#include "radio/laboratory/Trial.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace Radio::Laboratory {

/** Part `number` of `count`, from 1. It has each transmitter whose number, from 0, leaves number - 1 when
 * divided by count. */
struct Shard {
    std::uint32_t number = 1;
    std::uint32_t count = 1;
};

/** What is said of a laboratory with its results; whoever has them needs no other file. */
struct Heading {
    /** Of the program that calibrated. */
    std::string version;
    std::string fingerprint;
    /** The board's. */
    std::string name;
    int channel = 0;
    std::uint32_t count = 0;
    std::uint64_t seed = 0;
    double mostFailures = 0.0;
    /** The highest leakage anywhere that the limits allow, in dBc. */
    std::optional<double> limit;
    /** Of each set of settings its name, and what a calibration makes of it. */
    struct Settings {
        std::string name;
        std::string method;
        /** One line of JSON. */
        std::string text;
    };
    std::vector<Settings> settings;
};

Heading headingOf(const Description& laboratory, const std::string& version);

/** A laboratory with what came of it, or of a part of it. */
struct Results {
    Heading heading;
    Shard shard{};
    /** Sorted by their tasks; when it is whole, one for each. */
    std::vector<Trial> trials{};
};

/** What is to be done for a part. */
std::vector<Task> tasksOf(const Heading& heading, const Shard& shard);

// The text of results: a line of JSON about the laboratory and its part, then one for each trial.

std::string headingLine(const Heading& heading, const Shard& shard);
std::string lineOf(const Trial& trial);
/** Both with their ends. The same results are the same text. */
std::string textOf(const Results& results);
/** Throws InputError for what is no such line. */
Trial trialFrom(const std::string& line, const Place& place);
/**
 * Reads what textOf() made; throws InputError for anything else. With `isRunning` trials may be missing and
 * in any order, and what follows the last end of a line does not count; `size` becomes what counts.
 */
Results readResults(const std::filesystem::path& file, bool isRunning = false, std::size_t* size = nullptr);

/**
 * All parts together. Throws InputError, which names the file, for one of another laboratory or another
 * version, for a part that is there twice, and for those that are missing.
 */
Results merged(const std::vector<std::filesystem::path>& files);

/**
 * Keeps the trials that are done while others go on, in FILE.running: who is killed goes on from there. One
 * program at a time has it.
 */
class RunningResults {
public:
    /** Opens what is there, or begins. Throws InputError when it is of another laboratory or part, damaged,
     * in use, or cannot be written. */
    RunningResults(const std::filesystem::path& results, const Heading& heading, const Shard& shard);
    RunningResults(const RunningResults&) = delete;
    RunningResults& operator=(const RunningResults&) = delete;
    ~RunningResults();

    /** What was there. */
    const std::vector<Trial>& known() const { return m_known; }
    /** When this returns it survives the process. Throws InputError. */
    void add(const Trial& trial);
    /** The whole is written elsewhere. */
    void remove();

private:
    void write(const std::string& text);

    std::filesystem::path m_file;
    int m_descriptor = -1;
    std::vector<Trial> m_known;
};

/** Where the trials that are done are while others go on. */
std::filesystem::path runningFile(const std::filesystem::path& results);

} // namespace Radio::Laboratory

#endif

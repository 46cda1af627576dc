#ifndef RADIO_STORE_RUN_H
#define RADIO_STORE_RUN_H

#include "radio/board/Verdict.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/** Runs of many units, kept in a database. Touches no radio. */
namespace Radio::Store {

/** Something that was measured of a unit, and what it was allowed to be. */
struct Measurement {
    /** What it is, for example "leakage_after"; the same in all runs of a kind. */
    std::string name;
    /** Of the value and its limits, for example "dBc"; empty: a plain number, or none. */
    std::string unit{};
    /** Where it was measured, as far as it was at one place: carriers are in kHz, temperatures in degrees
     * Celsius. */
    std::optional<std::int64_t> channel{};
    std::optional<std::int64_t> frequency{};
    std::optional<std::int64_t> temperature{};
    /** Nothing when it cannot be known, or when it is not a number that was asked for. */
    std::optional<double> value{};
    std::optional<double> lowest{};
    std::optional<double> highest{};
    /** Nothing where nobody judges. */
    std::optional<bool> isHeld{};
};

/** A text that belongs to a run: "tables", "journal", "page", "report". */
struct RunFile {
    std::string name;
    std::string content;
};

/** What there is to say of a run without what it measured. */
struct RunHead {
    /** A UUID in small letters: no two runs have the same. */
    std::string id{};
    /** "calibration", "thermal", "audit" or "acceptance". */
    std::string kind{};
    /** Of the unit. */
    std::string serial{};
    /** The name of the board, and what changes with its file. */
    std::string board{};
    std::string fingerprint{};
    /** Of the program. */
    std::string version{};
    /** Where and by whom; empty when nobody said. */
    std::string station{};
    std::string operatorName{};
    /** In UTC, as "2026-03-01T09:30:00Z". */
    std::string begun{};
    std::string ended{};
    /** A real radio was driven. */
    bool isHardware = false;
    /** Of a calibration. */
    std::optional<std::int64_t> channel{};
    VerdictKind verdict = VerdictKind::none;
    /** With what the program ended. */
    std::int64_t exitCode = 0;
    /** A JSON object on one line. */
    std::string settings = "{}";
};

struct Run : RunHead {
    /** In the order in which they are to be shown. */
    std::vector<Measurement> measurements{};
    /** Each name once. */
    std::vector<RunFile> files{};
};

/** The file of that name; null when the run has none. */
const RunFile* findFile(const Run& run, std::string_view name);

/** "pass", "fail" or "none", as it is kept. */
std::string_view wordOf(VerdictKind verdict);
std::optional<VerdictKind> verdictFromWord(std::string_view word);

/** "0b5e2d4c-...", a new one each time, by chance. Throws std::runtime_error when the system has no chance to
 * give. */
std::string newRunId();
/** True for what newRunId() can give. */
bool isRunId(std::string_view text);

/** The time in UTC as runs have it. */
std::string utcNow();
/** True for a time as runs have it. */
bool isUtcTime(std::string_view text);
/** Why a word is no day such as "2026-03-01"; empty when it is one. */
std::string whyNoDay(const std::string& word);

} // namespace Radio::Store

#endif

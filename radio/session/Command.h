#ifndef RADIO_SESSION_COMMAND_H
#define RADIO_SESSION_COMMAND_H

#include "OrbiTrace.h"
#include "radio/board/PlatformWords.h"
#include "standalone/Platform.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

/** What one line of a script or of the prompt asks for. Frequencies are in kHz. */
namespace Radio {

struct Tune {
    Direction direction{};
    int channel = 0;
    std::uint32_t frequency = 0;
    /** To be carried out even where the guard warns. */
    bool isForced = false;
};

struct SetTemperature {
    /** Celsius. */
    int degrees;
    bool isForced = false;
};

struct SetVariable {
    std::string name;
    std::vector<std::int32_t> values;
};

struct RunPhase {
    Standalone::Phase phase;
};

struct InjectFault {
    Standalone::Fault fault;
};

struct ClearFaults {
    /** Nothing: all faults. */
    std::optional<Standalone::Operation> operation;
    std::string object;
};

struct SetPresence {
    std::string name;
    Standalone::Presence presence;
};

/** Subscribes to a frequency handler once more, in the way of a client written in C. */
struct Observe {
    Direction direction;
    int channel;
};

struct SetTrace {
    OrbiTraceLevel level;
};

struct Show {
    enum class Kind : std::uint8_t {
        drivers,
        variables,
        observers,
        faults,
        interfaces,
        tables,
        leakage,
        channels
    };
    Kind kind;
    /** What the names shown have in common, with the wildcards of a shell; empty for all. */
    std::string pattern;
};

/** Reads a driver through its record, as a client of the driver layer does. */
struct ReadDriver {
    std::string name;
};

/** Writes a driver through its record. */
struct WriteDriver {
    std::string name;
    /** Of more than 32 bits for a driver alone that takes a number of Hz. */
    std::int64_t value;
    bool isForced = false;
};

/** Shows the values of drivers whenever they change. */
struct Watch {
    std::vector<std::string> names;
    /** Nothing: until whoever watches has seen enough. */
    std::optional<std::chrono::microseconds> time;
};

struct Wait {
    std::chrono::microseconds time;
};

/** Tunes to one carrier after the other: from the first, by steps, as far as the last. */
struct Sweep {
    Direction direction{};
    int channel = 0;
    std::uint32_t from = 0;
    /** May be below the first. */
    std::uint32_t to = 0;
    /** Not 0. */
    std::uint32_t step = 1;
    /** How long each carrier stays. */
    std::chrono::microseconds dwell{};
    bool isForced = false;

    /** How many carriers there are. */
    std::uint32_t carriers() const { return (from < to ? to - from : from - to) / step + 1; }
};

struct ScriptLine;

/** Carries a line out several times; not one that repeats, includes or quits. */
struct Repeat {
    std::uint32_t count;
    /** Without a place: it is where the repetition is. */
    std::shared_ptr<const ScriptLine> line;
};

struct Help {
    /** The command that the help is about; empty for the list of commands. */
    std::string about;
};

struct Quit {};

struct ExpectDriver {
    std::string name;
    std::int64_t value;
};

struct ExpectFrequency {
    Direction direction;
    int channel;
    std::uint32_t frequency;
};

struct ExpectRau {
    Direction direction;
    int channel;
    std::uint32_t frequency;
};

/** That the last command told the observers of a handler this frequency. */
struct ExpectNotified {
    Direction direction;
    int channel;
    std::uint32_t frequency;
};

struct ExpectResult {
    enum class Kind : std::uint8_t { ok, failed, code };
    Kind kind;
    /** For Kind::code. */
    std::int32_t code;
};

struct ExpectTrace {
    std::string text;
};

struct ExpectNoTrace {
    /** Empty: no trace message at all. */
    std::string text;
};

/** That the modelled LO leakage of a channel is lower, with what its drivers have now. */
struct ExpectLeakage {
    int channel;
    /** In dBc. */
    double limit;
};

struct ExpectWriteCount {
    std::size_t count;
};

struct ExpectWrites {
    std::vector<std::pair<std::string, std::int64_t>> writes;
};

using Expectation = std::variant<ExpectDriver, ExpectFrequency, ExpectRau, ExpectNotified, ExpectResult,
                                 ExpectTrace, ExpectNoTrace, ExpectWriteCount, ExpectWrites, ExpectLeakage>;

/** What is done to the radio or asked of the session. */
using Action =
    std::variant<Tune, SetTemperature, SetVariable, RunPhase, InjectFault, ClearFaults, SetPresence, Observe,
                 SetTrace, Show, ReadDriver, WriteDriver, Watch, Wait, Sweep, Repeat, Help, Quit>;

/** Stands for the lines of another script. Who reads scripts puts them in its place; nobody carries it out.
 */
struct Include {
    /** As it was written. */
    std::string file;
};

using Command = std::variant<Action, Expectation, Include>;

/** Whether `action` does something to the radio; after the others, expectations still speak of the last that
 * did. */
bool actsOnRadio(const Action& action);
/** Whether `action` is to be carried out even where the guard warns. */
bool isForced(const Action& action);

/** Makes one visitor of several lambdas. */
template <typename... Lambdas>
struct Visitor : Lambdas... {
    using Lambdas::operator()...;
};
template <typename... Lambdas>
Visitor(Lambdas...) -> Visitor<Lambdas...>;

} // namespace Radio

#endif

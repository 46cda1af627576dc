#ifndef TESTS_MODEL_STORY_H
#define TESTS_MODEL_STORY_H

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/**
 * What is told twice, once by the library on the stand-alone platform and once by the model: a board, and
 * what is done with it step by step. Plain data that neither side changes.
 */
namespace Told {

/** How an interface of the platform shows itself; up to `wordless` numbered as the stand-alone platform does.
 */
enum class Presence : std::uint8_t {
    present,
    absent,
    null,
    foreign,
    nullRecord,
    wordless, ///< of the right kind, but all words of its C record are null
};

/** The words that a driver's record may lack; numbered as the stand-alone platform does. */
enum Word : unsigned { context = 1, write = 2, writeBuffer = 4, read = 8 };

/** A name on boards. There are few: each is kept once, as long as the process, and costs nothing to copy. */
class Name {
public:
    // It stands for its text.
    Name(const std::string& text);                      // NOLINT(google-explicit-constructor)
    Name(const char* text) : Name(std::string(text)) {} // NOLINT(google-explicit-constructor)
    const std::string& text() const { return *m_text; }

private:
    const std::string* m_text;
};

struct Driver {
    Name name{""};
    /** The words that are null, a combination of Word. */
    unsigned missingWords = 0;
    /** A lookup answers success and gives null. */
    bool nullRecord = false;
};

struct Variable {
    Name name{""};
    std::vector<std::int32_t> values;
    /** The record shows a null content. */
    bool noContent = false;
    /** A lookup by name answers success and gives null. */
    bool nullRecord = false;
};

/** A table with one axis or, when `axis2` is not empty, two. */
struct Table {
    Name name{""};
    std::vector<std::int32_t> axis1;
    std::vector<std::int32_t> axis2;
    std::vector<std::int32_t> values;
};

struct RemoteRadio {
    std::int32_t channel = 0;
    Presence presence = Presence::present;
};

struct Board {
    std::vector<Driver> drivers;
    std::vector<Variable> variables;
    std::vector<Table> tables;
    std::vector<RemoteRadio> remoteRadios;
    Presence driverLayer = Presence::present;
    Presence temperatureHandler = Presence::present;
    /** What the detectors give, one reading after the other and over again; not empty. */
    std::vector<std::int32_t> readings{0};
    /** The threshold of the trace. */
    std::int32_t threshold = 4;
};

/** What is done in a step. Behind each: what its `name` and its `number`s mean. */
enum class Do : std::uint8_t {
    makeModule,         ///< slot, channel, type
    destroyModule,      ///< slot
    moduleInit,         ///< slot
    moduleStorage,      ///< slot
    moduleFrameFormat,  ///< slot
    setTx,              ///< slot, frequency
    setRx,              ///< slot, frequency
    moduleTemperature,  ///< slot, temperature
    contextTemperature, ///< slot (negative: a null context), temperature

    makeHandler,    ///< name: direction; slot, HandlerKind, channel, flags (of the microwave board)
    destroyHandler, ///< slot

    makeCanceller,       ///< slot, channel
    initializeCanceller, ///< slot
    destroyCanceller,    ///< slot

    makeCompensation,        ///< slot, channel
    initializeCompensation,  ///< slot
    compensationPhase,       ///< slot (negative: a null context), phase
    compensationTemperature, ///< slot (negative: a null context), temperature
    compensate,              ///< slot
    txChanged,               ///< slot, frequency
    testOperations,          ///< slot

    phase,       ///< phase, in the order of the module manager
    temperature, ///< temperature, through the temperature service

    // With the handler that is published under `name`.
    handlerInit,
    handlerVariables,
    handlerFrameFormat,
    handlerWrite, ///< frequency
    handlerSet,   ///< frequency
    handlerGet,
    plan,              ///< frequency, exact: the five calculations of the microwave board
    observe,           ///< number of the observer, what it throws (Throws)
    observeNull,       ///< a null observer
    observeFromC,      ///< number of the observer, what it throws (Throws)
    observeBadlyFromC, ///< 0: null record, 1: null function, 2: null handler

    // With the canceller that is published under `name`.
    cancellerInit,
    correct,   ///< frequency, temperature
    setIq,     ///< I, Q
    calibrate, ///< the calibration of the step

    // With the platform.
    setVariable,  ///< name; the step's values
    hideContent,  ///< name; 1: the content is null, 0: it is there again
    setWords,     ///< name; the driver's missing words
    nullRecord,   ///< name; lookups of this driver and this variable give null from now on
    setPresence,  ///< name; Presence
    setThreshold, ///< threshold
    loseMessages, ///< where each message from now on meets what is thrown (TracePlace), what that is (Throws)
    fault,        ///< name (empty: any); operation, code, times (negative: for good), output (see Leaves)
    clearFaults,
    faultAt, ///< how many calls later, code, 1: from then on, output (see Leaves)
};

enum class HandlerKind : std::uint8_t { microwave, rfModule, rau };

/** The name under which a handler is published. */
inline std::string handlerName(const std::string& direction, std::int64_t channel) {
    return "IFrequencyHandler_" + direction + (channel != 0 ? "_" + std::to_string(channel) : "");
}

/** The flags of a microwave board. */
enum Flag : unsigned { useIf = 1, useHalfSpacing = 2, useOffsetArray = 4, inHz = 8 };

struct Calibration {
    std::int32_t iLow, iHigh, qLow, qHigh;
    double shrinkFactor;
    std::int32_t minDelta;
    std::uint32_t maxIterations;
    std::uint32_t settleTimeMs;
    std::uint32_t iterations;
    bool useHighDetector;
    /** The places for results that are null: 1 for I, 2 for Q, 4 for the delta, 8 for the iterations. */
    unsigned nullPlaces;
};

/** What a call that meets a fault leaves behind. */
enum class Leaves : std::uint8_t {
    nothing,
    number,  ///< the step's fourth number, where the call has an int to give back
    result,  ///< all that it would have left, had it succeeded
    null,    ///< null, where the call has a pointer to give back; here also a call that succeeds
    asItWas, ///< nothing, and here a call that succeeds is not carried out either
};

/** What somebody throws who may not. */
enum class Throws : std::uint8_t {
    nothing,
    exception, ///< a std::exception that says `thrownText`
    number,
};
constexpr const char* thrownText = "told to throw";

/** Where something is thrown on the way of a message. */
enum class TracePlace : std::uint8_t { mapping, stream };

struct Step {
    Do what;
    std::string name{};
    std::array<std::int64_t, 4> number{};
    /** With a fault. */
    Leaves leaves = Leaves::nothing;
    std::vector<std::int32_t> values{};
    Calibration calibration{};
    /** With a fault: what the call throws in the place of its answer, when all else is as the fault says. */
    Throws throws = Throws::nothing;
};

/** How many modules, handlers, cancellers and compensations there may be. */
constexpr std::int64_t slotCount = 2;

/** What is done to the platform between two calls. */
struct Disturbance {
    /** The number of the call, from 1 on, before which it is done. */
    std::int64_t call;
    Step before;
    /** What is done right after that call; nothing: all stays as it is. */
    std::optional<Step> after;
};

struct Story {
    Board board;
    std::vector<Step> steps;
    std::optional<Disturbance> disturbance{};
};

} // namespace Told

#endif

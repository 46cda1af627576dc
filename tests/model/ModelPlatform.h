#ifndef TESTS_MODEL_MODELPLATFORM_H
#define TESTS_MODEL_MODELPLATFORM_H

#include "Story.h"
#include "Transcript.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Told {

using Code = std::int32_t;
constexpr Code ok = 0;
constexpr Code failed = 0x8000;
constexpr Code notFound = 0x8001;
constexpr Code alreadyThere = 0x8002;
constexpr Code badArgument = 0x8003;

constexpr bool isBad(Code code) {
    return code >= failed;
}

/** What the platform throws, as the library tells of it. */
struct PlatformThrew {
    const char* what;
};

constexpr const char* whatOf(Throws throws) {
    return throws == Throws::exception ? thrownText : "unknown exception";
}

/** The place of something in one of the board's lists, or nowhere. */
using Handle = std::ptrdiff_t;
constexpr Handle nowhere = -1;

/** The operations of the platform, as transcripts and faults call them. */
enum class Op : std::uint8_t {
    brokerRegister,
    brokerUnregister,
    brokerLookup,
    brokerOpen,
    brokerGet,
    brokerClose,
    moduleRegister,
    moduleUnregister,
    moduleRegisterC,
    callbackRegister,
    driverLookup,
    driverWrite,
    driverWriteBuffer,
    driverRead,
    variableGet,
    variableAddress,
    tableLookup,
    tableLinear,
    tableBilinear,
    temperatureRegister,
    rauTx,
    rauRx,
};

/** How the stand-alone platform answers, told a second time: the board, its faults, and what was registered.
 * Each call may throw PlatformThrew. */
class ModelPlatform {
public:
    ModelPlatform(Board board, Transcript& transcript);

    /** Emits a message of a numeric level, if it is wanted and not lost. */
    __attribute__((format(printf, 3, 4))) void say(Code numericLevel, const char* format, ...);
    /** Emits a message of which nobody asks whether it is wanted, and which is not ended. */
    void sayOpenly(std::int32_t level, const std::string& text);
    /** To be called after each step: tells of messages that were not ended, and of handles not given back. */
    void endStep();

    // The broker. An object of the library is known by its address; null for those of the platform.
    Code publish(const std::string& name, void* object);
    Code withdraw(const std::string& name);
    void drop(const std::string& name) { m_published.erase(name); }
    Presence look(const std::string& name);
    /** Whether the class view of the broker gives a driver layer, with or without words. */
    bool findDriverLayer();
    /** The object of the library under a name; nothing is written to the transcript. */
    void* objectAt(const std::string& name) const;
    Code openBroker();
    /** `found` tells whether a record was given, whatever the code says. */
    Code getFromBroker(const std::string& name, bool& found);
    void closeBroker();
    /** Whether the record found last has no words. */
    bool recordIsWordless() const { return m_recordIsWordless; }

    /** A call of which the platform keeps nothing that the transcript would show. */
    template <typename Work>
    Code plain(Op operation, const std::string& object, const Work& work) {
        return answerPlainly(operation, object, std::cref(work)); // which is not copied
    }

    Code lookUpDriver(const std::string& name, Handle& driver);
    bool has(Handle driver, unsigned words) const;
    Code writeDriver(Handle driver, std::int32_t value, bool passesRecord = false);
    Code writeBytes(Handle driver, std::uint64_t value);
    Code readDriver(Handle driver, std::int32_t& value);

    /** Stores the variable's place, or nowhere for a null record. */
    Code lookUpVariable(const std::string& name, Handle& variable);
    Code lookUpContent(const std::string& name, Handle& variable);
    bool hasContent(Handle variable) const;
    std::int32_t content(Handle variable, std::size_t index = 0) const;

    Code lookUpTable(const std::string& name, Handle& table);
    Code interpolate(Handle table, std::int32_t x, std::int32_t& value);
    Code interpolate(Handle table, std::int32_t x1, std::int32_t x2, std::int32_t& value);

    Code setRemoteRadio(Op operation, const std::string& name, std::uint32_t frequency);

    // What a step does to the platform.
    void change(const Step& step);
    /** Has the platform disturbed between two of its calls. */
    void setDisturbance(const std::optional<Disturbance>& disturbance);
    void clearFaults();
    /** Tells what was written and is held at the end. */
    void tellValues();

private:
    struct Fault {
        std::optional<Op> operation;
        std::string object;
        Code code;
        std::int64_t times;
        std::int32_t output;
        Leaves leaves;
        Throws throws;
        bool isCarriedOut() const {
            return leaves == Leaves::result || (!isBad(code) && leaves != Leaves::asItWas);
        }
    };
    struct Entry {
        Presence presence;
        void* object;
    };
    struct Held {
        std::int64_t value = 0;
        std::int64_t writes = 0;
    };
    /** What a call gives to its fault and to the transcript. */
    struct Call {
        Op operation;
        const std::string& object;
        std::int64_t value = 0;
        std::int32_t x1 = 0;
        std::int32_t x2 = 0;
        std::int32_t* output = nullptr;
        Handle* handle = nullptr;
        std::vector<std::uint8_t> bytes{};
    };

    /** Answers a call; `work` carries it out and may change what the transcript shows as its value. */
    template <typename Work>
    Code answer(Call call, Work work);
    Code answerPlainly(Op operation, const std::string& object, const std::function<Code()>& work);
    std::optional<Fault> faultFor(const Call& call);
    void disturb();
    Handle driverAt(const std::string& name) const;
    Handle variableAt(const std::string& name) const;
    void setPresence(const std::string& name, Presence presence);

    Board m_board;
    Transcript& m_transcript;
    std::map<std::string, Entry> m_published;
    std::vector<Fault> m_faults;
    std::optional<std::pair<std::int64_t, Fault>> m_faultAt;
    /** Where messages are lost. */
    std::optional<TracePlace> m_lostAt;
    std::vector<Held> m_held;
    std::map<std::string, std::array<std::uint32_t, 2>> m_remoteRadios;
    std::optional<Disturbance> m_disturbance;
    std::int64_t m_calls = 0;
    std::size_t m_readingsGiven = 0;
    std::int64_t m_openHandles = 0;
    bool m_handleIsNull = false;
    bool m_recordIsWordless = false;
    std::vector<std::string> m_openMessages;
};

} // namespace Told

#endif

#ifndef PLATFORM_STANDALONE_CALLS_H
#define PLATFORM_STANDALONE_CALLS_H

#include "ResultCode.h"
#include "Visibility.h"
#include "standalone/Codes.h"

#include <array>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace Standalone {

/** Every operation that a library can call on the platform, apart from tracing. */
enum class Operation : std::uint8_t {
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

/** The word for an operation in scripts, messages and transcripts, for example "driver-write". */
RADIO_API std::string_view toString(Operation operation);
/** The operation that `word` stands for; nothing for an unknown word. */
RADIO_API std::optional<Operation> operationFromString(std::string_view word);
/** All operations, in the order of the enumeration. */
RADIO_API const std::vector<Operation>& allOperations();

/** One call that reached the platform, and how it was answered. */
struct Call {
    Operation operation;
    /** The driver, variable, table, interface or module that the call was about. */
    std::string object{};
    /** What was written, read or given back (of a variable its first value); for an interpolation the result;
     *  otherwise 0. */
    std::int64_t value = 0;
    /** The point of an interpolation: x, or x1 and x2; otherwise 0. */
    std::array<std::int32_t, 2> at{};
    /** The bytes of a buffer write. */
    std::vector<std::uint8_t> bytes{};
    /** The answer. */
    std::int32_t code = 0;
};

/** What is known of a call before it is answered. */
struct Request {
    Operation operation{};
    /** What is to be written; otherwise 0. */
    std::int64_t value = 0;
    /** The point of an interpolation. */
    std::array<std::int32_t, 2> at{};
    /** The buffer of a buffer write. */
    const std::uint8_t* bytes = nullptr;
    std::size_t byteCount = 0;
};

/** Has calls of one operation on one object answered with a code, most often instead of being carried out. */
struct Fault {
    Operation operation;
    /** The object's name; empty for every object. */
    std::string object;
    /** The answer. A call answered with a success code is carried out all the same, unless it is left undone.
     */
    std::int32_t code = 0;
    /** How many calls are answered so before the fault has spent itself; nothing: until it is cleared. */
    std::optional<std::uint32_t> times{};
    /** What a failing call that has an int to give back leaves there; nothing: it leaves it untouched. */
    std::optional<std::int32_t> output{};
    /**
     * A failing call is carried out all the same, and what it gives back is there: whoever reads it in spite
     * of the code finds a record, a handle or an address. An output, if there is one, takes the place of an
     * int.
     */
    bool isCarriedOut = false;
    /** A call that has a pointer to give back gives null, whatever the code. */
    bool givesNull = false;
    /** The call is not carried out, even with a success code: nothing is stored, and nothing given back. */
    bool isLeftUndone = false;
    /**
     * What the call throws instead of answering, as a platform that breaks its contract does: anything, after
     * all that the rest of the fault says. In the journal its answer is the code.
     */
    std::exception_ptr thrown = nullptr;
};

/**
 * The one place that every call to the platform passes: it decides on faults and keeps the journal.
 *
 * Belongs to a Platform and is used on one thread at a time.
 */
class RADIO_API Calls {
public:
    /** Adds a fault, unless it is for 0 calls. Where several match a call, the one added last decides. */
    void inject(Fault fault);
    /** Takes back the faults of `operation` on `object`, or all of them when that is empty; returns how many.
     */
    std::size_t clear(Operation operation, std::string_view object);
    void clearAll();
    /** The faults that have not spent themselves, oldest first. */
    const std::vector<Fault>& faults() const { return m_faults; }

    /** Whether calls are kept in the journal; they are, unless told otherwise. */
    void setRecording(bool recording);
    /** The calls so far, oldest first. */
    const std::vector<Call>& journal() const { return m_journal; }
    void clearJournal() { m_journal.clear(); }
    /** The calls of one operation, oldest first. */
    std::vector<Call> journalOf(Operation operation) const;

    /**
     * Is told of every call, after it was answered; what it throws is lost. It may be set anew while it is
     * told. An empty function for nobody.
     */
    void setListener(std::function<void(const Call&)> listener);

    /**
     * True when nobody listens, nothing is recorded and there is no fault. A call need not be described then:
     * a service that is called while the radio operates carries it out without further ado.
     */
    bool isIdle() const { return m_idle; }

    /**
     * For the services: answers one call about `object`. `work` carries it out and returns the code; it is
     * given the value of the request, and leaves there what the call gives back. A fault with a failing code
     * answers in its place, unless it has it carried out, and puts its output into `*output`, where that is
     * an int; one with a success code only replaces the code. One that gives null puts that into `*output`,
     * where it is a pointer. Nothing is thrown but what a fault throws: a call for which there is no memory
     * gives Codes::outOfMemory, and one that was carried out is not undone for a journal without memory.
     *
     * Not inlined, so that a service that looks for itself whether the platform is idle pays nothing for it.
     */
    template <typename Work, typename Output = int>
    [[gnu::noinline]] std::int32_t answer(std::string_view object, const Request& request, const Work& work,
                                          Output* output = nullptr) {
        std::int64_t given = request.value;
        return m_idle ? carryOut(work, given) : answerOpenly(object, request, work, given, output);
    }

private:
    /** What a fault says to a call. */
    struct Verdict {
        std::int32_t code;
        std::optional<std::int32_t> output;
        bool isCarriedOut;
        bool givesNull;
        std::exception_ptr thrown;
    };

    /** Carries a call out, unless there is no memory for it. */
    template <typename Work>
    static std::int32_t carryOut(const Work& work, std::int64_t& given) {
        try {
            return work(given);
        } catch (const std::bad_alloc&) {
            return Codes::outOfMemory;
        }
    }

    /** Answers a call of which somebody may be told. */
    template <typename Work, typename Output>
    std::int32_t answerOpenly(std::string_view object, const Request& request, const Work& work,
                              std::int64_t& given, Output* output) {
        const std::optional<Verdict> verdict = judge(request.operation, object);
        std::int32_t code = ResultOk;
        if (!verdict || verdict->isCarriedOut) {
            code = carryOut(work, given);
        }
        if constexpr (std::is_pointer_v<Output>) {
            if (verdict && verdict->givesNull && output != nullptr) {
                *output = nullptr;
            }
        } else if (verdict && isFailure(verdict->code) && verdict->output && output != nullptr) {
            *output = *verdict->output;
            given = *output;
        }
        code = enter(object, request, given, verdict ? verdict->code : code);
        if (verdict && verdict->thrown != nullptr) {
            std::rethrow_exception(verdict->thrown);
        }
        return code;
    }

    /** Takes one turn of the fault that matches the call; nothing: no fault, carry the call out. */
    std::optional<Verdict> judge(Operation operation, std::string_view object);
    /** Enters an answered call about `object` in the journal, tells the listener, and returns `code`. */
    std::int32_t enter(std::string_view object, const Request& request, std::int64_t given,
                       std::int32_t code);
    void tell(const Call& call) const;
    void updateIdle();

    std::vector<Fault> m_faults;
    std::vector<Call> m_journal;
    /** Room for the name of an object, kept from the call before. */
    std::string m_object;
    /** Null for nobody. Whoever tells it holds it, too. */
    std::shared_ptr<const std::function<void(const Call&)>> m_listener;
    bool m_recording = true;
    bool m_idle = false;
};

} // namespace Standalone

#endif

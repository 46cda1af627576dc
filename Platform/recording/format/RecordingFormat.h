/**
 * The form of a recording: what the recorder writes and a reader reads. docs/recording.md describes it.
 *
 * All numbers are little-endian, whatever wrote them; text is bytes without a closing zero, unless a place of
 * fixed length holds it, which is filled up with zeros.
 */
#ifndef PLATFORM_RECORDING_FORMAT_RECORDINGFORMAT_H
#define PLATFORM_RECORDING_FORMAT_RECORDINGFORMAT_H

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Recording {

constexpr std::string_view magic = "RADIOREC";
constexpr std::uint32_t formatVersion = 1;
constexpr std::uint32_t byteOrderMark = 0x01020304;

/** The file: a header, and behind it three areas of slots: names, the beginning, the ring. */
constexpr std::size_t headerBytes = 4096;
constexpr std::size_t slotBytes = 32;
/** What a slot holds of a text or of bytes that go on from the slot before. */
constexpr std::size_t continuationBytes = 28;
/** So many slots a record goes on in, at most. */
constexpr std::size_t mostContinuations = 255;

constexpr std::size_t smallestFile = std::size_t{64} << 10U;
constexpr std::size_t largestFile = std::size_t{256} << 20U;
constexpr std::size_t usualFile = std::size_t{4} << 20U;

/** Where the fields of the header lie. */
namespace At {
constexpr std::size_t version = 8;
constexpr std::size_t byteOrder = 12;
constexpr std::size_t wordBits = 16;
constexpr std::size_t slotSize = 20;
constexpr std::size_t nameSlots = 24;
constexpr std::size_t beginningSlots = 28;
constexpr std::size_t ringSlots = 32;
constexpr std::size_t process = 36;
/** In nanoseconds since 1970. */
constexpr std::size_t started = 40;
/** How many slots of beginning and ring were claimed. */
constexpr std::size_t claimed = 48;
constexpr std::size_t namesClaimed = 56;
/** How many things could not be recorded, for want of room for their names or wrappers. */
constexpr std::size_t passedOver = 60;
constexpr std::size_t buildIdLength = 64;
constexpr std::size_t buildId = 68;
constexpr std::size_t machine = 112;
constexpr std::size_t library = 128;
constexpr std::size_t unit = 192;
constexpr std::size_t board = 256;
constexpr std::size_t program = 320;
} // namespace At
constexpr std::size_t buildIdRoom = 44;
constexpr std::size_t machineRoom = 16;
constexpr std::size_t textRoom = 64;

/** How the slots of a file of so many bytes are shared out. */
struct Shares {
    std::uint32_t names;
    std::uint32_t beginning;
    std::uint32_t ring;
};

/** The ring has a power of two slots, of the largest that leaves a quarter to the rest; names have a
 * sixteenth. */
constexpr Shares sharesOf(std::size_t bytes) {
    const auto slots = static_cast<std::uint32_t>((bytes - headerBytes) / slotBytes);
    std::uint32_t ring = 1;
    while (ring * 2 <= slots / 4 * 3) {
        ring *= 2;
    }
    const std::uint32_t names = slots / 16;
    return {names, slots - ring - names, ring};
}

/** The first word of a slot that is whole: which one it is, as far as 30 bits tell, and whether it goes on
 * from the one before. 0 while it is written. */
constexpr std::uint32_t commitMark(std::uint64_t sequence, bool isContinuation) {
    return 0x80000000U | (isContinuation ? 0x40000000U : 0U) |
           (static_cast<std::uint32_t>(sequence) & 0x3FFFFFFFU);
}

/** What a name belongs to. */
enum class ObjectKind : std::uint8_t {
    driver = 1,
    variable,
    table,
    interface,
    /** A FrequencyHandler; first: channel, second: type, -1 when nobody saw it built. */
    module,
    /** A handler of one direction, with the name under which it is published. */
    handler,
    canceller,
    /** A CTxIQImbalanceHandler; first: channel. */
    compensation,
    /** first: the handler, second: which of those that registered with it, from 0. */
    observer,
    /** The same, of a C client. */
    observerC,
    /** first: what registered it. */
    temperatureObserver,
    callback,
    sourceFile,
};
constexpr auto lastObjectKind = ObjectKind::sourceFile;

/** What a record tells. Words are those of Slot: a, b, c, d. */
enum class Kind : std::uint8_t {
    // What comes into the library. The record is written when it begins; c and d are the time, in nanoseconds
    // since the recording began. What comes of it is told by `finished`.
    construct = 1,
    destroy,
    /** a: phase, b: priority. The platform's own; what it calls of the module is inside it. */
    phase,
    moduleInit,
    storageRetrieved,
    postFrameformat,
    /** a, b: the carrier, lower and upper 32 bits. */
    setTx,
    setRx,
    setRf,
    /** a: degrees. */
    temperature,
    /** a: phase, b: priority. */
    callbackPhase,
    /** a: number of the observer. */
    registerObserver,
    registerObserverC,
    cancellerInit,
    /** a: carrier, b: degrees. */
    cancel,
    /** Bytes: i low, i high, q low, q high, shrink factor (8 bytes), min delta, max iterations, settle time,
     * iterations so far, high detector; 4 bytes each. */
    calibrate,
    compensationInitialize,
    compensate,
    /** a, b: the carrier. */
    compensationCarrier,
    /** The end of what began last on its thread at its depth. Code; a: its kind; c, d: the time. Of calibrate
     * also bytes: I, Q, max delta, iterations. */
    finished = 31,

    // What goes out to the platform. The record is written when the platform has answered.
    /** a: 1 when a record was given, b: what it offers, see Offers. */
    driverLookup = 40,
    /** a: value, b: 1 when the library passed the record's address. */
    driverWrite,
    /** a: how many bytes, b: as above; bytes. */
    driverWriteBuffer,
    /** a: value then, b: as above, c: value before. */
    driverRead,
    /** a: 1 when a handle was given. */
    tableLookup,
    /** Of the table that was last looked up with the same handle. a: x, b: y then, c: y before. */
    tableLinear,
    /** The same. a: x1, b: x2, c: y then, d: y before. */
    tableBilinear,
    /** a: 1 when a record was given, b: 1 when it has a content, c: the content. */
    variableGet,
    /** a: 1 when an address was given, b: the first int there, which for an array is not looked at: 0. */
    variableAddress,
    /** What the library will find through an address, when it is not what was last recorded. a: how many
     * ints; bytes. Not a call. */
    variableContent,
    brokerInstance,
    brokerRegister,
    brokerUnregister,
    /** a: 1 when something was found. */
    brokerLookup,
    moduleManagerInstance,
    moduleRegister,
    moduleUnregister,
    /** a: number of the module. */
    moduleRegisterC,
    /** a: number of the module, b: order, c: priority. */
    callbackRegister,
    brokerOpen,
    /** a: 1 when a record was given. */
    brokerGet,
    brokerClose,
    /** a: 0 by the operation of the class, 1 by the C record. */
    temperatureRegister,
    /** a, b: the carrier. */
    rauTx,
    rauRx,
    /** a: the numeric level; the code is the level that stands for it. */
    traceLevel,
    /** a: level, b: line; bytes: the text. */
    traceMessage,
    traceEnd,
    /** a, c: the carrier, lower and upper 32 bits; for C clients b: channel. */
    observerTold,
};
constexpr auto lastKind = Kind::observerTold;

/** How it ended. */
enum class Outcome : std::uint16_t {
    returned,
    /** Bytes: what the exception says. */
    threwException,
    threwSomething,
    /** The thread was cancelled. */
    unwound,
};

/** What the record of a driver offers: bits of driverLookup's b. */
namespace Offers {
constexpr std::int32_t context = 1;
constexpr std::int32_t write = 2;
constexpr std::int32_t writeBuffer = 4;
constexpr std::int32_t read = 8;
/** Its calls could not be recorded. */
constexpr std::int32_t unseen = 16;
} // namespace Offers

/**
 * A slot that begins a record, or a name. Of a name: `kind` is an ObjectKind, `object` its number, `second`
 * the length of its text, `a` and `b` its first and second word; the text goes on behind it.
 *
 * When a record has bytes, they go on behind it: as many as `second` says in its upper 12 bits; the lower 4
 * are its Outcome.
 */
struct Slot {
    std::uint32_t commit;
    std::uint8_t kind;
    std::uint8_t thread;
    /** How many operations of the library are going on around it on its thread. */
    std::uint8_t depth;
    /** How many slots behind this one belong to it. */
    std::uint8_t more;
    std::uint16_t object;
    std::uint16_t second;
    std::int32_t code;
    std::int32_t a;
    std::int32_t b;
    std::int32_t c;
    std::int32_t d;
};
static_assert(sizeof(Slot) == slotBytes);

/** Bytes of a record beyond these are cut off. */
constexpr std::size_t mostBytes = 4095;

constexpr std::uint16_t secondOf(Outcome outcome, std::size_t bytes) {
    return static_cast<std::uint16_t>(bytes << 4U | static_cast<unsigned>(outcome));
}

} // namespace Recording

#endif

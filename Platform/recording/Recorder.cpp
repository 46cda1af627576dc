#include "Recorder.h"

#include "Fault.h"
#include "File.h"
#include "Image.h"
#include "Messages.h"
#include "Names.h"
#include "Next.h"

#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <ctime>
#include <string_view>
#include <utility>

namespace Recording {

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "slots are written as they lie in memory");

static_assert(std::atomic<std::uint64_t>::is_always_lock_free, "nobody waits for anybody");

std::atomic<bool> Recorder::s_isAwaited;
std::uintptr_t Recorder::s_begin;
std::atomic<std::size_t> Recorder::s_size;
std::atomic<std::uint64_t>* Recorder::s_claimed;
std::atomic<std::uint32_t>* Recorder::s_passedOver;
Slot* Recorder::s_slots;
std::uint64_t Recorder::s_beginning;
std::uint64_t Recorder::s_mask;
std::uint64_t Recorder::s_started;

namespace {

/** What the code is for, whatever the kernel is for. */
#if defined(__x86_64__)
constexpr const char* machineName = "x86_64";
#elif defined(__arm__)
constexpr const char* machineName = "arm";
#elif defined(__aarch64__)
constexpr const char* machineName = "aarch64";
#else
constexpr const char* machineName = "other";
#endif

/** Somewhere in the library. */
const void* s_library;

std::uint64_t nanoseconds(clockid_t clock) {
    timespec time{};
    static_cast<void>(clock_gettime(clock, &time));
    return static_cast<std::uint64_t>(time.tv_sec) * 1000000000U + static_cast<std::uint64_t>(time.tv_nsec);
}

void putNumber(char* file, std::size_t at, std::uint64_t number, std::size_t bytes) {
    std::memcpy(file + at, &number, bytes);
}

void putText(char* file, std::size_t at, std::string_view text, std::size_t room = textRoom) {
    text.copy(file + at, room);
}

void putShares(char* file, const Shares& shares) {
    putNumber(file, At::nameSlots, shares.names, 4);
    putNumber(file, At::beginningSlots, shares.beginning, 4);
    putNumber(file, At::ringSlots, shares.ring, 4);
}

/** What there is to be known of the library, the process and the radio. */
void putSource(char* file) {
    const Image image = imageOf(s_library);
    putNumber(file, At::buildIdLength, image.buildIdLength, 4);
    std::memcpy(file + At::buildId, image.buildId.data(), image.buildIdLength);
    putLibraryName(s_library, file + At::library, textRoom);
    putText(file, At::machine, machineName, machineRoom);
    for (const auto& [place, name] :
         {std::pair(At::unit, "RADIO_RECORDING_UNIT"), std::pair(At::board, "RADIO_RECORDING_BOARD")}) {
        const char* const text = File::environment(name);
        putText(file, place, text != nullptr ? text : "");
    }
    putText(file, At::program, program_invocation_short_name);
    putNumber(file, At::process, static_cast<std::uint32_t>(getpid()), 4);
}

template <typename Number>
std::atomic<Number>* counterAt(char* file, std::size_t at) {
    return reinterpret_cast<std::atomic<Number>*>(file + at);
}

} // namespace

void Recorder::meet(const void* address) {
    static std::atomic<bool> s_hasMet;
    if (s_hasMet.load(std::memory_order_relaxed) || !isFrequencyLibrary(address) || s_hasMet.exchange(true)) {
        return;
    }
    findAllNext(address);
    s_library = address;
    s_isAwaited = true;
}

void Recorder::begin() {
    std::size_t bytes = 0;
    char* const file = s_isAwaited.exchange(false) ? File::make(bytes) : nullptr;
    if (file == nullptr) {
        return;
    }
    describe(file, bytes);
    if (!File::keep()) {
        return; // nobody uses the memory, whose file is gone
    }
    Threads::begin(&Messages::atThreadsEnd);
    Fault::watch(file, bytes, &stop);
    static_cast<void>(pthread_atfork(nullptr, nullptr, &leaveToTheParent));
    const Image image = imageOf(s_library);
    s_begin = image.begin;
    s_size = image.size;
}

bool Recorder::beginFor(const void* caller) {
    const Image image = imageOf(s_library);
    if (reinterpret_cast<std::uintptr_t>(caller) - image.begin >= image.size) {
        return false;
    }
    begin();
    return isOn();
}

void Recorder::stop() {
    s_size = 0;
}

/** A process that is made of this one has its own life. What it still writes, by the records that the library
 * was given, goes into memory of its own. */
void Recorder::leaveToTheParent() {
    stop();
    Fault::letGo();
}

void Recorder::describe(char* file, std::size_t bytes) {
    const Shares shares = sharesOf(bytes);
    Slot* const names = reinterpret_cast<Slot*>(file + headerBytes);
    Names::begin(names, shares.names, *counterAt<std::uint32_t>(file, At::namesClaimed));
    s_slots = names + shares.names;
    s_beginning = shares.beginning;
    s_mask = shares.ring - 1;
    s_claimed = counterAt<std::uint64_t>(file, At::claimed);
    s_passedOver = counterAt<std::uint32_t>(file, At::passedOver);
    s_started = nanoseconds(CLOCK_MONOTONIC);

    putNumber(file, At::version, formatVersion, 4);
    putNumber(file, At::byteOrder, byteOrderMark, 4);
    putNumber(file, At::wordBits, sizeof(void*) * CHAR_BIT, 4);
    putNumber(file, At::slotSize, slotBytes, 4);
    putNumber(file, At::started, nanoseconds(CLOCK_REALTIME), 8);
    putShares(file, shares);
    putSource(file);
    // Last: a file that says what it is, is one.
    putText(file, 0, magic);
}

void Recorder::write(const Entry& entry, const void* bytes, std::size_t count) {
    count = std::min(count, mostBytes);
    const std::size_t more = continuationsOf(count);
    const std::uint64_t sequence = claim(static_cast<std::uint32_t>(more) + 1);
    const char* rest = static_cast<const char*>(bytes);
    for (std::size_t index = 0; index < more; ++index) {
        const std::size_t here = std::min(count - index * continuationBytes, continuationBytes);
        const std::uint64_t behind = sequence + 1 + index;
        fillContinuation(at(behind), behind, rest + index * continuationBytes, here);
    }
    fill(at(sequence), sequence, entry, more, secondOf(entry.outcome, count));
}

void Recorder::passOver() {
    if (s_passedOver != nullptr) {
        s_passedOver->fetch_add(1);
    }
}

std::uint64_t Recorder::now() {
    return nanoseconds(CLOCK_MONOTONIC) - s_started;
}

} // namespace Recording

#ifndef RADIOCTL_REPLAYER_PLAYER_H
#define RADIOCTL_REPLAYER_PLAYER_H

#include "radio/recording/RecordingFile.h"

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace Replayer {

using Radio::Recordings::Kind;
using Radio::Recordings::Object;
using Radio::Recordings::ObjectKind;
using Radio::Recordings::Outcome;
using Radio::Recordings::Record;
using Radio::Recordings::RecordingFile;

class Report;

/** What the library calls, or what came of an operation of it, in the words of a record. */
struct Call {
    Kind kind{};
    ObjectKind objectKind{};
    std::string name{};
    std::int32_t a = 0;
    std::int32_t b = 0;
    std::int32_t c = 0;
    std::string bytes{};
    std::int32_t code = 0;
    Outcome outcome = Outcome::returned;
    /** Of observers, and of what has no name: the number of the object; of a module: its channel. */
    std::int32_t number = 0;
};

/** What an operation of the library gives. */
struct Answer {
    std::int32_t code = 0;
    std::string bytes{};
};

/**
 * Goes through the records, has the operations made that came into the library, and gives the answers that
 * were recorded. Whatever ends it, a difference above all, ends the process: there is no way out of the
 * library's middle. Operations of several threads are made one after the other, in the order in which they
 * began.
 */
class Player {
public:
    /** Makes the operation that `begin` tells of. */
    using Maker = std::function<Answer(const Record& begin)>;
    /** The content of a variable is another one from now on. */
    using ContentSetter = std::function<void(const Record& content)>;

    explicit Player(RecordingFile& file);
    /** The one that is at work; null before and after it. */
    static Player* current() { return s_current; }

    [[noreturn]] void play(Maker maker, ContentSetter setContent);
    /** The type that modules are to have whose own is not in the recording: nobody saw them being built, but
     * what they called meanwhile. */
    void setUnseenType(std::int32_t type) { m_unseenType = type; }

    /** What was answered to the call that the library makes now; throws what was thrown. */
    Record answer(const Call& now);
    /** What comes next on the thread that is being lived; nothing at the end. */
    std::optional<Record> peek() const;
    /** The next call of the operation that goes on, or its end. What began inside a call is passed over, and
     * so is the broker's being given back, and what is traced of it when it throws: it says nothing of what
     * the broker gave. */
    std::optional<Record> peekCall() const;
    /** Whether the operation that has begun fails with nothing but messages before its end. */
    bool endsAtOnce() const;
    /** In the middle of a platform's operation: makes what it called, and gives its end. */
    Record makeUntilEnd();

    const RecordingFile& file() const { return m_file; }

    /** The library went another way than the recording. */
    [[noreturn]] void differ(const std::string& why, const Call* now) const;
    /** The library has come to a signal. Takes no memory: that may be what is broken. */
    [[noreturn]] void crash(int signal) const;
    /** Something in the recording cannot be lived again. */
    [[noreturn]] void giveUp(const std::string& why) const;

private:
    void read();
    void makeOperation();
    const Object* unseenModule() const;
    void makeUnseen(const Object& module);
    Answer make(const Record& begin, Outcome& outcome);
    void makeOnAThread(const Record& begin, Answer& given, Outcome& outcome);
    void expectEnd(const Record& begin, const Answer& given, Outcome outcome);
    bool endsCancelled(const Record& begin) const;
    bool comesLater(const Call& now) const;
    void consume();
    [[noreturn]] void endOfRecording() const;
    void addCounts(Report& report) const;

    static Player* s_current;

    /** Where the next record of the thread stands; nothing at its end. */
    std::optional<std::uint64_t> nextOfThread() const;

    RecordingFile& m_file;
    /** The numbers of the records of each thread, up to a gap; a recording has fewer than 32 bits tell.
     * Records themselves are made when they are wanted: they take three times their place in the file. */
    std::array<std::vector<std::uint32_t>, 256> m_ofThread;
    /** Behind the last of them. */
    std::uint64_t m_end = 0;
    /** How many of them were lived. */
    std::array<std::size_t, 256> m_lived{};
    Maker m_maker;
    ContentSetter m_setContent;
    unsigned m_thread = 0;
    /** The operations that go on, the outermost first. */
    std::vector<Record> m_operations;
    std::uint64_t m_operationNumber = 0;
    std::uint64_t m_calls = 0;
    std::uint64_t m_recordedCalls = 0;
    std::uint64_t m_notCompared = 0;
    bool m_hasGap = false;
    std::int32_t m_unseenType = -1;
};

} // namespace Replayer

#endif

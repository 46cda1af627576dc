#include "radioctl/replayer/Player.h"

#include "radio/recording/RecordingWords.h"
#include "radioctl/replayer/Matching.h"
#include "radioctl/replayer/Report.h"

#include <cxxabi.h>
#include <pthread.h>

#include <cstring>
#include <stdexcept>
#include <utility>

namespace Replayer {

namespace {

bool isTrace(const Record& record) {
    return record.kind == Kind::traceLevel || record.kind == Kind::traceMessage ||
           record.kind == Kind::traceEnd;
}

bool isCall(const Record& record) {
    return record.kind != Kind::variableContent && record.kind != Kind::finished;
}

/** What was recorded of how a call ended, once more. */
void endAs(const Record& record) {
    switch (record.outcome) {
    case Outcome::returned:
        break;
    case Outcome::threwException:
        throw std::runtime_error(record.bytes);
    case Outcome::threwSomething:
        throw 0; // NOLINT(hicpp-exception-baseclass): that is what was thrown
    case Outcome::unwound:
        static_cast<void>(pthread_cancel(pthread_self()));
        pthread_testcancel();
        break;
    }
}

} // namespace

Player* Player::s_current = nullptr;

Player::Player(RecordingFile& file) : m_file(file) {
    read();
}

/** Up to where newer records have taken the place of others. */
void Player::read() {
    while (const auto record = m_file.next()) {
        m_hasGap |= record->sequence != m_end;
        m_recordedCalls += isCall(*record) ? 1U : 0U;
        if (!m_hasGap) {
            m_ofThread[record->thread & 0xFFU].push_back(static_cast<std::uint32_t>(record->sequence));
            m_end = record->sequence + record->slots();
        }
    }
}

void Player::play(Maker maker, ContentSetter setContent) {
    m_maker = std::move(maker);
    m_setContent = std::move(setContent);
    s_current = this;
    std::uint64_t next = 0;
    while (next < m_end) {
        const Record record = m_file.at(next);
        next += record.slots();
        m_thread = record.thread & 0xFFU;
        if (nextOfThread() != record.sequence) {
            continue; // it was part of what began before it
        }
        if (Radio::Recordings::isIncoming(record.kind)) {
            ++m_operationNumber;
            makeOperation();
        } else if (const Object* const module = unseenModule()) {
            makeUnseen(*module);
        } else {
            // What the library does in operations that are not recorded.
            m_notCompared += isCall(record) ? 1U : 0U;
            if (record.kind == Kind::variableContent) {
                m_setContent(record);
            }
            consume();
        }
    }
    endOfRecording();
}

/** The module that is built by what comes next; null: it is something else. */
const Object* Player::unseenModule() const {
    const auto& sequences = m_ofThread[m_thread];
    for (std::size_t next = m_lived[m_thread]; m_unseenType >= 0 && next < sequences.size(); ++next) {
        const Record record = m_file.at(sequences[next]);
        if (Radio::Recordings::isIncoming(record.kind)) {
            break;
        }
        if (record.kind == Kind::moduleRegister && record.object != nullptr && record.object->second == -1) {
            return record.object;
        }
    }
    return nullptr;
}

void Player::makeUnseen(const Object& module) {
    Record begin;
    begin.kind = Kind::construct;
    begin.object = &module;
    begin.a = module.first;
    begin.b = m_unseenType;
    Outcome outcome = Outcome::returned;
    static_cast<void>(make(begin, outcome));
}

std::optional<std::uint64_t> Player::nextOfThread() const {
    const auto& sequences = m_ofThread[m_thread];
    const std::size_t lived = m_lived[m_thread];
    return lived < sequences.size() ? std::optional<std::uint64_t>(sequences[lived]) : std::nullopt;
}

std::optional<Record> Player::peek() const {
    const auto sequence = nextOfThread();
    return sequence ? std::optional(m_file.at(*sequence)) : std::nullopt;
}

std::optional<Record> Player::peekCall() const {
    const auto& sequences = m_ofThread[m_thread];
    const std::size_t depth = m_operations.size();
    bool isToldOfClosing = false;
    for (std::size_t next = m_lived[m_thread]; next < sequences.size(); ++next) {
        Record record = m_file.at(sequences[next]);
        const bool isInside = record.depth > depth || Radio::Recordings::isIncoming(record.kind) ||
                              (record.kind == Kind::finished && record.depth >= depth);
        if (record.kind == Kind::brokerClose) {
            isToldOfClosing = record.outcome != Outcome::returned;
        } else if (!isInside && record.kind != Kind::variableContent &&
                   !(isToldOfClosing && isTrace(record))) {
            return record;
        }
    }
    return {};
}

bool Player::endsAtOnce() const {
    const auto& sequences = m_ofThread[m_thread];
    for (std::size_t next = m_lived[m_thread]; next < sequences.size(); ++next) {
        const Record record = m_file.at(sequences[next]);
        if (record.kind == Kind::finished) {
            return record.code != 0;
        }
        if (!isTrace(record)) {
            return false;
        }
    }
    return false;
}

void Player::consume() {
    ++m_lived[m_thread];
}

Record Player::answer(const Call& now) {
    for (;;) {
        const auto next = peek();
        if (!next) {
            endOfRecording();
        }
        if (next->kind == Kind::variableContent) {
            m_setContent(*next);
            consume();
        } else if (Radio::Recordings::isIncoming(next->kind)) {
            makeOperation();
        } else if (next->kind == Kind::finished) {
            differ("more", &now);
        } else if (!isSameCall(*next, now)) {
            differ(comesLater(now) ? "call" : "more", &now);
        } else {
            consume();
            ++(isIdentified(*next, now) ? m_calls : m_notCompared);
            endAs(*next);
            return *next;
        }
    }
}

Record Player::makeUntilEnd() {
    for (;;) {
        const auto next = peek();
        if (!next) {
            endOfRecording();
        }
        if (next->kind == Kind::finished) {
            return *next;
        }
        if (Radio::Recordings::isIncoming(next->kind)) {
            makeOperation();
        } else {
            if (next->kind == Kind::variableContent) {
                m_setContent(*next);
            }
            m_notCompared += isCall(*next) ? 1U : 0U;
            consume();
        }
    }
}

// Of the unwinding there is no object to refer to on 32-bit ARM, and none is looked at.
__attribute__((no_sanitize("undefined"))) Answer Player::make(const Record& begin, Outcome& outcome) {
    try {
        outcome = Outcome::returned;
        return m_maker(begin);
    } catch (const abi::__forced_unwind&) {
        outcome = Outcome::unwound;
        throw;
    } catch (const std::exception& error) {
        outcome = Outcome::threwException;
        return {0, error.what()};
    } catch (...) {
        outcome = Outcome::threwSomething;
        return {};
    }
}

void Player::makeOnAThread(const Record& begin, Answer& given, Outcome& outcome) {
    std::function<void()> work = [&] { given = make(begin, outcome); };
    pthread_t thread{};
    const auto run = [](void* called) -> void* {
        (*static_cast<std::function<void()>*>(called))();
        return nullptr;
    };
    if (pthread_create(&thread, nullptr, run, &work) != 0) {
        giveUp("there is no thread to be cancelled");
    }
    static_cast<void>(pthread_join(thread, nullptr));
}

/** Whether the thread was cancelled in the middle of it. Its end may not be there: the process was over. */
bool Player::endsCancelled(const Record& begin) const {
    const auto& sequences = m_ofThread[m_thread];
    bool isCancelled = false;
    for (std::size_t next = m_lived[m_thread]; next < sequences.size(); ++next) {
        const Record record = m_file.at(sequences[next]);
        if (record.kind == Kind::finished && record.depth == begin.depth) {
            return record.outcome == Outcome::unwound;
        }
        isCancelled |= record.outcome == Outcome::unwound;
    }
    return isCancelled;
}

/** Whether the operation that goes on has an answer to `now`, with whatever arguments. */
bool Player::comesLater(const Call& now) const {
    const auto& sequences = m_ofThread[m_thread];
    const std::size_t depth = m_operations.size();
    for (std::size_t next = m_lived[m_thread]; next < sequences.size(); ++next) {
        const Record record = m_file.at(sequences[next]);
        if (record.depth < depth) {
            break;
        }
        if (record.depth == depth && isSameThing(record, now)) {
            return true;
        }
    }
    return false;
}

void Player::makeOperation() {
    const auto next = peek();
    const Record& begin = *next;
    consume();
    ++m_calls;
    m_operations.push_back(begin);
    Answer given;
    Outcome outcome = Outcome::returned;
    if (endsCancelled(begin)) {
        if (m_operations.size() > 1) {
            giveUp("a thread was cancelled in an operation inside another one");
        }
        makeOnAThread(begin, given, outcome);
    } else {
        given = make(begin, outcome);
    }
    expectEnd(begin, given, outcome);
    m_operations.pop_back();
}

void Player::expectEnd(const Record& begin, const Answer& given, Outcome outcome) {
    auto next = peek();
    while (next && next->kind == Kind::variableContent) {
        m_setContent(*next);
        consume();
        next = peek();
    }
    if (!next) {
        endOfRecording();
    }
    Call now{Kind::finished};
    now.a = static_cast<std::int32_t>(begin.kind);
    now.code = given.code;
    now.outcome = outcome;
    now.bytes = given.bytes;
    if (next->kind != Kind::finished) {
        differ("less", &now);
    }
    const bool isAnswered = begin.kind != Kind::construct && begin.kind != Kind::destroy &&
                            begin.kind != Kind::temperature && begin.kind != Kind::phase;
    if (next->outcome != outcome || (isAnswered && next->code != given.code) ||
        (!given.bytes.empty() && next->bytes != given.bytes)) {
        differ("answer", &now);
    }
    consume();
}

/** The end of it. Where nothing was compared, nothing is identical. */
void Player::endOfRecording() const {
    if (m_calls == 0) {
        giveUp(m_hasGap               ? "the gap is before the first call that could be compared"
               : m_recordedCalls == 0 ? "there is no call in it"
                                      : "there is no operation of the library in it");
    }
    s_current = nullptr;
    Report report(m_hasGap ? "gap" : "identical");
    addCounts(report);
    report.send(Ending::identical);
}

void Player::addCounts(Report& report) const {
    report.add("calls", m_calls);
    report.add("recorded", m_recordedCalls);
    report.add("not_compared", m_notCompared);
    report.add("passed_over", m_file.header().passedOver);
}

void Player::differ(const std::string& why, const Call* now) const {
    s_current = nullptr;
    Report report("different");
    report.add("why", why);
    addCounts(report);
    report.add("operation", m_operationNumber);
    if (!m_operations.empty()) {
        report.add("begin", m_operations.front().sequence);
    }
    if (const auto next = nextOfThread()) {
        report.add("at", *next);
    }
    if (now != nullptr) {
        report.add(*now);
    }
    report.send(Ending::different);
}

void Player::crash(int signal) const {
    CrashReport report;
    report.add("outcome different\nwhy signal", static_cast<std::uint64_t>(signal));
    report.add("calls", m_calls);
    report.add("recorded", m_recordedCalls);
    report.add("not_compared", m_notCompared);
    report.add("passed_over", m_file.header().passedOver);
    report.add("operation", m_operationNumber);
    if (!m_operations.empty()) {
        report.add("begin", m_operations.front().sequence);
    }
    if (const auto next = nextOfThread()) {
        report.add("at", *next);
    }
    report.send(Ending::different);
}

void Player::giveUp(const std::string& why) const {
    s_current = nullptr;
    Report report("stopped");
    addCounts(report);
    report.add("operation", m_operationNumber);
    report.add("reason", why);
    report.send(Ending::unusable);
}

} // namespace Replayer

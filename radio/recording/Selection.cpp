#include "radio/recording/Selection.h"

#include "radio/recording/RecordingWords.h"

namespace Radio::Recordings {

namespace {

/** Operations inside operations; deeper ones are taken for those of the deepest. */
constexpr std::size_t mostOperations = 64;

} // namespace

std::optional<Seen> Selection::next() {
    if (!m_waiting.empty()) {
        Seen first = std::move(m_waiting.front());
        m_waiting.erase(m_waiting.begin());
        return first;
    }
    while (std::optional<Record> record = m_file.next()) {
        const unsigned thread = record->thread;
        Seen seen = look(std::move(*record));
        if (!isOfInterest(seen) || !isInTime(seen)) {
            continue;
        }
        if (m_wanted.driver.empty()) {
            return seen;
        }
        for (Operation& operation : m_threads.at(thread & 255U).operations) {
            if (!operation.isShown) {
                operation.isShown = true;
                m_waiting.push_back(operation.began);
            }
        }
        m_waiting.push_back(std::move(seen));
        return next();
    }
    return {};
}

Seen Selection::look(Record record) {
    ThreadState& thread = m_threads.at(record.thread & 255U);
    std::vector<Operation>& operations = thread.operations;
    // The beginning of some may have been overwritten.
    if (operations.size() > record.depth) {
        operations.resize(record.depth);
    }
    Seen seen;
    const bool isIncomingHere = isIncoming(record.kind);
    if (isIncomingHere || record.kind == Kind::finished) {
        m_seconds = static_cast<double>(record.nanoseconds()) / 1e9;
    }
    seen.seconds = m_seconds;
    if (record.object != nullptr) {
        seen.channel = channelOf(m_file, *record.object);
    }
    if (!seen.channel && !operations.empty()) {
        seen.channel = operations.back().began.channel;
    }
    if (record.kind == Kind::traceLevel) {
        thread.numericLevel = record.a;
        thread.level = record.code;
    }
    if (record.kind == Kind::traceMessage && thread.numericLevel != 0 && thread.level == record.a) {
        seen.level = thread.numericLevel;
    }
    seen.record = std::move(record);
    if (isIncomingHere && operations.size() < mostOperations) {
        operations.push_back({seen, false});
    }
    return seen;
}

bool Selection::isOfDriver(const Record& record) const {
    return record.object != nullptr && record.object->kind == ObjectKind::driver &&
           record.object->name == m_wanted.driver;
}

bool Selection::isOfInterest(const Seen& seen) const {
    return (!m_wanted.channel || seen.channel == m_wanted.channel) &&
           (m_wanted.driver.empty() || isOfDriver(seen.record));
}

bool Selection::isInTime(const Seen& seen) const {
    return (!m_wanted.from || seen.seconds >= *m_wanted.from) &&
           (!m_wanted.to || seen.seconds <= *m_wanted.to);
}

} // namespace Radio::Recordings

#include "radio/recording/ComparedRecording.h"

#include "radio/recording/RecordingWords.h"

#include <algorithm>
#include <array>
#include <utility>

namespace Radio::Recordings {

namespace {

/** What is going on on a thread while a recording is read. */
struct Open {
    std::size_t step = 0;
    bool isOperation = false;
    bool isInTime = false;
};

bool beginsOperation(const Record& record) {
    return record.depth == 0 && isIncoming(record.kind);
}

bool endsOperation(const Record& record) {
    return record.depth == 0 && record.kind == Kind::finished;
}

Item itemOf(const Record& record, const Compared& compared) {
    return {record.sequence, compared.rough, compared.full, compared.outcome};
}

} // namespace

OperationReader::OperationReader(RecordingFile& file, const Wanted& wanted, std::uint64_t step)
    : m_file(file),
      m_selection(file, wanted) {
    m_file.goTo(step);
    std::optional<Record> record = m_file.next();
    m_overwritten = m_file.losses().overwritten;
    if (record) {
        m_isOver = !beginsOperation(*record);
        m_begin = m_selection.look(std::move(*record));
    }
}

std::optional<Seen> OperationReader::read() {
    while (!m_isOver) {
        std::optional<Record> record = m_file.next();
        // What goes on where records are lost has its end there.
        m_isOver = !record || m_file.losses().overwritten != m_overwritten;
        if (m_isOver || record->thread != m_begin.record.thread) {
            continue;
        }
        m_isOver = record->depth == 0;
        if (!m_isOver || endsOperation(*record)) {
            return m_selection.look(std::move(*record));
        }
    }
    return {};
}

std::optional<Seen> OperationReader::next() {
    std::optional<Seen> seen = read();
    while (seen && !m_selection.isOfInterest(*seen)) {
        seen = read();
    }
    return seen;
}

std::optional<Seen> OperationReader::find(std::uint64_t sequence) {
    std::optional<Seen> seen = next();
    while (seen && seen->record.sequence != sequence) {
        seen = next();
    }
    return seen;
}

ComparedRecording::ComparedRecording(RecordingFile& file, const Wanted& wanted)
    : m_file(file),
      m_wanted(wanted),
      m_comparing(file),
      m_lookups(file.objects().size(), Lookup::none) {
    read();
}

void ComparedRecording::read() {
    m_file.rewind();
    Selection selection(m_file, m_wanted);
    std::array<Open, 256> threads{};
    std::vector<bool> isWanted;
    std::uint64_t overwritten = 0;
    while (std::optional<Record> next = m_file.next()) {
        if (m_file.losses().overwritten != overwritten) {
            overwritten = m_file.losses().overwritten;
            threads.fill({});
        }
        const Seen seen = selection.look(std::move(*next));
        const Record& record = seen.record;
        const Compared compared = m_comparing.of(record);
        Open& open = threads.at(record.thread & 0xFFU);
        const bool isInside =
            open.isOperation && !beginsOperation(record) && (record.depth > 0 || endsOperation(record));
        if (!isInside) {
            open = {m_steps.size(), beginsOperation(record), selection.isInTime(seen)};
            m_steps.push_back(itemOf(record, compared));
            isWanted.push_back(false);
        }
        if (open.isInTime && selection.isOfInterest(seen)) {
            isWanted[open.step] = true;
            note(record);
            std::uint64_t& outcome = m_steps[open.step].outcome;
            outcome = isInside ? mixed(outcome, compared.outcome) : outcome;
        }
        open.isOperation = open.isOperation && !endsOperation(record);
    }
    m_losses = m_file.losses();
    std::size_t kept = 0;
    for (std::size_t index = 0; index < m_steps.size(); ++index) {
        if (isWanted[index]) {
            m_steps[kept++] = m_steps[index];
        }
    }
    m_steps.resize(kept);
}

void ComparedRecording::note(const Record& record) {
    if (record.object != nullptr && isLookup(record)) {
        Lookup& lookup = m_lookups[static_cast<std::size_t>(record.object - m_file.objects().data())];
        lookup = std::max(lookup, Recordings::isFound(record) ? Lookup::found : Lookup::askedFor);
    }
}

std::vector<Item> ComparedRecording::callsOf(std::uint64_t step) const {
    std::vector<Item> items;
    OperationReader reader = open(step);
    while (const std::optional<Seen> seen = reader.next()) {
        items.push_back(itemOf(seen->record, m_comparing.of(seen->record)));
    }
    return items;
}

} // namespace Radio::Recordings

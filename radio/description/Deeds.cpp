#include "radio/description/Deeds.h"

#include "radio/recording/RecordingWords.h"

#include <algorithm>
#include <utility>

namespace Radio::Describing {

namespace {

using Recordings::ObjectKind;

/** What a record of the kind speaks of; nothing: of different things, or of what nobody looks at. */
std::optional<ObjectKind> subjectOf(Kind kind) {
    switch (kind) {
    case Kind::moduleInit:
    case Kind::storageRetrieved:
    case Kind::postFrameformat:
    case Kind::setTx:
    case Kind::setRx:
        return ObjectKind::module;
    case Kind::callbackPhase:
    case Kind::callbackRegister:
        return ObjectKind::callback;
    case Kind::temperature:
    case Kind::temperatureRegister:
        return ObjectKind::temperatureObserver;
    case Kind::registerObserver:
    case Kind::registerObserverC:
        return ObjectKind::handler;
    case Kind::driverLookup:
    case Kind::driverWrite:
    case Kind::driverWriteBuffer:
    case Kind::driverRead:
        return ObjectKind::driver;
    case Kind::tableLookup:
    case Kind::tableLinear:
    case Kind::tableBilinear:
        return ObjectKind::table;
    case Kind::variableGet:
    case Kind::variableAddress:
    case Kind::variableContent:
        return ObjectKind::variable;
    case Kind::brokerLookup:
    case Kind::brokerGet:
    case Kind::rauTx:
    case Kind::rauRx:
        return ObjectKind::interface;
    default:
        return std::nullopt;
    }
}

} // namespace

Deeds::Deeds(RecordingFile& file) : m_file(file) {
    m_file.rewind();
}

const Deed* Deeds::next() {
    while (m_entries.empty() || !m_entries.front()->isOver) {
        if (m_isAtEnd) {
            return nullptr;
        }
        std::optional<Record> record = m_file.next();
        if (!record || (!m_isBehindGap && m_file.losses().overwritten != 0)) {
            closeAll();
            m_isBehindGap = m_file.losses().overwritten != 0;
            m_isAtEnd = !record;
        }
        if (record) {
            take(std::move(*record));
        }
    }
    m_given = std::move(m_entries.front());
    m_entries.pop_front();
    return &m_given->deed;
}

void Deeds::take(Record record) {
    const std::optional<ObjectKind> subject = subjectOf(record.kind);
    if (subject && record.object != nullptr && record.object->kind != *subject) {
        record.object = nullptr; // no recorder writes it
    }
    if (Recordings::isIncoming(record.kind)) {
        begin(std::move(record));
    } else if (record.kind == Kind::finished) {
        end(std::move(record));
    } else {
        call(std::move(record));
    }
}

void Deeds::begin(Record record) {
    std::vector<Entry*>& around = m_threads.at(record.thread);
    // Of what is not there any more nobody has recorded the end.
    while (around.size() > record.depth) {
        around.back()->isOver = true;
        around.pop_back();
    }
    if (record.kind == Kind::construct && record.object != nullptr) {
        m_isOfAnotherLife |= !m_built.emplace(record.object->kind, record.object->first).second;
    }
    auto entry = std::make_unique<Entry>();
    entry->deed.isOfAnotherLife = m_isOfAnotherLife;
    entry->deed.isInside = std::any_of(around.begin(), around.end(),
                                       [](const Entry* other) { return other->deed.kind() != Kind::phase; });
    entry->deed.isBehindGap = m_isBehindGap;
    entry->deed.calls = std::exchange(m_strays.at(record.thread), {});
    entry->deed.began = std::move(record);
    around.push_back(entry.get());
    m_entries.push_back(std::move(entry));
}

void Deeds::end(Record record) {
    std::vector<Entry*>& around = m_threads.at(record.thread);
    if (around.size() <= record.depth) {
        return; // its beginning is not there
    }
    around.resize(record.depth + std::size_t{1});
    around.back()->deed.ended = std::move(record);
    around.back()->isOver = true;
    around.pop_back();
}

void Deeds::call(Record record) {
    const std::vector<Entry*>& around = m_threads.at(record.thread);
    std::vector<Record>& calls = around.empty() ? m_strays.at(record.thread) : around.back()->deed.calls;
    calls.push_back(std::move(record));
}

void Deeds::closeAll() {
    for (std::vector<Entry*>& around : m_threads) {
        around.clear();
    }
    for (const std::unique_ptr<Entry>& entry : m_entries) {
        entry->isOver = true;
    }
    for (std::vector<Record>& strays : m_strays) {
        if (!strays.empty()) {
            m_entries.push_back(std::make_unique<Entry>());
            m_entries.back()->deed.calls = std::exchange(strays, {});
            m_entries.back()->deed.isBehindGap = m_isBehindGap;
            m_entries.back()->deed.isOfAnotherLife = m_isOfAnotherLife;
            m_entries.back()->isOver = true;
        }
    }
}

} // namespace Radio::Describing

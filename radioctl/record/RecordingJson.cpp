#include "radioctl/record/RecordingJson.h"

#include "ResultCode.h"
#include "radio/recording/RecordingTime.h"
#include "radio/recording/RecordingWords.h"
#include "radioctl/report/JsonLine.h"

#include <array>

namespace Radio::Recordings {

namespace {

/** What the words of a record are called; null: they say nothing. */
struct Members {
    std::array<const char*, 4> names;
};

Members membersOf(Kind kind) {
    switch (kind) {
    case Kind::construct:
        return {{"channel_number", "type", nullptr, nullptr}};
    case Kind::phase:
    case Kind::callbackPhase:
        return {{"phase", "priority", nullptr, nullptr}};
    case Kind::temperature:
        return {{"degrees", nullptr, nullptr, nullptr}};
    case Kind::cancel:
        return {{"khz", "degrees", nullptr, nullptr}};
    case Kind::driverLookup:
        return {{"found", "offers", nullptr, nullptr}};
    case Kind::driverWrite:
        return {{"value", "by_record", nullptr, nullptr}};
    case Kind::driverWriteBuffer:
        return {{"count", "by_record", nullptr, nullptr}};
    case Kind::driverRead:
        return {{"value", "by_record", "before", nullptr}};
    case Kind::tableLookup:
    case Kind::brokerLookup:
    case Kind::brokerOpen:
    case Kind::driverLayerRecord:
        return {{"found", nullptr, nullptr, nullptr}};
    case Kind::brokerGet:
        return {{"found", "own_handle", nullptr, nullptr}};
    case Kind::brokerClose:
        return {{"own_handle", nullptr, nullptr, nullptr}};
    case Kind::tableLinear:
        return {{"x", "value", "before", nullptr}};
    case Kind::tableBilinear:
        return {{"x1", "x2", "value", "before"}};
    case Kind::variableGet:
        return {{"found", "has_content", "value", nullptr}};
    case Kind::variableAddress:
        return {{"found", "value", "reserved", nullptr}};
    case Kind::moduleRegister:
    case Kind::moduleRegisterC:
        return {{"module", nullptr, nullptr, nullptr}};
    case Kind::callbackRegister:
        return {{"module", "order", "priority", "reserved"}};
    case Kind::temperatureRegister:
        return {{"by_record", nullptr, nullptr, nullptr}};
    case Kind::traceLevel:
        return {{"numeric_level", nullptr, nullptr, nullptr}};
    case Kind::traceMessage:
        return {{"level", "line", nullptr, nullptr}};
    case Kind::observerTold:
        return {{"khz", "told_channel", nullptr, nullptr}};
    case Kind::registerObserver:
    case Kind::registerObserverC:
        return {{"observer", nullptr, nullptr, nullptr}};
    default:
        return {{nullptr, nullptr, nullptr, nullptr}};
    }
}

bool hasCarrier(Kind kind) {
    return kind == Kind::setTx || kind == Kind::setRx || kind == Kind::setRf ||
           kind == Kind::compensationCarrier || kind == Kind::rauTx || kind == Kind::rauRx;
}

bool isUnsigned(Kind kind) {
    return kind == Kind::cancel || kind == Kind::observerTold;
}

Json numbersIn(const Record& record) {
    Json numbers = Json::array();
    for (std::size_t index = 0; index + 1 <= record.bytes.size() / 4; ++index) {
        numbers.push_back(record.number(index));
    }
    return numbers;
}

Json bytesIn(const Record& record) {
    Json bytes = Json::array();
    for (const char byte : record.bytes) {
        bytes.push_back(static_cast<unsigned>(static_cast<unsigned char>(byte)));
    }
    return bytes;
}

void addBytes(Json& event, const Record& record) {
    if (record.outcome == Outcome::threwException || record.kind == Kind::traceMessage) {
        event["text"] = record.bytes;
    } else if (record.kind == Kind::moduleRegister || record.kind == Kind::callbackRegister) {
        event["phases"] = phasesOf(record);
        if (record.kind == Kind::moduleRegister) {
            event["module_name"] = moduleNameOf(record);
        }
    } else if (record.kind == Kind::driverWriteBuffer) {
        event["bytes"] = bytesIn(record);
    } else if (!record.bytes.empty()) {
        event["numbers"] = numbersIn(record);
    }
}

Json objectOf(const Object& object) {
    return {{"kind", toString(object.kind)},
            {"name", object.name},
            {"number", object.number},
            {"first", object.first},
            {"second", object.second}};
}

void addWords(Json& event, const Record& record) {
    const std::array<std::int32_t, 4> words{record.a, record.b, record.c, record.d};
    const Members members = membersOf(record.kind);
    for (std::size_t index = 0; index < words.size(); ++index) {
        if (members.names.at(index) != nullptr) {
            event[members.names.at(index)] = index == 0 && isUnsigned(record.kind)
                                                 ? Json(static_cast<std::uint32_t>(words.at(index)))
                                                 : Json(words.at(index));
        }
    }
    if (hasCarrier(record.kind)) {
        event["khz"] = record.carrier();
    }
    if (record.kind == Kind::finished) {
        event["operation"] = toString(static_cast<Kind>(record.a));
    }
}

} // namespace

void addRecord(Json& event, const Seen& seen) {
    const Record& record = seen.record;
    event["kind"] = toString(record.kind);
    event["sequence"] = record.sequence;
    event["thread"] = record.thread;
    event["depth"] = record.depth;
    if (record.object != nullptr) {
        event["object"] = objectOf(*record.object);
    }
    event["channel"] = orNull(seen.channel);
    addWords(event, record);
    addBytes(event, record);
    if (isIncoming(record.kind) || record.kind == Kind::finished) {
        event["ns"] = record.nanoseconds();
    }
    if (!isIncoming(record.kind) && record.kind != Kind::variableContent) {
        event["outcome"] = toString(record.outcome);
        event["code"] = record.code;
        event["ok"] = isSuccess(record.code);
    }
}

void RecordingJson::begin(const std::string& name, const RecordingFile& file) {
    const Header& header = file.header();
    writeJsonLine(m_out, {{"event", "recording"},
                          {"file", name},
                          {"version", header.version},
                          {"started", timeText(header.started)},
                          {"started_ns", header.started},
                          {"library", header.library},
                          {"build_id", header.buildId},
                          {"machine", header.machine},
                          {"word_bits", header.wordBits},
                          {"process", header.process},
                          {"program", header.program},
                          {"unit", header.unit},
                          {"board", header.board}});
}

void RecordingJson::show(const Seen& seen) {
    ++m_records;
    Json event{{"event", "record"}};
    addRecord(event, seen);
    writeJsonLine(m_out, event);
}

void RecordingJson::end(const RecordingFile& file) {
    writeJsonLine(m_out, {{"event", "recording_end"},
                          {"records", m_records},
                          {"overwritten_slots", file.losses().overwritten},
                          {"unfinished_slots", file.losses().unfinished},
                          {"passed_over", file.header().passedOver}});
}

} // namespace Radio::Recordings

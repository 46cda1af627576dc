#include "radioctl/record/RecordingText.h"

#include "ResultCode.h"
#include "radio/board/Board.h"
#include "radio/board/PlatformWords.h"
#include "radio/recording/RecordingTime.h"
#include "radio/recording/RecordingWords.h"
#include "radio/text/Words.h"

#include <algorithm>
#include <iomanip>

namespace Radio::Recordings {

namespace {

/** What is shown below an operation stands here, behind the column of the numbers. */
constexpr std::string_view indent = "     ";

/** "  FAILED 0x8001", or what else is to be said of an outcome. */
std::string answer(const Record& record) {
    switch (record.outcome) {
    case Outcome::threwException:
        return "  threw: " + harmless(record.bytes);
    case Outcome::threwSomething:
        return "  threw something that is no exception of the standard library";
    case Outcome::unwound:
        return "  the thread was cancelled";
    case Outcome::returned:
        break;
    }
    if (isFailure(record.code)) {
        return "  FAILED " + codeText(record.code);
    }
    return record.code == 0 ? "" : "  (answered " + codeText(record.code) + ")";
}

std::string nameOf(const Record& record) {
    return record.object != nullptr ? harmless(record.object->name) : "";
}

std::string channelText(const Seen& seen) {
    return "channel " + (seen.channel ? std::to_string(*seen.channel) : "?");
}

/** "tx 1", of the name under which a handler is published. */
std::string handlerText(const Object& handler, const Seen& seen) {
    const bool isRx = handler.name.rfind("IFrequencyHandler_Rx", 0) == 0;
    return std::string(isRx ? "rx " : "tx ") + (seen.channel ? std::to_string(*seen.channel) : "?");
}

std::string typeText(std::int32_t type) {
    const std::string_view word =
        Radio::toString(static_cast<::FrequencyHandler::FrequencyHandlerType>(type));
    return word.empty() ? "type " + std::to_string(type) : std::string(word);
}

std::string searchText(const Record& record) {
    return "i " + std::to_string(record.number(0)) + " to " + std::to_string(record.number(1)) + ", q " +
           std::to_string(record.number(2)) + " to " + std::to_string(record.number(3));
}

/** What is called is an IQ compensation and no module. */
bool isOfCompensation(const RecordingFile& file, const Record& record) {
    if (record.kind == Kind::callbackPhase) {
        return true;
    }
    const Object* const owner = record.object != nullptr ? ownerOf(file, *record.object) : nullptr;
    const Object* const called = owner != nullptr ? owner : record.object;
    return called != nullptr && called->kind == ObjectKind::compensation;
}

/** The operation in the words of the command that would do it. */
std::string operationText(const RecordingFile& file, const Seen& seen) {
    const Record& record = seen.record;
    const std::string channel =
        channelText(seen) + (isOfCompensation(file, record) ? ", IQ compensation" : "");
    switch (record.kind) {
    case Kind::construct:
        return "build " + channel + (isOfCompensation(file, record) ? "" : ": " + typeText(record.b));
    case Kind::destroy:
        return "destroy " + channel;
    case Kind::phase:
    case Kind::callbackPhase:
        return "phase " + std::to_string(record.a) + ", " + channel + ": " +
               std::string(meaningOf(static_cast<unsigned long>(record.a)));
    case Kind::moduleInit:
        return "phase 11 by itself, " + channel;
    case Kind::storageRetrieved:
        return "phase 5 by itself, " + channel;
    case Kind::postFrameformat:
        return "phase 20 by itself, " + channel;
    case Kind::setTx:
    case Kind::setRx:
        return std::string("tune ") + (record.kind == Kind::setTx ? "tx " : "rx ") +
               (seen.channel ? std::to_string(*seen.channel) : "?") + " " + std::to_string(record.carrier()) +
               " kHz";
    case Kind::setRf:
        return "tune the handler " + nameOf(record) + " " + std::to_string(record.carrier()) + " kHz";
    case Kind::temperature:
        return "temperature " + std::to_string(record.a) + ", " + channel;
    case Kind::registerObserver:
    case Kind::registerObserverC:
        return "observe " + (record.object != nullptr ? handlerText(*record.object, seen) : channel) +
               (record.kind == Kind::registerObserverC ? " as a C client" : "");
    case Kind::cancellerInit:
        return "initialise the canceller of " + channel;
    case Kind::cancel:
        return "cancel the LO leakage of " + channel + " at " +
               std::to_string(static_cast<std::uint32_t>(record.a)) + " kHz, " + std::to_string(record.b) +
               " degrees";
    case Kind::calibrate:
        return "search the corrections of " + channel + ", " + searchText(record);
    case Kind::compensationInitialize:
        return "initialise " + channel;
    case Kind::compensate:
        return "compensate " + channel;
    case Kind::compensationCarrier:
        return "tell " + channel + " " + std::to_string(record.carrier()) + " kHz";
    default:
        return std::string(toString(record.kind));
    }
}

std::string levelText(const Seen& seen) {
    if (!seen.level) {
        return "level " + std::to_string(seen.record.a);
    }
    switch (*seen.level) {
    case 0x800:
        return "information";
    case 0x100:
        return "notice";
    default:
        return "error";
    }
}

std::int64_t valueOf(const Record& record) {
    if (record.kind != Kind::driverWriteBuffer) {
        return record.a;
    }
    std::uint64_t value = 0;
    for (std::size_t index = std::min<std::size_t>(record.bytes.size(), 8); index-- > 0;) {
        value = value << 8U | static_cast<std::uint8_t>(record.bytes[index]);
    }
    return static_cast<std::int64_t>(value);
}

/** A lookup that found nothing is no failure: handlers ask for much that they can do without. */
bool mattersToAPerson(const Record& record) {
    constexpr std::int32_t isNone = 0x8001;
    const bool isLookup = record.kind == Kind::driverLookup || record.kind == Kind::tableLookup ||
                          record.kind == Kind::variableGet || record.kind == Kind::variableAddress ||
                          record.kind == Kind::brokerGet;
    if (record.outcome != Outcome::returned) {
        return true;
    }
    return record.kind != Kind::traceLevel && isFailure(record.code) && !(isLookup && record.code == isNone);
}

std::string phasesText(const Record& record) {
    std::string text;
    for (const std::uint32_t phase : phasesOf(record)) {
        text += (text.empty() ? ", phases " : ",") + std::to_string(phase);
    }
    return text;
}

/** What a call was given and what it answered, beside its code. */
std::string callText(const Record& record) {
    const auto number = [](std::int32_t value) { return std::to_string(value); };
    switch (record.kind) {
    case Kind::tableLinear:
        return "(" + number(record.a) + ") = " + number(record.b);
    case Kind::tableBilinear:
        return "(" + number(record.a) + ", " + number(record.b) + ") = " + number(record.c);
    case Kind::variableGet:
        return record.b != 0 ? " = " + number(record.c) : " without content";
    case Kind::variableAddress:
        return record.a != 0 && record.b != 0 ? " = " + number(record.b) : "";
    case Kind::traceLevel:
        return " " + number(record.a) + " = " + number(record.code);
    case Kind::brokerLookup:
    case Kind::brokerGet:
        return record.a != 0 ? "" : ": nothing";
    case Kind::driverLayerRecord:
        return record.a != 0 ? "" : ": nothing";
    case Kind::moduleRegister:
        return " " + number(record.a) + " " + harmless(moduleNameOf(record)) + phasesText(record);
    case Kind::moduleRegisterC:
        return " " + number(record.a);
    case Kind::callbackRegister:
        return " " + number(record.a) + ", order " + number(record.b) + ", priority " + number(record.c) +
               phasesText(record);
    default:
        return "";
    }
}

bool isOfDriver(const Record& record) {
    return record.kind == Kind::driverWrite || record.kind == Kind::driverWriteBuffer ||
           record.kind == Kind::driverRead;
}

/** "tx 1 told its observer: 7442000 kHz". */
std::string toldText(const RecordingFile& file, const Seen& seen) {
    const Record& record = seen.record;
    const bool isC = record.object != nullptr && record.object->kind == ObjectKind::observerC;
    const Object* const handler = record.object != nullptr ? ownerOf(file, *record.object) : nullptr;
    return (handler != nullptr ? handlerText(*handler, seen) : channelText(seen)) + " told its " +
           (isC ? "C observer: " : "observer: ") + std::to_string(static_cast<std::uint32_t>(record.a)) +
           " kHz";
}

/** The text of a message, without the end of its line. */
std::string messageText(const Record& record) {
    std::string text = record.bytes;
    while (!text.empty() && text.back() == '\n') {
        text.pop_back();
    }
    return harmless(text);
}

std::string numbersText(const Record& record, std::size_t most) {
    std::string text;
    const std::size_t count = record.bytes.size() / 4;
    for (std::size_t index = 0; index < std::min(count, most); ++index) {
        text += (index == 0 ? "" : ",") + std::to_string(record.number(index));
    }
    return text + (count > most ? ",..." : "");
}

std::string bytesText(const Record& record) {
    constexpr const char* digits = "0123456789abcdef";
    std::string text = " (" + counted(record.bytes.size(), "byte");
    for (const char byte : record.bytes) {
        text += {' ', digits[static_cast<unsigned char>(byte) >> 4U],
                 digits[static_cast<unsigned char>(byte) & 15U]};
    }
    return text + ")";
}

std::string offersText(const Record& record) {
    if (record.a == 0) {
        return ": nothing";
    }
    std::string text;
    for (const auto& [bit, word] : {std::pair(::Recording::Offers::context, "context"),
                                    {::Recording::Offers::write, "write"},
                                    {::Recording::Offers::writeBuffer, "write a buffer"},
                                    {::Recording::Offers::read, "read"},
                                    {::Recording::Offers::unseen, "unseen"}}) {
        text += (record.b & bit) == 0 ? "" : (text.empty() ? " with " : ", ") + std::string(word);
    }
    return text;
}

/** What an operation came to. */
std::string endText(const Record& record) {
    if (record.outcome != Outcome::returned) {
        return "the operation ended: " + std::string(toString(record.outcome)) +
               (record.bytes.empty() ? "" : " " + harmless(record.bytes));
    }
    std::string text = "the operation was over and answered " + codeText(record.code);
    if (record.a == static_cast<std::int32_t>(Kind::calibrate)) {
        text += ", i " + std::to_string(record.number(0)) + ", q " + std::to_string(record.number(1)) +
                ", range " + std::to_string(record.number(2)) + ", " +
                counted(static_cast<std::uint32_t>(record.number(3)), "iteration");
    }
    return text;
}

/** What was done, without what was answered. */
std::string whatText(const RecordingFile& file, const Seen& seen) {
    const Record& record = seen.record;
    switch (record.kind) {
    case Kind::rauTx:
    case Kind::rauRx:
        return nameOf(record) + (record.kind == Kind::rauTx ? ".tx" : ".rx") + " <- " +
               std::to_string(record.carrier());
    case Kind::driverWrite:
        return nameOf(record) + " <- " + std::to_string(record.a);
    case Kind::driverWriteBuffer:
        return nameOf(record) + " <- " + std::to_string(valueOf(record)) + bytesText(record);
    case Kind::driverRead:
        return nameOf(record) + " = " + std::to_string(record.a);
    case Kind::traceMessage:
        return levelText(seen) + ": " + (record.outcome == Outcome::returned ? messageText(record) : "");
    case Kind::observerTold:
        return toldText(file, seen);
    case Kind::variableContent:
        return nameOf(record) + " is now " + numbersText(record, ::Recording::mostBytes);
    default:
        break;
    }
    const std::string name = nameOf(record);
    const std::string text = std::string(toString(record.kind)) + (name.empty() ? "" : " " + name);
    switch (record.kind) {
    case Kind::driverLookup:
        return text + offersText(record);
    case Kind::tableLookup:
        return text + (record.a != 0 ? "" : ": nothing");
    case Kind::variableGet:
    case Kind::variableAddress:
        return text + (record.a != 0 ? callText(record) : ": nothing");
    case Kind::temperatureRegister:
        return text + (record.a != 0 ? " by its record" : "");
    default:
        return text + callText(record);
    }
}

/** What a call was given, without anything that it was answered. */
std::string askedText(const RecordingFile& file, const Seen& seen) {
    const Record& record = seen.record;
    const auto number = [](std::int32_t value) { return std::to_string(value); };
    const std::string name = nameOf(record);
    const std::string text = std::string(toString(record.kind)) + (name.empty() ? "" : " " + name);
    switch (record.kind) {
    case Kind::driverRead:
        return "read of " + name;
    case Kind::tableLinear:
        return text + "(" + number(record.a) + ")";
    case Kind::tableBilinear:
        return text + "(" + number(record.a) + ", " + number(record.b) + ")";
    case Kind::traceLevel:
        return text + " " + number(record.a);
    case Kind::driverLookup:
    case Kind::tableLookup:
    case Kind::variableGet:
    case Kind::variableAddress:
    case Kind::brokerLookup:
    case Kind::brokerGet:
        return text;
    default:
        return whatText(file, seen);
    }
}

} // namespace

std::string unansweredLineOf(const RecordingFile& file, const Seen& seen) {
    const Record& record = seen.record;
    return record.kind == Kind::finished
               ? endText(record)
               : askedText(file, seen) + (isOfDriver(record) && record.b != 0 ? " (by its record)" : "");
}

std::string lineOf(const RecordingFile& file, const Seen& seen) {
    const Record& record = seen.record;
    if (isIncoming(record.kind)) {
        return operationText(file, seen);
    }
    if (record.kind == Kind::finished) {
        return endText(record);
    }
    const bool isAnswered = record.outcome != Outcome::returned ||
                            (record.kind != Kind::traceLevel && record.kind != Kind::variableContent);
    return whatText(file, seen) + (isOfDriver(record) && record.b != 0 ? " (by its record)" : "") +
           (isAnswered ? answer(record) : "");
}

void RecordingText::begin(const std::string& name) {
    const Header& header = m_file.header();
    m_out << harmless(name) << ": recorded " << timeText(header.started) << " of " << harmless(header.program)
          << " (" << harmless(header.machine) << ", " << header.wordBits << " bits)\n  library "
          << harmless(header.library) << ", build id "
          << (header.buildId.empty() ? "unknown" : harmless(header.buildId)) << "\n";
    if (!header.unit.empty()) {
        m_out << "  unit " << harmless(header.unit) << "\n";
    }
    if (!header.board.empty()) {
        m_out << "  board " << harmless(header.board) << "\n";
    }
}

void RecordingText::show(const Seen& seen) {
    const Record& record = seen.record;
    ++m_records;
    if (isIncoming(record.kind)) {
        showOperation(seen);
        return;
    }
    switch (record.kind) {
    case Kind::finished:
        showEnd(record);
        break;
    case Kind::driverWrite:
    case Kind::driverWriteBuffer:
    case Kind::rauTx:
    case Kind::rauRx:
        showWrite(record);
        break;
    case Kind::driverRead:
        showRead(record);
        break;
    case Kind::traceMessage:
        showTrace(seen);
        break;
    case Kind::observerTold:
        showTold(seen);
        break;
    case Kind::variableContent:
        showContent(record);
        break;
    default:
        showCall(record);
    }
}

void RecordingText::showOperation(const Seen& seen) {
    const std::string text = operationText(m_file, seen);
    if (seen.record.depth != 0) {
        if (m_verbose) {
            m_out << indent << toString(seen.record.kind) << "\n";
        }
        return;
    }
    m_writes = 0;
    m_out << "\n> " << text << "  (" << secondsText(seen.record.nanoseconds()) << " s)\n";
}

void RecordingText::showEnd(const Record& record) {
    const std::string told = answer(record);
    if (record.depth == 0 && !told.empty()) {
        m_out << indent << "result" << told << "\n";
    }
    if (record.a == static_cast<std::int32_t>(Kind::calibrate) && record.outcome == Outcome::returned) {
        m_out << indent << "found i " << record.number(0) << ", q " << record.number(1) << " after "
              << counted(static_cast<std::uint32_t>(record.number(3)), "iteration") << "\n";
    }
}

void RecordingText::showWrite(const Record& record) {
    const bool isDone = record.outcome == Outcome::returned && isSuccess(record.code);
    if (isDone) {
        m_out << std::setw(3) << ++m_writes;
    } else {
        m_out << "  -";
    }
    m_out << "  " << nameOf(record);
    if (record.kind == Kind::rauTx || record.kind == Kind::rauRx) {
        m_out << (record.kind == Kind::rauTx ? ".tx" : ".rx") << " <- " << record.carrier();
    } else {
        m_out << " <- " << valueOf(record);
    }
    if (record.kind == Kind::driverWriteBuffer) {
        m_out << " (" << counted(static_cast<std::uint32_t>(record.a), "byte") << ")";
    }
    m_out << answer(record) << "\n";
}

void RecordingText::showRead(const Record& record) {
    m_out << indent << nameOf(record) << " = " << record.a << answer(record) << "\n";
}

void RecordingText::showTrace(const Seen& seen) {
    if (!m_verbose && seen.level && *seen.level == 0x800) {
        return;
    }
    m_out << indent << levelText(seen) << ": " << messageText(seen.record);
    if (m_verbose && seen.record.object != nullptr) {
        const std::string& file = seen.record.object->name;
        m_out << " [" << harmless(file.substr(file.rfind('/') + 1)) << ":" << seen.record.b << "]";
    }
    m_out << "\n";
}

void RecordingText::showTold(const Seen& seen) {
    m_out << indent << toldText(m_file, seen) << answer(seen.record) << "\n";
}

void RecordingText::showContent(const Record& record) {
    constexpr std::size_t most = 64;
    m_out << "\n" << nameOf(record) << " is now " << numbersText(record, most) << "\n";
}

void RecordingText::showCall(const Record& record) {
    if (m_verbose || mattersToAPerson(record)) {
        const std::string name = nameOf(record);
        const bool isAnswered = record.kind != Kind::traceLevel;
        m_out << indent << toString(record.kind) << (name.empty() ? "" : " ") << name << callText(record)
              << (isAnswered ? answer(record) : "") << "\n";
    }
}

std::string lossesText(const Losses& losses, std::uint32_t passedOver) {
    std::vector<std::string> parts;
    if (losses.overwritten != 0) {
        parts.push_back(std::to_string(losses.overwritten) + " slots behind the beginning are overwritten");
    }
    if (losses.unfinished != 0) {
        parts.push_back(counted(losses.unfinished, "slot") + " not finished");
    }
    if (passedOver != 0) {
        parts.push_back(std::to_string(passedOver) + " times there was no room");
    }
    return joined(parts, "; ");
}

void RecordingText::end() {
    const std::string missing = lossesText(m_file.losses(), m_file.header().passedOver);
    m_out << "\n" << counted(m_records, "record") << (missing.empty() ? "" : "; ") << missing << "\n";
}

} // namespace Radio::Recordings

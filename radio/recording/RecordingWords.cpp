#include "radio/recording/RecordingWords.h"

#include <algorithm>
#include <charconv>

namespace Radio::Recordings {

using ::Recording::mostPhases;

std::string_view toString(Kind kind) { // NOLINT(readability-function-size): a word for each
    switch (kind) {
    case Kind::construct:
        return "construct";
    case Kind::destroy:
        return "destroy";
    case Kind::phase:
        return "phase";
    case Kind::moduleInit:
        return "module-init";
    case Kind::storageRetrieved:
        return "storage-retrieved";
    case Kind::postFrameformat:
        return "post-frame-format";
    case Kind::setTx:
        return "tune-tx";
    case Kind::setRx:
        return "tune-rx";
    case Kind::setRf:
        return "tune-handler";
    case Kind::temperature:
        return "temperature";
    case Kind::callbackPhase:
        return "callback-phase";
    case Kind::registerObserver:
        return "observe";
    case Kind::registerObserverC:
        return "observe-c";
    case Kind::cancellerInit:
        return "canceller-init";
    case Kind::cancel:
        return "cancel";
    case Kind::calibrate:
        return "calibrate";
    case Kind::compensationInitialize:
        return "compensation-initialize";
    case Kind::compensate:
        return "compensate";
    case Kind::compensationCarrier:
        return "compensation-carrier";
    case Kind::finished:
        return "finished";
    case Kind::driverLookup:
        return "driver-lookup";
    case Kind::driverWrite:
        return "driver-write";
    case Kind::driverWriteBuffer:
        return "driver-write-buffer";
    case Kind::driverRead:
        return "driver-read";
    case Kind::tableLookup:
        return "table-lookup";
    case Kind::tableLinear:
        return "table-linear";
    case Kind::tableBilinear:
        return "table-bilinear";
    case Kind::variableGet:
        return "variable-get";
    case Kind::variableAddress:
        return "variable-address";
    case Kind::variableContent:
        return "variable-content";
    case Kind::brokerInstance:
        return "broker-instance";
    case Kind::brokerRegister:
        return "broker-register";
    case Kind::brokerUnregister:
        return "broker-unregister";
    case Kind::brokerLookup:
        return "broker-lookup";
    case Kind::moduleManagerInstance:
        return "module-manager-instance";
    case Kind::moduleRegister:
        return "module-register";
    case Kind::moduleUnregister:
        return "module-unregister";
    case Kind::moduleRegisterC:
        return "module-register-c";
    case Kind::callbackRegister:
        return "callback-register";
    case Kind::brokerOpen:
        return "broker-open";
    case Kind::brokerGet:
        return "broker-get";
    case Kind::brokerClose:
        return "broker-close";
    case Kind::temperatureRegister:
        return "temperature-register";
    case Kind::rauTx:
        return "rau-tx";
    case Kind::rauRx:
        return "rau-rx";
    case Kind::traceLevel:
        return "trace-level";
    case Kind::traceMessage:
        return "trace-message";
    case Kind::traceEnd:
        return "trace-end";
    case Kind::observerTold:
        return "observer-told";
    case Kind::driverLayerRecord:
        return "driver-layer-record";
    }
    return "";
}

std::string_view toString(ObjectKind kind) {
    switch (kind) {
    case ObjectKind::driver:
        return "driver";
    case ObjectKind::variable:
        return "variable";
    case ObjectKind::table:
        return "table";
    case ObjectKind::interface:
        return "interface";
    case ObjectKind::module:
        return "module";
    case ObjectKind::handler:
        return "handler";
    case ObjectKind::canceller:
        return "canceller";
    case ObjectKind::compensation:
        return "compensation";
    case ObjectKind::observer:
        return "observer";
    case ObjectKind::observerC:
        return "observer-c";
    case ObjectKind::temperatureObserver:
        return "temperature-observer";
    case ObjectKind::callback:
        return "callback";
    case ObjectKind::sourceFile:
        return "source-file";
    }
    return "";
}

std::string_view toString(Outcome outcome) {
    switch (outcome) {
    case Outcome::returned:
        return "returned";
    case Outcome::threwException:
    case Outcome::threwSomething:
        return "threw";
    case Outcome::unwound:
        return "cancelled";
    }
    return "";
}

bool isIncoming(Kind kind) {
    return kind < Kind::finished;
}

std::vector<std::uint32_t> phasesOf(const Record& record) {
    std::vector<std::uint32_t> phases;
    const std::size_t count = record.bytes.size() / sizeof(std::int32_t);
    // Those of a module have its name behind them.
    const std::size_t most = record.kind == Kind::moduleRegister
                                 ? std::min<std::size_t>(static_cast<std::uint32_t>(record.b), mostPhases)
                                 : mostPhases;
    while (record.outcome == Outcome::returned && phases.size() < std::min(count, most)) {
        phases.push_back(static_cast<std::uint32_t>(record.number(phases.size())));
    }
    return phases;
}

std::string moduleNameOf(const Record& record) {
    return record.outcome == Outcome::returned
               ? record.bytes.substr(phasesOf(record).size() * sizeof(std::int32_t))
               : "";
}

namespace {

/** The numbers of the modules of compensations begin here. */
constexpr std::int32_t firstCompensation = 83000;
/** An observer belongs to a handler, and that to nothing. */
constexpr int longestChain = 4;

std::optional<int> numberIn(std::string_view text) {
    int number = 0;
    const char* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, number);
    return read.ec == std::errc() && (read.ptr == end || *read.ptr == '.') ? std::optional(number)
                                                                           : std::nullopt;
}

/** "channel.2.tx.rf.frequency", in whichever case. */
std::optional<int> channelInFront(std::string_view name) {
    constexpr std::string_view word = "hannel.";
    return name.size() > word.size() && name.substr(1, word.size()) == word
               ? numberIn(name.substr(word.size() + 1))
               : std::nullopt;
}

/** "IRauHandler_2"; without a number it is channel 0. */
std::optional<int> channelBehind(std::string_view name) {
    const std::size_t line = name.rfind('_');
    const std::optional<int> number =
        line == std::string_view::npos ? std::nullopt : numberIn(name.substr(line + 1));
    return number ? *number : 0;
}

std::optional<int> channelOf(const RecordingFile& file, const Object& object, int steps) {
    switch (object.kind) {
    case ObjectKind::driver:
    case ObjectKind::variable:
    case ObjectKind::table:
        return channelInFront(object.name);
    case ObjectKind::module:
    case ObjectKind::compensation:
        return object.first;
    case ObjectKind::handler:
    case ObjectKind::canceller:
        return channelBehind(object.name);
    case ObjectKind::interface: {
        const bool isOfAChannel = object.name.rfind("IRauHandler", 0) == 0 ||
                                  object.name.rfind("IFrequencyHandler", 0) == 0 ||
                                  object.name.rfind("ILoCancellation", 0) == 0 ||
                                  object.name.rfind("ITxIQImbalanceHandler", 0) == 0;
        return isOfAChannel ? channelBehind(object.name) : std::nullopt;
    }
    case ObjectKind::observer:
    case ObjectKind::observerC:
    case ObjectKind::temperatureObserver: {
        const Object* const owner = steps > 0 ? ownerOf(file, object) : nullptr;
        return owner != nullptr ? channelOf(file, *owner, steps - 1) : std::nullopt;
    }
    case ObjectKind::callback:
        return object.first >= firstCompensation ? std::optional(object.first - firstCompensation)
                                                 : std::nullopt;
    case ObjectKind::sourceFile:
        break;
    }
    return {};
}

} // namespace

const Object* ownerOf(const RecordingFile& file, const Object& object) {
    const bool isOwned = object.kind == ObjectKind::observer || object.kind == ObjectKind::observerC ||
                         object.kind == ObjectKind::temperatureObserver;
    return isOwned && object.first > 0 && object.first <= 0xFFFF
               ? file.object(static_cast<std::uint16_t>(object.first))
               : nullptr;
}

std::optional<int> channelOf(const RecordingFile& file, const Object& object) {
    return channelOf(file, object, longestChain);
}

} // namespace Radio::Recordings

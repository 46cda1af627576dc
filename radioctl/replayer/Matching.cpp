#include "radioctl/replayer/Matching.h"

#include <algorithm>

namespace Replayer {

namespace {

/** Which of the words of a call are arguments. */
struct Arguments {
    bool a = false;
    bool b = false;
    bool c = false;
    bool bytes = false;
};

Arguments argumentsOf(Kind kind) {
    switch (kind) {
    case Kind::driverWrite:
    case Kind::tableBilinear:
    case Kind::rauTx:
    case Kind::rauRx:
        return {true, true, false, false};
    case Kind::driverWriteBuffer:
        return {true, true, false, true};
    case Kind::driverRead:
        return {false, true, false, false};
    case Kind::tableLinear:
    case Kind::moduleRegisterC:
    case Kind::temperatureRegister:
    case Kind::traceLevel:
        return {true, false, false, false};
    case Kind::callbackRegister:
    case Kind::observerTold:
        return {true, true, true, false};
    case Kind::traceMessage:
        return {true, false, false, true};
    default:
        return {};
    }
}

bool isSameObject(const Object& recorded, const Call& now) {
    switch (recorded.kind) {
    case ObjectKind::driver:
    case ObjectKind::variable:
    case ObjectKind::table:
    case ObjectKind::interface:
        return recorded.kind == now.objectKind && recorded.name == now.name;
    case ObjectKind::callback:
        return recorded.name == now.name && recorded.first == now.number;
    case ObjectKind::module:
        return recorded.first == now.number;
    case ObjectKind::observer:
    case ObjectKind::observerC:
        return static_cast<std::int32_t>(recorded.number) == now.number;
    default:
        return true; // sources, and what has nothing to be known by
    }
}

/** Objects that a call is known by, when it has one. */
bool isKnownByObject(ObjectKind kind) {
    return kind == ObjectKind::driver || kind == ObjectKind::variable || kind == ObjectKind::table ||
           kind == ObjectKind::interface || kind == ObjectKind::callback || kind == ObjectKind::module ||
           kind == ObjectKind::observer || kind == ObjectKind::observerC;
}

/** A recorder keeps so many bytes of a message. */
constexpr std::size_t mostText = 512;

std::string cut(const Call& now) {
    return now.bytes.substr(0, now.kind == Kind::traceMessage ? mostText : Recording::mostBytes);
}

/** A call that threw has the exception's text in the place of its bytes. */
bool hasBytes(const Record& recorded) {
    return recorded.outcome == Outcome::returned;
}

} // namespace

bool isSameThing(const Record& recorded, const Call& now) {
    return recorded.kind == now.kind && (recorded.object == nullptr || isSameObject(*recorded.object, now));
}

bool isIdentified(const Record& recorded, const Call& now) {
    const bool hasNone = now.name.empty() && now.number == 0;
    return recorded.object != nullptr || hasNone || !isKnownByObject(now.objectKind);
}

bool isSameCall(const Record& recorded, const Call& now) {
    const Arguments arguments = argumentsOf(now.kind);
    return isSameThing(recorded, now) && (!arguments.a || recorded.a == now.a) &&
           (!arguments.b || recorded.b == now.b) && (!arguments.c || recorded.c == now.c) &&
           (!arguments.bytes || !hasBytes(recorded) || recorded.bytes == cut(now));
}

} // namespace Replayer

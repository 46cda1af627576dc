#include "radio/description/Faults.h"

#include "radio/board/BoardNames.h"
#include "radio/description/Spelling.h"
#include "radio/recording/RecordingWords.h"
#include "radio/text/Words.h"

namespace Radio::Describing {

namespace {

/** What the stand-alone platform answers to who asks for what it has not, or one axis where there are two. */
constexpr std::int32_t notFound = Standalone::Codes::notFound;
constexpr std::int32_t badArgument = Standalone::Codes::badArgument;

/** Of these nobody asks which object they are about. */
bool isOfEveryObject(Kind kind) {
    return kind == Kind::brokerOpen || kind == Kind::temperatureRegister;
}

bool canFail(Kind kind) {
    switch (kind) {
    case Kind::driverLookup:
    case Kind::driverWrite:
    case Kind::driverWriteBuffer:
    case Kind::driverRead:
    case Kind::tableLookup:
    case Kind::tableLinear:
    case Kind::tableBilinear:
    case Kind::variableGet:
    case Kind::variableAddress:
    case Kind::brokerOpen:
    case Kind::brokerGet:
    case Kind::temperatureRegister:
    case Kind::rauTx:
    case Kind::rauRx:
        return true;
    default:
        return false;
    }
}

} // namespace

void Faults::add(const Record& call) {
    if (!canFail(call.kind) || (call.object == nullptr && !isOfEveryObject(call.kind)) || !isOnBoard(call)) {
        return;
    }
    // What threw has a failing answer in its place.
    const std::int32_t code = call.outcome == Outcome::returned ? call.code : 0x8000;
    const std::string object = isOfEveryObject(call.kind) ? "" : call.object->name;
    std::vector<Run>& runs = m_runs[{call.kind, object}];
    if (runs.empty() || runs.back().code != code) {
        runs.push_back({code, 0, code == naturalCode(call)});
    }
    ++runs.back().times;
}

/** Only of what the board has can a script speak. */
bool Faults::isOnBoard(const Record& call) const {
    if (isOfEveryObject(call.kind)) {
        return true;
    }
    const std::string& name = call.object->name;
    switch (call.object->kind) {
    case Recordings::ObjectKind::driver: {
        const SeenDriver* const driver = m_inventory.driver(name);
        return driver != nullptr && driver->isThere();
    }
    case Recordings::ObjectKind::variable: {
        const SeenVariable* const variable = m_inventory.variable(name);
        return variable != nullptr && variable->isThere;
    }
    case Recordings::ObjectKind::table: {
        const SeenTable* const table = m_inventory.table(name);
        return table != nullptr && table->isThere;
    }
    default:
        return m_inventory.interface(name) != nullptr && (call.kind == Kind::brokerGet || rauChannel(name));
    }
}

std::int32_t Faults::naturalCode(const Record& call) const {
    if (call.kind == Kind::tableLinear || call.kind == Kind::tableBilinear) {
        const bool hasTwoAxes = m_inventory.table(call.object->name)->hasTwoAxes;
        return hasTwoAxes == (call.kind == Kind::tableBilinear) ? 0 : badArgument;
    }
    // How an interface shows itself is said in another way.
    return call.kind == Kind::brokerGet && call.code == notFound ? notFound : 0;
}

std::vector<std::string> Faults::take() {
    std::vector<std::string> lines;
    for (auto& [key, runs] : m_runs) {
        while (!runs.empty() && runs.back().isNatural) {
            runs.pop_back();
        }
        // Of several faults the last one given decides, until it has spent itself.
        for (auto run = runs.rbegin(); run != runs.rend(); ++run) {
            lines.push_back("fault " + std::string(Recordings::toString(key.first)) +
                            (key.second.empty() ? "" : " " + scriptWord(key.second)) + " " +
                            codeText(run->code) + " " +
                            (run->times == 1 ? "once" : std::to_string(run->times) + " times"));
        }
    }
    m_runs.clear();
    return lines;
}

} // namespace Radio::Describing

#include "radio/description/ScriptText.h"

#include "ResultCode.h"
#include "radio/board/BoardNames.h"
#include "radio/board/CalibrationBounds.h"
#include "radio/description/Faults.h"
#include "radio/description/Spelling.h"
#include "radio/recording/RecordingWords.h"
#include "radio/text/Words.h"

#include <algorithm>

namespace Radio::Describing {

namespace {

/** What a script can have at most, and what is left for the line that says so. */
constexpr std::size_t mostScript = (std::size_t{16} << 20U) - 65536;

std::string wordOfPhase(std::int32_t phase) {
    return phase == 11 ? "init" : phase == 5 ? "storage" : "frame-format";
}

struct Write {
    std::string destination;
    /** Nothing: it was no number. */
    std::optional<std::int64_t> value;
};

std::string expectationOf(const std::vector<Write>& writes) {
    std::string line = "expect writes";
    for (const Write& write : writes) {
        line += " " + scriptWord(write.destination + "=" + std::to_string(write.value.value_or(0)));
    }
    return writes.empty() ? line + " 0" : line;
}

/** One command, of one operation or of several that the platform made of it. */
struct Step {
    Kind kind = Kind::finished;
    /** Degrees, or the phase. */
    std::int32_t key = 0;
    /** The command; empty: there is none for it. */
    std::string line;
    std::vector<std::string> comments;
    /** What has to be done before it, which is told by what it found. */
    std::vector<std::string> before;
    /** The variables and interfaces at which it looked. */
    std::set<std::string> lookedAt;
    /** To whom it was told. */
    std::set<const Object*> told;
    std::vector<Write> writes;
    bool isFailed = false;
    /** A run gets the same writes. */
    bool isExpected = true;
    /** Whether a run is answered so too cannot be told. */
    bool isUncertain = false;
};

class ScriptWriter {
public:
    ScriptWriter(const Inventory& inventory, RecordingFile& file, std::vector<std::string>& notes)
        : m_inventory(inventory),
          m_file(file),
          m_notes(notes),
          m_faults(inventory) {}

    std::string write(const std::vector<std::string>& origin);

private:
    void take(const Deed& deed);
    bool stopsAtLate(const Deed& deed);
    void takeLife(const Deed& deed);
    void takePhase(const Deed& deed);
    void takeTune(const Deed& deed);
    void takeTemperature(const Deed& deed);
    void takeObserve(const Deed& deed);
    void takeWords(const Deed& deed, const std::string& why);

    void begin(const Deed& deed, std::int32_t key, std::string line);
    bool joins(const Deed& deed, std::int32_t key, const std::vector<std::string>& before) const;
    void add(const Deed& deed, const std::vector<std::string>& before);
    void addChange(const std::string& line);
    void addAnswer(const Record& call);
    bool isOnBoard(const Record& write) const;
    bool coversAtStart(const Deed& deed, std::int32_t phase, const std::vector<std::string>& before);

    std::vector<std::string> changesBefore(const Deed& deed);
    void lookForContent(const Record& call, std::vector<std::string>& lines);
    void lookForPresence(const Deed& deed, std::size_t place, std::vector<std::string>& lines);

    void flush();
    void flushStart();
    bool hasStartedSome() const;
    void checkTold();
    std::size_t everybody() const;
    bool hasToldTheFirst() const;
    void put(const std::string& line);
    /** Ends the script. */
    void stop(const std::string& why, const std::string& unknown);
    void note(const std::string& text);
    std::optional<int> channelOf(const Deed& deed) const;

    const Inventory& m_inventory;
    RecordingFile& m_file;
    std::vector<std::string>& m_notes;
    Faults m_faults;
    std::string m_text;
    std::optional<Step> m_step;
    bool m_isOver = false;

    // The radio as the script has it by now.
    std::map<std::string, std::vector<std::int32_t>> m_variables;
    std::map<std::string, Standalone::Presence> m_presences;
    std::optional<std::int32_t> m_temperature;
    std::set<const Object*> m_observers;
    std::set<const Object*> m_callbacks;

    // The start-up that a run makes by itself.
    bool m_isStarting = true;
    bool m_hasStarted = false;
    bool m_isStartFailed = false;
    bool m_isStartExpected = true;
    /** What the start-up was answered no script can say. */
    bool m_isAdrift = false;
    std::set<std::pair<const Object*, std::int32_t>> m_startedPhases;
    std::map<std::int32_t, std::vector<Write>> m_startWrites;
};

std::string ScriptWriter::write(const std::vector<std::string>& origin) {
    for (const std::string& line : origin) {
        put("# " + commentText(line));
    }
    for (const SeenVariable& variable : m_inventory.variables()) {
        m_variables[variable.name] = variable.values;
    }
    for (const SeenInterface& interface : m_inventory.interfaces()) {
        m_presences[interface.name] = interface.presence;
    }
    Deeds deeds(m_file);
    while (const Deed* const deed = m_isOver ? nullptr : deeds.next()) {
        take(*deed);
    }
    flush();
    flushStart();
    return std::move(m_text);
}

void ScriptWriter::take(const Deed& deed) {
    if (deed.isBehindGap) {
        stop("Behind it the recording has a gap.", "what was done behind the gap of the recording");
        return;
    }
    if (deed.isOfAnotherLife) {
        const std::string channel = "channel " + std::to_string(deed.began ? deed.began->object->first : 0);
        stop("Behind it " + channel + " is built once more, which no script does.",
             "what was done after " + channel + " was built once more");
        return;
    }
    if (stopsAtLate(deed)) {
        return;
    }
    for (const Record& call : deed.calls) {
        if (call.kind == Kind::temperatureRegister && isDone(call)) {
            m_observers.insert(call.object);
        } else if (call.kind == Kind::callbackRegister && isDone(call)) {
            m_callbacks.insert(call.object);
        }
    }
    if (!deed.began || deed.kind() == Kind::phase) {
        return;
    }
    const std::optional<int> channel = channelOf(deed);
    if (!channel || m_inventory.channel(*channel) == nullptr) {
        return; // the notes on the board say which channel is missing
    }
    switch (deed.kind()) {
    case Kind::construct:
    case Kind::destroy:
    case Kind::compensationInitialize:
    case Kind::registerObserver:
        takeLife(deed);
        break;
    case Kind::moduleInit:
    case Kind::storageRetrieved:
    case Kind::postFrameformat:
    case Kind::callbackPhase:
        takePhase(deed);
        break;
    case Kind::setTx:
    case Kind::setRx:
        takeTune(deed);
        break;
    case Kind::temperature:
        takeTemperature(deed);
        break;
    case Kind::registerObserverC:
        takeObserve(deed);
        break;
    default:
        takeWords(deed, "No command does it");
    }
}

/** A run builds its radio once, and observes each handler as a class does. */
void ScriptWriter::takeLife(const Deed& deed) {
    if (deed.kind() == Kind::destroy) {
        flush();
    }
}

/** What the start-up did not find is not on the board, and no command puts it there. */
bool ScriptWriter::stopsAtLate(const Deed& deed) {
    const auto late = std::find_if(deed.calls.begin(), deed.calls.end(),
                                   [this](const Record& call) { return m_inventory.isLate(call); });
    if (late == deed.calls.end()) {
        return false;
    }
    const std::string& name = late->object->name;
    stop("Behind it there is " + name + ", which the start-up did not find; no script adds it.",
         "what was done once there was " + name);
    return true;
}

void ScriptWriter::takePhase(const Deed& deed) {
    const std::int32_t phase = phaseOf(*deed.began);
    if (phase != 11 && phase != 5 && phase != 20) {
        takeWords(deed, "Phase " + std::to_string(phase) + " of no command");
        return;
    }
    const std::vector<std::string> before = changesBefore(deed);
    if (coversAtStart(deed, phase, before)) {
        return;
    }
    if (!joins(deed, phase, before)) {
        begin(deed, phase, "phase " + wordOfPhase(phase));
    }
    add(deed, before);
}

/** A run makes each phase once by itself before its script begins. */
bool ScriptWriter::coversAtStart(const Deed& deed, std::int32_t phase,
                                 const std::vector<std::string>& before) {
    m_isStarting = m_isStarting && !m_step && before.empty();
    if (!m_isStarting || !m_startedPhases.emplace(deed.began->object, phase).second) {
        m_isStarting = false;
        return false;
    }
    m_hasStarted = true;
    for (const Record& call : deed.calls) {
        if (isWrite(call) && isDone(call)) {
            m_startWrites[phase].push_back({destinationOf(call), valueOf(call)});
            m_isStartExpected &= valueOf(call).has_value() && isOnBoard(call);
        }
        m_faults.add(call);
    }
    if (!m_faults.take().empty()) {
        note("the answers that failed during the start-up");
        m_isStartExpected = false;
        m_isAdrift = true;
    }
    m_isStartFailed = deed.ended && !isDone(*deed.ended);
    m_isStarting = !m_isStartFailed;
    return true;
}

void ScriptWriter::takeTune(const Deed& deed) {
    constexpr std::uint64_t highest = 4294967295;
    const std::uint64_t carrier = deed.began->carrier();
    if (carrier > highest) {
        takeWords(deed, "No command tunes to " + std::to_string(carrier) + " kHz");
        return;
    }
    const std::vector<std::string> before = changesBefore(deed);
    begin(deed, 0,
          std::string("tune ") + (deed.kind() == Kind::setTx ? "tx " : "rx ") +
              std::to_string(*channelOf(deed)) + " " + std::to_string(carrier) + " kHz");
    add(deed, before);
}

void ScriptWriter::takeTemperature(const Deed& deed) {
    const std::int32_t degrees = deed.began->a;
    const std::vector<std::string> before = changesBefore(deed);
    if (!joins(deed, degrees, before)) {
        if (m_temperature == degrees) {
            takeWords(deed, "The same temperature again, which a run tells nobody");
            return;
        }
        if (degrees < temperatureBounds.low || degrees > temperatureBounds.high) {
            takeWords(deed, "No command tells " + std::to_string(degrees) + " degrees");
            return;
        }
        begin(deed, degrees, "temperature " + std::to_string(degrees));
        m_temperature = degrees;
    }
    add(deed, before);
}

void ScriptWriter::takeObserve(const Deed& deed) {
    const bool isRx = deed.began->object->name.rfind("IFrequencyHandler_Rx", 0) == 0;
    if (deed.ended && !isDone(*deed.ended)) {
        begin(deed, 0, "");
        m_step->isExpected = false;
        m_step->comments.push_back("A C client of channel " + std::to_string(*channelOf(deed)) +
                                   " was refused, for which there is no command.");
        note("a command for a C client that is refused");
        return;
    }
    begin(deed, 0, std::string("observe ") + (isRx ? "rx " : "tx ") + std::to_string(*channelOf(deed)));
    add(deed, {});
}

/** What has no command is told by what it wrote. */
void ScriptWriter::takeWords(const Deed& deed, const std::string& why) {
    begin(deed, 0, "");
    m_step->isExpected = false;
    m_step->comments.push_back(std::string(Recordings::toString(deed.kind())) + ", channel " +
                               std::to_string(*channelOf(deed)) + ". " + why +
                               ": what it wrote is written past the library.");
    for (const Record& call : deed.calls) {
        if (isWrite(call) && isDone(call)) {
            m_step->writes.push_back({destinationOf(call), valueOf(call)});
        }
    }
    note("a command for " + std::string(Recordings::toString(deed.kind())));
}

void ScriptWriter::begin(const Deed& deed, std::int32_t key, std::string line) {
    flush();
    flushStart();
    m_step.emplace();
    m_step->kind = phaseOf(*deed.began) != 0 ? Kind::phase : deed.kind();
    m_step->key = key;
    m_step->line = std::move(line);
    m_step->isExpected = !m_isAdrift;
    if (deed.isInside) {
        m_step->comments.emplace_back("It was done inside what stands before it.");
        note("the right place for what was done inside something else");
    }
    if (!deed.ended) {
        m_step->comments.emplace_back("It was not over when the recording ends.");
        m_step->isExpected = false;
    }
}

/** The platform tells all modules one after the other what is one command. */
bool ScriptWriter::joins(const Deed& deed, std::int32_t key, const std::vector<std::string>& before) const {
    const Kind kind = phaseOf(*deed.began) != 0 ? Kind::phase : deed.kind();
    if (!m_step || m_step->kind != kind || m_step->key != key ||
        m_step->told.count(deed.began->object) != 0) {
        return false;
    }
    // What has changed can have done so before the first of them, if that has not looked.
    return std::none_of(before.begin(), before.end(), [this](const std::string& line) {
        const std::size_t name = line.find(' ') + 1;
        return m_step->lookedAt.count(line.substr(name, line.find(' ', name) - name)) != 0;
    });
}

void ScriptWriter::add(const Deed& deed, const std::vector<std::string>& before) {
    Step& step = *m_step;
    if (step.isFailed && step.kind == Kind::phase) {
        step.comments.emplace_back("It went on behind what failed; a run does not.");
        step.isExpected = false;
    }
    for (const std::string& line : before) {
        addChange(line);
    }
    step.told.insert(deed.began->object);
    for (const Record& call : deed.calls) {
        addAnswer(call);
    }
    const bool isKnown = deed.ended && deed.ended->outcome == Outcome::returned;
    step.isFailed |= isKnown && isFailure(deed.ended->code);
    step.isExpected &= isKnown;
}

/** What changes twice inside one command is as it was in the end. */
void ScriptWriter::addChange(const std::string& line) {
    Step& step = *m_step;
    const std::string start = line.substr(0, line.find(' ', line.find(' ') + 1) + 1);
    const auto other =
        std::find_if(step.before.begin(), step.before.end(),
                     [&start](const std::string& before) { return before.rfind(start, 0) == 0; });
    if (other == step.before.end()) {
        step.before.push_back(line);
        return;
    }
    *other = line;
    step.comments.push_back(start.substr(start.find(' ') + 1) +
                            "changed inside it, which no script does: nothing is expected.");
    step.isExpected = false;
    step.isUncertain = true;
    note("what changed inside a command");
}

void ScriptWriter::addAnswer(const Record& call) {
    Step& step = *m_step;
    m_faults.add(call);
    if (call.object != nullptr) {
        step.lookedAt.insert(scriptWord(call.object->name));
    }
    if (isWrite(call) && isDone(call)) {
        step.writes.push_back({destinationOf(call), valueOf(call)});
        step.isExpected &= step.writes.back().value.has_value() && isOnBoard(call);
    }
    if (call.outcome != Outcome::returned && call.object != nullptr) {
        const bool isCancelled = call.outcome == Outcome::unwound;
        step.comments.push_back(
            (call.object->name.empty() ? "an observer" : call.object->name) +
            (isCancelled
                 ? " cancelled the thread"
                 : " threw " + (call.bytes.empty() ? std::string("something") : inQuotes(call.bytes))) +
            ": it fails in its place, and what the library does then is not what it did.");
        step.isExpected = false;
        note(isCancelled ? "that a thread was cancelled" : "what was thrown");
    }
}

bool ScriptWriter::isOnBoard(const Record& write) const {
    if (write.object == nullptr) {
        return false;
    }
    const std::string& name = write.object->name;
    const bool isOfUnit = write.kind == Kind::rauTx || write.kind == Kind::rauRx;
    return isOfUnit ? rauChannel(name) && m_inventory.interface(name) != nullptr
                    : m_inventory.driver(name) != nullptr;
}

// What changed by itself

std::vector<std::string> ScriptWriter::changesBefore(const Deed& deed) {
    std::vector<std::string> lines;
    for (std::size_t place = 0; place < deed.calls.size(); ++place) {
        lookForContent(deed.calls[place], lines);
        lookForPresence(deed, place, lines);
    }
    return lines;
}

void ScriptWriter::lookForContent(const Record& call, std::vector<std::string>& lines) {
    const SeenVariable* const variable =
        call.object != nullptr && call.object->kind == Recordings::ObjectKind::variable
            ? m_inventory.variable(call.object->name)
            : nullptr;
    if (variable == nullptr || !variable->isThere || !isDone(call)) {
        return;
    }
    std::vector<std::int32_t> content;
    if (call.kind == Kind::variableContent) {
        for (std::size_t index = 0; index < call.bytes.size() / 4; ++index) {
            content.push_back(call.number(index));
        }
    } else if (call.a != 0 && !variable->isArray() && (call.kind == Kind::variableAddress || call.b != 0)) {
        content = {call.kind == Kind::variableGet ? call.c : call.b};
    }
    std::vector<std::int32_t>& now = m_variables[variable->name];
    now.resize(std::max(now.size(), content.size()));
    if (std::equal(content.begin(), content.end(), now.begin())) {
        return;
    }
    std::copy(content.begin(), content.end(), now.begin());
    std::vector<std::string> words;
    words.reserve(content.size());
    for (const std::int32_t value : content) {
        words.push_back(std::to_string(value));
    }
    lines.push_back("set " + scriptWord(variable->name) + " " + joined(words, ","));
}

void ScriptWriter::lookForPresence(const Deed& deed, std::size_t place, std::vector<std::string>& lines) {
    const Record& call = deed.calls[place];
    if (!asksForPlatform(call)) {
        return;
    }
    const Standalone::Presence presence = presenceIn(deed.calls, place);
    Standalone::Presence& now = m_presences[call.object->name];
    if (now != presence) {
        now = presence;
        lines.push_back("interface " + scriptWord(call.object->name) + " " + std::string(toString(presence)));
    }
}

// What is put into the script

void ScriptWriter::flush() {
    if (!m_step) {
        return;
    }
    checkTold();
    put("");
    for (const std::string& line : m_step->comments) {
        put("# " + commentText(line));
    }
    for (const std::string& line : m_step->before) {
        put(line);
    }
    for (const std::string& line : m_faults.take()) {
        put(line);
    }
    if (m_step->line.empty()) {
        for (const Write& write : m_step->writes) {
            const bool isDriver = m_inventory.driver(write.destination) != nullptr && write.value;
            put((isDriver ? "write " : "# ") + scriptWord(write.destination) + " " +
                std::to_string(write.value.value_or(0)));
        }
    } else {
        put(m_step->line);
    }
    if (m_step->isFailed && !m_step->isUncertain && !m_step->line.empty()) {
        put("expect result failed");
    }
    if (m_step->isExpected) {
        put(expectationOf(m_step->writes));
    }
    m_step.reset();
}

/** A run tells all that are there, up to the first module that fails. */
void ScriptWriter::checkTold() {
    const std::size_t all = everybody();
    if (all == 0 || m_step->line.empty() || m_step->told.size() >= all ||
        (m_step->isFailed && hasToldTheFirst())) {
        return;
    }
    m_step->comments.push_back("It was told to " + std::to_string(m_step->told.size()) + " of " +
                               std::to_string(all) + "; a run tells all of them.");
    m_step->isExpected = false;
    note("a command that is for some of the channels alone");
}

/** To how many the step is told by a run; 0: to one that it names. */
std::size_t ScriptWriter::everybody() const {
    if (m_step->kind == Kind::temperature) {
        return std::max(m_observers.size(), m_inventory.channels().size());
    }
    if (m_step->kind != Kind::phase) {
        return 0;
    }
    return m_inventory.channels().size() + (m_step->key == 11 ? m_callbacks.size() : 0);
}

/** Those that were told are the ones that a run tells before the others. */
bool ScriptWriter::hasToldTheFirst() const {
    std::size_t told = 0;
    for (const SeenChannel& channel : m_inventory.channels()) {
        const bool isTold = std::any_of(m_step->told.begin(), m_step->told.end(), [&](const Object* object) {
            return object->kind == Recordings::ObjectKind::module && object->first == channel.number;
        });
        if (!isTold) {
            break;
        }
        ++told;
    }
    const auto modules = std::count_if(m_step->told.begin(), m_step->told.end(), [](const Object* object) {
        return object->kind == Recordings::ObjectKind::module;
    });
    return told == static_cast<std::size_t>(modules);
}

/** Not all. */
bool ScriptWriter::hasStartedSome() const {
    std::set<std::int32_t> started;
    for (const auto& [object, phase] : m_startedPhases) {
        if (object != nullptr && object->kind == Recordings::ObjectKind::module) {
            started.insert(object->first);
        }
    }
    return std::any_of(m_inventory.channels().begin(), m_inventory.channels().end(),
                       [&](const SeenChannel& channel) { return started.count(channel.number) == 0; });
}

void ScriptWriter::flushStart() {
    m_isStarting = false;
    if (!m_hasStarted) {
        return;
    }
    m_hasStarted = false;
    put("");
    put("# The start-up, which a run makes by itself.");
    if (m_isAdrift && m_isStartFailed) {
        stop("It failed for answers that no script gives it; that of a run may not.",
             "what was done after the start-up failed");
        return;
    }
    if (m_isAdrift) {
        put("# It met answers that no script gives it: what is written is not expected from here on.");
    }
    if (!m_isStartFailed && hasStartedSome()) {
        put("# Not all channels were started; a run starts all of them.");
        note("the start-up of some of the channels");
        m_isStartExpected = false;
    }
    put(m_isStartFailed ? "expect result failed" : "expect result ok");
    if (m_isStartExpected) {
        std::vector<Write> writes;
        for (const std::int32_t phase : {11, 5, 20}) {
            writes.insert(writes.end(), m_startWrites[phase].begin(), m_startWrites[phase].end());
        }
        put(expectationOf(writes));
    }
}

void ScriptWriter::put(const std::string& line) {
    if (m_isOver) {
        return;
    }
    m_text += line + "\n";
    if (m_text.size() > mostScript) {
        m_isOver = true;
        m_text += "\n# A script has no room for more.\n";
        note("what a script has no room for");
    }
}

void ScriptWriter::stop(const std::string& why, const std::string& unknown) {
    flush();
    flushStart();
    put("");
    put("# " + why);
    note(unknown);
    m_isOver = true;
}

void ScriptWriter::note(const std::string& text) {
    if (std::find(m_notes.begin(), m_notes.end(), text) == m_notes.end()) {
        m_notes.push_back(text);
    }
}

std::optional<int> ScriptWriter::channelOf(const Deed& deed) const {
    const Object* const object = deed.began->object;
    return object != nullptr ? Recordings::channelOf(m_file, *object) : std::nullopt;
}

} // namespace

std::string scriptText(const Inventory& inventory, RecordingFile& file,
                       const std::vector<std::string>& origin, std::vector<std::string>& notes) {
    return ScriptWriter(inventory, file, notes).write(origin);
}

} // namespace Radio::Describing

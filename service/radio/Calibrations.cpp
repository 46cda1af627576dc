#include "service/radio/Calibrations.h"

#include "radio/board/BoardFile.h"
#include "radio/board/BoardNames.h"
#include "radio/calibration/CalibrationEvents.h"
#include "radio/calibration/OwnFiles.h"
#include "radio/calibration/QualificationJson.h"
#include "radio/calibration/Reservations.h"
#include "radio/calibration/Settings.h"
#include "radio/files/AtomicFile.h"
#include "radio/files/InputError.h"
#include "radio/text/Words.h"
#include "service/radio/Problem.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <utility>
#include <vector>

namespace Radio::Service {

namespace {

/** So many are remembered, with their points. */
constexpr std::size_t mostRuns = 4;

/** How to choose otherwise, in the words of a body. */
std::string adviceOf(const ChoiceError& error) {
    const std::string& choice = error.choice();
    if (choice == "resume or restart") {
        return "; \"beginning\": \"resume\" goes on with it, \"restart\" keeps it as a backup and begins "
               "anew";
    }
    if (choice == "restart" || choice == "hardware or restart" || choice == "put away") {
        return "; \"beginning\": \"restart\" keeps it as a backup and begins anew";
    }
    for (const auto& [known, member] :
         {std::pair("band", "band_khz"), std::pair("step", "step_khz"), std::pair("i-range", "i_range"),
          std::pair("q-range", "q_range"), std::pair("temperatures", "temperatures_c")}) {
        if (choice == known) {
            return ", or " + inQuotes(member);
        }
    }
    return {};
}

[[noreturn]] void refuse(const std::string& why) {
    throw Problem(ProblemKind::refused, why);
}

/** An event without its name. */
Json membersOf(const Json& event) {
    Json members = Json::object();
    for (const auto& [name, value] : event.members()) {
        if (name != "event") {
            members[name] = value;
        }
    }
    return members;
}

Json textOrNull(const std::string& text) {
    return text.empty() ? Json(nullptr) : Json(text);
}

Json progressJson(const Calibration::CalibrationProgress& progress) {
    const bool isFit = progress.mostProbes != 0;
    return {{"points", progress.points},
            {"done", isFit ? progress.probes : progress.points},
            {"total", isFit ? progress.mostProbes : progress.wantedPoints},
            {"unit", isFit ? "probes" : "points"},
            {"worst_dbc", progress.worst ? Json(std::round(*progress.worst * 100.0) / 100.0) : Json(nullptr)},
            {"highest_reading", orNull(progress.highestReading)},
            {"from_journal", progress.isFromJournal}};
}

} // namespace

struct Calibrations::Run {
    std::uint64_t number = 0;
    Calibration::CalibrationOrder order{};
    bool isForced = false;
    /** "waiting", "running", "cancelling", or how it ended: "complete", "cancelled", "refused", "failed". */
    std::string state = "waiting";
    /** Until it is over. */
    std::unique_ptr<Calibration::CalibrationRun> engine{};
    Calibration::Settings settings{};
    Calibration::PutAway putAway{};
    std::vector<std::string> warnings{};
    bool isCancelled = false;
    Calibration::CalibrationProgress progress{};
    Calibration::PersonsWord word{};
    /** As events, without their names. */
    Json beginning{nullptr};
    Json qualification{nullptr};
    Json outcome{nullptr};
    /** Without their probes, of which the number is kept. */
    std::vector<std::pair<Calibration::Point, std::size_t>> points{};

    bool isFit() const { return settings.method == CalibrationMethod::fit; }
    bool isAwaitingWord() const { return progress.awaited && progress.awaited->isByWord; }
    Json pointJson(std::size_t at) const {
        Json json = membersOf(pointEvent(points[at].first, isFit()));
        json["probes"] = points[at].second;
        return json;
    }
};

/** Keeps what a run tells, and hands it on. */
class Calibrations::Listener final : public Calibration::CalibrationListener {
public:
    Listener(Calibrations& owner, Run& run, const std::function<bool()>& goOn)
        : m_owner(owner),
          m_run(run),
          m_goOn(goOn) {}

    void isUp(RadioUnit& radio) override { m_owner.m_radio.show(&radio); }
    void goes(RadioUnit& /*radio*/) override { m_owner.m_radio.show(nullptr); }
    void begins(const Board& board, const Calibration::Result& result, std::size_t known) override {
        const Json event = Calibration::beginningEvent(board, result, known);
        m_run.beginning = membersOf(event);
        m_owner.tell(m_run, event);
    }
    void qualified(const Calibration::Qualification& qualification) override {
        const Json event = qualificationEvent(qualification);
        m_run.qualification = membersOf(event);
        m_owner.tell(m_run, event);
    }
    void calibrated(const Calibration::Point& point) override {
        m_owner.tell(m_run, pointEvent(point, m_run.isFit()));
        m_run.points.emplace_back(point, point.probes.size());
        m_run.points.back().first.probes = {};
    }
    bool goOn(const Calibration::CalibrationProgress& progress) override {
        const auto before = m_run.progress.awaited;
        m_run.progress = progress;
        const auto& awaited = progress.awaited;
        if (awaited && (!before || before->wanted != awaited->wanted || before->now != awaited->now)) {
            m_owner.tell(m_run, awaitingEvent(*awaited));
        }
        return m_goOn() && !m_run.isCancelled;
    }

private:
    Calibrations& m_owner;
    Run& m_run;
    const std::function<bool()>& m_goOn;
};

Calibrations::Calibrations(Board& board, ServedRadio& radio, Setting setting)
    : m_board(board),
      m_radio(radio),
      m_setting(std::move(setting)) {}

Calibrations::~Calibrations() = default;

void Calibrations::requireNone() const {
    if (m_current != nullptr) {
        throw Problem(ProblemKind::calibrating,
                      "calibration " + std::to_string(m_current->number) + " of channel " +
                          std::to_string(m_current->settings.channel) +
                          " has the radio, expected to wait for its end or to cancel it",
                      {{"calibration", m_current->number}});
    }
}

std::uint64_t Calibrations::begin(WantedCalibration wanted) {
    requireNone();
    auto run = std::make_unique<Run>();
    run->order = std::move(wanted.order);
    run->order.isHardware = m_setting.hardware != nullptr;
    run->order.version = m_setting.version;
    run->isForced = wanted.isForced;
    if (findChannel(m_board, run->order.wishes.channel) == nullptr) {
        throw std::invalid_argument("\"channel\": the board has no channel " +
                                    std::to_string(run->order.wishes.channel));
    }
    try {
        prepare(*run);
    } catch (const ChoiceError& error) {
        throw Problem(ProblemKind::refused, error.what() + adviceOf(error), {{"choice", error.choice()}});
    } catch (const InputError& error) {
        refuse(error.what());
    }
    run->number = ++m_last;
    m_runs.push_back(std::move(run));
    if (m_runs.size() > mostRuns) {
        m_runs.pop_front();
    }
    m_current = m_runs.back().get();
    if (!m_current->putAway.backup.empty()) {
        tell(*m_current, putAwayEvent(m_current->engine->journalFile().string(), m_current->putAway));
    }
    for (const std::string& warning : m_current->warnings) {
        tell(*m_current, {{"event", "warning"}, {"text", warning}});
    }
    return m_last;
}

/** As "radioctl calibrate" begins. */
void Calibrations::prepare(Run& run) {
    run.engine = std::make_unique<Calibration::CalibrationRun>(m_board, run.order);
    Calibration::CalibrationRun& engine = *run.engine;
    run.settings = engine.settings();
    std::string wrong = Calibration::whyNotOwnFiles({{"the board", m_board.file},
                                                     {"the journal", engine.journalFile()},
                                                     {"the tables", engine.tablesFile()}});
    if (wrong.empty()) {
        wrong = Calibration::whyNoJournal(m_board, engine.journalFile());
    }
    if (!wrong.empty()) {
        refuse(wrong);
    }
    wrong = whyNotWithMethod(run.order.wishes, run.settings.method);
    if (!wrong.empty()) {
        throw std::invalid_argument(wrong);
    }
    requireWritable(engine.tablesFile());
    const std::string reservation =
        Calibration::reservationAgainst(m_board, m_radio.platform(), run.settings, run.order.isHardware);
    if (!reservation.empty() && run.order.isHardware && !run.isForced) {
        refuse(reservation + "; \"force\": true calibrates all the same");
    }
    if (!reservation.empty()) {
        run.warnings.push_back(reservation);
    }
    engine.open();
    run.putAway = engine.putAway();
}

bool Calibrations::carryOut(const std::function<bool()>& goOn) {
    if (m_current == nullptr) {
        return true;
    }
    Run& run = *m_current;
    const std::string title =
        "calibration " + std::to_string(run.number) + " of channel " + std::to_string(run.settings.channel);
    m_setting.note(title + " begins");
    const bool isUp = m_radio.lend([&] { measure(run, goOn); }, goOn);
    m_current = nullptr;
    // Who is told that it is over finds the radio as it is from now on.
    Json event = {{"event", "calibrated"}};
    for (const auto& [name, value] : run.outcome.members()) {
        event[name] = value;
    }
    tell(run, std::move(event));
    m_setting.note(title + " is over: " + run.state);
    return isUp;
}

void Calibrations::measure(Run& run, const std::function<bool()>& goOn) {
    if (run.state == "waiting") {
        run.state = "running";
    }
    Calibration::CalibrationOutcome outcome;
    try {
        Calibration::CalibrationBench bench;
        if (m_setting.hardware != nullptr) {
            m_setting.hardware->setForced(run.isForced);
            bench = Calibration::benchOf(*m_setting.hardware);
            bench.listen = [&run] { return std::exchange(run.word, {}); };
        }
        Listener listener(*this, run, goOn);
        outcome = run.engine->run(listener, bench);
    } catch (const std::exception& error) {
        m_radio.show(nullptr);
        outcome.trouble = error.what();
    }
    // Others may have its files from now on.
    run.engine.reset();
    run.progress.awaited.reset();
    if (!outcome.tables.empty()) {
        takeTables(run, outcome.tables);
    }
    conclude(run, outcome);
}

void Calibrations::conclude(Run& run, const Calibration::CalibrationOutcome& outcome) {
    run.state = !outcome.trouble.empty()   ? "failed"
                : !outcome.refusal.empty() ? "refused"
                : outcome.isComplete       ? "complete"
                                           : "cancelled";
    for (const Json& tried : triedEvents(outcome.result)) {
        tell(run, tried);
    }
    Json event = endEvent(outcome);
    event["held_back_by_edge"] = outcome.isHeldBackByEdge;
    event["held_back_by_fail"] = outcome.isHeldBackByFail;
    event["unchanged"] = outcome.isUnchanged;
    event["trouble"] = textOrNull(outcome.trouble);
    event["refusal"] = textOrNull(outcome.refusal);
    event["way_on"] = textOrNull(outcome.wayOn);
    event["elapsed_seconds"] = outcome.seconds;
    event["interrupted"] = run.state == "cancelled";
    event["is_good"] = outcome.isGood;
    run.outcome = membersOf(event);
    ++m_ended[run.state];
    m_good[run.settings.channel] = outcome.isGood;
}

/** The radio goes on with what was found. */
void Calibrations::takeTables(Run& run, const std::string& file) {
    try {
        const Board fresh = loadBoard(m_board.file);
        for (TableDescription& table : m_board.tables) {
            const auto same = std::find_if(fresh.tables.begin(), fresh.tables.end(), [&](const auto& one) {
                return one.table.name == table.table.name && one.column == table.column;
            });
            if (table.file == file && same != fresh.tables.end() && same->isThere()) {
                table = *same;
            }
        }
    } catch (const InputError& error) {
        run.warnings.push_back(std::string("the radio has its old tables until it is started again: ") +
                               error.what());
        tell(run, {{"event", "warning"}, {"text", run.warnings.back()}});
    }
}

Calibrations::Run& Calibrations::named(std::uint64_t number) const {
    const auto found = std::find_if(m_runs.begin(), m_runs.end(),
                                    [number](const auto& run) { return run->number == number; });
    if (found == m_runs.end()) {
        throw Problem(ProblemKind::notFound, "there is no calibration " + std::to_string(number) +
                                                 ", of which the last " + std::to_string(mostRuns) +
                                                 " are kept");
    }
    return **found;
}

bool Calibrations::cancel(std::uint64_t number) {
    Run& run = named(number);
    if (&run != m_current) {
        return false;
    }
    run.isCancelled = true;
    run.state = "cancelling";
    return true;
}

void Calibrations::tellTemperature(std::uint64_t number, std::optional<int> degrees) {
    Run& run = named(number);
    if (!run.isAwaitingWord()) {
        throw Problem(ProblemKind::notNow, "calibration " + std::to_string(number) +
                                               " does not wait for a temperature that " +
                                               "somebody brings about");
    }
    run.word = {true, degrees};
}

void Calibrations::tell(const Run& run, Json event) const {
    event["run"] = run.number;
    m_setting.tell(event);
}

Json Calibrations::state(std::uint64_t number, std::size_t firstPoint) const {
    const Run& run = named(number);
    Json awaited = nullptr;
    if (run.progress.awaited) {
        awaited = membersOf(awaitingEvent(*run.progress.awaited));
    }
    Json points = Json::array();
    for (std::size_t at = firstPoint; at < run.points.size(); ++at) {
        points.push_back(run.pointJson(at));
    }
    return {{"calibration", run.number},
            {"channel", run.settings.channel},
            {"state", run.state},
            {"settings", toJson(run.settings)},
            {"progress", progressJson(run.progress)},
            {"awaiting", awaited},
            {"warnings", run.warnings},
            {"put_away", textOrNull(run.putAway.backup)},
            {"begun", run.beginning},
            {"qualification", run.qualification},
            {"outcome", run.outcome},
            {"points", points}};
}

Json Calibrations::list() const {
    Json list = Json::array();
    for (const auto& run : m_runs) {
        list.push_back({{"calibration", run->number},
                        {"channel", run->settings.channel},
                        {"state", run->state},
                        {"progress", progressJson(run->progress)}});
    }
    return {{"going_on", m_current == nullptr ? Json(nullptr) : Json(m_current->number)},
            {"calibrations", list}};
}

void Calibrations::addTo(Metrics& metrics) const {
    metrics.family("radio_calibration_running", "gauge", "1 while a calibration has the radio.");
    metrics.sample(m_current != nullptr ? 1 : 0);
    if (m_current != nullptr) {
        const Calibration::CalibrationProgress& progress = m_current->progress;
        const bool isFit = progress.mostProbes != 0;
        const auto done = static_cast<double>(isFit ? progress.probes : progress.points);
        const auto total = static_cast<double>(isFit ? progress.mostProbes : progress.wantedPoints);
        metrics.family("radio_calibration_progress_ratio", "gauge",
                       "How much of its points a calibration has, or a fit of its probes.");
        metrics.sample(total > 0 ? std::min(done / total, 1.0) : 0.0,
                       {{"channel", std::to_string(m_current->settings.channel)}});
    }
    metrics.family(
        "radio_calibration_good", "gauge",
        "Whether the last calibration of a channel was good: complete, stored and within the limits.");
    for (const auto& [channel, isGood] : m_good) {
        metrics.sample(isGood ? 1 : 0, {{"channel", std::to_string(channel)}});
    }
    metrics.family("radio_calibrations_total", "counter", "Calibrations that are over, by how they ended.");
    for (const auto& [state, count] : m_ended) {
        metrics.sample(static_cast<double>(count), {{"state", state}});
    }
}

} // namespace Radio::Service

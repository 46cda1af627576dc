#include "radio/laboratory/Trial.h"

#include "radio/board/Verdict.h"
#include "radio/calibration/CalibrationRun.h"

#include <algorithm>
#include <array>
#include <tuple>
#include <utility>

namespace Radio::Laboratory {

namespace {

using Calibration::CalibrationOutcome;

constexpr std::array<std::pair<TrialEnd, std::string_view>, 5> endWords{{{TrialEnd::held, "held"},
                                                                         {TrialEnd::missed, "missed"},
                                                                         {TrialEnd::edge, "edge"},
                                                                         {TrialEnd::failed, "failed"},
                                                                         {TrialEnd::refused, "refused"}}};

class Watcher final : public Calibration::CalibrationListener {
public:
    explicit Watcher(const std::function<bool()>& goOn) : m_goOn(goOn) {}

    void begins(const Board& /*board*/, const Calibration::Result& /*result*/,
                std::size_t /*knownProbes*/) override {}
    void calibrated(const Calibration::Point& /*point*/) override {}
    bool goOn(const Calibration::CalibrationProgress& /*progress*/) override {
        m_isStopped = m_isStopped || !m_goOn();
        return !m_isStopped;
    }
    bool isStopped() const { return m_isStopped; }

private:
    const std::function<bool()>& m_goOn;
    bool m_isStopped = false;
};

/** Of the first point with this state. */
std::string remarkOf(const CalibrationOutcome& outcome, Calibration::PointState state) {
    const std::vector<Calibration::Point>& points = outcome.result.points;
    const auto found = std::find_if(points.begin(), points.end(),
                                    [state](const auto& point) { return point.state == state; });
    return found == points.end() ? ""
                                 : std::to_string(found->frequency) + " kHz, " +
                                       std::to_string(found->temperature) + " degrees: " + found->remark;
}

/** Why limits of the board are not held. */
std::string missedReason(const CalibrationOutcome& outcome) {
    for (const JudgedLimit& limit : outcome.verdict.limits) {
        if (!limit.isHeld()) {
            return missedText(limit);
        }
    }
    return outcome.result.fit ? outcome.result.fit->reason : "";
}

bool hasTables(const CalibrationOutcome& outcome) {
    return outcome.isComplete && outcome.summary.failed == 0 &&
           !Calibration::asTables(outcome.result).points.empty();
}

std::pair<TrialEnd, std::string> endOf(const CalibrationOutcome& outcome) {
    using Calibration::PointState;
    if (!outcome.refusal.empty()) {
        return {TrialEnd::refused, outcome.refusal};
    }
    if (!outcome.trouble.empty()) {
        return {TrialEnd::failed, outcome.trouble};
    }
    const bool isFit = outcome.result.fit.has_value();
    if (!hasTables(outcome)) {
        return {TrialEnd::failed, outcome.summary.failed != 0 ? remarkOf(outcome, PointState::failed)
                                  : isFit                     ? outcome.result.fit->reason
                                                              : "there are no tables"};
    }
    if (outcome.summary.edge != 0) {
        return {TrialEnd::edge, remarkOf(outcome, PointState::edge)};
    }
    return outcome.isGood ? std::pair<TrialEnd, std::string>(TrialEnd::held, "")
                          : std::pair(TrialEnd::missed, missedReason(outcome));
}

std::uint32_t temperatureChangesOf(const CalibrationOutcome& outcome) {
    if (outcome.result.fit) {
        return outcome.result.fit->temperatureChanges;
    }
    std::uint32_t changes = outcome.result.points.empty() ? 0 : 1;
    for (std::size_t n = 1; n < outcome.result.points.size(); ++n) {
        changes += outcome.result.points[n].temperature != outcome.result.points[n - 1].temperature ? 1 : 0;
    }
    return std::max(changes, outcome.newProbes == 0 ? 0U : 1U);
}

} // namespace

std::string_view toString(TrialEnd end) {
    return std::find_if(endWords.begin(), endWords.end(), [end](const auto& one) { return one.first == end; })
        ->second;
}

std::optional<TrialEnd> trialEndFromString(std::string_view word) {
    const auto found = std::find_if(endWords.begin(), endWords.end(),
                                    [word](const auto& one) { return one.second == word; });
    return found == endWords.end() ? std::nullopt : std::optional(found->first);
}

std::optional<Trial> carryOut(const Description& laboratory, const Task& task,
                              const std::function<bool()>& goOn) {
    Board board = laboratory.board;
    const auto leakage = std::find_if(board.leakages.begin(), board.leakages.end(),
                                      [&](const auto& one) { return one.channel == laboratory.channel; });
    const LeakageDescription& like = laboratory.units.empty() ? laboratory.population.base()
                                                              : laboratory.units.at(task.transmitter).leakage;
    *leakage = laboratory.population.draw(like, laboratory.seed, task.transmitter);
    const NamedSettings& settings = laboratory.settings.at(task.settings);
    Calibration::CalibrationOrder order;
    order.wishes = settings.wishes;
    order.beginning = Calibration::Beginning::rehearsal;
    order.qualifies = settings.qualifies;
    Calibration::CalibrationRun run(board, order);
    Watcher watcher(goOn);
    const CalibrationOutcome outcome = run.run(watcher);
    if (watcher.isStopped()) {
        return std::nullopt;
    }
    Trial trial;
    trial.task = task;
    if (!laboratory.units.empty()) {
        trial.unit = laboratory.units.at(task.transmitter).name;
    }
    std::tie(trial.end, trial.reason) = endOf(outcome);
    trial.probes = outcome.newProbes;
    trial.temperatureChanges = temperatureChangesOf(outcome);
    constexpr double msPerSecond = 1000.0;
    trial.seconds = outcome.modelledSeconds +
                    static_cast<double>(trial.probes) * laboratory.time.probe / msPerSecond +
                    trial.temperatureChanges * laboratory.time.temperatureChange;
    if (outcome.summary.before) {
        trial.uncorrected = outcome.summary.before->level;
    }
    if (hasTables(outcome)) {
        for (const auto& worst : {outcome.summary.after, outcome.summary.between}) {
            if (worst) {
                trial.worst = std::max(trial.worst.value_or(worst->level), worst->level);
            }
        }
    }
    return trial;
}

} // namespace Radio::Laboratory

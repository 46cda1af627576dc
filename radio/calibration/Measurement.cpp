#include "radio/calibration/Measurement.h"

#include "radio/board/BoardNames.h"
#include "radio/calibration/Analyser.h"
#include "radio/calibration/Calibrator.h"
#include "radio/calibration/Climate.h"
#include "radio/calibration/FitOutcome.h"
#include "radio/calibration/FitProber.h"
#include "radio/calibration/LeakageVerdict.h"
#include "radio/calibration/Settings.h"
#include "radio/files/InputError.h"
#include "radio/fit/Fit.h"
#include "radio/session/BootedRadio.h"
#include "radio/text/Words.h"

#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <utility>

namespace Radio::Calibration {

namespace {

/** Has a listener know the radio for as long as it may. */
class Presentation {
public:
    Presentation(CalibrationListener& listener, RadioUnit& radio) : m_listener(listener), m_radio(radio) {
        m_listener.isUp(m_radio);
    }
    Presentation(const Presentation&) = delete;
    Presentation& operator=(const Presentation&) = delete;
    ~Presentation() { m_listener.goes(m_radio); }

private:
    CalibrationListener& m_listener;
    RadioUnit& m_radio;
};

} // namespace

void Measurement::run(CalibrationListener& listener, const CalibrationBench& bench) {
    takeDetector();
    Result& result = m_outcome.result;
    const Settings& settings = result.settings;
    const bool isBench = result.isHardware && !isOffline();
    if (isBench && (!bench.backings || !bench.sense || !bench.poll)) {
        throw std::logic_error("a calibration on hardware without any");
    }
    double slept = 0.0;
    BootedRadio booted(m_board, isBench ? bench.backings : Backings());
    booted.requireUp();
    booted.radio().clock().addListener([&slept](double milliseconds) { slept += milliseconds; });
    const Presentation presentation(listener, booted.radio());
    std::optional<Climate> climate;
    if (isBench) {
        climate.emplace(m_board, settings.channel, result.climate, bench);
    }
    try {
        chooseRoute(bench);
    } catch (const InputError& error) {
        m_outcome.trouble = error.what();
        return;
    }
    m_goOn = [&] {
        CalibrationProgress now = progress();
        if (climate) {
            climate->poll();
            now.awaited = climate->awaited();
        }
        return m_goesOn = listener.goOn(now) && m_goesOn;
    };
    Probing probing{m_journal, m_goOn, m_order.isRealTime || isBench, settings.readings,
                    m_order.beginning == Beginning::rehearsal};
    Calibrator calibrator(booted, m_board, result, probing, m_outcome.journal, climate ? &*climate : nullptr);
    listener.begins(m_board, result, m_outcome.knownProbes);
    const auto start = std::chrono::steady_clock::now();
    // In ms. From its beginning to its end a radio sleeps for probes alone.
    slept = 0.0;
    if (qualify(calibrator, listener) && m_goesOn) {
        probing.readings = settings.readings;
        m_outcome.isComplete = settings.method == CalibrationMethod::fit ? fitAll(calibrator, listener)
                                                                         : searchAll(calibrator, listener);
    }
    m_outcome.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    m_outcome.modelledSeconds = slept / 1000.0;
    m_outcome.newProbes = calibrator.newProbes() + m_outcome.qualifyingReadings;
    m_goOn = {};
    if (m_outcome.wayOn == "resume") {
        m_outcome.trouble += "; what was entered before is kept: " +
                             counted(m_outcome.knownProbes + calibrator.newProbes(), "probe");
        m_outcome.wayOn = m_journal->isFull() ? "room" : m_outcome.wayOn;
    }
}

/** Nothing more can be measured. */
void Measurement::stopFor(const Calibrator& calibrator) {
    m_outcome.trouble = calibrator.whyStopped();
    m_outcome.wayOn = calibrator.wayOn();
}

bool Measurement::searchAll(Calibrator& calibrator, CalibrationListener& listener) {
    Result& result = m_outcome.result;
    for (const std::int32_t temperature : result.route) {
        for (const std::uint32_t frequency : result.settings.frequencies) {
            const JournaledProbes& known = m_known.probes[{temperature, frequency}];
            const auto uncorrected = m_known.uncorrected.find({temperature, frequency});
            Point point = calibrator.calibrate(
                frequency, temperature, known,
                uncorrected == m_known.uncorrected.end() ? std::nullopt : std::optional(uncorrected->second));
            if (!m_goesOn) {
                return false;
            }
            if (!calibrator.whyStopped().empty() && !isOffline()) {
                stopFor(calibrator);
                return false;
            }
            const bool isFromJournal = point.probes.size() <= known.size();
            analyse(calibrator, point, [&] { return !isFromJournal || calibrator.bring(point); });
            holdToLimits(point, m_board.limits);
            note(point, isFromJournal);
            listener.calibrated(point);
            result.points.push_back(std::move(point));
            if (!m_goOn()) {
                return result.points.size() == m_outcome.wanted;
            }
        }
    }
    return true;
}

bool Measurement::fitAll(Calibrator& calibrator, CalibrationListener& listener) {
    Result& result = m_outcome.result;
    const LeakageDescription* const leakage =
        result.isHardware ? nullptr : findLeakage(m_board, result.settings.channel);
    const Fit::Order order = fitOrder(m_board, result);
    const bool isAbsolute = order.detector.zero.has_value();
    const auto goOn = [this](const FitProber& now) {
        m_isFromJournal = now.isFromJournal();
        m_fitProbes = now.probes();
        return m_goOn();
    };
    const FitProber* there = nullptr;
    const auto fitted = [&](const Fit::Point& place, std::vector<Probe> probes) {
        Point point = pointOf(place, std::move(probes), leakage, isAbsolute);
        // The last probe was made with the corrections found.
        analyse(calibrator, point, [&] { return there->isThere(); });
        holdToLimits(point, m_board.limits);
        note(point, m_isFromJournal);
        listener.calibrated(point);
        result.points.push_back(std::move(point));
    };
    const auto tried = [&](const Fit::Verification& place) {
        Point point = triedPointOf(place, leakage, isAbsolute);
        analyse(calibrator, point, [&] { return there->isThere(); });
        result.tries.push_back(std::move(point));
    };
    FitProber prober(calibrator, m_known.probes, result.isHardware && !isOffline(), {goOn, fitted, tried});
    there = &prober;
    Fit::Outcome outcome = Fit::calibrate(order, prober);
    prober.leave();
    // A real transmitter is not to be left with what was only a probe.
    calibrator.restore();
    m_outcome.wanted = result.points.size();
    if (!m_goesOn) {
        return false;
    }
    if (!calibrator.whyStopped().empty()) {
        stopFor(calibrator);
        return false;
    }
    if (!prober.trouble().empty()) {
        m_outcome.trouble = prober.trouble();
        m_outcome.wayOn = "measure";
        return false;
    }
    result.nodes = nodesOf(outcome.table, result.settings, leakage);
    if (leakage != nullptr) {
        for (Point& node : result.nodes) {
            holdToLimits(node, m_board.limits);
            // The whole verdict tells of them.
            node.remark.clear();
        }
    }
    result.claim = claimOf(outcome, result.settings.limit);
    result.fit = std::move(outcome);
    return true;
}

/** On a real radio, where the board has a spectrum analyser. */
void Measurement::analyse(Calibrator& calibrator, Point& point, const std::function<bool()>& bring) {
    if (!m_outcome.result.isHardware) {
        return;
    }
    try {
        Analyser(analyserOf(m_board, m_order.wishes.channel), calibrator.platform(), m_journal,
                 m_known.analysed)
            .look(point, bring);
    } catch (const InputError& error) {
        m_outcome.trouble = error.what();
        m_outcome.wayOn = "resume";
        m_goesOn = false;
    }
}

bool Measurement::qualify(Calibrator& calibrator, CalibrationListener& listener) {
    Result& result = m_outcome.result;
    if (result.qualification) {
        listener.qualified(*result.qualification);
    }
    // What was measured with one settle time does not go on with another.
    if (!m_order.qualifies || isOffline() || result.qualification || !m_known.probes.empty()) {
        return true;
    }
    const Qualification found = calibrator.qualify(result.settings.frequencies.front(), result.route.front(),
                                                   statedSettleTime(m_board, m_order.wishes));
    m_outcome.qualifyingReadings = found.taken;
    m_outcome.trouble = calibrator.whyStopped();
    if (found.isInterrupted || !m_outcome.trouble.empty()) {
        return false;
    }
    if (found.isGood()) {
        try {
            if (m_journal != nullptr) {
                m_journal->enter(found);
            }
        } catch (const InputError& error) {
            m_outcome.trouble = error.what();
            return false;
        }
        adopt(result, found);
    } else {
        m_outcome.refusal = found.refusal;
    }
    listener.qualified(found);
    return found.isGood();
}

/** What the board states of a real detector. */
void Measurement::takeDetector() {
    for (const CalibrationDescription& described : m_board.calibrations) {
        if (m_outcome.result.isHardware && described.channel == m_order.wishes.channel) {
            m_outcome.result.detectorSlope = described.detectorSlope;
            m_outcome.result.detectorZero = described.detectorZero;
        }
    }
}

void Measurement::chooseRoute(const CalibrationBench& bench) {
    Result& result = m_outcome.result;
    result.route = m_known.route.empty() ? result.settings.temperatures : m_known.route;
    const bool isNew = result.isHardware && !isOffline() && m_known.route.empty() && m_known.probes.empty();
    if (!isNew || !m_board.hardware.description.sensor) {
        return;
    }
    result.route = routeThrough(result.settings.temperatures, bench.sense());
    if (result.route != result.settings.temperatures) {
        m_journal->enterRoute(result.route);
    }
}

void Measurement::note(const Point& point, bool isFromJournal) {
    m_isFromJournal = isFromJournal;
    if (point.state != PointState::failed) {
        // Nothing is less than anything.
        m_worst = std::max(m_worst, point.after);
        m_highestReading = std::max(m_highestReading, point.lastReading);
    }
}

CalibrationProgress Measurement::progress() const {
    const Settings& settings = m_outcome.result.settings;
    const bool isFit = settings.method == CalibrationMethod::fit;
    return {m_outcome.result.points.size(),
            isFit ? 0 : m_outcome.wanted,
            m_fitProbes,
            isFit ? settings.budget : 0,
            m_worst,
            m_highestReading,
            m_isFromJournal,
            {}};
}

void adopt(Result& result, const Qualification& qualification) {
    result.qualification = qualification;
    result.settings.settleTime = qualification.settleTime;
    result.settings.readings = qualification.readings;
}

} // namespace Radio::Calibration

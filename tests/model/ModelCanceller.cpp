// LO cancellation: set-up, correction by frequency, calibration.

#include "Model.h"

#include <cmath>

namespace Told {

namespace {

unsigned shown(Code code) {
    return static_cast<unsigned>(code);
}

} // namespace

Code Model::publishCanceller(ModelCanceller& canceller) {
    return hold("registerInterface", [&] {
        const Code code = m_platform.publish(canceller.name(), &canceller);
        if (isBad(code)) {
            m_platform.say(
                failed, "LoCancellation failed to register ILoCancellation interface [%s] (EAFResult = 0x%x)",
                canceller.name().c_str(), shown(code));
            return failed;
        }
        return ok;
    });
}

void Model::withdrawCanceller(ModelCanceller& canceller) {
    hold("unregisterInterface", [&] {
        const Code code = m_platform.withdraw(canceller.name());
        if (isBad(code)) {
            m_platform.say(
                failed,
                "LoCancellation failed to unregister ILoCancellation interface [%s] (EAFResult = 0x%x)",
                canceller.name().c_str(), shown(code));
        }
        return code;
    });
    m_platform.drop(canceller.name());
}

void Model::tellOfCanceller(const Step& step, ModelCanceller& canceller) {
    const auto first = static_cast<std::uint32_t>(step.number[0]);
    const std::int32_t second = asInt(step.number[1]);
    switch (step.what) {
    case Do::cancellerInit:
        return m_transcript.note("answer", initCanceller(canceller));
    case Do::correct:
        return m_transcript.note("answer", correct(canceller, first, second));
    case Do::setIq:
        return m_transcript.note("answer", setIq(canceller, asInt(first), second));
    default:
        return calibrate(canceller, step.calibration);
    }
}

Code Model::lookUpComplete(const std::string& driver, Handle& handle, bool& complete) {
    const Code code = m_platform.lookUpDriver(driver, handle);
    complete = !isBad(code) && m_platform.has(handle, Word::context | Word::write);
    return code;
}

bool Model::bindEither(ModelCanceller& canceller, const std::string& first, const std::string& second,
                       Handle& driver, bool& tookSecond) {
    const std::string prefix =
        "channel." + std::to_string(static_cast<std::uint32_t>(canceller.channel)) + ".";
    bool complete = false;
    tookSecond = false;
    lookUpComplete(prefix + first, driver, complete);
    if (complete) {
        return true;
    }
    tookSecond = true;
    const Code code = lookUpComplete(prefix + second, driver, complete);
    if (!complete) {
        m_platform.say(
            code,
            "LoCancellation failed to get driver interface [%s] or interface [%s] (EDriverResult = 0x%x)",
            (prefix + first).c_str(), (prefix + second).c_str(), shown(code));
    }
    return complete;
}

Code Model::initCanceller(ModelCanceller& canceller) {
    return hold("onModuleInit", [&] { return bindCanceller(canceller); });
}

Code Model::bindCanceller(ModelCanceller& canceller) {
    if (!m_platform.findDriverLayer()) {
        m_platform.say(failed, "LoCancellation failed to get driverlayer interface");
        return failed;
    }
    bool tookSecond = false;
    if (!bindEither(canceller, "tx.rf.mixer.i", "tx.bb.iq.coarse.dc.i.v.adjust", canceller.iDriver,
                    tookSecond) ||
        !bindEither(canceller, "tx.rf.mixer.q", "tx.bb.iq.coarse.dc.q.v.adjust", canceller.qDriver,
                    tookSecond) ||
        !bindEither(canceller, "tx.rf.detector.v", "tx.rf.detector.low.v.detect", canceller.detector,
                    tookSecond)) {
        return failed;
    }
    if (tookSecond) {
        const std::string high = "channel." + std::to_string(static_cast<std::uint32_t>(canceller.channel)) +
                                 ".tx.rf.detector.high.v.detect";
        bool complete = false;
        const Code code = lookUpComplete(high, canceller.highDetector, complete);
        if (!complete) {
            m_platform.say(code, "LoCancellation failed to get driver interface [%s] (EDriverResult = 0x%x)",
                           high.c_str(), shown(code));
            return failed;
        }
    }
    fetchCorrectionTable(canceller, "I", canceller.iTable);
    fetchCorrectionTable(canceller, "Q", canceller.qTable);
    return ok;
}

void Model::fetchCorrectionTable(ModelCanceller& canceller, const char* branch, Handle& table) {
    const std::string prefix =
        "Channel." + std::to_string(static_cast<std::uint32_t>(canceller.channel)) + ".Tx.";
    if (!isBad(m_platform.lookUpTable(prefix + "Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer." + branch,
                                      table))) {
        return;
    }
    const Code code =
        m_platform.lookUpTable(prefix + "Bb.Frequency.To.Coarse.Dc." + branch + ".Compensation", table);
    if (!isBad(code)) {
        canceller.usesTables = false;
        return;
    }
    m_platform.say(failed,
                   "Unable to fetch table Channel.%d.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.%s "
                   "(ECHResult = 0x%x)",
                   canceller.channel, branch, shown(code));
}

Code Model::setIq(ModelCanceller& canceller, std::int32_t i, std::int32_t q) {
    return hold("setIQ", [&] { return writeIq(canceller, i, q); });
}

Code Model::writeIq(ModelCanceller& canceller, std::int32_t i, std::int32_t q) {
    struct Branch {
        const char* name;
        Handle driver;
        std::int32_t value;
    };
    const std::array<Branch, 2> branches{{{"i", canceller.iDriver, i}, {"q", canceller.qDriver, q}}};
    for (const Branch& branch : branches) {
        if (!m_platform.has(branch.driver, Word::write)) {
            continue;
        }
        const Code code = m_platform.writeDriver(branch.driver, branch.value);
        if (isBad(code)) {
            m_platform.say(code, "Unable to write to driver Channel.%d.tx.rf.mixer.%s (EDriverResult = 0x%x)",
                           canceller.channel, branch.name, shown(code));
            return failed;
        }
    }
    return ok;
}

Code Model::correct(ModelCanceller& canceller, std::uint32_t frequency, std::int32_t temperature) {
    if (!canceller.usesTables) {
        return ok;
    }
    return hold("setLoCancellation", [&] {
        std::array<std::int32_t, 2> values{0, 0};
        for (std::size_t branch = 0; branch < 2; ++branch) {
            const Code code = m_platform.interpolate(branch == 0 ? canceller.iTable : canceller.qTable,
                                                     asInt(frequency), temperature, values[branch]);
            if (isBad(code)) {
                m_platform.say(
                    failed,
                    "Unable to fetch value from table "
                    "Channel.%d.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.%s (ECHResult = 0x%x)",
                    canceller.channel, branch == 0 ? "I" : "Q", shown(code));
            }
        }
        return setIq(canceller, values[0], values[1]);
    });
}

void Model::calibrate(ModelCanceller& canceller, Calibration calibration) {
    std::int32_t i = -77;
    std::int32_t q = -78;
    std::int32_t delta = -79;
    Code code = failed;
    if (calibration.nullPlaces != 0) {
        m_platform.say(failed, "calibrateLoCancellation called without a place for its results");
    } else {
        code = hold("calibrateLoCancellation", [&] { return search(canceller, calibration, i, q, delta); });
    }
    m_transcript.note("answer", code);
    m_transcript.note("I", i);
    m_transcript.note("Q", q);
    m_transcript.note("delta", delta);
    m_transcript.note("iterations", calibration.iterations);
}

Code Model::probe(ModelCanceller& canceller, const Calibration& calibration, int index, Wide i, Wide q,
                  std::int32_t& reading) {
    if (isBad(setIq(canceller, asInt(i), asInt(q)))) {
        m_platform.say(failed, "Failed to set I and Q [for index %d and RadioChannel %d]", index,
                       canceller.channel);
        return failed;
    }
    m_transcript.note("sleep", static_cast<std::int64_t>(modulo32(Wide{calibration.settleTimeMs} * 1000)));
    const Handle detector = calibration.useHighDetector ? canceller.highDetector : canceller.detector;
    if (detector == nowhere) {
        return ok;
    }
    if (!m_platform.has(detector, Word::read)) {
        m_platform.say(failed, "LoCancellation detector driver cannot be read (RadioChannel: %d)",
                       canceller.channel);
        return failed;
    }
    const Code code = m_platform.readDriver(detector, reading);
    if (isBad(code)) {
        m_platform.say(
            failed,
            "LoCancellation unable to read from detector driver (EDriverResult = 0x%x, RadioChannel: %d)",
            shown(code), canceller.channel);
        return failed;
    }
    return ok;
}

Code Model::search(ModelCanceller& canceller, Calibration& calibration, std::int32_t& i, std::int32_t& q,
                   std::int32_t& delta) {
    const double f = calibration.shrinkFactor;
    std::int32_t iLo = calibration.iLow;
    std::int32_t iHi = calibration.iHigh;
    std::int32_t qLo = calibration.qLow;
    std::int32_t qHi = calibration.qHigh;
    std::array<std::int32_t, 4> is{iLo, iHi, iLo, iHi};
    std::array<std::int32_t, 4> qs{qLo, qLo, qHi, qHi};
    std::array<std::int32_t, 4> readings{};
    do {
        std::size_t best = 0;
        for (std::size_t k = 0; k < 4; ++k) {
            if (isBad(probe(canceller, calibration, static_cast<int>(k), is[k], qs[k], readings[k]))) {
                return failed;
            }
            best = readings[k] <= readings[best] ? k : best;
        }
        double width = asInt(Wide{iHi} - iLo);
        double part = width * f;
        if (best == 0 || best == 2) {
            iHi = truncated(iLo + part);
        } else {
            iLo = truncated(iHi - part);
        }
        width = asInt(Wide{qHi} - qLo);
        part = width * f;
        if (best == 0 || best == 1) {
            qHi = truncated(qLo + part);
        } else {
            qLo = truncated(qHi - part);
        }
        const std::int32_t iWidth = asInt(Wide{iHi} - iLo);
        const std::int32_t qWidth = asInt(Wide{qHi} - qLo);
        delta = qWidth >= iWidth ? qWidth : iWidth;
        calibration.iterations = static_cast<std::uint32_t>(modulo32(Wide{calibration.iterations} + 1));
        const double rest = 1.0 - f;
        const double iNear = rest * iWidth;
        const double iFar = f * iWidth;
        const double qNear = rest * qWidth;
        const double qFar = f * qWidth;
        is = {truncated(iLo + iNear), truncated(iLo + iFar), truncated(iLo + iNear), truncated(iLo + iFar)};
        qs = {truncated(qLo + qNear), truncated(qLo + qNear), truncated(qLo + qFar), truncated(qLo + qFar)};
    } while (calibration.iterations < calibration.maxIterations && delta > calibration.minDelta);
    i = asInt(wrapped(Wide{iLo} + iHi) / 2); // the sum has 32 bits
    q = asInt(wrapped(Wide{qLo} + qHi) / 2);
    if (isBad(setIq(canceller, i, q))) {
        m_platform.say(failed, "Failed to set I and Q [for RadioChannel %d]", canceller.channel);
        return failed;
    }
    m_platform.say(256, "Calibrated LO cancellation, TxRF LO (I) = %i, TxRf LO (Q) = %i, maxDelta = %i", i, q,
                   delta);
    return ok;
}

} // namespace Told

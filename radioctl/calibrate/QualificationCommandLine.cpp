#include "radioctl/calibrate/QualificationCommandLine.h"

#include "radio/board/CalibrationBounds.h"

#include <limits>

namespace Radio::Calibration {

QualificationCommandLine::QualificationCommandLine(CommandLine::Command program)
    : m_qualify(program.command(
          "qualify", "Find out how well the detector of a channel\nfollows its corrections, before a "
                     "calibration")) {
    CalibrationDescription& wishes = m_options.order.wishes;
    m_qualify.option("BOARD", m_options.board, "Board description (TOML)").required().file({".toml"});
    m_qualify.option("--channel", wishes.channel, "The radio channel")
        .required()
        .named("N")
        .within(0, std::numeric_limits<int>::max());
    m_qualify.option("--settle-time", wishes.settleTime, "Say whether this one does")
        .named("MS")
        .within(settleTimeBounds.low, settleTimeBounds.high, "ms");
    m_qualify.option("--detector", m_detector, "low (also the only one) or high")
        .named("RANGE")
        .oneOf({"low", "high"});
    m_qualify.flag("--real-time", m_options.order.isRealTime, "Wait for each settle time");
    addHardwareOption(m_qualify, m_options.hardware);
    m_qualify.flag("--force", m_options.isForced,
                   "On hardware, measure also what is outside the\nboard's rasters, limits and ranges");
    m_qualify.json(m_options.json);
}

int QualificationCommandLine::run(bool json) {
    m_options.json |= json;
    m_options.order.isHardware = m_options.hardware.hardware;
    if (!m_detector.empty()) {
        m_options.order.wishes.useHighDetector = m_detector == "high";
    }
    return runQualification(m_options);
}

} // namespace Radio::Calibration

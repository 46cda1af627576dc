#include "radio/calibration/ChannelQualification.h"

#include "radio/board/BoardNames.h"
#include "radio/board/CalibrationBounds.h"
#include "radio/calibration/Calibrator.h"
#include "radio/calibration/HardwareUnderTest.h"
#include "radio/calibration/Settings.h"
#include "radio/files/InputError.h"
#include "radio/session/BootedRadio.h"

#include <algorithm>

namespace Radio::Calibration {

namespace {

/** What a calibration has to be told, and a qualification has not. */
CalibrationDescription withoutPoints(const Board& board, CalibrationDescription wishes) {
    constexpr std::int32_t roomTemperature = 25;
    const auto described = std::find_if(board.calibrations.begin(), board.calibrations.end(),
                                        [&](const auto& one) { return one.channel == wishes.channel; });
    wishes.step = static_cast<std::uint32_t>(carrierBounds.high);
    if (wishes.temperatures.empty()) {
        const bool isDescribed = described != board.calibrations.end() && !described->temperatures.empty();
        wishes.temperatures = {isDescribed ? described->temperatures.front() : roomTemperature};
    }
    wishes.temperatures.resize(1);
    return wishes;
}

} // namespace

ChannelQualifier::ChannelQualifier(const Board& board, const QualificationOrder& order)
    : m_board(board),
      m_order(order) {
    const int channel = order.wishes.channel;
    if (!order.isHardware && findLeakage(board, channel) == nullptr) {
        throw InputError({board.file.string(), 0},
                         "channel " + std::to_string(channel) +
                             " has no transmitter to qualify, expected a [[leakage]]");
    }
    m_settings = settingsFor(board, withoutPoints(board, order.wishes), order.isHardware);
    m_settings.frequencies.resize(1);
    if (order.isHardware) {
        requireCalibratable(board, m_settings);
    }
}

ChannelQualification ChannelQualifier::run(const std::function<bool()>& goOn, const CalibrationBench& bench,
                                           const TellTaken& tell) {
    BootedRadio booted(m_board, m_order.isHardware ? bench.backings : Backings());
    booted.requireUp();
    if (m_order.isHardware && m_board.hardware.description.sensor) {
        m_settings.temperatures = {bench.sense().value_or(m_settings.temperatures.front())};
    }
    Result conditions;
    conditions.isHardware = m_order.isHardware;
    conditions.settings = m_settings;
    const Probing probing{nullptr, goOn, m_order.isRealTime || m_order.isHardware};
    Calibrator calibrator(booted, m_board, conditions, probing, {}, nullptr);
    ChannelQualification found;
    found.frequency = m_settings.frequencies.front();
    found.temperature = m_settings.temperatures.front();
    found.detector = calibrator.detector();
    found.result = calibrator.qualify(found.frequency, found.temperature,
                                      statedSettleTime(m_board, m_order.wishes), tell);
    return found;
}

} // namespace Radio::Calibration

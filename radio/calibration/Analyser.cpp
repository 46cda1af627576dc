#include "radio/calibration/Analyser.h"

#include "ResultCode.h"
#include "radio/text/Words.h"

#include <cmath>

namespace Radio::Calibration {

namespace {

constexpr double hundredths = 100.0;
/** In dB: detector and analyser see the same leakage, each with errors of its own. */
constexpr double farApart = 3.0;

void remark(Point& point, const std::string& clause) {
    point.remark += (point.remark.empty() ? "" : "; ") + clause;
}

} // namespace

void Analyser::look(Point& point, const std::function<bool()>& bring) const {
    if (m_driver.empty() || point.state == PointState::failed) {
        return;
    }
    const auto seen = m_seen.find({point.temperature, point.frequency});
    if (seen != m_seen.end()) {
        point.analysed = seen->second / hundredths;
    } else if (m_journal != nullptr) {
        const std::optional<std::int32_t> level = bring() ? read() : std::nullopt;
        if (!level) {
            remark(point, "the analyser could not be read");
            return;
        }
        m_journal->enterAnalysed(point.frequency, point.temperature, *level);
        point.analysed = *level / hundredths;
    }
    if (point.analysed && point.after && std::abs(*point.analysed - *point.after) > farApart) {
        remark(point, "the analyser sees " + levelText(*point.analysed) + ", the detector " +
                          levelText(*point.after));
    }
}

std::optional<std::int32_t> Analyser::read() const {
    Standalone::Driver* const found = m_platform.drivers().find(m_driver);
    const DriverInterface* const record = found == nullptr ? nullptr : found->record();
    int reading = 0;
    const bool isRead =
        record != nullptr && record->read != nullptr && isSuccess(record->read(record->context, &reading));
    return isRead ? std::optional<std::int32_t>(reading) : std::nullopt;
}

} // namespace Radio::Calibration

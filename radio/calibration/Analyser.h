#ifndef RADIO_CALIBRATION_ANALYSER_H
#define RADIO_CALIBRATION_ANALYSER_H

#include "radio/board/Board.h"
#include "radio/calibration/Calibration.h"
#include "radio/calibration/Journal.h"
#include "standalone/Platform.h"

#include <functional>
#include <string>

namespace Radio::Calibration {

/**
 * A spectrum analyser that looks at what the corrections of each point leave, where the board has one: a
 * driver that reads hundredths of dBc. What it has seen is in the journal, and is not looked at again.
 */
class Analyser {
public:
    /** What is borrowed must outlive the object. `journal` is null when nothing is measured. */
    Analyser(std::string driver, Standalone::Platform& platform, Journal* journal, const SeenLevels& seen)
        : m_driver(std::move(driver)),
          m_platform(platform),
          m_journal(journal),
          m_seen(seen) {}

    /**
     * Gives a point that has corrections what the analyser sees of them, and says in its remark when that is
     * far from what the detector says, or nothing at all. `bring` has the radio at the point with its
     * corrections, and is asked only if it has to be there. Throws InputError when the journal cannot be
     * written.
     */
    void look(Point& point, const std::function<bool()>& bring) const;

private:
    std::optional<std::int32_t> read() const;

    std::string m_driver;
    Standalone::Platform& m_platform;
    Journal* m_journal;
    const SeenLevels& m_seen;
};

} // namespace Radio::Calibration

#endif

#include "radioctl/calibrate/QualificationReport.h"

#include "radio/text/Words.h"

namespace Radio::Calibration {

namespace {

std::string figuresText(const Qualification& found) {
    return (found.settled ? "settles within " + inDecimals(*found.settled, 1) + " ms" : "settles unseen") +
           ", noise " + inDecimals(found.noise, 1) + ", " +
           (found.slope ? inDecimals(*found.slope, 1) + " units per dB" : "no logarithm") + "; settle time " +
           std::to_string(found.settleTime) + " ms, " + counted(found.readings, "reading") + " a probe";
}

} // namespace

std::string qualificationText(const Qualification& qualification) {
    std::string text = qualification.refusal.empty()
                           ? "Detector: " + figuresText(qualification) + "\n"
                           : "Not qualified: " + harmless(qualification.refusal) + "\n";
    for (const std::string& warning : qualification.warnings) {
        text += "Warning: " + harmless(warning) + "\n";
    }
    return text;
}

} // namespace Radio::Calibration

#ifndef RADIO_CALIBRATION_QUALIFICATIONFIGURES_H
#define RADIO_CALIBRATION_QUALIFICATIONFIGURES_H

#include "radio/calibration/Qualification.h"
#include "radio/calibration/Slope.h"
#include "radio/calibration/StepResponse.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Radio::Calibration {

/** What was read of a measuring chain, and what follows from it. */
struct QualificationFigures {
    /** Two readings at ends of the ranges, if they differ. */
    using OtherDetector = std::function<std::optional<std::pair<std::int32_t, std::int32_t>>()>;

    double lowEnd = 0.0;
    double highEnd = 0.0;
    double middle = 0.0;
    /** Nothing when the ends read the same as the middle. */
    std::optional<StepResponse> step{};
    ReadingLine i{};
    ReadingLine q{};
    Qualification result{};

    void setNoise(const std::vector<double>& readings);
    /** By how many units readings may differ for no reason. */
    double noiseBound() const;
    /** Sets the refusal, if there is a reason for one. `other` is asked when this detector sees nothing. */
    void refuse(const ChainDescription& description, const OtherDetector& other);
    /** Sets what is known of a chain that can be measured with, and the warnings. */
    void conclude(const ChainDescription& description);

private:
    /** With different corrections. */
    std::vector<double> all() const;
    std::string whyBlind(const ChainDescription& description, const OtherDetector& other) const;
    std::string whySaturated(const ChainDescription& description) const;
    std::string whyNotLow(const ChainDescription& description) const;
    std::string whyNotFollowing(const ReadingLine& line, const char* branch) const;
    std::string whyNotSettled() const;
    void judgeSettleTime(const ChainDescription& description);
    void judgeSlope(const ChainDescription& description);
    void chooseReadings(const ChainDescription& description);
};

} // namespace Radio::Calibration

#endif

#ifndef RADIOCTL_LABORATORY_LABORATORYREPORT_H
#define RADIOCTL_LABORATORY_LABORATORYREPORT_H

#include "radio/laboratory/Results.h"
#include "radio/laboratory/Study.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace Radio::Laboratory {

/** How a laboratory came to its end. */
struct LaboratoryEnd {
    std::string results;
    std::string page;
    /** Calibrations that were known before, and those that were made, with their probes. */
    std::size_t known = 0;
    std::size_t made = 0;
    std::uint64_t probes = 0;
    unsigned jobs = 0;
    double seconds = 0.0;
    /** Of all processes together. */
    double processorSeconds = 0.0;
    int signal = 0;
    int exitCode = 0;
};

/** Shows a laboratory to whoever asked for it. */
class LaboratoryReport {
public:
    LaboratoryReport() = default;
    LaboratoryReport(const LaboratoryReport&) = delete;
    LaboratoryReport& operator=(const LaboratoryReport&) = delete;
    virtual ~LaboratoryReport() = default;

    /** `trials` are those of the shard. */
    virtual void begins(const Heading& heading, const std::optional<Shard>& shard, std::size_t trials) = 0;
    /** What all of it comes to. */
    virtual void studied(const Results& results, const Study& study) = 0;
    virtual void finished(const LaboratoryEnd& end) = 0;
};

class LaboratoryText final : public LaboratoryReport {
public:
    explicit LaboratoryText(std::ostream& out) : m_out(out) {}

    void begins(const Heading& heading, const std::optional<Shard>& shard, std::size_t trials) override;
    void studied(const Results& results, const Study& study) override;
    void finished(const LaboratoryEnd& end) override;

private:
    std::ostream& m_out;
};

class LaboratoryJson final : public LaboratoryReport {
public:
    explicit LaboratoryJson(std::ostream& out) : m_out(out) {}

    void begins(const Heading& heading, const std::optional<Shard>& shard, std::size_t trials) override;
    void studied(const Results& results, const Study& study) override;
    void finished(const LaboratoryEnd& end) override;

private:
    std::ostream& m_out;
};

/** What the settings are, for people: "fit", or "search". */
std::string headingText(const Heading& heading);

/** One of the things that are told by quantiles. */
struct Measure {
    const char* name;
    Quantiles Tally::*quantiles;
    /** For people; nothing: there are no tables. */
    std::string (*text)(const std::optional<double>& value);
};

/** Probes, time and the worst level, in this order. */
const std::vector<Measure>& measures();

/** "3 of 500 (0.60 %; of all such transmitters 0.20 to 1.75 %): 2 missed, 1 refused". */
std::string failuresText(const Tally& tally);

} // namespace Radio::Laboratory

#endif

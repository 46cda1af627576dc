#ifndef RADIOCTL_THERMAL_THERMALPAGE_H
#define RADIOCTL_THERMAL_THERMALPAGE_H

#include "radioctl/thermal/Plot.h"
#include "radioctl/thermal/ThermalReport.h"

#include <cstdint>
#include <map>
#include <ostream>
#include <string>
#include <vector>

namespace Radio::Thermal {

/** One HTML page with everything in it: it opens from a file and asks nobody for anything. */
class ThermalPage final : public ReplayListener {
public:
    /** What is borrowed must outlive the object. */
    explicit ThermalPage(const Subject& subject);

    void told(const ChannelTotals& channel, const Moment& moment) override;
    /** Writes the page. Throws InputError when the plots cannot be drawn. */
    void write(std::ostream& out, const ReplayTotals& totals, const Verdict& verdict) const;

private:
    /** What is plotted of one channel. */
    struct ChannelSeries {
        explicit ChannelSeries(const Series& empty);

        Series temperature;
        Series imageWithout;
        Series image;
        Series leakageWithout;
        Series leakage;
        Series dcI;
        Series dcQ;
        Series gain;
        Series phase;
    };

    void writeSubject(std::ostream& out, const ReplayTotals& totals) const;
    void writeWorst(std::ostream& out, const WorstFigures& worst) const;
    void writeDrivers(std::ostream& out, const std::vector<DriverTotals>& drivers) const;
    /** A time in the unit of the plots, from the beginning of the log as there. */
    std::string timeText(std::int64_t seconds) const;
    std::string momentCell(std::int64_t seconds, std::int32_t degrees) const;
    void writeChannel(std::ostream& out, const ChannelTotals& channel) const;
    void writePlot(std::ostream& out, const std::string& id, const std::string& title,
                   const std::string& yLabel, std::vector<Curve> curves) const;

    const Subject& m_subject;
    TimeUnit m_unit;
    Series m_empty;
    std::map<int, ChannelSeries> m_channels;
};

} // namespace Radio::Thermal

#endif

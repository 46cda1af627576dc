#include "radioctl/thermal/ThermalPage.h"

#include "radio/text/Words.h"
#include "radioctl/page/Html.h"

#include <utility>

namespace Radio::Thermal {

namespace {

using namespace Page;

std::string momentCell(std::int64_t seconds, std::int32_t degrees) {
    return cell("at " + std::to_string(seconds) + " s, " + std::to_string(degrees) + " °C");
}

void writeWorst(std::ostream& out, const std::string& what, const WorstFigure& without,
                const WorstFigure& with) {
    out << "<tr>" << cell(what) << numberCell(levelText(without.dBc))
        << momentCell(without.seconds, without.degrees) << numberCell(levelText(with.dBc))
        << momentCell(with.seconds, with.degrees) << "</tr>\n";
}

void writeWorst(std::ostream& out, const WorstFigures& worst) {
    out << "<table>\n<tr><th>worst</th><th colspan=\"2\">without compensation</th>"
           "<th colspan=\"2\">with compensation</th></tr>\n";
    writeWorst(out, "image", worst.imageWithout, worst.image);
    writeWorst(out, "carrier leakage", worst.leakageWithout, worst.leakage);
    out << "</table>\n";
}

void writeDrivers(std::ostream& out, const std::vector<DriverTotals>& drivers) {
    out << "<table>\n<tr><th>driver</th><th class=\"number\">writes</th><th class=\"number\">unchanged</th>"
           "<th class=\"number\">largest step</th><th></th></tr>\n";
    for (const DriverTotals& driver : drivers) {
        const std::optional<LargestStep>& step = driver.largestStep;
        out << "<tr>" << cell(inHtml(driver.driver)) << numberCell(std::to_string(driver.writes))
            << numberCell(std::to_string(driver.unchanged)) << numberCell(stepText(driver))
            << (step && step->size != 0 ? momentCell(step->seconds, step->degrees) : cell("")) << "</tr>\n";
    }
    out << "</table>\n";
}

} // namespace

ThermalPage::ChannelSeries::ChannelSeries(const Series& empty)
    : temperature(empty),
      imageWithout(empty),
      image(empty),
      leakageWithout(empty),
      leakage(empty),
      dcI(empty),
      dcQ(empty),
      gain(empty),
      phase(empty) {}

ThermalPage::ThermalPage(const Subject& subject)
    : m_subject(subject),
      m_empty(subject.log.front().seconds, subject.log.back().seconds) {}

void ThermalPage::told(const ChannelTotals& channel, const Moment& moment) {
    ChannelSeries& series = m_channels.try_emplace(channel.channel, m_empty).first->second;
    const auto add = [&](Series& to, double value) { to.add(moment.seconds, value); };
    add(series.temperature, moment.degrees);
    add(series.dcI, moment.words.dcI);
    add(series.dcQ, moment.words.dcQ);
    add(series.gain, moment.words.gain);
    add(series.phase, moment.words.phase);
    if (const auto& figures = moment.figures) {
        add(series.imageWithout, figures->without.image);
        add(series.image, figures->with.image);
        add(series.leakageWithout, figures->without.carrierLeakage);
        add(series.leakage, figures->with.carrierLeakage);
    }
}

void ThermalPage::write(std::ostream& out, const ReplayTotals& totals) const {
    const ThermalLog& log = m_subject.log;
    const std::string name = inHtml(m_subject.board.name);
    writeBeginning(out, name + ": compensation over temperature");
    out << "<h1>Transmit IQ compensation over temperature</h1>\n"
        << "<p>" << name << " (" << inHtml(m_subject.board.file.string()) << ")<br/>\n"
        << inHtml(m_subject.logFile) << ": " << counted(log.size(), "sample") << " in "
        << log.back().seconds - log.front().seconds << " s, " << temperatureSpan(log) << " Celsius; "
        << counted(totals.notifications, "notification") << "</p>\n";
    if (totals.complaints != 0) {
        out << "<p>The radio complained, " << counted(totals.complaints, "time")
            << ", first: " << inHtml(totals.firstComplaint) << "</p>\n";
    }
    out << "<p class=\"note\">The library was told every change of the temperature, and wrote what is shown. "
           "Image and carrier leakage are those of the modelled transmitter, relative to its signal: the "
           "lower, the cleaner. Without compensation all four words are 0.</p>\n";
    if (!m_channels.empty()) {
        writePlot(out, "temperature", "Temperature", "degrees Celsius",
                  {{"temperature", blue, false, m_channels.begin()->second.temperature.points()}});
    }
    for (const ChannelTotals& channel : totals.channels) {
        writeChannel(out, channel);
    }
    writeEnd(out);
}

void ThermalPage::writeChannel(std::ostream& out, const ChannelTotals& channel) const {
    const std::string number = std::to_string(channel.channel);
    out << "<h2>Channel " << number
        << (channel.carrier ? ", carrier " + std::to_string(*channel.carrier) + " kHz" : ", not tuned")
        << "</h2>\n";
    const auto found = m_channels.find(channel.channel);
    if (found == m_channels.end()) {
        return;
    }
    const ChannelSeries& series = found->second;
    const std::string id = "channel-" + number + "-";
    const std::string of = " of channel " + number;
    const auto against = [](const Series& without, const Series& with) {
        return std::vector<Curve>{{"without compensation", orange, true, without.points()},
                                  {"with compensation", blue, false, with.points()}};
    };
    if (channel.worst) {
        writeWorst(out, *channel.worst);
        writePlot(out, id + "image", "Image" + of, "dBc", against(series.imageWithout, series.image));
        writePlot(out, id + "leakage", "Carrier leakage" + of, "dBc",
                  against(series.leakageWithout, series.leakage));
    } else {
        out << "<p>The board does not describe the transmitter: no image and leakage.</p>\n";
    }
    writePlot(out, id + "words", "Words" + of, "word",
              {{"DC I", blue, false, series.dcI.points()},
               {"DC Q", orange, false, series.dcQ.points()},
               {"gain", green, true, series.gain.points()},
               {"phase", purple, true, series.phase.points()}});
    writeDrivers(out, channel.drivers);
}

void ThermalPage::writePlot(std::ostream& out, const std::string& id, const std::string& title,
                            const std::string& yLabel, std::vector<Curve> curves) const {
    const ThermalLog& log = m_subject.log;
    writeFigure(out, title,
                drawSvg({id, title, yLabel, log.front().seconds, log.back().seconds, std::move(curves)}));
}

} // namespace Radio::Thermal

#include "radioctl/thermal/ThermalPage.h"

#include "radio/board/VerdictJson.h"
#include "radio/text/Words.h"
#include "radioctl/page/Html.h"

#include <utility>

namespace Radio::Thermal {

namespace {

using namespace Page;

void writeLine(std::ostream& out, const std::string& what, const std::string& value) {
    out << "<tr><th>" << what << "</th>" << cell(value) << "</tr>\n";
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
      m_unit(unitFor(subject.log.back().seconds - subject.log.front().seconds)),
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

void ThermalPage::write(std::ostream& out, const ReplayTotals& totals, const Verdict& verdict) const {
    const std::string name = inHtml(m_subject.board.name);
    writeBeginning(out, name + ": compensation over temperature");
    out << "<h1>Transmit IQ compensation over temperature</h1>\n";
    writeVerdict(out, verdictWord(verdict), linesOf(verdict));
    out << "<p>" << name << ", serial " << inHtml(m_subject.serial()) << ", "
        << (m_subject.station.empty() ? "" : "station " + inHtml(m_subject.station) + ", ") << m_subject.date
        << ", radioctl " << inHtml(m_subject.version) << "</p>\n";
    if (totals.complaints != 0) {
        out << "<div class=\"warning\">\n<p>The radio complained, " << counted(totals.complaints, "time")
            << ", first: " << inHtml(totals.firstComplaint) << "</p>\n</div>\n";
    }
    out << "<p class=\"note\">The library was told every change of the temperature, and wrote what is shown. "
           "Image and carrier leakage are those of the modelled transmitter, relative to its signal: the "
           "lower, the cleaner. Without compensation all four words are 0.</p>\n";
    writeSubject(out, totals);
    if (!m_channels.empty()) {
        writePlot(out, "temperature", "Temperature", "degrees Celsius",
                  {{"temperature", blue, false, m_channels.begin()->second.temperature.points()}});
    }
    for (const ChannelTotals& channel : totals.channels) {
        writeChannel(out, channel);
    }
    writeEnd(out);
}

void ThermalPage::writeSubject(std::ostream& out, const ReplayTotals& totals) const {
    const ThermalLog& log = m_subject.log;
    out << "<h2>What was replayed</h2>\n<table>\n";
    writeLine(out, "board",
              inHtml(m_subject.board.name) + " (" + inHtml(m_subject.board.file.string()) + ")");
    writeLine(out, "serial", inHtml(m_subject.serial()));
    if (!m_subject.station.empty()) {
        writeLine(out, "station", inHtml(m_subject.station));
    }
    writeLine(out, "date", m_subject.date + " (UTC)");
    writeLine(out, "tool", "radioctl " + inHtml(m_subject.version));
    writeLine(out, "log",
              inHtml(m_subject.logFile) + ": " + counted(log.size(), "sample") + " in " +
                  timeText(log.back().seconds));
    writeLine(out, "temperatures", temperatureSpan(log) + " Celsius");
    writeLine(out, "told", counted(totals.notifications, "notification"));
    out << "</table>\n";
}

std::string ThermalPage::timeText(std::int64_t seconds) const {
    const std::int64_t since = seconds - m_subject.log.front().seconds;
    return (m_unit.seconds == 1
                ? std::to_string(since)
                : inTwoDecimals(static_cast<double>(since) / static_cast<double>(m_unit.seconds))) +
           " " + std::string(m_unit.name);
}

std::string ThermalPage::momentCell(std::int64_t seconds, std::int32_t degrees) const {
    return cell("at " + timeText(seconds) + ", " + std::to_string(degrees) + " °C");
}

void ThermalPage::writeWorst(std::ostream& out, const WorstFigures& worst) const {
    out << "<table>\n<tr><th>worst</th><th colspan=\"2\">without compensation</th>"
           "<th colspan=\"2\">with compensation</th></tr>\n";
    const auto writeRow = [&](const char* what, const WorstFigure& without, const WorstFigure& with) {
        out << "<tr>" << cell(what) << numberCell(levelText(without.dBc))
            << momentCell(without.seconds, without.degrees) << numberCell(levelText(with.dBc))
            << momentCell(with.seconds, with.degrees) << "</tr>\n";
    };
    writeRow("image", worst.imageWithout, worst.image);
    writeRow("carrier leakage", worst.leakageWithout, worst.leakage);
    out << "</table>\n";
}

void ThermalPage::writeDrivers(std::ostream& out, const std::vector<DriverTotals>& drivers) const {
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

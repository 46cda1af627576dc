#include "radioctl/thermal/ThermalReport.h"

#include "radio/board/VerdictJson.h"
#include "radio/text/Words.h"
#include "radioctl/report/JsonLine.h"
#include "radioctl/report/TextTable.h"
#include "radioctl/report/VerdictReport.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace Radio::Thermal {

namespace {

/** Figures are given to a hundredth of a dB: more is finer than anybody measures. */
double rounded(double dBc) {
    return std::round(dBc * 100) / 100;
}

std::string momentText(std::int64_t seconds, std::int32_t degrees) {
    return "at " + std::to_string(seconds) + " s, " + std::to_string(degrees) + " degrees";
}

void addWorst(TextTable& table, const std::string& what, const WorstFigure& without,
              const WorstFigure& with) {
    table.add({what, levelText(without.dBc), momentText(without.seconds, without.degrees),
               levelText(with.dBc), momentText(with.seconds, with.degrees)});
}

Json toJson(const WorstFigure& figure) {
    return {{"dbc", rounded(figure.dBc)}, {"seconds", figure.seconds}, {"degrees", figure.degrees}};
}

Json toJson(const DriverTotals& driver) {
    Json json{{"driver", driver.driver},
              {"correction", toString(driver.correction)},
              {"writes", driver.writes},
              {"unchanged", driver.unchanged}};
    json["largest_step"] = driver.largestStep ? Json{{"step", driver.largestStep->size},
                                                     {"seconds", driver.largestStep->seconds},
                                                     {"degrees", driver.largestStep->degrees}}
                                              : Json(nullptr);
    return json;
}

std::uint64_t unchangedIn(const Moment& moment) {
    return static_cast<std::uint64_t>(std::count_if(moment.writes.begin(), moment.writes.end(),
                                                    [](const Write& write) { return write.step == 0; }));
}

} // namespace

std::string temperatureSpan(const ThermalLog& log) {
    const auto [coldest, hottest] =
        std::minmax_element(log.begin(), log.end(), [](const Sample& left, const Sample& right) {
            return left.degrees < right.degrees;
        });
    return std::to_string(coldest->degrees) + " to " + std::to_string(hottest->degrees) + " degrees";
}

std::string stepText(const DriverTotals& driver) {
    return driver.largestStep ? std::to_string(driver.largestStep->size) : "-";
}

void ThermalText::finished(const ReplayTotals& totals, const ReplayEnd& end) {
    m_out << harmless(m_subject.board.name + " (" + m_subject.board.file.string() + ")") << "\n"
          << harmless(m_subject.logFile) << ": " << counted(m_subject.log.size(), "sample") << " in "
          << m_subject.log.back().seconds - m_subject.log.front().seconds << " s, "
          << temperatureSpan(m_subject.log) << "\n\n";
    writeText(m_out, end.verdict);
    std::uint64_t writes = 0;
    std::uint64_t unchanged = 0;
    for (const ChannelTotals& channel : totals.channels) {
        m_out << "\nChannel " << channel.channel << ", "
              << (channel.carrier ? "carrier " + std::to_string(*channel.carrier) + " kHz" : "not tuned")
              << "\n";
        if (!channel.drivers.empty()) {
            showDrivers(channel);
            showWorst(channel);
        }
        writes += channel.writes();
        unchanged += channel.unchanged();
    }
    m_out << "\n";
    if (end.signal != 0) {
        m_out << "Interrupted: no files were written.\n";
    }
    if (totals.complaints != 0) {
        m_out << "The radio complained " << counted(totals.complaints, "time")
              << ", first: " << harmless(totals.firstComplaint) << "\n";
    }
    m_out << counted(totals.samples, "sample") << " in " << inTwoDecimals(end.seconds)
          << " s: " << counted(totals.notifications, "notification") << ", " << counted(writes, "write")
          << ", " << unchanged << " of them without change.\n"
          << std::flush;
}

void ThermalText::showDrivers(const ChannelTotals& channel) {
    TextTable table;
    for (const std::size_t column : {1U, 2U, 3U}) {
        table.alignRight(column);
    }
    table.add({"driver", "writes", "unchanged", "largest step"});
    for (const DriverTotals& driver : channel.drivers) {
        const std::optional<LargestStep>& step = driver.largestStep;
        table.add({driver.driver, std::to_string(driver.writes), std::to_string(driver.unchanged),
                   stepText(driver),
                   step && step->size != 0 ? momentText(step->seconds, step->degrees) : ""});
    }
    table.write(m_out);
}

void ThermalText::showWorst(const ChannelTotals& channel) {
    if (!channel.worst) {
        m_out << "  The board does not describe the transmitter: no image and leakage.\n";
        return;
    }
    TextTable table;
    table.alignRight(1);
    table.alignRight(3);
    table.add({"worst", "without", "", "compensated"});
    addWorst(table, "image", channel.worst->imageWithout, channel.worst->image);
    addWorst(table, "carrier leakage", channel.worst->leakageWithout, channel.worst->leakage);
    table.write(m_out);
}

void ThermalJson::told(const ChannelTotals& channel, const Moment& moment) {
    Json event{{"event", "told"},
               {"channel", channel.channel},
               {"seconds", moment.seconds},
               {"degrees", moment.degrees}};
    Json& writes = event["writes"] = Json::array();
    for (const Write& write : moment.writes) {
        writes.push_back({{"driver", write.driver},
                          {"value", write.value},
                          {"step", write.step ? Json(*write.step) : Json(nullptr)}});
    }
    if (const auto& figures = moment.figures) {
        event["image_without_dbc"] = rounded(figures->without.image);
        event["image_dbc"] = rounded(figures->with.image);
        event["leakage_without_dbc"] = rounded(figures->without.carrierLeakage);
        event["leakage_dbc"] = rounded(figures->with.carrierLeakage);
    }
    writeJsonLine(m_out, event);
}

void ThermalJson::finished(const ReplayTotals& totals, const ReplayEnd& end) {
    for (const ChannelTotals& channel : totals.channels) {
        Json event{
            {"event", "thermal_channel"}, {"file", m_subject.board.file.string()},
            {"channel", channel.channel}, {"khz", channel.carrier ? Json(*channel.carrier) : Json(nullptr)},
            {"writes", channel.writes()}, {"unchanged", channel.unchanged()}};
        Json& drivers = event["drivers"] = Json::array();
        for (const DriverTotals& driver : channel.drivers) {
            drivers.push_back(toJson(driver));
        }
        if (const auto& worst = channel.worst) {
            event["worst"] = {{"image_without", toJson(worst->imageWithout)},
                              {"image", toJson(worst->image)},
                              {"leakage_without", toJson(worst->leakageWithout)},
                              {"leakage", toJson(worst->leakage)}};
        }
        writeJsonLine(m_out, event);
    }
    writeJsonLine(m_out,
                  {{"event", "replayed"},
                   {"file", m_subject.board.file.string()},
                   {"log", m_subject.logFile},
                   {"samples", totals.samples},
                   {"notifications", totals.notifications},
                   {"complaints", totals.complaints},
                   {"first_complaint", totals.complaints == 0 ? Json(nullptr) : Json(totals.firstComplaint)},
                   {"serial", m_subject.serial()},
                   {"station", m_subject.station.empty() ? Json(nullptr) : Json(m_subject.station)},
                   {"verdict", verdictJson(end.verdict)},
                   {"limits", limitsJson(end.verdict)},
                   {"elapsed_seconds", end.seconds},
                   {"interrupted", end.signal != 0},
                   {"exit_code", end.exitCode}});
}

ThermalCsv::ThermalCsv(std::ostream& out) : m_out(out) {
    m_out << "seconds,degrees,channel,dc_i,dc_q,gain,phase,lo_i,lo_q,writes,unchanged,"
             "image_without_dbc,image_dbc,leakage_without_dbc,leakage_dbc\n";
}

void ThermalCsv::told(const ChannelTotals& channel, const Moment& moment) {
    std::array<std::optional<std::int32_t>, correctionCount> values;
    for (const Write& write : moment.writes) {
        values[static_cast<std::size_t>(write.correction)] = write.value;
    }
    m_out << moment.seconds << ',' << moment.degrees << ',' << channel.channel;
    for (const std::optional<std::int32_t>& value : values) {
        m_out << ',';
        if (value) {
            m_out << *value;
        }
    }
    m_out << ',' << moment.writes.size() << ',' << unchangedIn(moment);
    if (const auto& figures = moment.figures) {
        for (const double dBc : {figures->without.image, figures->with.image, figures->without.carrierLeakage,
                                 figures->with.carrierLeakage}) {
            m_out << ',' << inTwoDecimals(dBc);
        }
        m_out << '\n';
    } else {
        m_out << ",,,,\n";
    }
}

} // namespace Radio::Thermal

#include "radioctl/laboratory/LaboratoryReport.h"

#include "radio/text/Words.h"
#include "radioctl/report/JsonLine.h"
#include "radioctl/report/TextTable.h"
#include "radioctl/report/Wrapped.h"

#include <cmath>

namespace Radio::Laboratory {

namespace {

std::string probesText(const std::optional<double>& value) {
    return value ? std::to_string(std::llround(*value)) : "-";
}

std::string secondsText(const std::optional<double>& value) {
    return value ? durationText(*value) : "-";
}

std::string worstText(const std::optional<double>& value) {
    return value ? levelText(*value) : "no tables";
}

double rounded(double value) {
    return std::round(value * 100) / 100;
}

Json quantilesJson(const Quantiles& quantiles) {
    const auto of = [&quantiles](std::size_t n) {
        return quantiles[n] ? Json(rounded(*quantiles[n])) : Json(nullptr);
    };
    return {{"p50", of(0)}, {"p90", of(1)}, {"p99", of(2)}, {"max", of(3)}};
}

Json endsJson(const Tally& tally) {
    Json json = Json::object();
    for (const TrialEnd end :
         {TrialEnd::held, TrialEnd::missed, TrialEnd::edge, TrialEnd::failed, TrialEnd::refused}) {
        const auto found = tally.ends.find(end);
        json[toString(end)] = found == tally.ends.end() ? 0 : found->second;
    }
    return json;
}

Json nullIfEmpty(const std::string& text) {
    return text.empty() ? Json(nullptr) : Json(text);
}

} // namespace

std::string headingText(const Heading& heading) {
    return heading.name + ", channel " + std::to_string(heading.channel) + ": " +
           counted(heading.count, "transmitter") + " drawn with the seed " + std::to_string(heading.seed) +
           ", each calibrated with " +
           (heading.settings.size() == 1 ? "the same settings"
                                         : counted(heading.settings.size(), "set") + " of settings");
}

const std::vector<Measure>& measures() {
    static const std::vector<Measure> all{{"Probes", &Tally::probes, probesText},
                                          {"Time", &Tally::seconds, secondsText},
                                          {"Worst level", &Tally::worst, worstText}};
    return all;
}

std::string failuresText(const Tally& tally) {
    const auto [low, high] = tally.failureRange();
    std::string text = std::to_string(tally.failures()) + " of " + std::to_string(tally.transmitters) + " (" +
                       percentText(tally.failurePart()) + "; of all such transmitters " +
                       inTwoDecimals(low * 100.0) + " to " + percentText(high) + ")";
    std::string ends;
    for (const auto& [end, count] : tally.ends) {
        if (end != TrialEnd::held) {
            ends += (ends.empty() ? ": " : ", ") + std::to_string(count) + " " + std::string(toString(end));
        }
    }
    return text + ends;
}

void LaboratoryText::begins(const Heading& heading, const std::optional<Shard>& shard, std::size_t trials) {
    m_out << "SIMULATION: nothing reaches hardware.\n" << harmless(headingText(heading)) << "\n";
    if (shard) {
        m_out << "Shard " << shard->number << " of " << shard->count << ": " << counted(trials, "calibration")
              << "\n";
    }
    m_out << std::flush;
}

void LaboratoryText::studied(const Results& results, const Study& study) {
    for (const Measure& measure : measures()) {
        TextTable table;
        table.add({measure.name, "half", "9 of 10", "99 of 100", "all"});
        for (std::size_t n = 0; n < study.tallies.size(); ++n) {
            std::vector<std::string> cells{"  " + results.heading.settings[n].name};
            for (const std::optional<double>& value : study.tallies[n].*measure.quantiles) {
                cells.push_back(measure.text(value));
            }
            table.add(std::move(cells));
        }
        for (std::size_t column = 1; column <= quantileRanks.size(); ++column) {
            table.alignRight(column);
        }
        m_out << "\n";
        table.write(m_out);
    }
    m_out << "\n  Failures\n";
    for (std::size_t n = 0; n < study.tallies.size(); ++n) {
        m_out << "    " << harmless(results.heading.settings[n].name) << "  "
              << failuresText(study.tallies[n]) << "\n";
    }
    m_out << "\n"
          << (study.isNoneGood ? "None is good enough; the best: " : "Recommended: ")
          << harmless(results.heading.settings[study.recommended].name + ": " + study.reason) << "\n";
}

void LaboratoryText::finished(const LaboratoryEnd& end) {
    if (end.made + end.known > 0) {
        m_out << "\n" << counted(end.made, "calibration");
        if (end.known > 0) {
            m_out << " beside " << end.known << " that were there";
        }
        m_out << " in " << durationText(end.seconds) << " by " << end.jobs
              << (end.jobs == 1 ? " process" : " processes");
        if (end.probes > 0) {
            m_out << "; processor time " << inDecimals(end.processorSeconds, 1) << " s, "
                  << inDecimals(end.processorSeconds / static_cast<double>(end.probes) * 1e6, 1)
                  << " us a probe";
        }
        m_out << "\n";
    }
    if (end.signal != 0) {
        m_out << "Interrupted; the same once more goes on.\n";
    } else if (!end.results.empty()) {
        m_out << "Results: " << harmless(end.results) << "\n";
    }
    if (!end.page.empty()) {
        m_out << "Page: " << harmless(end.page) << "\n";
    }
    m_out << std::flush;
}

void LaboratoryJson::begins(const Heading& heading, const std::optional<Shard>& shard, std::size_t trials) {
    writeJsonLine(m_out, {{"event", "mode"}, {"mode", "simulation"}});
    std::vector<std::string> names;
    for (const Heading::Settings& settings : heading.settings) {
        names.push_back(settings.name);
    }
    writeJsonLine(m_out,
                  {{"event", "laboratory"},
                   {"board", heading.name},
                   {"channel", heading.channel},
                   {"transmitters", heading.count},
                   {"seed", heading.seed},
                   {"failures", heading.mostFailures},
                   {"limit_dbc", orNull(heading.limit)},
                   {"settings", names},
                   {"shard", shard ? Json{{"number", shard->number}, {"of", shard->count}} : Json(nullptr)},
                   {"calibrations", trials}});
}

void LaboratoryJson::studied(const Results& results, const Study& study) {
    for (std::size_t n = 0; n < study.tallies.size(); ++n) {
        const Tally& tally = study.tallies[n];
        const auto [low, high] = tally.failureRange();
        writeJsonLine(m_out, {{"event", "tried"},
                              {"settings", results.heading.settings[n].name},
                              {"method", results.heading.settings[n].method},
                              {"transmitters", tally.transmitters},
                              {"ends", endsJson(tally)},
                              {"failures", tally.failures()},
                              {"failure_part", tally.failurePart()},
                              {"failure_range", Json::array({low, high})},
                              {"probes", quantilesJson(tally.probes)},
                              {"seconds", quantilesJson(tally.seconds)},
                              {"worst_dbc", quantilesJson(tally.worst)}});
    }
    writeJsonLine(m_out, {{"event", "recommended"},
                          {"settings", results.heading.settings[study.recommended].name},
                          {"good_enough", !study.isNoneGood},
                          {"reason", study.reason}});
}

void LaboratoryJson::finished(const LaboratoryEnd& end) {
    writeJsonLine(m_out, {{"event", "laboratory_end"},
                          {"results", end.signal == 0 ? nullIfEmpty(end.results) : Json(nullptr)},
                          {"page", nullIfEmpty(end.page)},
                          {"known", end.known},
                          {"made", end.made},
                          {"probes", end.probes},
                          {"jobs", end.jobs},
                          {"elapsed_seconds", end.seconds},
                          {"processor_seconds", end.processorSeconds},
                          {"interrupted", end.signal != 0},
                          {"exit_code", end.exitCode}});
}

} // namespace Radio::Laboratory

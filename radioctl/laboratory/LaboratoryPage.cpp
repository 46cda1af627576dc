#include "radioctl/laboratory/LaboratoryPage.h"

#include "radio/text/Words.h"
#include "radioctl/laboratory/LaboratoryReport.h"
#include "radioctl/page/Html.h"
#include "radioctl/page/Svg.h"

#include <algorithm>
#include <array>
#include <functional>
#include <sstream>

namespace Radio::Laboratory {

namespace {

using namespace Page;

/** A page is to be read: so many dots are drawn of each set of settings, evenly from all, and so many
 * failures are listed. */
constexpr std::size_t mostDots = 1500;
constexpr std::size_t mostSteps = 400;
constexpr std::size_t mostFailures = 100;

constexpr const char* beginning = "set terminal svg noenhanced dynamic size 960,420 font 'sans-serif,13'\n"
                                  "set key outside top right horizontal\nset grid\nset border 3\n"
                                  "set tics nomirror\n";

std::string colourOf(std::size_t settings) {
    constexpr std::array<const char*, 4> colours{blue, orange, green, purple};
    return colours[settings % colours.size()];
}

/** As gnuplot takes it between single quotes. */
std::string quoted(const std::string& text) {
    std::string result = "'";
    for (const char character : text) {
        result += character == '\'' ? "''" : std::string(1, character);
    }
    return result + "'";
}

using ValueOf = std::function<std::optional<double>(const Trial&)>;

/** A set of settings over all transmitters, in their order. */
std::vector<const Trial*> trialsOf(const Results& results, std::size_t settings) {
    std::vector<const Trial*> trials;
    for (const Trial& trial : results.trials) {
        if (trial.task.settings == settings) {
            trials.push_back(&trial);
        }
    }
    return trials;
}

std::string limitLine(const Results& results) {
    std::ostringstream line;
    if (results.heading.limit) {
        line << ", " << *results.heading.limit
             << " with lines linewidth 2 dashtype 2 linecolor rgb '#555555' "
             << "title 'limit'";
    }
    return line.str();
}

/** What the settings cost, against what they leave: each transmitter a dot, and the middle of them. */
void writeTradeOff(std::ostream& out, const Results& results, const Study& study) {
    std::ostringstream script;
    script.precision(12);
    script << beginning << "set logscale x\nset xlabel 'time in s'\nset ylabel 'worst level in dBc'\n";
    std::string plots;
    for (std::size_t n = 0; n < study.tallies.size(); ++n) {
        const std::vector<const Trial*> trials = trialsOf(results, n);
        const std::size_t every = trials.size() / mostDots + 1;
        const std::string block = "$dots" + std::to_string(n);
        bool isEmpty = true;
        script << block << " << END\n";
        for (std::size_t t = 0; t < trials.size(); t += every) {
            if (trials[t]->worst && trials[t]->seconds > 0.0) {
                script << trials[t]->seconds << ' ' << *trials[t]->worst << '\n';
                isEmpty = false;
            }
        }
        script << "END\n";
        const Tally& tally = study.tallies[n];
        const std::string colour = std::string("linecolor rgb '") + colourOf(n) + "'";
        if (!isEmpty) {
            plots += (plots.empty() ? "" : ", ") + block +
                     " using 1:2 with points pointtype 7 pointsize 0.25 " + colour + " title " +
                     quoted(results.heading.settings[n].name);
        }
        if (tally.seconds[0] && *tally.seconds[0] > 0.0 && tally.worst[0]) {
            const std::string middle = "$middle" + std::to_string(n);
            script << middle << " << END\n" << *tally.seconds[0] << ' ' << *tally.worst[0] << "\nEND\n";
            plots += (plots.empty() ? "" : ", ") + middle +
                     " using 1:2 with points pointtype 6 pointsize 1.6 linewidth 3 " + colour + " notitle";
        }
    }
    if (!plots.empty()) {
        script << "plot " << plots << limitLine(results) << "\n";
        writeFigure(out,
                    "What it takes, against what is left: each dot is a transmitter, and each ring stands at "
                    "the medians",
                    drawSvg(script.str(), "trade-off", "Time against worst level"));
    }
}

/** For each part of the transmitters, up to which value they go. */
void writeSpread(std::ostream& out, const Results& results, const Study& study, const std::string& id,
                 const std::string& caption, const std::string& axis, const ValueOf& valueOf) {
    std::ostringstream script;
    script.precision(12);
    script << beginning << "set xlabel '" << axis
           << "'\nset ylabel 'transmitters in %'\nset yrange [0:100]\n";
    std::string plots;
    for (std::size_t n = 0; n < study.tallies.size(); ++n) {
        std::vector<double> values;
        std::size_t count = 0;
        for (const Trial* const trial : trialsOf(results, n)) {
            ++count;
            if (const std::optional<double> value = valueOf(*trial)) {
                values.push_back(*value);
            }
        }
        if (values.empty()) {
            continue;
        }
        std::sort(values.begin(), values.end());
        const std::string block = "$spread" + std::to_string(n);
        script << block << " << END\n";
        const std::size_t every = values.size() / mostSteps + 1;
        for (std::size_t v = 0; v < values.size(); ++v) {
            if (v % every == 0 || v + 1 == values.size()) {
                script << values[v] << ' ' << 100.0 * static_cast<double>(v + 1) / static_cast<double>(count)
                       << '\n';
            }
        }
        script << "END\n";
        plots += (plots.empty() ? "" : ", ") + block + " using 1:2 with steps linewidth 2 linecolor rgb '" +
                 colourOf(n) + "' title " + quoted(results.heading.settings[n].name);
    }
    if (!plots.empty()) {
        script << "plot " << plots << "\n";
        writeFigure(out, caption, drawSvg(script.str(), id, caption));
    }
}

void writeQuantiles(std::ostream& out, const Results& results, const Study& study) {
    out << "<h2>By quantiles</h2>\n<table>\n<tr><th></th><th>settings</th><th class=\"number\">half</th><th "
           "class=\"number\">9 of 10</th><th class=\"number\">99 of 100</th><th "
           "class=\"number\">all</th></tr>\n";
    for (const Measure& measure : measures()) {
        for (std::size_t n = 0; n < study.tallies.size(); ++n) {
            out << "<tr>" << cell(n == 0 ? measure.name : "")
                << cell(inHtml(results.heading.settings[n].name));
            for (const std::optional<double>& value : study.tallies[n].*measure.quantiles) {
                out << numberCell(inHtml(measure.text(value)));
            }
            out << "</tr>\n";
        }
    }
    out << "</table>\n<p class=\"note\">Half of the transmitters are at or below the first figure, and so "
           "on. "
           "One without tables counts as the worst.</p>\n";
}

void writeFailures(std::ostream& out, const Results& results, const Study& study) {
    out << "<h2>Failures</h2>\n<table>\n<tr><th>settings</th><th>failures</th></tr>\n";
    for (std::size_t n = 0; n < study.tallies.size(); ++n) {
        out << "<tr>" << cell(inHtml(results.heading.settings[n].name))
            << cell(inHtml(failuresText(study.tallies[n]))) << "</tr>\n";
    }
    out << "</table>\n<table>\n<tr><th "
           "class=\"number\">transmitter</th><th>unit</th><th>settings</th><th>end</th><th "
           "class=\"number\">worst level</th><th>why</th></tr>\n";
    std::size_t count = 0;
    for (const Trial& trial : results.trials) {
        if (trial.end != TrialEnd::held && ++count <= mostFailures) {
            out << "<tr class=\"bad\">" << numberCell(std::to_string(trial.task.transmitter))
                << cell(inHtml(trial.unit))
                << cell(inHtml(results.heading.settings[trial.task.settings].name))
                << cell(std::string(toString(trial.end)))
                << numberCell(trial.worst ? inHtml(levelText(*trial.worst)) : "-")
                << cell(inHtml(trial.reason)) << "</tr>\n";
        }
    }
    out << "</table>\n";
    if (count > mostFailures) {
        out << "<p class=\"note\">These are the first " << mostFailures << " of " << count << ".</p>\n";
    }
}

void writeSettings(std::ostream& out, const Heading& heading) {
    out << "<h2>Settings</h2>\n<table>\n<tr><th>settings</th><th>what a calibration makes of "
           "them</th></tr>\n";
    for (const Heading::Settings& settings : heading.settings) {
        out << "<tr>" << cell(inHtml(settings.name)) << cell("<code>" + inHtml(settings.text) + "</code>")
            << "</tr>\n";
    }
    out << "</table>\n<p class=\"note\">radioctl " << inHtml(heading.version) << ", laboratory "
        << inHtml(heading.fingerprint) << "</p>\n";
}

} // namespace

void writePage(std::ostream& out, const Results& results, const Study& study) {
    const std::string name = results.heading.settings[study.recommended].name;
    writeBeginning(out, "Laboratory: " + inHtml(results.heading.name));
    out << "<h1>Which settings calibrate best?</h1>\n";
    writeVerdict(out, study.isNoneGood ? "fail" : "pass",
                 {(study.isNoneGood ? "None is good enough; the best: " : "Recommended: ") + name + ": " +
                  study.reason});
    out << "<p>" << inHtml(headingText(results.heading)) << ". Simulated: nothing reached hardware.</p>\n";
    writeTradeOff(out, results, study);
    writeQuantiles(out, results, study);
    writeSpread(out, results, study, "levels",
                "Worst level: which part of the transmitters leaks at most so much", "worst level in dBc",
                [](const Trial& trial) { return trial.worst; });
    writeSpread(out, results, study, "probes", "Probes: which part of the transmitters takes at most so many",
                "probes",
                [](const Trial& trial) { return std::optional<double>(static_cast<double>(trial.probes)); });
    writeFailures(out, results, study);
    writeSettings(out, results.heading);
    writeEnd(out);
}

} // namespace Radio::Laboratory

#include "radioctl/store/Export.h"

#include "radio/store/RunText.h"
#include "radioctl/report/JunitReporter.h"
#include "radioctl/store/StoreReport.h"

#include <algorithm>
#include <vector>

namespace Radio::Store {

namespace {

std::string number(const std::optional<double>& value) {
    return value ? toText(*value) : "";
}

std::string number(const std::optional<std::int64_t>& value) {
    return value ? std::to_string(*value) : "";
}

} // namespace

std::string inCsv(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos) {
        return text;
    }
    std::string quoted = "\"";
    for (const char character : text) {
        quoted += character;
        quoted += character == '"' ? "\"" : "";
    }
    return quoted + "\"";
}

Exporter::Exporter(std::ostream& out, const std::string& format) : m_out(out), m_format(format) {
    if (m_format == "csv") {
        m_out << "run,kind,serial,board,fingerprint,version,station,operator,begun,ended,mode,verdict,"
                 "measurement,unit,channel,khz,degrees,value,lowest,highest,held\n";
    } else if (m_format == "junit") {
        m_out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites>\n";
    }
}

void Exporter::write(const Run& run) {
    if (m_format == "csv") {
        writeCsv(run);
    } else if (m_format == "junit") {
        writeJunit(run);
    } else {
        m_out << toLine(run) << "\n";
    }
}

void Exporter::end() {
    if (m_format == "junit") {
        m_out << "</testsuites>\n";
    }
    m_out << std::flush;
}

void Exporter::writeCsv(const Run& run) {
    std::string head;
    for (const std::string& cell :
         {run.id, run.kind, run.serial, run.board, run.fingerprint, run.version, run.station,
          run.operatorName, run.begun, run.ended, std::string(run.isHardware ? "hardware" : "simulation"),
          std::string(wordOf(run.verdict))}) {
        head += inCsv(cell) + ",";
    }
    for (const Measurement& one : run.measurements) {
        m_out << head << inCsv(one.name) << "," << inCsv(one.unit) << "," << number(one.channel) << ","
              << number(one.frequency) << "," << number(one.temperature) << "," << number(one.value) << ","
              << number(one.lowest) << "," << number(one.highest) << ","
              << (one.isHeld ? (*one.isHeld ? "yes" : "no") : "") << "\n";
    }
}

void Exporter::writeJunit(const Run& run) {
    const std::string classname = inXml(run.kind + "." + run.serial);
    const auto failures =
        std::count_if(run.measurements.begin(), run.measurements.end(),
                      [](const Measurement& one) { return one.isHeld == std::optional<bool>(false); });
    // What no measurement says, the verdict does.
    const bool isVerdictCase = run.verdict == VerdictKind::fail && failures == 0;
    m_out << "  <testsuite name=\"" << classname << "\" id=\"" << run.id << "\" timestamp=\"" << run.begun
          << "\" hostname=\"" << inXml(run.station) << "\" tests=\""
          << run.measurements.size() + (isVerdictCase ? 1 : 0) << "\" failures=\""
          << failures + (isVerdictCase ? 1 : 0) << "\" errors=\"0\">\n";
    for (const Measurement& one : run.measurements) {
        const std::string place = placeText(one);
        m_out << "    <testcase classname=\"" << classname << "\" name=\""
              << inXml(one.name + (place.empty() ? "" : " at " + place)) << "\"";
        if (one.isHeld == std::optional<bool>(false)) {
            const std::string message = (one.value ? valueText(one.value) + " " + one.unit : "not held") +
                                        (one.lowest ? ", at least " + valueText(one.lowest) : "") +
                                        (one.highest ? ", at most " + valueText(one.highest) : "");
            m_out << "><failure message=\"" << inXml(message) << "\"/></testcase>\n";
        } else {
            m_out << "/>\n";
        }
    }
    if (isVerdictCase) {
        m_out << "    <testcase classname=\"" << classname
              << "\" name=\"verdict\"><failure message=\"exit code " << run.exitCode << "\"/></testcase>\n";
    }
    m_out << "  </testsuite>\n";
}

} // namespace Radio::Store

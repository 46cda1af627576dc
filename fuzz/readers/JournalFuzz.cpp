// Journals of calibrations.

#include "Rules.h"
#include "radio/calibration/Journal.h"

#include <algorithm>
#include <sstream>

namespace {

using namespace Radio::Calibration;

const std::string fileName = "radio.journal";

JournalContent read(const std::string& text) {
    std::istringstream stream(text);
    return readJournal(stream, fileName);
}

bool isSame(const JournaledProbe& a, const JournaledProbe& b) {
    return a.line == b.line && a.probe.i == b.probe.i && a.probe.q == b.probe.q &&
           a.probe.reading == b.probe.reading;
}

bool isSame(const JournalContent& a, const JournalContent& b) {
    const auto samePoint = [](const auto& left, const auto& right) {
        return left.first == right.first &&
               std::equal(left.second.begin(), left.second.end(), right.second.begin(), right.second.end(),
                          [](const auto& x, const auto& y) { return isSame(x, y); });
    };
    return a.size == b.size && a.isFinished == b.isFinished &&
           a.header.settings.channel == b.header.settings.channel &&
           std::equal(a.probes.begin(), a.probes.end(), b.probes.begin(), b.probes.end(), samePoint);
}

void requireRules(const JournalContent& content, const std::string& text) {
    Fuzz::require(content.size > 0 && content.size <= text.size(), "what can be used is part of the file",
                  text);
    const auto size = static_cast<std::size_t>(content.size);
    Fuzz::require(text[size - 1] == '\n', "what can be used ends with a line", text);
    for (const auto& [point, probes] : content.probes) {
        const auto& [temperature, frequency] = point;
        const Settings& settings = content.header.settings;
        Fuzz::require(
            std::count(settings.temperatures.begin(), settings.temperatures.end(), temperature) == 1 &&
                std::count(settings.frequencies.begin(), settings.frequencies.end(), frequency) == 1,
            "probes are of points of the calibration", text);
    }
    // A calibration that goes on cuts off what cannot be used, and must find what was there before.
    Fuzz::require(isSame(read(text.substr(0, size)), content), "what is cut off was nothing", text);
    requireSameCalibration(content.header, content.header, fileName);
}

} // namespace

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    JournalContent content;
    if (Fuzz::accepts(fileName, text, [&] { content = read(text); })) {
        requireRules(content, text);
    }
    return 0;
}

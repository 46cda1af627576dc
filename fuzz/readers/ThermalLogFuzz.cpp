// Temperature logs.

#include "Rules.h"
#include "radio/thermal/ThermalLog.h"

#include <algorithm>
#include <sstream>

namespace {

using namespace Radio::Thermal;

const std::string fileName = "log.csv";

ThermalLog read(const std::string& text) {
    std::istringstream stream(text);
    return readThermalLog(stream, fileName);
}

bool isSame(const Sample& a, const Sample& b) {
    return a.seconds == b.seconds && a.degrees == b.degrees;
}

void requireRules(const ThermalLog& log) {
    Fuzz::require(!log.empty(), "a log has samples");
    std::string written = "seconds,degrees\n";
    std::int64_t before = -1;
    for (const Sample& sample : log) {
        Fuzz::require(sample.seconds > before, "seconds ascend");
        Fuzz::require(sample.degrees >= -100 && sample.degrees <= 200, "degrees are those of a radio");
        before = sample.seconds;
        written += std::to_string(sample.seconds) + ',' + std::to_string(sample.degrees) + '\n';
    }
    const ThermalLog again = read(written);
    Fuzz::require(std::equal(log.begin(), log.end(), again.begin(), again.end(), isSame),
                  "what was read and written again reads the same", written);
}

} // namespace

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    ThermalLog log;
    if (Fuzz::accepts(fileName, text, [&] { log = read(text); })) {
        requireRules(log);
    }
    return 0;
}

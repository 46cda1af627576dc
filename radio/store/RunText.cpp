#include "radio/store/RunText.h"

namespace Radio::Store {

namespace {

Json textOrNull(const std::string& text) {
    return text.empty() ? Json(nullptr) : Json(text);
}

} // namespace

Json toJson(const Measurement& measurement) {
    return {{"name", measurement.name},
            {"unit", textOrNull(measurement.unit)},
            {"channel", orNull(measurement.channel)},
            {"khz", orNull(measurement.frequency)},
            {"degrees", orNull(measurement.temperature)},
            {"value", orNull(measurement.value)},
            {"lowest", orNull(measurement.lowest)},
            {"highest", orNull(measurement.highest)},
            {"held", orNull(measurement.isHeld)}};
}

Json toJson(const RunHead& head) {
    return {{"id", head.id},
            {"kind", head.kind},
            {"serial", head.serial},
            {"board", head.board},
            {"fingerprint", head.fingerprint},
            {"version", head.version},
            {"station", textOrNull(head.station)},
            {"operator", textOrNull(head.operatorName)},
            {"begun", head.begun},
            {"ended", head.ended},
            {"mode", head.isHardware ? "hardware" : "simulation"},
            {"channel", orNull(head.channel)},
            {"verdict", wordOf(head.verdict)},
            {"exit_code", head.exitCode}};
}

std::string toLine(const Run& run, const std::string& store) {
    Json measurements = Json::array();
    for (const Measurement& measurement : run.measurements) {
        measurements.push_back(toJson(measurement));
    }
    Json files = Json::object();
    for (const RunFile& file : run.files) {
        files[file.name] = file.content;
    }
    std::string text = "{\"run_schema\":" + std::to_string(runSchema);
    if (!store.empty()) {
        text += ",\"store\":" + toText(store);
    }
    text += "," + toText(toJson(static_cast<const RunHead&>(run))).substr(1);
    text.pop_back();
    return text + ",\"settings\":" + run.settings + ",\"measurements\":" + toText(measurements) +
           ",\"files\":" + toText(files) + "}";
}

} // namespace Radio::Store

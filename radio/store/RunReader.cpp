#include "radio/store/RunText.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace Radio::Store {

namespace {

using ParsedJson = nlohmann::ordered_json;

/** A page and a journal are in it; beyond this it is no run. */
constexpr std::size_t longestLine = std::size_t{256} * 1024 * 1024;

/** A value of a line, with what a message about it needs. */
class Member {
public:
    Member(const ParsedJson& json, std::string path, const Place& place)
        : m_json(&json),
          m_path(std::move(path)),
          m_place(&place) {}

    [[noreturn]] void failExpecting(const std::string& what) const {
        throw InputError(*m_place, (m_path.empty() ? "" : m_path + ": ") + "expected " + what + ", found " +
                                       (m_json->is_null() ? "nothing" : m_json->type_name()));
    }
    [[noreturn]] void fail(const std::string& problem) const {
        throw InputError(*m_place, m_path + ": " + problem);
    }
    bool isNull() const { return m_json->is_null(); }
    const ParsedJson& json() const { return *m_json; }
    /** Null where there is none. */
    Member operator[](const std::string& key) const {
        static const ParsedJson none;
        const auto found = m_json->find(key);
        return {found == m_json->end() ? none : *found, m_path.empty() ? key : m_path + "." + key, *m_place};
    }
    Member object() const {
        if (!m_json->is_object()) {
            failExpecting("an object");
        }
        return *this;
    }
    std::string text() const {
        if (!m_json->is_string()) {
            failExpecting("a text");
        }
        return m_json->get<std::string>();
    }
    std::string nonEmptyText() const {
        std::string found = text();
        if (found.empty()) {
            fail("is empty, expected a text");
        }
        return found;
    }
    std::string textOrNothing() const { return isNull() ? "" : text(); }
    std::string time() const {
        std::string found = text();
        if (!isUtcTime(found)) {
            fail("expected a time in UTC such as 2026-03-01T09:30:00Z");
        }
        return found;
    }
    std::optional<std::int64_t> integer() const {
        if (isNull()) {
            return std::nullopt;
        }
        if (!m_json->is_number_integer()) {
            failExpecting("a whole number or null");
        }
        return m_json->get<std::int64_t>();
    }
    std::optional<double> number() const {
        if (!isNull() && !m_json->is_number()) {
            failExpecting("a number or null");
        }
        return isNull() ? std::nullopt : std::optional<double>(m_json->get<double>());
    }
    std::optional<bool> boolean() const {
        if (!isNull() && !m_json->is_boolean()) {
            failExpecting("true, false or null");
        }
        return isNull() ? std::nullopt : std::optional<bool>(m_json->get<bool>());
    }
    std::string word(std::initializer_list<const char*> words) const {
        std::string found = text();
        std::string all;
        for (const char* const word : words) {
            if (found == word) {
                return found;
            }
            all += (all.empty() ? "" : ", ") + std::string(word);
        }
        fail("expected one of " + all);
    }

private:
    const ParsedJson* m_json;
    std::string m_path;
    const Place* m_place;
};

Measurement readMeasurement(const Member& item) {
    Measurement measurement;
    measurement.name = item["name"].nonEmptyText();
    measurement.unit = item["unit"].textOrNothing();
    measurement.channel = item["channel"].integer();
    measurement.frequency = item["khz"].integer();
    measurement.temperature = item["degrees"].integer();
    measurement.value = item["value"].number();
    measurement.lowest = item["lowest"].number();
    measurement.highest = item["highest"].number();
    measurement.isHeld = item["held"].boolean();
    return measurement;
}

void readHead(const Member& line, RunHead& head) {
    head.id = line["id"].text();
    if (!isRunId(head.id)) {
        line["id"].fail("expected a UUID in small letters");
    }
    head.kind = line["kind"].word({"calibration", "thermal", "audit", "acceptance"});
    head.serial = line["serial"].nonEmptyText();
    head.board = line["board"].text();
    head.fingerprint = line["fingerprint"].text();
    head.version = line["version"].text();
    head.station = line["station"].textOrNothing();
    head.operatorName = line["operator"].textOrNothing();
    head.begun = line["begun"].time();
    head.ended = line["ended"].time();
    head.isHardware = line["mode"].word({"simulation", "hardware"}) == "hardware";
    head.channel = line["channel"].integer();
    head.verdict = *verdictFromWord(line["verdict"].word({"pass", "fail", "none"}));
    const std::optional<std::int64_t> exitCode = line["exit_code"].integer();
    if (!exitCode) {
        line["exit_code"].failExpecting("a whole number");
    }
    head.exitCode = *exitCode;
    head.settings = line["settings"].object().json().dump();
}

} // namespace

ReadRun readRun(std::string_view text, const Place& place) {
    ParsedJson parsed;
    try {
        parsed = ParsedJson::parse(text);
    } catch (const ParsedJson::exception& /*error*/) {
        throw InputError(place, "is no JSON, expected a run as \"store export --format json\" writes it");
    }
    const Member line = Member(parsed, "", place).object();
    if (line["run_schema"].integer() != runSchema) {
        line["run_schema"].fail("expected " + std::to_string(runSchema));
    }
    ReadRun read;
    read.store = line["store"].textOrNothing();
    readHead(line, read.run);
    if (!line["measurements"].json().is_array()) {
        line["measurements"].failExpecting("a list");
    }
    for (std::size_t n = 0; n < line["measurements"].json().size(); ++n) {
        read.run.measurements.push_back(readMeasurement(
            Member(line["measurements"].json()[n], "measurements[" + std::to_string(n) + "]", place)
                .object()));
    }
    const Member files = line["files"].object();
    for (const auto& [name, content] : files.json().items()) {
        read.run.files.push_back({name, files[name].text()});
    }
    return read;
}

RunReader::RunReader(const std::filesystem::path& file) : m_stream(file, std::ios::binary), m_place{file, 0} {
    if (!m_stream) {
        throw InputError(m_place, std::string("cannot be read: ") + std::strerror(errno));
    }
}

std::optional<ReadRun> RunReader::next() {
    std::string line;
    while (std::getline(m_stream, line)) {
        ++m_place.line;
        if (line.size() > longestLine) {
            throw InputError(m_place, "has more than 256 MiB, expected a run");
        }
        if (!line.empty()) {
            return readRun(line, m_place);
        }
    }
    if (m_stream.bad() || (m_place.line == 0 && !m_stream.eof())) {
        throw InputError({m_place.file, 0}, "cannot be read");
    }
    return std::nullopt;
}

} // namespace Radio::Store

#include "service/radio/Resources.h"

#include "ResultCode.h"
#include "radio/board/BoardNames.h"
#include "radio/board/CalibrationBounds.h"
#include "radio/session/HardwareWrite.h"
#include "radio/session/LeakingTransmitter.h"
#include "radio/text/Numbers.h"
#include "radio/text/WordError.h"
#include "radio/text/Words.h"
#include "service/radio/Body.h"
#include "service/radio/CalibrationBody.h"
#include "service/radio/Description.h"
#include "service/radio/Metrics.h"
#include "service/radio/Problem.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <limits>
#include <utility>

namespace Radio::Service {

namespace {

using Names = Resources::Names;
using Asked = Answer (Resources::*)(const Request&, const Names&);

constexpr std::string_view descriptionPath = "/openapi.json";
constexpr std::string_view calibrationsPath = "/api/calibrations";

/** A name, what can be done with it, and by whom it is answered; nobody: not by the radio. */
struct Route {
    std::string_view method;
    std::string_view path;
    Asked asked;
};

constexpr std::array<Route, 30> routes{{
    {"GET", pagePath, nullptr},
    {"GET", descriptionPath, nullptr},
    {"GET", eventsPath, nullptr},
    {"GET", "/api/radio", &Resources::radioState},
    {"GET", "/api/channels", &Resources::channels},
    {"GET", "/api/channels/{channel}", &Resources::channel},
    {"PUT", "/api/channels/{channel}/{direction}", &Resources::tune},
    {"GET", "/api/temperature", &Resources::temperature},
    {"PUT", "/api/temperature", &Resources::setTemperature},
    {"GET", "/api/drivers", &Resources::drivers},
    {"GET", "/api/drivers/{driver}", &Resources::driver},
    {"PUT", "/api/drivers/{driver}", &Resources::writeDriver},
    {"POST", "/api/drivers/{driver}/reading", &Resources::readDriver},
    {"GET", "/api/variables", &Resources::variables},
    {"GET", "/api/variables/{variable}", &Resources::variable},
    {"PUT", "/api/variables/{variable}", &Resources::setVariable},
    {"GET", "/api/tables", &Resources::tables},
    {"GET", "/api/tables/{table}", &Resources::table},
    {"GET", "/api/faults", &Resources::faults},
    {"POST", "/api/faults", &Resources::addFault},
    {"DELETE", "/api/faults", &Resources::clearFaults},
    {"GET", "/api/phases", &Resources::phases},
    {"POST", "/api/phases/{phase}", &Resources::runPhase},
    {"GET", "/api/limits", &Resources::limits},
    {"GET", calibrationsPath, &Resources::calibrations},
    {"POST", calibrationsPath, &Resources::beginCalibration},
    {"GET", "/api/calibrations/{calibration}", &Resources::calibration},
    {"DELETE", "/api/calibrations/{calibration}", &Resources::cancelCalibration},
    {"PUT", "/api/calibrations/{calibration}/temperature", &Resources::tellTemperature},
    {"GET", "/metrics", &Resources::metrics},
}};

/** The value of a digit of a hexadecimal number; nothing for another character. */
std::optional<unsigned> hexDigit(char character) {
    constexpr std::string_view digits = "0123456789abcdef0123456789ABCDEF";
    const std::size_t found = digits.find(character);
    return found == std::string_view::npos ? std::nullopt : std::optional(static_cast<unsigned>(found % 16));
}

/** `text` with what stands behind percent signs in their places. */
std::string decoded(std::string_view text) {
    std::string result;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '%') {
            result += text[at];
            continue;
        }
        const auto high = at + 2 < text.size() ? hexDigit(text[at + 1]) : std::nullopt;
        const auto low = at + 2 < text.size() ? hexDigit(text[at + 2]) : std::nullopt;
        if (!high || !low) {
            throw std::invalid_argument("expected two hexadecimal digits behind each \"%\" of the address");
        }
        result += static_cast<char>(*high * 16 + *low);
        at += 2;
    }
    return result;
}

std::vector<std::string_view> parts(std::string_view text, char separator) {
    std::vector<std::string_view> list;
    for (;;) {
        const std::size_t end = std::min(text.find(separator), text.size());
        list.push_back(text.substr(0, end));
        if (end == text.size()) {
            return list;
        }
        text.remove_prefix(end + 1);
    }
}

/** What stands in the places of the names in braces; nothing when `path` is another one. */
std::optional<Names> match(std::string_view pattern, std::string_view path) {
    const std::vector<std::string_view> expected = parts(pattern, '/');
    const std::vector<std::string_view> found = parts(path, '/');
    if (found.size() != expected.size()) {
        return std::nullopt;
    }
    Names names;
    for (std::size_t part = 0; part < expected.size(); ++part) {
        if (expected[part].substr(0, 1) == "{") {
            names.push_back(decoded(found[part]));
        } else if (found[part] != expected[part]) {
            return std::nullopt;
        }
    }
    return names;
}

/** A question about a name is answered as it is, but its content left out by who carries answers. */
std::string_view methodOf(const Request& request) {
    return request.method == "HEAD" ? std::string_view("GET") : std::string_view(request.method);
}

/** The row of the table; throws Problem when there is none. */
std::pair<const Route*, Names> find(const Request& request) {
    std::vector<std::string_view> allowed;
    for (const Route& route : routes) {
        const std::optional<Names> names = match(route.path, request.path);
        if (names && route.method == methodOf(request)) {
            return {&route, *names};
        }
        if (names) {
            allowed.push_back(route.method);
        }
    }
    if (allowed.empty()) {
        throw Problem(ProblemKind::notFound, "there is no " + inQuotes(request.path) + "; " +
                                                 std::string(descriptionPath) + " has all names");
    }
    if (std::find(allowed.begin(), allowed.end(), "GET") != allowed.end()) {
        allowed.emplace_back("HEAD");
    }
    throw Problem(ProblemKind::methodNotAllowed, "expected " + joined(allowed, " or "),
                  {{"allow", joined(allowed, ", ")}});
}

/** The members of the body; throws Problem where it is no JSON. */
Body bodyOf(const Request& request) {
    const std::string_view type =
        std::string_view(request.contentType).substr(0, request.contentType.find(';'));
    if (type != "application/json") {
        throw Problem(ProblemKind::unsupportedMediaType,
                      "expected the header \"Content-Type: application/json\"");
    }
    return Body(request.body);
}

/** A value of the query; empty when it is not there. */
std::string fromQuery(const Request& request, std::string_view name) {
    for (const std::string_view item : parts(request.query, '&')) {
        const std::size_t equals = std::min(item.find('='), item.size());
        if (item.substr(0, equals) == name && equals < item.size()) {
            return decoded(item.substr(equals + 1));
        }
    }
    return {};
}

Answer jsonAnswer(const Json& json, int status = 200) {
    return {status, "application/json", toText(json), {}};
}

/** The answer to a problem; one that has methods tells them in its header, too. */
Answer answerOf(const Problem& problem) {
    Answer answer = problem.answer();
    if (problem.kind() == ProblemKind::methodNotAllowed) {
        constexpr std::string_view before = "\"allow\":\"";
        const std::size_t begin = answer.body.find(before) + before.size();
        answer.headers.emplace_back("Allow", answer.body.substr(begin, answer.body.find('"', begin) - begin));
    }
    return answer;
}

Json rangeJson(const std::optional<Range>& range) {
    return range ? Json::array({range->low, range->high}) : Json(nullptr);
}

Json levelJson(double level) {
    return std::round(level * 100.0) / 100.0;
}

Json resultJson(const Result& result) {
    Json writes = Json::array();
    for (const auto& [driver, value] : result.writes) {
        writes.push_back({{"driver", driver}, {"value", value}});
    }
    Json failures = Json::array();
    for (const Standalone::Call& call : result.failures) {
        failures.push_back({{"operation", Standalone::toString(call.operation)},
                            {"object", call.object},
                            {"value", call.value},
                            {"code", call.code}});
    }
    Json traces = Json::array();
    for (const Standalone::TraceMessage& message : result.traces) {
        traces.push_back(
            {{"level", toString(message.level)}, {"source", message.source}, {"text", message.text}});
    }
    Json notified = Json::array();
    for (const Notification& one : result.notifications) {
        notified.push_back(
            {{"direction", toString(one.direction)}, {"channel", one.channel}, {"khz", one.frequency}});
    }
    return {{"code", result.code},         {"ok", isSuccess(result.code)},
            {"note", result.note},         {"value", orNull(result.value)},
            {"warnings", result.warnings}, {"writes", writes},
            {"failures", failures},        {"trace", traces},
            {"notified", notified}};
}

Json driverJson(const ServedRadio& radio, const Standalone::Driver& driver) {
    return {{"driver", driver.name()},
            {"value", driver.value()},
            {"writes", driver.writes()},
            {"hardware", radio.isOnHardware() && driver.backing() != nullptr}};
}

Json variableJson(const Standalone::Variable& variable) {
    return {{"variable", variable.name()}, {"values", variable.values()}};
}

Json faultJson(const Standalone::Fault& fault) {
    return {{"operation", Standalone::toString(fault.operation)},
            {"object", fault.object},
            {"code", fault.code},
            {"times", orNull(fault.times)}};
}

/** Words for a fault as a script has them. */
std::string faultText(const Standalone::Fault& fault) {
    std::string text = "fault " + std::string(Standalone::toString(fault.operation));
    if (!fault.object.empty()) {
        text += " " + fault.object;
    }
    text += " " + codeText(fault.code);
    return fault.times ? text + " " + std::to_string(*fault.times) + " times" : text;
}

Standalone::Operation operationNamed(const std::string& word) {
    const auto operation = Standalone::operationFromString(word);
    if (!operation) {
        std::vector<std::string_view> words;
        for (const Standalone::Operation one : Standalone::allOperations()) {
            words.push_back(Standalone::toString(one));
        }
        throw std::invalid_argument("\"operation\": expected one of " + joined(words, ", "));
    }
    return *operation;
}

/** The number of a calibration. */
std::uint64_t calibrationNamed(const std::string& name) {
    const auto number = parseNumber<std::uint32_t>(name);
    if (!number) {
        throw Problem(ProblemKind::notFound, "there is no calibration " + inQuotes(name));
    }
    return *number;
}

/** The end of a command that is carried out even where the board does not allow it. */
std::string forceText(bool isForced) {
    return isForced ? " force" : "";
}

std::optional<Answer> answerDescriptions(const Route& route) {
    if (route.path == descriptionPath) {
        return Answer{200, "application/json", std::string(interfaceDescription()), {}};
    }
    if (route.path == pagePath) {
        // It is one file, and asks nobody but this service.
        return Answer{200,
                      "text/html; charset=utf-8",
                      std::string(page()),
                      {{"Content-Security-Policy",
                        "default-src 'none'; style-src 'unsafe-inline'; script-src 'unsafe-inline'; "
                        "connect-src 'self'; img-src data:; base-uri 'none'; form-action 'none'; "
                        "frame-ancestors 'none'"}}};
    }
    return std::nullopt;
}

} // namespace

std::optional<Answer> answerWithoutRadio(const Request& request) {
    try {
        return answerDescriptions(*find(request).first);
    } catch (const Problem& problem) {
        return answerOf(problem);
    } catch (const std::invalid_argument& error) {
        return Problem(ProblemKind::badRequest, error.what()).answer();
    }
}

Answer Resources::answer(const Request& request) {
    const Answer answer = [&] {
        try {
            return dispatch(request);
        } catch (const Problem& problem) {
            return answerOf(problem);
        } catch (const std::invalid_argument& error) {
            return Problem(ProblemKind::badRequest, error.what()).answer();
        } catch (const WordError& error) {
            return Problem(ProblemKind::badRequest, error.what()).answer();
        } catch (const std::exception& error) {
            return Problem(ProblemKind::internal, error.what()).answer();
        }
    }();
    ++m_answered[answer.status];
    if (methodOf(request) != "GET") {
        constexpr std::size_t most = 200;
        m_changed(
            {request.who, request.method + " " + request.path, request.body.substr(0, most), answer.status});
    }
    return answer;
}

Answer Resources::dispatch(const Request& request) {
    const auto& [route, names] = find(request);
    if (route->asked == nullptr) {
        throw Problem(ProblemKind::internal, "nobody answers " + std::string(route->path));
    }
    // The radio is the calibration's; others look at it.
    if (route->method != "GET" && route->path.substr(0, calibrationsPath.size()) != calibrationsPath) {
        m_calibrations.requireNone();
    }
    return (this->*route->asked)(request, names);
}

/** Does something to the radio, and says what came of it. */
Answer Resources::carriedOut(const Action& action, const std::string& text, int status) {
    const Result result = m_radio.carryOut(action, text);
    if (result.isRefused) {
        throw Problem(ProblemKind::refused, result.warnings.empty() ? result.note : result.warnings.back(),
                      {{"result", resultJson(result)}});
    }
    if (isFailure(result.code)) {
        throw Problem(ProblemKind::radioFailed,
                      "code " + codeText(result.code) + (result.note.empty() ? "" : ": " + result.note),
                      {{"result", resultJson(result)}});
    }
    return jsonAnswer(resultJson(result), status);
}

const ChannelDescription& Resources::channelNamed(const std::string& name) const {
    const auto number = parseNumber<int>(name);
    const ChannelDescription* const channel = number ? findChannel(m_radio.board(), *number) : nullptr;
    if (channel == nullptr) {
        throw Problem(ProblemKind::notFound, "the board has no channel " + inQuotes(name));
    }
    return *channel;
}

Standalone::Driver& Resources::driverNamed(const std::string& name) {
    Standalone::Driver* const driver = m_radio.platform().drivers().find(name);
    if (driver == nullptr) {
        throw Problem(ProblemKind::notFound, "the board has no driver " + inQuotes(name));
    }
    return *driver;
}

void Resources::requireSimulation() const {
    if (m_radio.isOnHardware()) {
        throw Problem(ProblemKind::simulationOnly, "faults are for a radio that is simulated");
    }
}

Answer Resources::radioState(const Request& /*request*/, const Names& /*names*/) {
    const Board& board = m_radio.board();
    Json channels = Json::array();
    for (const ChannelDescription& channel : board.channels) {
        channels.push_back(channel.number);
    }
    return jsonAnswer({{"name", board.name},
                       {"serial", board.serial},
                       {"description", board.description},
                       {"board", board.file.string()},
                       {"mode", m_radio.isOnHardware() ? "hardware" : "simulation"},
                       {"channels", channels},
                       {"degrees", orNull(m_radio.platform().temperature().temperature())},
                       {"last_event", m_events.nameOf(m_events.last())}});
}

Json Resources::channelState(const ChannelDescription& channel) {
    const std::string number = std::to_string(channel.number);
    Json rasters = Json::array();
    for (const RasterDescription& raster : m_radio.board().rasters) {
        if (std::find(raster.channels.begin(), raster.channels.end(), channel.number) ==
            raster.channels.end()) {
            continue;
        }
        for (const CarrierRow& row : raster.rows) {
            rasters.push_back({{"raster", raster.name},
                               {"direction", row.transmit ? "tx" : "rx"},
                               {"first_khz", row.first},
                               {"step_khz", row.step},
                               {"count", row.count}});
        }
    }
    constexpr std::array<const char*, 4> corrections{
        "rf.mixer.i",
        "rf.mixer.q",
        "bb.iq.coarse.dc.i.v.adjust",
        "bb.iq.coarse.dc.q.v.adjust",
    };
    constexpr std::array<const char*, 4> compensations{"dc.compensation.i", "dc.compensation.q",
                                                       "quadrature.gain.offset.compensation",
                                                       "quadrature.phase.offset.compensation"};
    Json corrected = Json::array();
    const auto add = [&](const std::string& name) {
        if (const Standalone::Driver* const driver = m_radio.platform().drivers().find(name)) {
            corrected.push_back({{"driver", name}, {"value", driver->value()}});
        }
    };
    for (const char* const name : corrections) {
        add("channel." + number + ".tx." + name);
    }
    for (const char* const name : compensations) {
        add("channel." + number + ".dsp.tx." + name);
    }
    const auto carrier = [&](Direction direction) {
        const auto khz = m_radio.radio().frequency(direction, channel.number);
        return khz == 0 ? Json(nullptr) : Json(khz);
    };
    const LeakingTransmitter* const transmitter = m_radio.radio().transmitter(channel.number);
    const bool isModelled = transmitter != nullptr && transmitter->surroundings().carrier != 0;
    const Result* const last = m_radio.lastTuned(channel.number);
    return {{"channel", channel.number},
            {"type", toString(channel.type)},
            {"tx_khz", carrier(Direction::tx)},
            {"rx_khz", carrier(Direction::rx)},
            {"degrees", orNull(m_radio.platform().temperature().temperature())},
            {"corrections", corrected},
            {"leakage_dbc", isModelled ? levelJson(transmitter->level()) : Json(nullptr)},
            {"rasters", rasters},
            {"last_result", last == nullptr ? Json(nullptr) : resultJson(*last)}};
}

Answer Resources::channels(const Request& /*request*/, const Names& /*names*/) {
    Json list = Json::array();
    for (const ChannelDescription& channel : m_radio.board().channels) {
        list.push_back(channelState(channel));
    }
    return jsonAnswer({{"channels", list}});
}

Answer Resources::channel(const Request& /*request*/, const Names& names) {
    return jsonAnswer(channelState(channelNamed(names[0])));
}

Answer Resources::tune(const Request& request, const Names& names) {
    const ChannelDescription& channel = channelNamed(names[0]);
    const auto direction = directionFromString(names[1]);
    if (!direction) {
        throw Problem(ProblemKind::notFound, "a channel has \"tx\" and \"rx\", not " + inQuotes(names[1]));
    }
    Body body = bodyOf(request);
    const auto khz =
        static_cast<std::uint32_t>(body.integer("khz", 0, std::numeric_limits<std::uint32_t>::max()));
    const bool isForced = body.flag("force");
    body.end();
    return carriedOut(Tune{*direction, channel.number, khz, isForced},
                      "tune " + names[1] + " " + std::to_string(channel.number) + " " + std::to_string(khz) +
                          forceText(isForced));
}

Answer Resources::temperature(const Request& /*request*/, const Names& /*names*/) {
    return jsonAnswer({{"degrees", orNull(m_radio.platform().temperature().temperature())},
                       {"observers", m_radio.platform().temperature().observerCount()},
                       {"allowed", rangeJson(m_radio.board().limits.temperature)}});
}

Answer Resources::setTemperature(const Request& request, const Names& /*names*/) {
    constexpr int lowest = -100;
    constexpr int highest = 200;
    Body body = bodyOf(request);
    const auto degrees = static_cast<int>(body.integer("degrees", lowest, highest));
    const bool isForced = body.flag("force");
    body.end();
    return carriedOut(SetTemperature{degrees, isForced},
                      "temperature " + std::to_string(degrees) + forceText(isForced));
}

Answer Resources::drivers(const Request& /*request*/, const Names& /*names*/) {
    Json list = Json::array();
    for (const auto& [name, driver] : m_radio.platform().drivers().drivers()) {
        list.push_back(driverJson(m_radio, *driver));
    }
    return jsonAnswer({{"drivers", list}});
}

Answer Resources::driver(const Request& /*request*/, const Names& names) {
    return jsonAnswer(driverJson(m_radio, driverNamed(names[0])));
}

Answer Resources::writeDriver(const Request& request, const Names& names) {
    const Standalone::Driver& driver = driverNamed(names[0]);
    Body body = bodyOf(request);
    const std::int64_t value = body.integer("value", std::numeric_limits<std::int64_t>::min(),
                                            std::numeric_limits<std::int64_t>::max());
    const bool isForced = body.flag("force");
    body.end();
    return carriedOut(WriteDriver{driver.name(), value, isForced},
                      "write " + driver.name() + " " + std::to_string(value) + forceText(isForced));
}

Answer Resources::readDriver(const Request& /*request*/, const Names& names) {
    const Standalone::Driver& driver = driverNamed(names[0]);
    return carriedOut(ReadDriver{driver.name()}, "read " + driver.name());
}

Answer Resources::variables(const Request& /*request*/, const Names& /*names*/) {
    Json list = Json::array();
    for (const auto& [name, variable] : m_radio.platform().variables().variables()) {
        list.push_back(variableJson(*variable));
    }
    return jsonAnswer({{"variables", list}});
}

Answer Resources::variable(const Request& /*request*/, const Names& names) {
    const Standalone::Variable* const variable = m_radio.platform().variables().find(names[0]);
    if (variable == nullptr) {
        throw Problem(ProblemKind::notFound, "the board has no variable " + inQuotes(names[0]));
    }
    return jsonAnswer(variableJson(*variable));
}

Answer Resources::setVariable(const Request& request, const Names& names) {
    const Standalone::Variable* const variable = m_radio.platform().variables().find(names[0]);
    if (variable == nullptr) {
        throw Problem(ProblemKind::notFound, "the board has no variable " + inQuotes(names[0]));
    }
    Body body = bodyOf(request);
    const std::vector<std::int32_t> values = body.integers("values", variable->values().size());
    body.end();
    std::vector<std::string> words;
    std::transform(values.begin(), values.end(), std::back_inserter(words),
                   [](std::int32_t value) { return std::to_string(value); });
    return carriedOut(SetVariable{variable->name(), values},
                      "set " + variable->name() + " " + joined(words, ","));
}

Answer Resources::tables(const Request& /*request*/, const Names& /*names*/) {
    Json list = Json::array();
    for (const auto& [name, table] : m_radio.platform().tables().tables()) {
        Json nodes = Json::array({table->axis1.size()});
        if (!table->axis2.empty()) {
            nodes.push_back(table->axis2.size());
        }
        list.push_back({{"table", name}, {"nodes", nodes}});
    }
    return jsonAnswer({{"tables", list}});
}

Answer Resources::table(const Request& /*request*/, const Names& names) {
    const CalibrationTable* const table = m_radio.platform().tables().find(names[0]);
    if (table == nullptr) {
        throw Problem(ProblemKind::notFound, "the board has no table " + inQuotes(names[0]));
    }
    return jsonAnswer({{"table", table->name},
                       {"axis1", table->axis1},
                       {"axis2", table->axis2},
                       {"values", table->values}});
}

Answer Resources::faults(const Request& /*request*/, const Names& /*names*/) {
    Json list = Json::array();
    for (const Standalone::Fault& fault : m_radio.platform().calls().faults()) {
        list.push_back(faultJson(fault));
    }
    return jsonAnswer({{"faults", list}});
}

Answer Resources::addFault(const Request& request, const Names& /*names*/) {
    requireSimulation();
    Body body = bodyOf(request);
    constexpr std::int64_t highestCode = 0xFFFF;
    Standalone::Fault fault{operationNamed(body.text("operation")), body.optionalText("object"),
                            static_cast<std::int32_t>(body.integer("code", 0, highestCode))};
    const auto times = body.optionalInteger("times", 1, std::numeric_limits<std::uint32_t>::max());
    if (times) {
        fault.times = static_cast<std::uint32_t>(*times);
    }
    body.end();
    return carriedOut(InjectFault{fault}, faultText(fault), 201);
}

Answer Resources::clearFaults(const Request& request, const Names& /*names*/) {
    requireSimulation();
    const std::string operation = fromQuery(request, "operation");
    const std::string object = fromQuery(request, "object");
    if (operation.empty()) {
        if (!object.empty()) {
            throw std::invalid_argument("\"object\" without \"operation\", expected both or none");
        }
        return carriedOut(ClearFaults{std::nullopt, {}}, "clear all");
    }
    return carriedOut(ClearFaults{operationNamed(operation), object},
                      "clear " + operation + (object.empty() ? "" : " " + object));
}

Answer Resources::phases(const Request& /*request*/, const Names& /*names*/) {
    Json list = Json::array();
    for (const Standalone::Phase phase :
         {Standalone::phaseModuleInit, Standalone::phaseStorageObjectsRetrieved,
          Standalone::phasePostFrameformatLoad}) {
        Json modules = Json::array();
        const auto report = m_radio.phases().find(phase);
        if (report != m_radio.phases().end()) {
            for (const Standalone::PhaseStep& step : report->second.steps) {
                modules.push_back({{"module", step.moduleName},
                                   {"channel", step.channel},
                                   {"code", step.code},
                                   {"ok", isSuccess(step.code)}});
            }
        }
        list.push_back({{"phase", static_cast<unsigned long>(phase)},
                        {"meaning", meaningOf(phase)},
                        {"modules", modules}});
    }
    return jsonAnswer({{"phases", list}});
}

Answer Resources::runPhase(const Request& /*request*/, const Names& names) {
    const auto phase = phaseFromString(names[0]);
    if (!phase) {
        throw Problem(ProblemKind::notFound,
                      "expected a phase, init, storage or frame-format, not " + inQuotes(names[0]));
    }
    return carriedOut(RunPhase{*phase}, "phase " + names[0]);
}

Answer Resources::limits(const Request& /*request*/, const Names& /*names*/) {
    const Limits& limits = m_radio.board().limits;
    return jsonAnswer({{"if_pll_khz", rangeJson(limits.ifPll)},
                       {"rf_pll_khz", rangeJson(limits.rfPll)},
                       {"carrier_error_hz", orNull(limits.carrierError)},
                       {"degrees", rangeJson(limits.temperature)},
                       {"leakage_dbc", orNull(limits.leakage)},
                       {"leakage_at_nodes_dbc", orNull(limits.leakageAtNodes)},
                       {"leakage_improvement_db", orNull(limits.leakageImprovement)},
                       {"image_dbc", orNull(limits.image)},
                       {"carrier_leakage_dbc", orNull(limits.carrierLeakage)}});
}

Answer Resources::calibrations(const Request& /*request*/, const Names& /*names*/) {
    return jsonAnswer(m_calibrations.list());
}

Answer Resources::calibration(const Request& request, const Names& names) {
    const std::uint64_t number = calibrationNamed(names[0]);
    const std::string from = fromQuery(request, "from");
    const auto first = from.empty() ? std::optional<std::uint32_t>(0) : parseNumber<std::uint32_t>(from);
    if (!first) {
        throw std::invalid_argument("\"from\": expected the number of a point, from 0 on");
    }
    return jsonAnswer(m_calibrations.state(number, *first));
}

Answer Resources::beginCalibration(const Request& request, const Names& /*names*/) {
    m_calibrations.requireNone();
    Body body = bodyOf(request);
    const std::uint64_t number = m_calibrations.begin(wantedCalibration(body));
    Answer answer = jsonAnswer(m_calibrations.state(number, 0), 201);
    answer.headers.emplace_back("Location", std::string(calibrationsPath) + "/" + std::to_string(number));
    return answer;
}

Answer Resources::cancelCalibration(const Request& /*request*/, const Names& names) {
    const std::uint64_t number = calibrationNamed(names[0]);
    constexpr int accepted = 202;
    const int status = m_calibrations.cancel(number) ? accepted : 200;
    return jsonAnswer(m_calibrations.state(number, 0), status);
}

Answer Resources::tellTemperature(const Request& request, const Names& names) {
    const std::uint64_t number = calibrationNamed(names[0]);
    Body body = bodyOf(request);
    const auto degrees = body.optionalInteger("degrees", temperatureBounds.low, temperatureBounds.high);
    body.end();
    m_calibrations.tellTemperature(number,
                                   degrees ? std::optional(static_cast<int>(*degrees)) : std::nullopt);
    return jsonAnswer(m_calibrations.state(number, 0));
}

Answer Resources::metrics(const Request& /*request*/, const Names& /*names*/) {
    const Board& board = m_radio.board();
    Metrics metrics;
    metrics.family("radio_info", "gauge", "The radio that is served.");
    metrics.sample(1, {{"name", board.name},
                       {"serial", board.serial},
                       {"mode", m_radio.isOnHardware() ? "hardware" : "simulation"}});
    metrics.family("radio_carrier_hertz", "gauge", "The carrier that a channel was tuned to.");
    for (const ChannelDescription& channel : board.channels) {
        for (const Direction direction : {Direction::tx, Direction::rx}) {
            const auto khz = m_radio.radio().frequency(direction, channel.number);
            if (khz != 0) {
                metrics.sample(
                    static_cast<double>(khz) * 1000.0,
                    {{"channel", std::to_string(channel.number)}, {"direction", toString(direction)}});
            }
        }
    }
    if (const auto degrees = m_radio.platform().temperature().temperature()) {
        metrics.family("radio_temperature_celsius", "gauge", "The temperature that the radio was told.");
        metrics.sample(*degrees);
    }
    metrics.family("radio_lo_leakage_dbc", "gauge", "The modelled LO leakage of a channel that is tuned.");
    for (const auto& [channel, transmitter] : m_radio.radio().transmitters()) {
        if (transmitter->surroundings().carrier != 0) {
            metrics.sample(transmitter->level(), {{"channel", std::to_string(channel)}});
        }
    }
    metrics.family("radio_driver_writes_total", "counter", "Writes to a driver that succeeded.");
    for (const auto& [name, driver] : m_radio.platform().drivers().drivers()) {
        metrics.sample(static_cast<double>(driver->writes()), {{"driver", name}});
    }
    metrics.family("radio_failures_total", "counter", "Writes and reads that failed, by their code.");
    for (const auto& [failure, count] : m_radio.failures()) {
        metrics.sample(static_cast<double>(count), {{"operation", Standalone::toString(failure.operation)},
                                                    {"object", failure.object},
                                                    {"code", codeText(failure.code)}});
    }
    metrics.family("radio_faults", "gauge", "Faults that are injected at the moment.");
    metrics.sample(static_cast<double>(m_radio.platform().calls().faults().size()));
    m_calibrations.addTo(metrics);
    metrics.family("radio_events_total", "counter", "Events that were told.");
    metrics.sample(static_cast<double>(m_events.last()));
    metrics.family("radio_requests_total", "counter",
                   "Requests that reached the radio, by the status of the answer.");
    for (const auto& [status, count] : m_answered) {
        metrics.sample(static_cast<double>(count), {{"status", std::to_string(status)}});
    }
    return {200, "text/plain; version=0.0.4; charset=utf-8", metrics.text(), {}};
}

} // namespace Radio::Service

#include "ModelPlatform.h"

#include "Arithmetic.h"

#include <algorithm>
#include <array>

namespace Told {

namespace {

constexpr std::array words{
    "broker-register",
    "broker-unregister",
    "broker-lookup",
    "broker-open",
    "broker-get",
    "broker-close",
    "module-register",
    "module-unregister",
    "module-register-c",
    "callback-register",
    "driver-lookup",
    "driver-write",
    "driver-write-buffer",
    "driver-read",
    "variable-get",
    "variable-address",
    "table-lookup",
    "table-linear",
    "table-bilinear",
    "temperature-register",
    "rau-tx",
    "rau-rx",
};

const std::string nameless;

template <typename Named>
Handle placeOf(const std::vector<Named>& list, const std::string& name) {
    const auto found =
        std::find_if(list.begin(), list.end(), [&](const Named& item) { return item.name.text() == name; });
    return found != list.end() ? found - list.begin() : nowhere;
}

std::string remoteRadioName(std::int32_t channel) {
    return channel == 0 ? "IRauHandler" : "IRauHandler_" + std::to_string(channel);
}

} // namespace

ModelPlatform::ModelPlatform(Board board, Transcript& transcript)
    : m_board(std::move(board)),
      m_transcript(transcript),
      m_held(m_board.drivers.size()) {
    setPresence("IDriverLayer", m_board.driverLayer);
    setPresence("ITemperatureHandler", m_board.temperatureHandler);
    for (const RemoteRadio& radio : m_board.remoteRadios) {
        m_remoteRadios[remoteRadioName(radio.channel)] = {0, 0};
        setPresence(remoteRadioName(radio.channel), radio.presence);
    }
}

std::optional<ModelPlatform::Fault> ModelPlatform::faultFor(const Call& call) {
    if (m_faultAt && --m_faultAt->first <= 0) {
        Fault fault = m_faultAt->second;
        if (fault.times == 1) {
            m_faultAt.reset();
        }
        return fault;
    }
    for (auto fault = m_faults.rbegin(); fault != m_faults.rend(); ++fault) {
        if (fault->operation == call.operation && (fault->object.empty() || fault->object == call.object)) {
            Fault taken = *fault;
            if (fault->times > 0 && --fault->times == 0) {
                m_faults.erase(std::next(fault).base());
            }
            return taken;
        }
    }
    return std::nullopt;
}

template <typename Work>
Code ModelPlatform::answer(Call call, Work work) {
    const std::optional<Fault> fault = faultFor(call);
    Code code = ok;
    if (!fault || fault->isCarriedOut()) {
        code = work(call.value);
    } else if (fault->leaves == Leaves::number && call.output != nullptr) {
        *call.output = fault->output;
        call.value = fault->output;
    }
    if (fault && fault->leaves == Leaves::null && call.handle != nullptr) {
        *call.handle = nowhere;
    }
    if (fault) {
        code = fault->code;
    }
    m_transcript.call(words[static_cast<std::size_t>(call.operation)], call.object, call.value, call.x1,
                      call.x2, code, call.bytes.data(), call.bytes.size());
    ++m_calls;
    disturb();
    if (fault && fault->throws != Throws::nothing) {
        throw PlatformThrew{whatOf(fault->throws)};
    }
    return code;
}

Code ModelPlatform::answerPlainly(Op operation, const std::string& object,
                                  const std::function<Code()>& work) {
    return answer({operation, object}, [&](std::int64_t& /*value*/) { return work(); });
}

Code ModelPlatform::publish(const std::string& name, void* object) {
    return plain(Op::brokerRegister, name, [&] {
        return m_published.emplace(name, Entry{Presence::present, object}).second ? ok : alreadyThere;
    });
}

Code ModelPlatform::withdraw(const std::string& name) {
    return plain(Op::brokerUnregister, name, [&] { return m_published.erase(name) != 0 ? ok : notFound; });
}

Presence ModelPlatform::look(const std::string& name) {
    Presence seen = Presence::absent;
    Handle object = nowhere;
    Call call{Op::brokerLookup, name};
    call.handle = &object;
    answer(call, [&](std::int64_t& /*value*/) {
        const auto entry = m_published.find(name);
        if (entry == m_published.end() || entry->second.presence == Presence::null) {
            return notFound;
        }
        seen = entry->second.presence;
        object = 0;
        return ok;
    });
    return object != nowhere ? seen : Presence::absent;
}

bool ModelPlatform::findDriverLayer() {
    const Presence seen = look("IDriverLayer");
    m_recordIsWordless = seen == Presence::wordless;
    return seen == Presence::present || seen == Presence::wordless;
}

void* ModelPlatform::objectAt(const std::string& name) const {
    const auto entry = m_published.find(name);
    return entry != m_published.end() ? entry->second.object : nullptr;
}

Code ModelPlatform::openBroker() {
    Handle handle = nowhere;
    Call call{Op::brokerOpen, nameless};
    call.handle = &handle;
    const Code code = answer(call, [&](std::int64_t& /*value*/) {
        ++m_openHandles;
        handle = 0;
        return ok;
    });
    m_handleIsNull = handle == nowhere;
    return code;
}

Code ModelPlatform::getFromBroker(const std::string& name, bool& found) {
    Handle record = nowhere;
    Call call{Op::brokerGet, name};
    call.handle = &record;
    const Code code = answer(call, [&](std::int64_t& /*value*/) {
        if (m_handleIsNull) {
            return badArgument;
        }
        const auto entry = m_published.find(name);
        const Presence seen = entry != m_published.end() ? entry->second.presence : Presence::absent;
        m_recordIsWordless = seen == Presence::wordless;
        if (seen != Presence::present && seen != Presence::wordless) {
            return notFound;
        }
        record = 0;
        return ok;
    });
    found = record != nowhere;
    return code;
}

void ModelPlatform::closeBroker() {
    plain(Op::brokerClose, nameless, [&] {
        if (m_handleIsNull) {
            return badArgument;
        }
        --m_openHandles;
        return ok;
    });
}

Handle ModelPlatform::driverAt(const std::string& name) const {
    return placeOf(m_board.drivers, name);
}

Handle ModelPlatform::variableAt(const std::string& name) const {
    return placeOf(m_board.variables, name);
}

Code ModelPlatform::lookUpDriver(const std::string& name, Handle& driver) {
    if (m_recordIsWordless) {
        return failed; // there is nothing to call
    }
    Call call{Op::driverLookup, name};
    call.handle = &driver;
    return answer(call, [&](std::int64_t& /*value*/) {
        const Handle found = driverAt(name);
        if (found == nowhere) {
            return notFound;
        }
        driver = m_board.drivers[static_cast<std::size_t>(found)].nullRecord ? nowhere : found;
        return ok;
    });
}

bool ModelPlatform::has(Handle driver, unsigned wanted) const {
    return driver != nowhere &&
           (m_board.drivers[static_cast<std::size_t>(driver)].missingWords & wanted) == 0;
}

Code ModelPlatform::writeDriver(Handle driver, std::int32_t value, bool passesRecord) {
    const auto place = static_cast<std::size_t>(driver);
    if (!passesRecord && !has(driver, Word::context)) {
        return badArgument; // the platform cannot tell which driver is meant
    }
    return answer({Op::driverWrite, m_board.drivers[place].name.text(), value}, [&](std::int64_t& /*value*/) {
        m_held[place] = {value, m_held[place].writes + 1};
        return ok;
    });
}

Code ModelPlatform::writeBytes(Handle driver, std::uint64_t value) {
    const auto place = static_cast<std::size_t>(driver);
    if (!has(driver, Word::context)) {
        return badArgument;
    }
    Call call{Op::driverWriteBuffer, m_board.drivers[place].name.text(), static_cast<std::int64_t>(value)};
    for (std::uint64_t rest = value; call.bytes.size() < 8; rest /= 256) {
        call.bytes.push_back(static_cast<std::uint8_t>(rest % 256));
    }
    return answer(call, [&](std::int64_t& given) {
        m_held[place] = {given, m_held[place].writes + 1};
        return ok;
    });
}

Code ModelPlatform::readDriver(Handle driver, std::int32_t& value) {
    const auto place = static_cast<std::size_t>(driver);
    if (!has(driver, Word::context)) {
        return badArgument;
    }
    Call call{Op::driverRead, m_board.drivers[place].name.text()};
    call.output = &value;
    return answer(call, [&](std::int64_t& given) {
        value = m_board.readings[m_readingsGiven++ % m_board.readings.size()];
        given = value;
        m_held[place].value = value;
        return ok;
    });
}

Code ModelPlatform::lookUpVariable(const std::string& name, Handle& variable) {
    Call call{Op::variableGet, name};
    call.handle = &variable;
    return answer(call, [&](std::int64_t& given) {
        const Handle found = variableAt(name);
        if (found == nowhere) {
            return notFound;
        }
        const Variable& there = m_board.variables[static_cast<std::size_t>(found)];
        variable = there.nullRecord ? nowhere : found;
        given = there.values.front();
        return ok;
    });
}

Code ModelPlatform::lookUpContent(const std::string& name, Handle& variable) {
    Call call{Op::variableAddress, name};
    call.handle = &variable;
    return answer(call, [&](std::int64_t& given) {
        const Handle found = variableAt(name);
        if (found == nowhere) {
            return notFound;
        }
        variable = hasContent(found) ? found : nowhere;
        given = m_board.variables[static_cast<std::size_t>(found)].values.front();
        return ok;
    });
}

bool ModelPlatform::hasContent(Handle variable) const {
    return variable != nowhere && !m_board.variables[static_cast<std::size_t>(variable)].noContent;
}

std::int32_t ModelPlatform::content(Handle variable, std::size_t index) const {
    return m_board.variables[static_cast<std::size_t>(variable)].values[index];
}

Code ModelPlatform::lookUpTable(const std::string& name, Handle& table) {
    Call call{Op::tableLookup, name};
    call.handle = &table;
    return answer(call, [&](std::int64_t& /*value*/) {
        const Handle found = placeOf(m_board.tables, name);
        table = found != nowhere ? found : table;
        return found != nowhere ? ok : notFound;
    });
}

Code ModelPlatform::interpolate(Handle table, std::int32_t x, std::int32_t& value) {
    const Table* const there = table != nowhere ? &m_board.tables[static_cast<std::size_t>(table)] : nullptr;
    Call call{Op::tableLinear, there != nullptr ? there->name.text() : nameless, 0, x, 0, &value};
    return answer(call, [&](std::int64_t& given) {
        if (there == nullptr || !there->axis2.empty()) {
            return badArgument;
        }
        value = interpolated(*there, x, 0);
        given = value;
        return ok;
    });
}

Code ModelPlatform::interpolate(Handle table, std::int32_t x1, std::int32_t x2, std::int32_t& value) {
    const Table* const there = table != nowhere ? &m_board.tables[static_cast<std::size_t>(table)] : nullptr;
    Call call{Op::tableBilinear, there != nullptr ? there->name.text() : nameless, 0, x1, x2, &value};
    return answer(call, [&](std::int64_t& given) {
        if (there == nullptr || there->axis2.empty()) {
            return badArgument;
        }
        value = interpolated(*there, x1, x2);
        given = value;
        return ok;
    });
}

Code ModelPlatform::setRemoteRadio(Op operation, const std::string& name, std::uint32_t frequency) {
    return answer({operation, name, frequency}, [&](std::int64_t& /*value*/) {
        m_remoteRadios[name][operation == Op::rauRx ? 1 : 0] = frequency;
        return ok;
    });
}

void ModelPlatform::tellValues() {
    for (std::size_t i = 0; i < m_held.size(); ++i) {
        if (m_held[i].writes != 0) {
            m_transcript.note("held by", m_board.drivers[i].name.text(), m_held[i].value);
            m_transcript.note("writes to", m_board.drivers[i].name.text(), m_held[i].writes);
        }
    }
    for (const auto& [name, frequencies] : m_remoteRadios) {
        m_transcript.note("transmits", name, frequencies[0]);
        m_transcript.note("receives", name, frequencies[1]);
    }
}

} // namespace Told

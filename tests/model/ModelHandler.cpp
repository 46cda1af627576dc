// What handlers share, the RF module and the remote radio unit.

#include "Model.h"

namespace Told {

namespace {

std::string lowered(std::string text) {
    for (char& letter : text) {
        if (letter >= 'A' && letter <= 'Z') {
            letter = static_cast<char>(letter - 'A' + 'a');
        }
    }
    return text;
}

} // namespace

std::string ModelHandler::name() const {
    return handlerName(direction, channel);
}

std::string ModelHandler::prefix() const {
    return lowered("Channel." + std::to_string(channel) + "." + direction + ".");
}

std::unique_ptr<ModelHandler> Model::makeHandler(HandlerKind kind, const std::string& direction,
                                                 std::int32_t channel, unsigned flags) {
    auto handler = std::make_unique<ModelHandler>(ModelHandler{kind, direction, channel, flags});
    hold("registerInterface", [&] { return m_platform.publish(handler->name(), handler.get()); });
    return handler;
}

void Model::destroyHandler(std::unique_ptr<ModelHandler>& handler) {
    if (handler) {
        hold("unregisterInterface", [&] { return m_platform.withdraw(handler->name()); });
        m_platform.drop(handler->name());
        handler.reset();
    }
}

void Model::tellOfHandler(const Step& step, ModelHandler& handler) {
    const std::int64_t number = step.number[0];
    const auto throws = static_cast<Throws>(step.number[1]);
    const auto frequency = static_cast<std::uint32_t>(number);
    const auto answer = [&](Code code) { m_transcript.note("answer", code); };
    switch (step.what) {
    case Do::handlerInit:
        return answer(initHandler(handler));
    case Do::handlerVariables:
        return answer(readVariables(handler));
    case Do::handlerFrameFormat:
        return answer(readFrameFormat(handler));
    case Do::handlerWrite:
        return answer(writeFrequency(handler, frequency));
    case Do::handlerSet:
        return answer(setFrequency(handler, frequency));
    case Do::plan:
        return handler.kind == HandlerKind::microwave ? tellPlan(handler, frequency, step.number[1] != 0)
                                                      : void();
    case Do::observe:
        handler.observers.push_back({ModelObserver::Kind::ofClass, number, 0, throws});
        return answer(ok);
    case Do::observeNull:
        handler.observers.push_back({ModelObserver::Kind::null, 0, 0, Throws::nothing});
        return answer(ok);
    case Do::observeFromC:
        if (Code code = ok; !asksFromC(step.name, code)) {
            return answer(code);
        }
        handler.observers.push_back({ModelObserver::Kind::ofC, number, handler.channel, throws});
        return answer(ok);
    case Do::observeBadlyFromC:
        if (Code code = ok; !asksFromC(step.name, code)) {
            return answer(code);
        }
        m_platform.say(failed, "registerObserver called without handler, observer or function");
        return answer(failed);
    default:
        return m_transcript.note("frequency", handler.frequency);
    }
}

bool Model::asksFromC(const std::string& name, Code& code) {
    bool found = false;
    try {
        code = m_platform.openBroker();
        if (isBad(code)) {
            return false;
        }
        code = m_platform.getFromBroker(name, found);
        m_platform.closeBroker();
    } catch (const PlatformThrew&) { // such a client gives up, and gives nothing back
        code = failed;
    }
    return found && !isBad(code);
}

Code Model::setFrequency(ModelHandler& handler, std::uint32_t frequency) {
    handler.frequency = frequency;
    writeFrequency(handler, frequency);
    for (std::size_t i = 0; i < handler.observers.size(); ++i) {
        notify(handler, i);
    }
    return ok;
}

void Model::notify(const ModelHandler& handler, std::size_t place) {
    const ModelObserver& observer = handler.observers[place];
    const char* const direction = handler.direction.c_str();
    const bool fails = observer.throws != Throws::nothing;
    switch (observer.kind) {
    case ModelObserver::Kind::ofClass:
        m_transcript.note("observer", std::to_string(observer.number), handler.frequency);
        if (fails) {
            m_platform.say(failed, "setRfFrequency: observer %zu of direction %s failed: %s", place,
                           direction, whatOf(observer.throws));
        }
        return;
    case ModelObserver::Kind::ofC:
        m_transcript.note("observer in C", std::to_string(observer.number), handler.frequency);
        m_transcript.note("of channel", observer.channel);
        if (fails) {
            m_platform.say(failed, "onFrequencyChanged failed: %s", whatOf(observer.throws));
        }
        return;
    case ModelObserver::Kind::null:
        m_platform.say(failed, "setRfFrequency: observer %zu of direction %s is null", place, direction);
        return;
    }
}

Code Model::initHandler(ModelHandler& handler) {
    return hold("onModuleInit", [&] {
        switch (handler.kind) {
        case HandlerKind::microwave:
            return initMicrowave(handler);
        case HandlerKind::rfModule:
            return initRfModule(handler);
        case HandlerKind::rau:
            break;
        }
        return initRemoteRadio(handler);
    });
}

Code Model::readVariables(ModelHandler& handler) {
    return hold("getVariablesFromDatabase", [&] {
        return handler.kind == HandlerKind::microwave ? readMicrowaveVariables(handler) : ok;
    });
}

Code Model::readFrameFormat(ModelHandler& handler) {
    return hold("getFFVariablesFromDatabase", [&] {
        return handler.kind == HandlerKind::microwave ? readMicrowaveFrameFormat(handler) : ok;
    });
}

Code Model::writeFrequency(ModelHandler& handler, std::uint32_t frequency) {
    return hold("writeFrequencyToHW", [&] {
        switch (handler.kind) {
        case HandlerKind::microwave:
            return writeMicrowave(handler, frequency);
        case HandlerKind::rfModule:
            return writeRfModule(handler, frequency);
        case HandlerKind::rau:
            break;
        }
        return writeRemoteRadio(handler, frequency);
    });
}

Code Model::initRfModule(ModelHandler& handler) {
    if (!m_platform.findDriverLayer()) {
        m_platform.say(failed, "Unable to get DriverLayer Interface");
        return failed;
    }
    const std::string driver = handler.prefix() + "rf.frequency";
    const Code code = m_platform.lookUpDriver(driver, handler.frequencyDriver);
    if (isBad(code) || !m_platform.has(handler.frequencyDriver, Word::write | Word::context)) {
        m_platform.say(code, "%s failed to get driver interface [%s] (EDriverResult = 0x%x)", "onModuleInit",
                       driver.c_str(), static_cast<unsigned>(code));
        return failed;
    }
    return ok;
}

Code Model::writeRfModule(ModelHandler& handler, std::uint32_t frequency) {
    const char* const direction = handler.direction.c_str();
    m_platform.say(2048, "Write frequency to HW %d for direction %s", asInt(frequency), direction);
    if (!m_platform.has(handler.frequencyDriver, Word::write)) {
        m_platform.say(2048, "Unable to write to rfFrequencyDriver for direction %s", direction);
        return ok;
    }
    const Code code = m_platform.writeDriver(handler.frequencyDriver, asInt(frequency));
    if (isBad(code)) {
        m_platform.say(code, "Write to driver failed for channel.%d.%s.rf.frequency (EDriverResult = 0x%x)",
                       handler.channel, direction, static_cast<unsigned>(code));
        return failed;
    }
    return ok;
}

Code Model::initRemoteRadio(ModelHandler& handler) {
    const std::string name =
        handler.channel == 0 ? "IRauHandler" : "IRauHandler_" + std::to_string(handler.channel);
    handler.remoteRadio = m_platform.look(name) == Presence::present ? name : "";
    if (handler.remoteRadio.empty()) {
        m_platform.sayOpenly(1, "onModuleInit(): Error getting interface to " + name);
        return failed;
    }
    return ok;
}

Code Model::writeRemoteRadio(ModelHandler& handler, std::uint32_t frequency) {
    if (handler.remoteRadio.empty()) {
        m_platform.say(failed, "writeFrequencyToHW called without IRauHandler for direction %s",
                       handler.direction.c_str());
        return failed;
    }
    const Op operation = handler.isRx() ? Op::rauRx : Op::rauTx;
    return isBad(m_platform.setRemoteRadio(operation, handler.remoteRadio, frequency)) ? failed : ok;
}

} // namespace Told

// The frequency module of a channel.

#include "Model.h"

#include <algorithm>

namespace Told {

namespace {

constexpr std::uint32_t moduleId = 19000;

/** What a type is made of. */
struct Type {
    HandlerKind kind;
    unsigned txFlags;
    unsigned rxFlags;
    bool hasCanceller;
};

constexpr std::array<Type, 6> types{{
    {HandlerKind::microwave, useIf, useIf, true},
    {HandlerKind::rfModule, 0, 0, false},
    {HandlerKind::microwave, 0, useHalfSpacing, true},
    {HandlerKind::microwave, inHz, useOffsetArray | inHz, true},
    {HandlerKind::rau, 0, 0, false},
    {HandlerKind::microwave, inHz, inHz, true},
}};

} // namespace

void Model::makeModule(const Step& step) {
    auto& module = m_modules[static_cast<std::size_t>(step.number[0])];
    if (module) {
        return;
    }
    const std::int64_t type = step.number[2];
    const std::int32_t channel = asInt(step.number[1]);
    module = std::make_unique<ModelModule>();
    module->channel = static_cast<std::uint32_t>(modulo32(channel));
    if (type >= 0 && type < 6) {
        const Type& made = types[static_cast<std::size_t>(type)];
        module->tx = makeHandler(made.kind, "Tx", channel, made.txFlags);
        module->rx = makeHandler(made.kind, "Rx", channel, made.rxFlags);
        if (made.hasCanceller) {
            module->canceller = std::make_unique<ModelCanceller>(ModelCanceller{channel});
            publishCanceller(*module->canceller);
        }
    } else {
        m_platform.say(2048, "Unknown FrequencyHandlerType");
    }
    const auto enter = [&] {
        const auto place = std::find_if(m_registered.begin(), m_registered.end(),
                                        [](const Registered& entry) { return entry.id > moduleId; });
        m_registered.insert(place, {moduleId, module.get(), {}});
        return ok;
    };
    hold("RegisterModule", [&] { return m_platform.plain(Op::moduleRegister, "FrequencyHandler", enter); });
}

void Model::destroyModule(std::unique_ptr<ModelModule>& module) {
    if (!module) {
        return;
    }
    const auto isIt = [&](const Registered& entry) { return entry.module == module.get(); };
    const auto remove = [&] {
        const auto found = std::find_if(m_registered.begin(), m_registered.end(), isIt);
        if (found == m_registered.end()) {
            return notFound;
        }
        m_registered.erase(found);
        return ok;
    };
    hold("UnRegisterModule",
         [&] { return m_platform.plain(Op::moduleUnregister, "FrequencyHandler", remove); });
    destroyHandler(module->tx);
    destroyHandler(module->rx);
    if (module->canceller) {
        withdrawCanceller(*module->canceller);
    }
    m_registered.remove_if(isIt); // the platform forgets it in any case
    module.reset();
}

void Model::tellOfModule(const Step& step, ModelModule& module) {
    const auto number = static_cast<std::uint32_t>(step.number[1]);
    switch (step.what) {
    case Do::moduleInit:
        return m_transcript.note("answer", moduleInit(module));
    case Do::moduleStorage:
        return m_transcript.note("answer", moduleVariables(module, false));
    case Do::moduleFrameFormat:
        return m_transcript.note("answer", moduleVariables(module, true));
    case Do::setTx:
        return m_transcript.note("answer", setTx(module, number));
    case Do::setRx:
        return m_transcript.note("answer", setRx(module, number));
    default:
        return notifyModule(module, asInt(number));
    }
}

bool Model::lacksHandlers(const ModelModule& module, const char* operation) {
    if (!module.tx) {
        m_platform.say(failed, "%s called on a module without handlers", operation);
    }
    return !module.tx;
}

Code Model::moduleInit(ModelModule& module) {
    m_platform.say(2048, "onModuleInit");
    if (lacksHandlers(module, "onModuleInit") || isBad(initHandler(*module.tx)) ||
        isBad(initHandler(*module.rx))) {
        return failed;
    }
    if (module.canceller && isBad(initCanceller(*module.canceller))) {
        return failed;
    }
    return hold("onModuleInit", [&] {
        m_platform.look("ITemperatureHandler");
        subscribe({&module, nullptr});
        return ok;
    });
}

Code Model::moduleVariables(ModelModule& module, bool frameFormat) {
    const char* const name =
        frameFormat ? "onPhasePostFrameformatLoad" : "onPhaseModuleStorageObjectsRetreived";
    m_platform.say(2048, "%s", name);
    if (lacksHandlers(module, name)) {
        return failed;
    }
    for (ModelHandler* const handler : {module.tx.get(), module.rx.get()}) {
        if (isBad(frameFormat ? readFrameFormat(*handler) : readVariables(*handler))) {
            return failed;
        }
    }
    return ok;
}

Code Model::setTx(ModelModule& module, std::uint32_t frequency) {
    m_platform.say(2048, "setTxFrequency %d", asInt(frequency));
    if (lacksHandlers(module, "setTxFrequency")) {
        return failed;
    }
    setFrequency(*module.tx, frequency);
    if (module.canceller) {
        correct(*module.canceller, frequency, module.temperature);
    }
    return ok;
}

Code Model::setRx(ModelModule& module, std::uint32_t frequency) {
    m_platform.say(2048, "setRxFrequency %d", asInt(frequency));
    if (lacksHandlers(module, "setRxFrequency")) {
        return failed;
    }
    setFrequency(*module.rx, frequency);
    return ok;
}

void Model::notifyModule(ModelModule& module, std::int32_t temperature) {
    module.temperature = temperature;
    if (module.canceller) {
        correct(*module.canceller, module.tx->frequency, temperature);
    }
    m_platform.say(2048, "%s called with temp = %d", "notifyTemperature", temperature);
}

} // namespace Told

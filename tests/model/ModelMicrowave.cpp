// The microwave board: initialisation, database variables, frequency plan and hardware write.

#include "Model.h"

namespace Told {

namespace {

constexpr unsigned usable = Word::context | Word::write;

unsigned shown(Code code) {
    return static_cast<unsigned>(code);
}

} // namespace

Code Model::initMicrowave(ModelHandler& handler) {
    if (m_platform.findDriverLayer() && isBad(bindMicrowave(handler))) {
        return failed;
    }
    if (handler.chargePumpTableValid) {
        fetchChargePumpTable(handler);
    }
    const Wide start = tellIfPll(handler, 0);
    if (handler.is(useIf) && m_platform.has(handler.ifDriver, Word::write)) {
        const Code code = m_platform.writeDriver(handler.ifDriver, asInt(start));
        if (isBad(code)) {
            m_platform.say(code,
                           "Write to driver failed for channel.%d.%s.if.frequency (EDriverResult = 0x%x)",
                           handler.channel, handler.direction.c_str(), shown(code));
            return failed;
        }
    }
    return ok;
}

Code Model::require(const std::string& driver, Word operation, Handle& handle) {
    const Code code = m_platform.lookUpDriver(driver, handle);
    if (isBad(code) || !m_platform.has(handle, operation | Word::context)) {
        m_platform.say(code, "%s failed to get driver interface [%s] (EDriverResult = 0x%x)", "onModuleInit",
                       driver.c_str(), shown(code));
        return failed;
    }
    return ok;
}

Code Model::bindMicrowave(ModelHandler& handler) {
    const std::string prefix = handler.prefix();
    if (isBad(require(prefix + "rf.lo.frequency", Word::write, handler.loDriver))) {
        return failed;
    }
    if (handler.is(inHz) &&
        isBad(require(prefix + "rf.lo.frequency.in.hz", Word::writeBuffer, handler.loInHzDriver))) {
        return failed;
    }
    if (!handler.is(useIf)) {
        m_platform.lookUpDriver(prefix + "if.frequency", handler.ifDriver);
    } else if (isBad(require(prefix + "if.frequency", Word::write, handler.ifDriver))) {
        return failed;
    }
    const Code code = m_platform.lookUpDriver(prefix + "rf.lo.config", handler.pllConfigDriver);
    if (!isBad(code) && m_platform.has(handler.pllConfigDriver, usable)) {
        m_platform.writeDriver(handler.pllConfigDriver, 1);
        handler.chargePumpTableValid = false;
    } else if (isBad(require(prefix + "rf.pll.config", Word::write, handler.pllConfigDriver))) {
        return failed;
    }
    if (handler.is(useHalfSpacing) || handler.is(useOffsetArray)) {
        return require("channel." + std::to_string(handler.channel) + ".dsp.rx.freq.offset", Word::write,
                       handler.dspOffsetDriver);
    }
    return ok;
}

void Model::fetchChargePumpTable(ModelHandler& handler) {
    const std::string rest = handler.direction + ".Rf.Pll.Frequency.To.Chargepump.Setting";
    const std::string own = "Channel." + std::to_string(handler.channel) + "." + rest;
    if (!isBad(m_platform.lookUpTable(own, handler.chargePumpTable))) {
        return;
    }
    if (handler.channel > 1) {
        m_platform.say(256, "TODO: %s uses Channel.1 data for now", (own + ".pdb").c_str());
    }
    const Code code = m_platform.lookUpTable("Channel.1." + rest + ".Pdb", handler.chargePumpTable);
    if (isBad(code)) {
        m_platform.say(failed,
                       "Unable to fetch table Channel.%d.%s.Rf.Pll.Frequency.To.Chargepump.Setting.Pdb "
                       "(EDriverResult = 0x%x)",
                       handler.channel, handler.direction.c_str(), shown(code));
    }
}

Code Model::readVariable(const std::string& name, Wide& value) {
    return hold("getStorageVariableByName", [&] {
        Handle variable = nowhere;
        const Code code = m_platform.lookUpVariable(name, variable);
        if (isBad(code) || !m_platform.hasContent(variable)) {
            m_platform.say(failed, "Could not get the variable %s from the database", name.c_str());
            return failed;
        }
        value = m_platform.content(variable);
        return ok;
    });
}

Code Model::readMicrowaveVariables(ModelHandler& handler) {
    const std::string prefix = handler.prefix();
    if (isBad(readVariable(prefix + "mixer.multiplicationfactor", handler.plan.factor))) {
        return failed;
    }
    Wide inverted = 0;
    readVariable(prefix + "rf.spectruminverted", inverted);
    handler.plan.rfSideband = inverted != 0 ? 1 : -1;
    readVariable(prefix + "baseband.spectruminverted", inverted);
    handler.plan.ifSideband = inverted != 0 ? 1 : -1;
    if (handler.is(useIf) && isBad(readVariable(prefix + "if.frequency", handler.plan.ifFrequency))) {
        return failed;
    }
    if (isBad(readVariable(handler.direction + "IfBb", handler.plan.ifBb))) {
        return failed;
    }
    if (!handler.is(useOffsetArray) || !handler.isRx()) {
        return ok;
    }
    const std::string array =
        "channel." + std::to_string(handler.channel) + ".rx.rf.frequency.cs.offset.array";
    struct Live {
        std::string name;
        Handle& place;
    };
    const std::array<Live, 3> all{{{"HwCodeDsp", handler.hwCodeDsp},
                                   {array + "size", handler.offsetArraySize},
                                   {array, handler.offsetArray}}};
    for (const Live& live : all) {
        Handle found = live.place; // which stays where a success stores nothing
        live.place = nowhere;
        if (isBad(m_platform.lookUpContent(live.name, found))) {
            return failed;
        }
        live.place = found;
    }
    return ok;
}

Code Model::readMicrowaveFrameFormat(ModelHandler& handler) {
    if (isBad(readVariable(handler.direction + "IfBb", handler.plan.ifBb))) {
        return failed;
    }
    if ((!handler.is(useHalfSpacing) && !handler.is(useOffsetArray)) || !handler.isRx()) {
        return ok;
    }
    Handle spacing = nowhere;
    const Code code = m_platform.lookUpContent("ChannelSpacing", spacing);
    if (isBad(code)) {
        m_platform.say(code, "Could not get the variable %s in the database", "ChannelSpacing");
        return failed;
    }
    if (spacing == nowhere) {
        m_platform.say(failed, "The variable %s has no content", "ChannelSpacing");
        return failed;
    }
    handler.channelSpacing = m_platform.content(spacing);
    m_platform.say(2048, "%s: New channel spacing = %d", "getFFVariablesFromDatabase",
                   asInt(handler.channelSpacing));
    return ok;
}

Wide Model::tellIfPll(const ModelHandler& handler, Wide frequency) {
    const Wide result = ifPllOf(handler.plan, frequency);
    m_platform.say(2048, "channel.%d.%s.if.pll %lu", handler.channel, handler.direction.c_str(),
                   static_cast<unsigned long>(result));
    return result;
}

bool Model::tellRfPll(const ModelHandler& handler, Wide frequency, bool exact, Wide& result) {
    result = 0;
    if (handler.plan.factor == 0) {
        m_platform.say(failed, "channel.%d.%s.rf.pll needs a mixer multiplication factor other than 0",
                       handler.channel, handler.direction.c_str());
        return false;
    }
    result = rfPllOf(handler.plan, frequency, exact);
    m_platform.say(2048, "channel.%d.%s.rf.pll %llu", handler.channel, handler.direction.c_str(),
                   static_cast<unsigned long long>(result));
    return true;
}

void Model::tellPlan(const ModelHandler& handler, Wide frequency, bool exact) {
    m_transcript.note("lo", static_cast<std::int64_t>(loOf(handler.plan, frequency)));
    m_transcript.note("step", static_cast<std::int64_t>(stepOf(frequency)));
    m_transcript.note("if pll", static_cast<std::int64_t>(tellIfPll(handler, frequency)));
    Wide rfPll = 0;
    tellRfPll(handler, frequency, exact, rfPll);
    m_transcript.note("rf pll", static_cast<std::int64_t>(rfPll));
    m_transcript.note("baseband", static_cast<std::int64_t>(basebandOf(handler.plan)));
}

Code Model::writeMicrowave(ModelHandler& handler, std::uint32_t frequency) {
    Wide carrier = frequency;
    if (handler.is(useOffsetArray) && handler.isRx() && isBad(shiftByArray(handler, carrier))) {
        return failed;
    }
    Wide shift = 0;
    if (handler.is(useHalfSpacing) && handler.isRx() &&
        m_platform.has(handler.dspOffsetDriver, Word::write) && isBad(shiftInDsp(handler, shift))) {
        return failed;
    }
    const Wide ifPll = tellIfPll(handler, carrier);
    Wide rfPll = 0;
    if (!tellRfPll(handler, modulo32(carrier - shift), handler.is(inHz), rfPll)) {
        return failed;
    }
    if (isBad(writeSynthesisers(handler, ifPll, rfPll))) {
        return failed;
    }
    if (!handler.chargePumpTableValid) {
        return ok;
    }
    const char* const direction = handler.direction.c_str();
    std::int32_t chargePump = 0;
    Code code = m_platform.interpolate(handler.chargePumpTable, asInt(carrier), chargePump);
    if (isBad(code)) {
        m_platform.say(
            failed,
            "Unable to fetch value from table Channel.%d.%s.Rf.Pll.Frequency.To.Chargepump.Setting "
            "(ECHResult = 0x%x)",
            handler.channel, direction, shown(code));
    }
    if (m_platform.has(handler.pllConfigDriver, Word::write)) {
        code = m_platform.writeDriver(handler.pllConfigDriver, chargePump);
        if (isBad(code)) {
            m_platform.say(code,
                           "Unable to write to driver channel.%d.%s.rf.pll.config (EDriverResult = 0x%x)",
                           handler.channel, direction, shown(code));
            return failed;
        }
    }
    return ok;
}

Code Model::shiftByArray(ModelHandler& handler, Wide& frequency) {
    const Wide spacing = handler.channelSpacing;
    const bool hasSize = handler.offsetArraySize != nowhere;
    const std::int32_t size = hasSize ? m_platform.content(handler.offsetArraySize) : 0;
    if (!hasSize || (size > 0 && handler.offsetArray == nowhere)) {
        m_platform.say(failed, "channel.%d.rx.rf.frequency.cs.offset.array was not found", handler.channel);
        return failed;
    }
    Wide offset = 0;
    for (std::int32_t i = 0; i < size; i += 2) {
        const auto place = static_cast<std::size_t>(i);
        const std::int32_t code = m_platform.content(handler.offsetArray, place);
        if (code == spacing) {
            if (i + 1 >= size) {
                m_platform.say(failed, "channel.%d.rx.rf.frequency.cs.offset.array ends inside a pair",
                               handler.channel);
                return failed;
            }
            const std::int32_t stored = m_platform.content(handler.offsetArray, place + 1);
            m_platform.say(2048, "%s: Array(CS)=%i, Array(Foffset)=%i", "writeFrequencyToHW", code, stored);
            offset = wrapped(handler.plan.rfSideband * magnitude(stored));
            break;
        }
    }
    if (offset == 0 && handler.hwCodeDsp != nowhere && m_platform.content(handler.hwCodeDsp) == 3 &&
        (spacing == 250 || spacing == 500 || spacing == 125)) {
        offset = handler.plan.rfSideband * (spacing * 1000 / 2);
    }
    if (offset == 0) {
        offset = 3000;
    }
    m_platform.say(2048, "%s: channelSpacingOffsetkHz=%i, m_rfSideband=%i", "writeFrequencyToHW",
                   asInt(offset), asInt(handler.plan.rfSideband));
    frequency = modulo32(frequency + offset);
    if (m_platform.has(handler.dspOffsetDriver, Word::write)) {
        const Code code =
            m_platform.writeDriver(handler.dspOffsetDriver, offset == 3000 ? 0 : asInt(-offset));
        if (isBad(code)) {
            m_platform.say(code,
                           "Write to driver failed for channel.%d.dsp.rx.freq.offset (EDriverResult = 0x%x)",
                           handler.channel, shown(code));
            return failed;
        }
    }
    return ok;
}

Code Model::shiftInDsp(ModelHandler& handler, Wide& shift) {
    constexpr std::array<std::array<int, 2>, 10> halves{{{50, 25000},
                                                         {100, 50000},
                                                         {150, 75000},
                                                         {200, 100000},
                                                         {250, 125000},
                                                         {300, 25000},
                                                         {350, 50000},
                                                         {400, 75000},
                                                         {450, 100000},
                                                         {600, 125000}}};
    const int spacing = asInt(handler.channelSpacing);
    m_platform.say(2048, "%s: ChannelSpacing used: = %d", "writeFrequencyToHW", spacing);
    for (const auto& half : halves) {
        if (half[0] == spacing) {
            shift = half[1];
        }
    }
    if (shift == 0) {
        m_platform.say(failed, "Unhandled channelspacetype %d", spacing);
        return failed;
    }
    m_platform.say(2048, "channel.%d.dsp.rx.freq.offset = %d", handler.channel, asInt(shift));
    const Code code = m_platform.writeDriver(handler.dspOffsetDriver, asInt(shift));
    if (isBad(code)) {
        m_platform.say(code,
                       "Write to driver failed for channel.%d.dsp.rx.freq.offset (EDriverResult = 0x%x)",
                       handler.channel, shown(code));
        return failed;
    }
    return ok;
}

Code Model::writeSynthesisers(ModelHandler& handler, Wide ifPll, Wide rfPll) {
    const char* const direction = handler.direction.c_str();
    m_platform.say(2048, "channel.%d.%s.ifSideband %d", handler.channel, direction,
                   asInt(handler.plan.ifSideband));
    m_platform.say(2048, "channel.%d.%s.rfSideband %d", handler.channel, direction,
                   asInt(handler.plan.rfSideband));
    m_platform.say(2048, "%sIfBb %d", direction, asInt(handler.plan.ifBb));
    Code code = ok;
    const char* driver = "if.frequency";
    if (handler.is(useIf) && m_platform.has(handler.ifDriver, Word::write)) {
        code = m_platform.writeDriver(handler.ifDriver, asInt(ifPll));
    }
    if (!isBad(code) && !handler.is(inHz) && m_platform.has(handler.loDriver, Word::write)) {
        driver = "rf.lo.frequency";
        code = m_platform.writeDriver(handler.loDriver, asInt(rfPll));
    }
    if (!isBad(code) && handler.is(inHz) && m_platform.has(handler.loInHzDriver, Word::writeBuffer)) {
        driver = "rf.lo.frequency.in.hz";
        code = m_platform.writeBytes(handler.loInHzDriver, static_cast<std::uint64_t>(rfPll));
    }
    if (isBad(code)) {
        m_platform.say(code, "Write to driver failed for channel.%d.%s.%s (EDriverResult = 0x%x)",
                       handler.channel, direction, driver, shown(code));
        return failed;
    }
    return ok;
}

} // namespace Told

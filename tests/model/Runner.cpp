#include "Runner.h"

#include "Thrower.h"

#include <dlfcn.h>
#include <unistd.h>

using Standalone::Call;
using Standalone::Operation;

namespace Told {

Runner* Runner::s_current = nullptr;

Runner::Runner(const Board& board, Transcript& transcript)
    : m_transcript(transcript),
      m_readings(board.readings) {
    s_current = this;
    setUp(board);
    m_platform.calls().setRecording(false);
    m_platform.calls().setListener([this](const Call& call) { listen(call); });
    m_platform.trace().setThreshold(OrbiTraceLevel{board.threshold});
    m_platform.trace().setSink([this](const Standalone::TraceMessage& message) { write(message); });
}

Runner::~Runner() {
    s_current = nullptr;
}

void Runner::write(const Standalone::TraceMessage& message) {
    if (m_tracePlace == TracePlace::stream) {
        throwIt(m_traceThrows);
    }
    m_transcript.trace(message.level, message.text);
    constexpr const char* folder = "PlatformServices/FrequencyHandler/private/";
    if (message.source != "QVX.FH" || message.file.find(folder) == std::string::npos || message.line <= 0) {
        m_transcript.note("strange source", message.file, message.line);
    }
}

void Runner::hearLevel(std::int64_t level) {
    m_transcript.note("level", level);
    if (m_tracePlace == TracePlace::mapping) {
        throwIt(m_traceThrows);
    }
}

void Runner::setUp(const Board& board) {
    m_drivers.reserve(board.drivers.size());
    for (const Told::Driver& driver : board.drivers) {
        Standalone::Driver& made = m_platform.drivers().add(driver.name.text(), driver.missingWords);
        m_drivers.push_back(&made);
        made.setSource([this] { return m_readings[m_readingsGiven++ % m_readings.size()]; });
        if (driver.nullRecord) {
            m_platform.drivers().giveNullRecord(driver.name.text());
        }
    }
    for (const Told::Variable& variable : board.variables) {
        m_platform.variables()
            .add(variable.name.text(), variable.values)
            .setContentMissing(variable.noContent);
        if (variable.nullRecord) {
            m_platform.variables().giveNullRecord(variable.name.text());
        }
    }
    for (const Told::Table& table : board.tables) {
        m_platform.tables().add({table.name.text(), table.axis1, table.axis2, table.values});
    }
    for (const RemoteRadio& radio : board.remoteRadios) {
        setPresence(m_platform.addRau(radio.channel).name(), radio.presence);
    }
    setPresence("IDriverLayer", board.driverLayer);
    setPresence("ITemperatureHandler", board.temperatureHandler);
}

void Runner::listen(const Call& call) {
    m_transcript.call(Standalone::toString(call.operation), call.object, call.value, call.at[0], call.at[1],
                      call.code, call.bytes.data(), call.bytes.size());
    ++m_calls;
    if (m_faultAt) {
        if (m_faultAt->isLoaded && !m_faultAt->forGood) {
            unloadFault();
            m_faultAt.reset();
        } else {
            loadFault();
        }
    }
    if (m_listener) {
        m_listener(m_step, call);
    }
    disturb();
}

/** Has whatever call comes next fail, if it is the one. */
void Runner::loadFault() {
    if (!m_faultAt || m_faultAt->isLoaded || m_calls + 1 < m_faultAt->call) {
        return;
    }
    Standalone::Calls& calls = m_platform.calls();
    m_faultAt->isLoaded = true;
    m_faultsBeside = calls.faults();
    for (const Operation operation : Standalone::allOperations()) {
        m_faultAt->fault.operation = operation;
        calls.inject(m_faultAt->fault);
    }
}

void Runner::unloadFault() {
    if (m_faultAt && m_faultAt->isLoaded) {
        Standalone::Calls& calls = m_platform.calls();
        m_faultAt->isLoaded = false;
        calls.clearAll();
        for (const Standalone::Fault& fault : m_faultsBeside) {
            calls.inject(fault);
        }
    }
}

void Runner::disturb() {
    if (m_disturbance && m_calls + 1 == m_disturbance->call) {
        change(m_disturbance->before);
    } else if (m_disturbance && m_calls == m_disturbance->call && m_disturbance->after) {
        change(*m_disturbance->after);
    }
}

void Runner::play(const Story& story) {
    m_disturbance = story.disturbance;
    disturb();
    for (const Step& step : story.steps) {
        m_transcript.note("step", static_cast<std::int64_t>(step.what));
        playGuarded(step);
        endStep();
        ++m_step;
    }
    m_transcript.note("end", 0);
    m_platform.temperature().forgetObservers();
    for (std::int64_t slot = 0; slot < slotCount; ++slot) {
        destroyModule(slot);
    }
    for (std::int64_t slot = 0; slot < slotCount; ++slot) {
        destroyHandler(slot);
    }
    for (std::int64_t slot = 0; slot < slotCount; ++slot) {
        destroyCanceller(slot);
    }
    endStep();
    tellValues();
}

/** Plays a step out of which nothing may be thrown. */
void Runner::playGuarded(const Step& step) {
    try {
        play(step);
    } catch (...) {
        m_transcript.note("exception left the library", 0);
    }
}

void Runner::endStep() {
    for (const Standalone::TraceMessage& message : m_platform.trace().messages()) {
        if (!message.ended) {
            m_transcript.note("not ended", message.text, 0);
        }
    }
    m_platform.trace().clear();
    if (const std::size_t open = m_platform.interfaces().openHandles()) {
        m_transcript.note("broker handles not given back", static_cast<std::int64_t>(open));
    }
}

void Runner::tellValues() {
    for (const Standalone::Driver* const driver : m_drivers) {
        if (driver->wasWritten()) {
            m_transcript.note("held by", driver->name(), driver->value());
            m_transcript.note("writes to", driver->name(), static_cast<std::int64_t>(driver->writes()));
        }
    }
    for (const auto& [name, radio] : m_platform.raus()) {
        m_transcript.note("transmits", name, static_cast<std::int64_t>(radio->txFrequency()));
        m_transcript.note("receives", name, static_cast<std::int64_t>(radio->rxFrequency()));
    }
}

} // namespace Told

/** Stands in for the system's: nobody waits, and it is written down. */
extern "C" int usleep(useconds_t microseconds) {
    if (Told::Runner* const runner = Told::Runner::current()) {
        runner->hearSleep(microseconds);
    }
    return 0;
}

/** Stands in for the one of the platform, and asks it: each message has a level, wanted or not. */
OrbiTraceLevel CZulTraceHandler_DmLevel2GtLevel(int level) {
    using Mapping = OrbiTraceLevel (*)(int);
    static const auto ofThePlatform =
        reinterpret_cast<Mapping>(dlsym(RTLD_NEXT, "CZulTraceHandler_DmLevel2GtLevel")); // NOLINT: from C
    if (Told::Runner* const runner = Told::Runner::current()) {
        runner->hearLevel(level);
    }
    return ofThePlatform(level);
}

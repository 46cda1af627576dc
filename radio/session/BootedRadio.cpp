#include "radio/session/BootedRadio.h"

#include "radio/session/HardwareWrite.h"
#include "radio/text/Words.h"

namespace Radio {

BootedRadio::BootedRadio(const Board& board, const Backings& backings)
    : m_board(board.file.string()),
      m_radio(board, events(), backings) {
    m_radio.platform().calls().setRecording(false);
    m_radio.platform().trace().setRecording(false);
    m_radio.platform().trace().setThreshold(Standalone::TraceLevel::error);
    m_isUp = m_radio.runPhase(Standalone::phaseModuleInit).succeeded() &&
             m_radio.runPhase(Standalone::phaseStorageObjectsRetrieved).succeeded() &&
             m_radio.runPhase(Standalone::phasePostFrameformatLoad).succeeded();
}

void BootedRadio::requireUp() const {
    if (!m_isUp) {
        fail("the radio did not boot");
    }
}

void BootedRadio::fail(const std::string& what) const {
    throw RadioError(
        harmless(m_board + ": " + what + (m_complaints.empty() ? "" : ": " + m_complaints.front())));
}

RadioEvents BootedRadio::events() {
    RadioEvents events;
    events.called = [this](const Standalone::Call& call) {
        if (isWrite(call)) {
            m_writes.push_back(call);
        }
    };
    events.traced = [this](const Standalone::TraceMessage& message) {
        if (message.level <= Standalone::TraceLevel::error) {
            m_complaints.push_back(message.text);
        }
    };
    events.notified = [](const Notification& /*notification*/) {};
    return events;
}

void BootedRadio::forget() {
    m_writes.clear();
    m_complaints.clear();
}

void BootedRadio::stopNotingWrites() {
    m_radio.platform().calls().setListener({});
}

} // namespace Radio

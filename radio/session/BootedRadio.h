#ifndef RADIO_SESSION_BOOTEDRADIO_H
#define RADIO_SESSION_BOOTEDRADIO_H

#include "radio/board/Board.h"
#include "radio/session/RadioUnit.h"

#include <cstddef>
#include <string>
#include <vector>

namespace Radio {

/** A radio that went through its start-up, with what it wrote and complained of since the last forget(). */
class BootedRadio {
public:
    /** Boots the board. `board` must outlive the object. */
    explicit BootedRadio(const Board& board);

    /** False when a start-up phase failed; complaints() may say why. */
    bool isUp() const { return m_isUp; }
    RadioUnit& radio() { return m_radio; }

    /** Writes to hardware, in order, successful or not. */
    const std::vector<Standalone::Call>& writes() const { return m_writes; }
    /** Trace messages of the level error. */
    const std::vector<std::string>& complaints() const { return m_complaints; }
    void forget();

    /** From now on only complaints are noted: a call costs as little as it can. */
    void stopNotingWrites();

private:
    RadioEvents events();

    std::vector<Standalone::Call> m_writes;
    std::vector<std::string> m_complaints;
    RadioUnit m_radio;
    bool m_isUp;
};

} // namespace Radio

#endif

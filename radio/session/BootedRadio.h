#ifndef RADIO_SESSION_BOOTEDRADIO_H
#define RADIO_SESSION_BOOTEDRADIO_H

#include "radio/board/Board.h"
#include "radio/session/RadioUnit.h"

#include <stdexcept>
#include <string>
#include <vector>

namespace Radio {

/**
 * A radio that did not come up, or did not take what it was told. The message names the board and, if there
 * was one, the first thing that the radio complained of.
 */
class RadioError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/**
 * A radio that went through its start-up, with what it wrote and complained of since the last forget(). What
 * engines work on. One at a time in a process, and all of it on one thread.
 */
class BootedRadio {
public:
    /** Boots the board. `board` must outlive the object, and so must `hardware`, if the radio is to have it.
     */
    explicit BootedRadio(const Board& board, Devices::Hardware* hardware = nullptr)
        : BootedRadio(board, backingsOf(hardware)) {}
    /** The same with whatever stands behind the drivers; `backings` is called here only. */
    BootedRadio(const Board& board, const Backings& backings);

    /** False when a start-up phase failed; complaints() may say why. */
    bool isUp() const { return m_isUp; }
    /** Throws RadioError unless it is. */
    void requireUp() const;
    /** Throws RadioError with `what` and the first of the complaints. */
    [[noreturn]] void fail(const std::string& what) const;

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

    std::string m_board;
    std::vector<Standalone::Call> m_writes;
    std::vector<std::string> m_complaints;
    RadioUnit m_radio;
    bool m_isUp;
};

} // namespace Radio

#endif

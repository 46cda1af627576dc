#ifndef RADIOCTL_BOOTEDRADIO_H
#define RADIOCTL_BOOTEDRADIO_H

#include "Board.h"
#include "Radio.h"

#include <cstddef>
#include <string>
#include <vector>

namespace Radioctl {

/** A radio that went through its start-up, with what it wrote and complained of since the last forget(). */
class BootedRadio {
public:
    /** Boots the board. `board` must outlive the object. */
    explicit BootedRadio(const Board& board);

    /** False when a start-up phase failed; complaints() may say why. */
    bool isUp() const { return m_isUp; }
    Radio& radio() { return m_radio; }

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
    Radio m_radio;
    bool m_isUp;
};

} // namespace Radioctl

#endif

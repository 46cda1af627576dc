#ifndef SERVICE_RADIO_STATEFILE_H
#define SERVICE_RADIO_STATEFILE_H

#include "radio/board/Board.h"
#include "radio/board/PlatformWords.h"

#include <cstdint>
#include <map>
#include <string>
#include <utility>

namespace Radio::Service {

/** By direction and channel, in kHz; those that were set. */
using Carriers = std::map<std::pair<Direction, int>, std::uint32_t>;

/** Carriers that outlast the service, in a file that is there as a whole or not at all. */
class StateFile {
public:
    /** An empty name: nothing outlasts it. `board` must outlive the object. */
    StateFile(std::string file, const Board& board) : m_file(std::move(file)), m_board(board) {}

    /**
     * What was kept; nothing where there is no file yet. Throws InputError for a file that is none of these
     * or is that of another radio, and where nothing could be written.
     */
    Carriers read() const;
    /** Keeps what is not kept already. Throws InputError when it cannot be written. */
    void keep(const Carriers& carriers);

private:
    Carriers parse(const std::string& text) const;

    std::string m_file;
    const Board& m_board;
    Carriers m_kept;
};

} // namespace Radio::Service

#endif

#include "python/binding/HardwareInUse.h"

#include "ResultCode.h"

#include <algorithm>
#include <vector>

namespace Radio::Python {

HardwareInUse::HardwareInUse(const Board& board, bool isReal, bool isForced) {
    if (isReal) {
        m_bench.emplace(board, *this, folderOfMarks());
        m_bench->begin();
        m_bench->hardware().setForced(isForced);
    }
}

bool HardwareInUse::isThere() {
    if (m_bench) {
        static_cast<void>(m_bench->hardware().poll());
    }
    return m_lostDevice.empty();
}

bool HardwareInUse::leave() {
    const std::vector<Devices::ExitWrite> writes =
        m_bench ? m_bench->leave() : std::vector<Devices::ExitWrite>();
    return std::all_of(writes.begin(), writes.end(),
                       [](const Devices::ExitWrite& write) { return isSuccess(write.code); });
}

} // namespace Radio::Python

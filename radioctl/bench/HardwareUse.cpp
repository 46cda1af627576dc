#include "radioctl/bench/HardwareUse.h"

#include "ResultCode.h"
#include "devices/Hardware.h"
#include "radio/files/InputError.h"
#include "radioctl/console/Interrupt.h"

#include <algorithm>
#include <csignal>

namespace Radio {

HardwareUse::HardwareUse(const Board& board, const HardwareOptions& options, std::ostream& out, bool json,
                         std::ostream* events) {
    m_reports.emplace_back(out, json);
    if (events != nullptr) {
        m_reports.emplace_back(*events, true);
    }
    if (!options.hardware) {
        tell([&](HardwareReport& report) { report.begins(board, options); });
        return;
    }
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
    Devices::setPatience(&Interrupt::isWaitedOn);
    m_bench.emplace(board, *this, folderOfMarks());
    tell([&](HardwareReport& report) { report.begins(board, options); });
    if (!m_bench->leftBehind().empty()) {
        tell([&](HardwareReport& report) { report.leftBehind(m_bench->leftBehind()); });
    }
    begin();
}

/** What was not waited for since a signal came is no fault of the hardware. */
void HardwareUse::begin() {
    try {
        m_bench->begin();
    } catch (const InputError& error) {
        const Interrupt* const interrupt = Interrupt::current();
        if (interrupt != nullptr && interrupt->signal() != 0) {
            throw GivenUp(error.place(), interrupt->signal());
        }
        throw;
    }
}

HardwareUse::~HardwareUse() {
    leave();
}

std::optional<int> HardwareUse::poll() {
    return m_bench ? m_bench->hardware().poll() : std::nullopt;
}

bool HardwareUse::leave() {
    if (!m_bench || m_hasLeft) {
        return true;
    }
    m_hasLeft = true;
    const std::vector<Devices::ExitWrite> writes = m_bench->leave();
    tell([&](HardwareReport& report) { report.left(writes); });
    return std::all_of(writes.begin(), writes.end(),
                       [](const Devices::ExitWrite& write) { return isSuccess(write.code); });
}

} // namespace Radio

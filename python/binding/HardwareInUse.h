#ifndef PYTHON_BINDING_HARDWAREINUSE_H
#define PYTHON_BINDING_HARDWAREINUSE_H

#include "radio/board/Board.h"
#include "radio/session/Bench.h"

#include <cstdint>
#include <optional>
#include <string>

namespace Radio::Python {

/** The hardware that an engine drives, if it was asked to; left properly on every way out. Must outlive the
 * radio. */
class HardwareInUse final : public Devices::HardwareListener {
public:
    /** Takes it, if `isReal`. Throws InputError when it cannot be driven; then nothing was written. */
    HardwareInUse(const Board& board, bool isReal, bool isForced);
    HardwareInUse(const HardwareInUse&) = delete;
    HardwareInUse& operator=(const HardwareInUse&) = delete;
    ~HardwareInUse() override = default; // the bench leaves

    /** For the radio; null when it is simulated. */
    Devices::Hardware* hardware() { return m_bench ? &m_bench->hardware() : nullptr; }
    /** Looks what became of connections meanwhile; false once one was lost. */
    bool isThere();
    /** The device whose connection was lost last, also when it is back; empty: none was. */
    const std::string& lostDevice() const { return m_lostDevice; }
    /** Writes what is to be written in the end; false when something of that failed. */
    bool leave();

    void lost(const std::string& device, const std::string& /*why*/) override { m_lostDevice = device; }
    void back(const std::string& /*device*/) override {}
    void failed(const std::string& /*driver*/, const std::string& /*attribute*/,
                std::int32_t /*code*/) override {}
    void sensorFailed(const std::string& /*why*/) override {}

private:
    std::optional<Bench> m_bench;
    std::string m_lostDevice;
};

} // namespace Radio::Python

#endif

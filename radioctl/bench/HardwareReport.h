#ifndef RADIOCTL_BENCH_HARDWAREREPORT_H
#define RADIOCTL_BENCH_HARDWAREREPORT_H

#include "devices/Hardware.h"
#include "radio/board/Board.h"
#include "radioctl/bench/HardwareOptions.h"

#include <ostream>
#include <string>
#include <vector>

namespace Radio {

/** Shows what there is to know of hardware, as lines for people or as JSON. */
class HardwareReport {
public:
    /** `out` must outlive the object. */
    HardwareReport(std::ostream& out, bool json) : m_out(out), m_json(json) {}

    /** The first line of a program that drives a radio: whether anything reaches hardware. */
    void begins(const Board& board, const HardwareOptions& options);
    /** The hardware was left as it was by `whom`. */
    void leftBehind(const std::string& whom);
    void lost(const std::string& device, const std::string& why);
    void back(const std::string& device);
    void failed(const std::string& driver, const std::string& attribute, std::int32_t code);
    void sensorFailed(const std::string& why);
    /** The radio was left; `writes` may be empty. */
    void left(const std::vector<Devices::ExitWrite>& writes);
    /** What would be written then, of a board that is simulated. */
    void wouldLeave(const Board& board);
    /** What an examination found. */
    void found(const std::string& file, const std::vector<Devices::AttributeFinding>& findings);

private:
    void line(const std::string& text);

    std::ostream& m_out;
    bool m_json;
};

} // namespace Radio

#endif

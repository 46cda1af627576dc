#include "radioctl/bench/HardwareReport.h"

#include "ResultCode.h"
#include "devices/DeviceCodes.h"
#include "radio/board/PlatformWords.h"
#include "radio/session/Bench.h"
#include "radio/text/Words.h"
#include "radioctl/report/JsonLine.h"
#include "radioctl/report/TextTable.h"

#include <algorithm>

namespace Radio {

namespace {

std::string mode(const HardwareOptions& options) {
    return options.hardware ? "hardware" : options.dryRun ? "dry-run" : "simulation";
}

/** "rf (ip:192.168.2.1)" for each device, and "files" where drivers have them. */
std::vector<std::string> devicesOf(const Devices::HardwareDescription& hardware) {
    std::vector<std::string> devices;
    for (const Devices::DeviceDescription& device : hardware.devices) {
        devices.push_back(harmless(device.name + " (" + device.address + ")"));
    }
    const bool hasFiles =
        std::any_of(hardware.drivers.begin(), hardware.drivers.end(), [](const auto& driver) {
            return (driver.write && driver.write->device.empty()) ||
                   (driver.read && driver.read->device.empty());
        });
    if (hasFiles) {
        devices.emplace_back("files");
    }
    return devices;
}

/** A few names, or how many there are. */
std::string namesOrCount(const std::vector<std::string>& names) {
    constexpr std::size_t few = 4;
    return names.size() <= few ? harmless(joined(names, ", "))
                               : std::to_string(names.size()) + " without hardware";
}

/** "0x816e, connection timed out (ETIMEDOUT)". */
std::string withMeaning(std::int32_t code) {
    const std::string meaning = Devices::meaningOf(code);
    return codeText(code) + (meaning.empty() ? "" : ", " + meaning);
}

std::string use(std::optional<bool> can, const char* word) {
    return !can ? std::string(word) + "?" : *can ? word : std::string("-");
}

Json orNull(std::optional<bool> value) {
    return value ? Json(*value) : Json(nullptr);
}

} // namespace

void HardwareReport::line(const std::string& text) {
    m_out << harmless(text) << "\n" << std::flush;
}

void HardwareReport::begins(const Board& board, const HardwareOptions& options) {
    const Devices::HardwareDescription& hardware = board.hardware.description;
    const std::vector<std::string> simulated = driversWithoutHardware(board);
    if (m_json) {
        Json event = {{"event", "mode"}, {"mode", mode(options)}};
        if (options.hardware) {
            event["devices"] = devicesOf(hardware);
            event["drivers"] = hardware.drivers.size();
            event["simulated"] = simulated;
        }
        writeJsonLine(m_out, event);
    } else if (options.hardware) {
        line("HARDWARE: " + counted(hardware.drivers.size(), "driver") + " on " +
             joined(devicesOf(hardware), ", ") +
             (simulated.empty() ? "" : "; simulated: " + namesOrCount(simulated)));
    } else {
        line(options.dryRun ? "DRY RUN: nothing reaches hardware; => is what an attribute would get."
                            : "SIMULATION: nothing reaches hardware.");
    }
}

void HardwareReport::leftBehind(const std::string& whom) {
    if (m_json) {
        writeJsonLine(m_out, {{"event", "left_behind"}, {"by", whom}});
    } else {
        line("The radio was left as it was by " + whom + ": nothing was switched off then.");
    }
}

void HardwareReport::lost(const std::string& device, const std::string& why) {
    if (m_json) {
        writeJsonLine(m_out, {{"event", "connection"}, {"device", device}, {"there", false}, {"text", why}});
    } else {
        line("     LOST " + harmless(device + ": " + why) + "; every write fails until it is back");
    }
}

void HardwareReport::back(const std::string& device) {
    if (m_json) {
        writeJsonLine(m_out, {{"event", "connection"}, {"device", device}, {"there", true}});
    } else {
        line("     " + harmless(device) + " is back");
    }
}

void HardwareReport::failed(const std::string& driver, const std::string& attribute, std::int32_t code) {
    if (m_json) {
        writeJsonLine(m_out, {{"event", "attribute"},
                              {"driver", driver},
                              {"attribute", attribute},
                              {"code", code},
                              {"text", Devices::meaningOf(code)}});
    } else {
        line("     " + harmless(attribute) + ": " + withMeaning(code));
    }
}

void HardwareReport::sensorFailed(const std::string& why) {
    if (m_json) {
        writeJsonLine(m_out, {{"event", "sensor"}, {"text", why}});
    } else {
        line("     no temperature: " + harmless(why));
    }
}

void HardwareReport::left(const std::vector<Devices::ExitWrite>& writes) {
    if (m_json) {
        Json list = Json::array();
        for (const Devices::ExitWrite& write : writes) {
            list.push_back({{"driver", write.driver},
                            {"value", write.value},
                            {"code", write.code},
                            {"ok", isSuccess(write.code)}});
        }
        writeJsonLine(m_out, {{"event", "left"}, {"writes", list}});
        return;
    }
    line(writes.empty() ? "Left; the board has no on_exit values." : "Leaving:");
    for (const Devices::ExitWrite& write : writes) {
        line("  " + write.driver + " <- " + std::to_string(write.value) +
             (isSuccess(write.code) ? "" : "  FAILED " + withMeaning(write.code)));
    }
}

void HardwareReport::wouldLeave(const Board& board) {
    Json list = Json::array();
    bool isFirst = true;
    for (const Devices::DriverHardware& hardware : board.hardware.description.drivers) {
        if (!hardware.onExit) {
            continue;
        }
        if (!m_json && isFirst) {
            line("Leaving would write:");
        }
        isFirst = false;
        list.push_back({{"driver", hardware.driver}, {"value", *hardware.onExit}});
        if (m_json) {
            continue;
        }
        line("  " + hardware.driver + " <- " + std::to_string(*hardware.onExit));
        for (const AttributeWrite& write : attributeWrites(board, hardware.driver, *hardware.onExit)) {
            line("       => " + harmless(write.attribute) + " <- " + harmless(write.text));
        }
    }
    if (m_json) {
        writeJsonLine(m_out, {{"event", "would_leave"}, {"writes", list}});
    }
}

void HardwareReport::found(const std::string& file, const std::vector<Devices::AttributeFinding>& findings) {
    TextTable table;
    std::size_t problems = 0;
    for (const Devices::AttributeFinding& finding : findings) {
        problems += finding.problem.empty() ? 0 : 1;
        if (m_json) {
            writeJsonLine(m_out, {{"event", "found"},
                                  {"file", file},
                                  {"driver", finding.driver},
                                  {"use", finding.use},
                                  {"attribute", finding.attribute},
                                  {"readable", orNull(finding.isReadable)},
                                  {"writable", orNull(finding.isWritable)},
                                  {"value", finding.value},
                                  {"problem", finding.problem}});
            continue;
        }
        table.add({finding.driver.empty() ? "temperature" : finding.driver});
        table.add({"  " + std::string(finding.use) + ": " + harmless(finding.attribute)});
        table.add({"    " +
                   (finding.problem.empty()
                        ? use(finding.isReadable, "readable") + ", " + use(finding.isWritable, "writable") +
                              (finding.value.empty() ? "" : ", now " + harmless(finding.value))
                        : "PROBLEM: " + harmless(finding.problem))});
    }
    if (m_json) {
        writeJsonLine(
            m_out,
            {{"event", "examined"}, {"file", file}, {"attributes", findings.size()}, {"problems", problems}});
        return;
    }
    table.write(m_out);
    if (problems != 0 && !Devices::Hardware::leftOut().empty()) {
        line("This radioctl was built without " + Devices::Hardware::leftOut());
    }
    line(harmless(file) + ": " + counted(findings.size(), "attribute") +
         (problems == 0 ? ", all found" : ", " + counted(problems, "problem")));
}

} // namespace Radio

#include "devices/ScpiLink.h"

#include "devices/DeviceCodes.h"
#include "devices/Number.h"
#include "devices/ScpiStream.h"

#include <cerrno>
#include <cstddef>
#include <memory>
#include <string_view>
#include <utility>

namespace Devices {

namespace {

constexpr std::string_view placeOfValue = "{}";

/** What an instrument says of its errors begins with a number, 0 when there is none. */
int judge(const std::string& answer) {
    const std::optional<double> number = numberIn(std::string_view(answer).substr(0, answer.find(',')));
    if (!number) {
        return EPROTO;
    }
    return *number == 0 ? 0 : EREMOTEIO;
}

/** A command, with "{}" where the value stands, or a query. */
class ScpiAttribute : public Attribute {
public:
    ScpiAttribute(ScpiStream& stream, std::string command, const std::string& errorQuery)
        : m_stream(stream),
          m_command(std::move(command)),
          m_errorQuery(errorQuery),
          m_place(m_command.find(placeOfValue)) {}

    int write(const std::string& number) override {
        if (m_place == std::string::npos) {
            return EPERM;
        }
        std::string lines = m_command;
        lines.replace(m_place, placeOfValue.size(), number).append("\n");
        if (m_errorQuery.empty()) {
            return m_stream.exchange(lines, nullptr);
        }
        std::string answer;
        const int error = m_stream.exchange(lines + m_errorQuery + "\n", &answer);
        return error != 0 ? error : judge(answer);
    }

    int read(std::string& text) override {
        return m_place == std::string::npos ? m_stream.exchange(m_command + "\n", &text) : EPERM;
    }

    AttributeLook look() override {
        if (m_place == std::string::npos) {
            return {{}, false, {}};
        }
        return {false, {}, {}};
    }

private:
    ScpiStream& m_stream;
    std::string m_command;
    const std::string& m_errorQuery;
    std::size_t m_place;
};

class ScpiLink : public Link {
public:
    explicit ScpiLink(const DeviceDescription& device)
        : m_errorQuery(device.errorQuery),
          m_stream(device.timeLimit) {}

    ScpiStream& stream() { return m_stream; }

    std::unique_ptr<Attribute> find(const std::string& name, std::string& /*problem*/) override {
        return std::make_unique<ScpiAttribute>(m_stream, name, m_errorQuery);
    }
    bool isBroken() const override { return m_stream.isBroken(); }

private:
    std::string m_errorQuery;
    ScpiStream m_stream;
};

} // namespace

Opened openScpi(const DeviceDescription& device) {
    const std::size_t colon = device.address.rfind(':');
    std::string host = device.address.substr(0, colon);
    if (host.size() > 2 && host.front() == '[' && host.back() == ']') {
        host = host.substr(1, host.size() - 2);
    }
    if (colon == std::string::npos || host.empty() || colon + 1 == device.address.size()) {
        return {nullptr, EINVAL, "\"" + device.address + "\" is not of the form HOST:PORT"};
    }
    auto link = std::make_unique<ScpiLink>(device);
    if (const int error = link->stream().open(host, device.address.substr(colon + 1)); error != 0) {
        return {nullptr, error, meaningOf(codeOf(error))};
    }
    return {std::move(link), 0, {}};
}

} // namespace Devices

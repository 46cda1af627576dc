#include "devices/Connection.h"

#include "devices/DeviceCodes.h"
#include "devices/Links.h"
#include "devices/Threads.h"

#include <cerrno>
#include <utility>

namespace Devices {

Connection::Connection(const DeviceDescription& device, HardwareListener& listener)
    : m_device(device),
      m_listener(listener),
      m_connector([device] { return openLink(device); }, device.timeLimit) {}

Link* Connection::link(int& error) {
    if (m_state == State::up) {
        return m_link.get();
    }
    if (m_state == State::unused) {
        beginToConnect();
        const Opened opened = m_connector.await(m_attempt, m_deadline, false);
        if (!adopt()) {
            error = opened.error;
            lose(opened.error, nullptr);
            return nullptr;
        }
        return m_link.get();
    }
    if (!adopt()) {
        error = ENOTCONN;
        return nullptr;
    }
    return m_link.get();
}

void Connection::missed() {
    m_isOutOfDate = m_link != nullptr && m_link->isListedOnce();
}

void Connection::lookAgain() {
    if (m_state == State::up && m_isOutOfDate) {
        m_state = State::unused;
    }
}

void Connection::beginToConnect() {
    if (!isUp()) {
        m_attempt = m_connector.start(std::move(m_link)); // one that is out of date, if any
    }
    m_deadline = Connector::Clock::now() + m_device.timeLimit;
}

void Connection::awaitConnection(bool insists) {
    if (isUp()) {
        return;
    }
    const Opened opened = m_connector.await(m_attempt, m_deadline, insists);
    if (!adopt()) {
        m_state = State::down;
        m_problem = !opened.why.empty() ? opened.why : meaningOf(codeOf(opened.error));
    }
}

bool Connection::adopt() {
    if (!m_connector.isReady()) {
        return false;
    }
    m_link = m_connector.take();
    ++m_linkNumber;
    m_isOutOfDate = false;
    m_problem.clear();
    const bool wasDown = m_state == State::down;
    m_state = State::up;
    if (wasDown) {
        m_listener.back(m_device.name);
    }
    return true;
}

void Connection::lose(int error, std::unique_ptr<Link> broken) {
    m_state = State::down;
    m_problem = meaningOf(codeOf(error));
    if (broken != nullptr) {
        m_connector.start(std::move(broken));
    }
    m_listener.lost(m_device.name, m_problem);
}

void Connection::failed(int error) {
    if (m_link != nullptr && m_link->isBroken()) {
        lose(error, std::move(m_link));
    }
}

void Connection::poll() {
    if (m_state == State::down) {
        adopt();
    }
}

Attribute* DeviceAttribute::find(int& error) {
    Link* const link = m_connection.link(error);
    if (link == nullptr) {
        return nullptr;
    }
    if (m_linkNumber != m_connection.linkNumber()) {
        m_linkNumber = m_connection.linkNumber();
        m_found = link->find(m_name, m_problem);
        if (m_found == nullptr) {
            m_connection.missed();
        }
    }
    error = ENOENT;
    return m_found.get();
}

int DeviceAttribute::write(const std::string& number) {
    int error = 0;
    Attribute* const attribute = find(error);
    if (attribute == nullptr) {
        return error;
    }
    error = attribute->write(number);
    if (error != 0) {
        m_connection.failed(error);
    }
    return error;
}

int DeviceAttribute::read(std::string& text) {
    int error = 0;
    Attribute* const attribute = find(error);
    if (attribute == nullptr) {
        return error;
    }
    error = attribute->read(text);
    if (error != 0) {
        m_connection.failed(error);
    }
    return error;
}

AttributeLook DeviceAttribute::look() {
    int error = 0;
    Attribute* const attribute = m_connection.problem().empty() ? find(error) : nullptr;
    if (attribute != nullptr) {
        return attribute->look();
    }
    if (!m_connection.problem().empty()) {
        const DeviceDescription& device = m_connection.device();
        return {
            {}, {}, device.name + " cannot be reached at " + device.address + ": " + m_connection.problem()};
    }
    return {{}, {}, m_problem};
}

} // namespace Devices

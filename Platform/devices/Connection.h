#ifndef PLATFORM_DEVICES_CONNECTION_H
#define PLATFORM_DEVICES_CONNECTION_H

#include "devices/Attribute.h"
#include "devices/Connector.h"
#include "devices/Description.h"
#include "devices/Hardware.h"
#include "devices/Link.h"

#include <cstdint>
#include <memory>
#include <string>

namespace Devices {

/** A device, whether or not there is a connection to it at the moment. Used on the driving thread. */
class Connection {
public:
    Connection(const DeviceDescription& device, HardwareListener& listener);

    const DeviceDescription& device() const { return m_device; }

    /**
     * The link; null, and why as an error number, when there is none. A connection that was made meanwhile is
     * taken. The first call connects, and waits for that.
     */
    Link* link(int& error);
    /** Tells one link from the next. */
    std::uint64_t linkNumber() const { return m_linkNumber; }
    /** Whether there is a link, as far as is known; a connection that was made meanwhile is taken. */
    bool isUp() { return m_state == State::up || adopt(); }
    /** The number of the link; 0 when there is none. */
    std::uint64_t linkInUse() { return isUp() ? m_linkNumber : 0; }
    /** An attribute was not found. */
    void missed();
    /** Where an attribute was missed that a new connection may find, has it made anew: to be followed by
     * beginToConnect(). */
    void lookAgain();
    /** Begins to connect, unless it is, and its time limit; of several devices all begin, and then each is
     * waited for. */
    void beginToConnect();
    /** Waits for what was begun until the time limit since then is over; `insists`: where an attempt fails,
     * for further ones, too. */
    void awaitConnection(bool insists);
    /** Whether the time limit is over that began with beginToConnect(). */
    bool isOverdue() const { return Connector::Clock::now() >= m_deadline; }
    /** Why there is no connection, for people; empty when there is one. */
    const std::string& problem() const { return m_problem; }
    /** A call on the link failed: when it has broken by that, it is dropped, and the listener told. */
    void failed(int error);
    /** Takes a connection that was made meanwhile. */
    void poll();
    /** Has the thread come to an end, which the destructor waits for. */
    void stop() { m_connector.stop(); }

private:
    enum class State : std::uint8_t { unused, up, down };

    bool adopt();
    void lose(int error, std::unique_ptr<Link> broken);

    DeviceDescription m_device;
    HardwareListener& m_listener;
    State m_state = State::unused;
    std::unique_ptr<Link> m_link;
    std::uint64_t m_linkNumber = 0;
    bool m_isOutOfDate = false;
    std::string m_problem;
    Connector m_connector;
    /** Which attempt is waited for, and how long. */
    std::uint64_t m_attempt = 0;
    Connector::Clock::time_point m_deadline{};
};

/** An attribute of a device, found anew on each connection to it. */
class DeviceAttribute : public Attribute {
public:
    DeviceAttribute(Connection& connection, std::string name)
        : m_connection(connection),
          m_name(std::move(name)) {}

    int write(const std::string& number) override;
    int read(std::string& text) override;
    AttributeLook look() override;

private:
    Attribute* find(int& error);

    Connection& m_connection;
    std::string m_name;
    std::uint64_t m_linkNumber = 0;
    std::unique_ptr<Attribute> m_found;
    std::string m_problem;
};

} // namespace Devices

#endif

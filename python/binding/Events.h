#ifndef PYTHON_BINDING_EVENTS_H
#define PYTHON_BINDING_EVENTS_H

#include "python/binding/Values.h"
#include "radio/session/SessionListener.h"
#include "standalone/Platform.h"

#include <string>
#include <variant>
#include <vector>

namespace Radio::Python {

/** What the guard said of an action, or the board of a write. */
struct Warning {
    std::string text;
};

/** What became of a device, a driver or the sensor of real hardware: "lost", "back", "failed" or "sensor". */
struct HardwareNews {
    const char* kind;
    std::string what;
    std::string why;
    std::int32_t code = 0;
};

/** What the sensor of real hardware gave, in degrees Celsius, and how many observers were told. */
struct Sensed {
    int degrees;
    std::size_t told;
};

using Event = std::variant<Standalone::Call, Standalone::TraceMessage, Notification, Standalone::PhaseReport,
                           Warning, HardwareNews, Sensed>;

/** A tuple that begins with the word for its kind. */
py::tuple toPython(const Event& event);

/** What happened during one command, of which tuples are made when somebody wants to see them. */
class EventList {
public:
    explicit EventList(std::vector<Event> events) : m_events(std::move(events)) {}

    std::size_t size() const { return m_events.size(); }
    bool hasPhases() const;
    /** Of at most `count` events from the one at `first`. */
    py::list tuples(std::size_t first, std::size_t count) const;

private:
    std::vector<Event> m_events;
};

/** (held, expected, found, writes): of writes that were not those expected, (driver, expected, found) for
 * each. */
py::tuple toPython(const Judgement& judgement);
/** (title, columns, rows). */
py::tuple toPython(const Listing& listing);

} // namespace Radio::Python

#endif

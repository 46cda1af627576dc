#ifndef SERVICE_RADIO_EVENTRING_H
#define SERVICE_RADIO_EVENTRING_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace Radio::Service {

/**
 * The last events of a radio, for clients that follow them: as many as fit. They are numbered from 1 without
 * a gap. What is the name of an event to a client has the number of this run in front, so that nobody goes on
 * in the events of another run. To be used on any thread.
 */
class EventRing {
public:
    /** `run` is different each time the program is started. */
    EventRing(std::uint64_t run, std::size_t mostEvents, std::size_t mostBytes);

    /** Adds an event, a line of JSON without its end. */
    void push(std::string_view json);
    /** Is called after each event, on the thread that has told it. Not to be changed once events come. */
    void setListener(std::function<void()> listener) { m_listener = std::move(listener); }

    /** The number of the last event; 0 before the first. */
    std::uint64_t last() const;
    /** The oldest event that is still here; one behind last() when there is none. */
    std::uint64_t first() const;
    /** What they take, in bytes. */
    std::size_t bytes() const;

    /** What a client is given, and what it gives back to go on. */
    std::string nameOf(std::uint64_t number) const;
    /** The event that a client has seen last, by its name; nothing for that of another run or for no name. */
    std::optional<std::uint64_t> numberOf(std::string_view name) const;

    /** Events in the form of an event stream. */
    struct Piece {
        std::string text;
        /** The last that is in it, or the one asked for when there is none. */
        std::uint64_t last;
    };
    /** Events behind `seen`, of about `most` bytes; nothing when the next one is not here any more. */
    std::optional<Piece> after(std::uint64_t seen, std::size_t most) const;

private:
    const std::uint64_t m_run;
    const std::size_t m_mostEvents;
    const std::size_t m_mostBytes;
    std::function<void()> m_listener;
    mutable std::mutex m_mutex;
    std::deque<std::string> m_events;
    std::uint64_t m_last = 0;
    std::size_t m_bytes = 0;
};

} // namespace Radio::Service

#endif

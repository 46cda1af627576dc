#include "service/radio/EventRing.h"

#include "radio/text/Numbers.h"

namespace Radio::Service {

EventRing::EventRing(std::uint64_t run, std::size_t mostEvents, std::size_t mostBytes)
    : m_run(run),
      m_mostEvents(mostEvents),
      m_mostBytes(mostBytes) {}

void EventRing::push(std::string_view json) {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        ++m_last;
        std::string event = "id: " + nameOf(m_last) + "\ndata: ";
        event.append(json).append("\n\n");
        m_bytes += event.size();
        m_events.push_back(std::move(event));
        while (m_events.size() > m_mostEvents || m_bytes > m_mostBytes) {
            m_bytes -= m_events.front().size();
            m_events.pop_front();
        }
    }
    if (m_listener) {
        m_listener();
    }
}

std::uint64_t EventRing::last() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_last;
}

std::uint64_t EventRing::first() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_last - m_events.size() + 1;
}

std::size_t EventRing::bytes() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_bytes;
}

std::string EventRing::nameOf(std::uint64_t number) const {
    return std::to_string(m_run) + "-" + std::to_string(number);
}

std::optional<std::uint64_t> EventRing::numberOf(std::string_view name) const {
    const std::string run = std::to_string(m_run) + "-";
    constexpr std::size_t mostDigits = 18;
    if (name.substr(0, run.size()) != run || name.size() > run.size() + mostDigits) {
        return std::nullopt;
    }
    const auto number = parseInteger(name.substr(run.size()));
    if (!number || *number < 0 || static_cast<std::uint64_t>(*number) > last()) {
        return std::nullopt;
    }
    return static_cast<std::uint64_t>(*number);
}

std::optional<EventRing::Piece> EventRing::after(std::uint64_t seen, std::size_t most) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const std::uint64_t gone = m_last - m_events.size();
    if (seen < gone) {
        return std::nullopt;
    }
    Piece piece{{}, seen};
    for (auto at = static_cast<std::size_t>(seen - gone); at < m_events.size() && piece.text.size() < most;
         ++at) {
        piece.text += m_events[at];
        ++piece.last;
    }
    return piece;
}

} // namespace Radio::Service

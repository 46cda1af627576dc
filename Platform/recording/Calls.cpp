#include "Calls.h"

#include "Contents.h"
#include "Drivers.h"

#include <cstring>
#include <exception>

namespace Recording {

void writeUnwound(Entry entry) {
    entry.outcome = Outcome::unwound;
    Recorder::write(entry);
}

void writeThrown(Entry entry) {
    if (!Recorder::isOn()) {
        return;
    }
    try {
        throw; // cppcheck-suppress rethrowNoCurrentException // it is called in a handler
    } catch (const std::exception& error) {
        entry.outcome = Outcome::threwException;
        const char* const text = error.what();
        Recorder::write(entry, text, std::strlen(text));
    } catch (...) {
        entry.outcome = Outcome::threwSomething;
        Recorder::write(entry);
    }
}

Visit::Visit(Kind kind, std::uint16_t object, std::int32_t a, std::int32_t b, bool isInLibrary)
    : m_kind(kind),
      m_object(object) {
    Contents::writeChanges(object);
    Drivers::refresh(object);
    const std::uint64_t now = Recorder::now();
    Recorder::write({kind, object, 0, a, b, lower(now), upper(now)});
    enter(object, isInLibrary);
}

Visit::Visit(Kind kind, std::uint16_t object, const void* bytes, std::size_t count)
    : m_kind(kind),
      m_object(object) {
    Contents::writeChanges(object);
    const std::uint64_t now = Recorder::now();
    Recorder::write({kind, object, 0, 0, 0, lower(now), upper(now)}, bytes, count);
    enter(object, true);
}

void Visit::enter(std::uint16_t object, bool isInLibrary) {
    Thread& thread = t_thread;
    m_objectBefore = thread.object;
    m_wasInLibrary = thread.isInLibrary;
    thread.object = object;
    thread.isInLibrary = isInLibrary;
    ++thread.depth;
}

Entry Visit::leave(std::int32_t code) {
    Thread& thread = t_thread;
    thread.object = m_objectBefore;
    thread.isInLibrary = m_wasInLibrary;
    --thread.depth;
    const std::uint64_t now = Recorder::now();
    return {Kind::finished, m_object, code, static_cast<std::int32_t>(m_kind), 0, lower(now), upper(now)};
}

void Visit::finish(std::int32_t code, const void* bytes, std::size_t count) {
    Recorder::write(leave(code), bytes, count);
}

} // namespace Recording

#ifndef RADIOCTL_SERVE_EVENTLINES_H
#define RADIOCTL_SERVE_EVENTLINES_H

#include "service/radio/EventRing.h"

#include <ostream>
#include <streambuf>
#include <string>

namespace Radio::Serving {

/** Where reports write their lines of JSON: each goes to those who follow the events. */
class EventLines final : public std::streambuf {
public:
    /** Both must outlive the object. `copy`, unless it is null, gets the lines as well. */
    EventLines(Service::EventRing& ring, std::ostream* copy) : m_ring(ring), m_copy(copy) {}

protected:
    int_type overflow(int_type character) override;
    std::streamsize xsputn(const char* text, std::streamsize size) override;

private:
    void put(char character);

    Service::EventRing& m_ring;
    std::ostream* m_copy;
    std::string m_line;
};

} // namespace Radio::Serving

#endif

#ifndef FREQUENCYHANDLER_INTERFACE_OBSERVER_H
#define FREQUENCYHANDLER_INTERFACE_OBSERVER_H

#include "Visibility.h"

/** Is told of the changes of a subject with which it is registered; owned by whoever made it. */
template <typename SubjectType>
class RADIO_CLASS Observer {
public:
    Observer() = default;
    Observer(const Observer&) = delete;
    Observer& operator=(const Observer&) = delete;
    virtual ~Observer() = default;

    /**
     * Called on the thread that changed `subject`, before the changing call returns. What it throws goes no
     * further: an error message says so, and the other observers are told.
     */
    virtual void onChange(SubjectType* subject) = 0;
};

#endif

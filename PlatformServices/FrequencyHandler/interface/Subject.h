#ifndef FREQUENCYHANDLER_INTERFACE_SUBJECT_H
#define FREQUENCYHANDLER_INTERFACE_SUBJECT_H

#include "Observer.h"

#include <vector>

/** Holds the observers of a subject, in the order in which they were registered. It does not own them. */
template <typename SubjectType>
class RADIO_CLASS Subject {
protected:
    Subject() = default;
    ~Subject() = default;

    std::vector<Observer<SubjectType>*> m_observers;
};

#endif

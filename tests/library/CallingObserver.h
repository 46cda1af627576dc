#ifndef TESTS_LIBRARY_CALLINGOBSERVER_H
#define TESTS_LIBRARY_CALLINGOBSERVER_H

#include "IFrequencyHandler.h"

#include <functional>
#include <utility>

/** A class observer that does what the test says. */
class CallingObserver final : public Observer<IFrequencyHandler> {
public:
    explicit CallingObserver(std::function<void(IFrequencyHandler*)> action) : m_action(std::move(action)) {}

    void onChange(IFrequencyHandler* subject) override { m_action(subject); }

private:
    std::function<void(IFrequencyHandler*)> m_action;
};

#endif

#include "BenchmarkRadio.h"

namespace Benchmarks {

namespace {

class CountingObserver final : public Observer<IFrequencyHandler> {
public:
    void onChange(IFrequencyHandler* /*subject*/) override { ++m_changes; }

private:
    unsigned long m_changes = 0;
};

} // namespace

std::unique_ptr<Observer<IFrequencyHandler>> makeObserver() {
    return std::make_unique<CountingObserver>();
}

} // namespace Benchmarks

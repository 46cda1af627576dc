// All operations under Google Benchmark, by the library and on the floor; its options apply, for example
// --benchmark_filter=tx.microwave-hz.

#include "Operations.h"

#include <benchmark/benchmark.h>

#include <memory>

using Benchmarks::Operation;
using Benchmarks::Run;

namespace {

void repeat(benchmark::State& state, const std::function<Run()>& prepare) {
    const Run run = prepare();
    int time = 0;
    for (auto iteration : state) {
        static_cast<void>(iteration);
        run(time++ % 1000);
    }
}

/** For what cannot be repeated on the same radio; the making of each one is not timed. */
void repeatAnew(benchmark::State& state, const std::function<Run()>& prepare) {
    for (auto iteration : state) {
        static_cast<void>(iteration);
        state.PauseTiming();
        {
            const Run run = prepare();
            state.ResumeTiming();
            run(0);
            state.PauseTiming();
        }
        state.ResumeTiming();
    }
}

void add(const std::string& name, const std::function<Run()>& prepare, int repetitions) {
    benchmark::RegisterBenchmark(name.c_str(), [prepare, repetitions](benchmark::State& state) {
        repetitions > 1 ? repeat(state, prepare) : repeatAnew(state, prepare);
    });
}

} // namespace

int main(int argc, char** argv) {
    for (const Operation& operation : Benchmarks::operations()) {
        add(operation.name, operation.library, operation.repetitions);
        if (operation.floor) {
            add("floor." + operation.name, operation.floor, operation.repetitions);
        }
        if (operation.checkedFloor) {
            add("checked-floor." + operation.name, operation.checkedFloor, operation.repetitions);
        }
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}

// count [PART-OF-A-NAME]: carries out each operation whose name contains that, for whoever counts
// instructions; benchmarks/instructions.py does. Prints a line for each call of measured(), in order: its
// name and how often it carried the operation out.

#include "Operations.h"

#include <unistd.h>

#include <iostream>
#include <string>

using Benchmarks::Operation;
using Benchmarks::Run;

/** What is counted. An emulator sees its beginning and its end by the system calls. */
extern "C" [[gnu::noinline]] void measured(const Run& run, int begin, int end) {
    getppid();
    for (int time = begin; time < end; ++time) {
        run(time);
    }
    getppid();
}

namespace {

/** By library or floor, which `prefix` says. */
void count(const std::string& prefix, const Operation& operation, const std::function<Run()>& prepare) {
    const bool canBeRepeated = operation.repetitions > 1;
    if (operation.isWarmedUp && !canBeRepeated) {
        prepare()(0);
    }
    const Run run = prepare();
    if (operation.isWarmedUp && canBeRepeated) {
        run(0);
    }
    measured(run, 0, operation.repetitions);
    std::cout << prefix << operation.name << ' ' << operation.repetitions << '\n';
    if (!operation.undoing.empty()) {
        measured(run, 1, 2);
        std::cout << prefix << operation.undoing << " 1\n";
    }
}

} // namespace

int main(int argc, char** argv) {
    const std::string wanted = argc > 1 ? argv[1] : "";
    for (const int repetitions : {100, 1}) {
        const auto nothing = [] { return [](int /*time*/) {}; };
        count("", {"nothing." + std::to_string(repetitions), nothing, {}, {}, repetitions}, nothing);
    }
    for (const Operation& operation : Benchmarks::operations()) {
        if (operation.name.find(wanted) == std::string::npos) {
            continue;
        }
        count("", operation, operation.library);
        if (operation.floor) {
            count("floor.", operation, operation.floor);
        }
        if (operation.checkedFloor) {
            count("checked-floor.", operation, operation.checkedFloor);
        }
    }
    return 0;
}

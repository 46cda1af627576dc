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
extern "C" [[gnu::noinline]] void measured(const Run& run, int repetitions) {
    getppid();
    for (int time = 0; time < repetitions; ++time) {
        run(time);
    }
    getppid();
}

namespace {

void count(const std::string& name, const std::function<Run()>& prepare, int repetitions) {
    if (repetitions > 1) {
        const Run run = prepare();
        run(0); // whatever is done once only
        measured(run, repetitions);
    } else {
        prepare()(0);
        measured(prepare(), 1);
    }
    std::cout << name << ' ' << repetitions << '\n';
}

} // namespace

int main(int argc, char** argv) {
    const std::string wanted = argc > 1 ? argv[1] : "";
    for (const int repetitions : {100, 1}) {
        count(
            "nothing." + std::to_string(repetitions), [] { return [](int /*time*/) {}; }, repetitions);
    }
    for (const Operation& operation : Benchmarks::operations()) {
        if (operation.name.find(wanted) == std::string::npos) {
            continue;
        }
        count(operation.name, operation.library, operation.repetitions);
        if (operation.floor) {
            count("floor." + operation.name, operation.floor, operation.repetitions);
        }
        if (operation.checkedFloor) {
            count("checked-floor." + operation.name, operation.checkedFloor, operation.repetitions);
        }
    }
    return 0;
}

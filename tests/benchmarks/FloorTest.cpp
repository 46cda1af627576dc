// The floor makes the calls that the library makes: in the same order, with the same values, down to the
// levels of unwanted messages, the text of wanted ones, the observers that are told and the waits of a
// calibration.

#include "BenchmarkRadio.h"
#include "Operations.h"
#include "standalone/Platform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

namespace {

using Benchmarks::Operation;
using Benchmarks::Run;

std::vector<std::string>* story = nullptr;

void tell(const std::string& line) {
    if (story != nullptr) {
        story->push_back(line);
    }
}

std::string lineOf(const Standalone::Call& call) {
    std::ostringstream line;
    line << toString(call.operation) << ' ' << call.object << " at " << call.at[0] << ", " << call.at[1]
         << ": " << call.value << " (" << call.bytes.size() << " bytes) -> " << call.code;
    return line.str();
}

/** What up to three runs call, and what undoes them. */
std::vector<std::string> storyOf(const std::function<Run()>& prepare, const Operation& operation) {
    const int runs = operation.undoing.empty() ? std::min(operation.repetitions, 3) : 2;
    const Run run = prepare();
    std::vector<std::string> lines;
    story = &lines;
    Standalone::Platform::current()->calls().setListener(
        [](const Standalone::Call& call) { tell(lineOf(call)); });
    Standalone::Platform::current()->trace().setSink(
        [](const Standalone::TraceMessage& message) { tell("trace: " + message.text); });
    for (int time = 0; time < runs; ++time) {
        run(time);
    }
    Standalone::Platform::current()->trace().setSink({});
    Standalone::Platform::current()->calls().setListener({});
    story = nullptr;
    return lines;
}

/** An operation, and one of the floors below it. */
struct Pair {
    std::string name;
    Operation operation;
    std::function<Run()> floor;
};

void PrintTo(const Pair& pair, std::ostream* stream) {
    *stream << pair.name;
}

std::vector<Pair> pairs() {
    std::vector<Pair> result;
    for (const Operation& operation : Benchmarks::operations()) {
        std::string name = operation.name;
        std::replace_if(
            name.begin(), name.end(), [](char letter) { return letter == '.' || letter == '-'; }, '_');
        if (operation.floor) {
            result.push_back({name, operation, operation.floor});
        }
        if (operation.checkedFloor) {
            result.push_back({name + "_with_checks", operation, operation.checkedFloor});
        }
    }
    return result;
}

class TellingObserver final : public Observer<IFrequencyHandler> {
public:
    void onChange(IFrequencyHandler* /*subject*/) override { tell("observer"); }
};

class FloorTest : public testing::TestWithParam<Pair> {};

} // namespace

// All take the place of what library and floor would call otherwise.

OrbiTraceLevel CZulTraceHandler_DmLevel2GtLevel(int level) {
    tell("message of level " + std::to_string(level));
    return Standalone::TraceLevel::information;
}

extern "C" int usleep(unsigned microseconds) { // the name is the operating system's
    tell("wait of " + std::to_string(microseconds));
    return 0;
}

std::unique_ptr<Observer<IFrequencyHandler>> Benchmarks::makeObserver() {
    return std::make_unique<TellingObserver>();
}

TEST_P(FloorTest, MakesTheCallsOfTheLibrary) {
    const auto& [name, operation, floor] = GetParam();
    const std::vector<std::string> expected = storyOf(operation.library, operation);
    EXPECT_GE(expected.size(), 6U);
    EXPECT_EQ(storyOf(floor, operation), expected);
}

INSTANTIATE_TEST_SUITE_P(Operations, FloorTest, testing::ValuesIn(pairs()),
                         [](const auto& parameter) { return parameter.param.name; });

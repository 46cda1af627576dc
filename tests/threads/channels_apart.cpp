// Two channels, each driven by a thread of its own without any lock, with all messages wanted: what a module
// shares with another is the platform's alone. With an argument: the two threads drive the same channel,
// which they must not.
#include "FrequencyHandler.h"
#include "FrequencyHandler_Common.h"
#include "MinimalPlatform.h"
#include "Radio.h"

#include <cstdio>
#include <iostream>
#include <regex>
#include <sstream>
#include <thread>
#include <vector>

namespace {

/** How many lines are none that the library writes. */
int strangeLines(const std::string& text, int& lines) {
    const std::regex message(R"(QVX\.FH .*\.cpp:\d+ (on\w+|set[TR]xFrequency \d{7}|)"
                             R"(Write frequency to HW \d{7} for direction [TR]x))");
    std::istringstream input(text);
    int strange = 0;
    for (std::string line; std::getline(input, line); ++lines) {
        strange += std::regex_match(line, message) ? 0 : 1;
    }
    return strange;
}

} // namespace

int main(int argc, char** /*argv*/) {
    std::ostringstream traced;
    std::streambuf* const log = std::clog.rdbuf(traced.rdbuf());
    Minimal::traceEverything();
    bool isGood = true;
    {
        Radio radio;
        std::vector<std::thread> threads;
        for (const std::int32_t number : {1, 2}) {
            threads.emplace_back([&radio, channel = argc > 1 ? 1 : number] {
                for (std::uint32_t step = 0; step < 200; ++step) {
                    static_cast<void>(radio.tune(channel, FrequencyHandlerTx, 7442000 + 28000 * (step % 4)));
                    static_cast<void>(radio.tune(channel, FrequencyHandlerRx, 7603000 + 28000 * (step % 4)));
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        isGood = radio.isUp();
    }
    std::clog.rdbuf(log);
    int lines = 0;
    const int strange = strangeLines(traced.str(), lines);
    // Of each module three phases; of each frequency change two messages.
    std::printf("%d messages, %d of them mixed\n", lines, strange);
    return isGood && strange == 0 && lines == 2 * 3 + 2 * 2 * 200 * 2 ? 0 : 1;
}

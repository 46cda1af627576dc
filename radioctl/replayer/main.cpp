// radioctl-replay -- FILE
//
// Has the library that is installed live what was recorded, and says on standard output what came of it.
// radioctl starts one for each recording: whatever the library does here, it does to nobody else.

#include "radio/files/InputError.h"
#include "radioctl/replayer/Player.h"
#include "radioctl/replayer/Report.h"
#include "radioctl/replayer/Stage.h"

#include <sys/resource.h>

#include <csignal>
#include <exception>
#include <iostream>
#include <string>

namespace {

/** So long, in seconds of the processor, the library may think about all of it. */
constexpr rlim_t mostSeconds = 600;

/** The library has crashed, or does not come back. What is told is more than a handler may do, and better
 * than nothing; should it fail, whoever started this sees the signal. */
void tell(int signal) {
    static_cast<void>(std::signal(signal, SIG_DFL));
    if (const Replayer::Player* const player = Replayer::Player::current()) {
        player->differ("signal " + std::to_string(signal), nullptr);
    }
    static_cast<void>(std::raise(signal));
}

void guard() {
    for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGXCPU}) {
        static_cast<void>(std::signal(signal, &tell));
    }
    const rlimit none{0, 0};
    static_cast<void>(setrlimit(RLIMIT_CORE, &none));
    const rlimit time{mostSeconds, mostSeconds + 5};
    static_cast<void>(setrlimit(RLIMIT_CPU, &time));
}

} // namespace

int main(int count, char** arguments) {
    if (count < 2) {
        std::cerr << "usage: radioctl-replay -- FILE\n";
        return 2;
    }
    try {
        Radio::Recordings::RecordingFile file = Radio::Recordings::readRecording(arguments[count - 1]);
        Replayer::Player player(file);
        guard();
        player.play(&Replayer::makeOperation,
                    [](const Replayer::Record& content) { Replayer::Stage::get().setContent(content); });
    } catch (const std::exception& error) {
        Replayer::Report report("unusable");
        report.add("reason", std::string(error.what()));
        report.send(Replayer::Ending::unusable);
    }
}

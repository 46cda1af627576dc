// radioctl-replay -- FILE
//
// Has the library that is installed live what was recorded, and says on standard output what came of it.
// radioctl starts one for each recording: whatever the library does here, it does to nobody else.

#include "radio/files/InputError.h"
#include "radioctl/replayer/Player.h"
#include "radioctl/replayer/Report.h"
#include "radioctl/replayer/Stage.h"

#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>

namespace {

/** So long, in seconds of the processor, the library may think about all of it. */
constexpr rlim_t mostSeconds = 600;

/** The library has crashed, or does not come back. Should telling it fail, whoever started this sees a
 * signal.
 */
void tell(int signal) {
    constexpr unsigned longestTelling = 5;
    static_cast<void>(alarm(longestTelling));
    static_cast<void>(std::signal(signal, SIG_DFL));
    if (const Replayer::Player* const player = Replayer::Player::current()) {
        player->crash(signal);
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

[[noreturn]] void live(Replayer::Player& player) {
    guard();
    player.play(&Replayer::makeOperation,
                [](const Replayer::Record& content) { Replayer::Stage::get().setContent(content); });
}

// Modules whose types nobody saw: they have the type with which the library gets farthest.

bool hasUnseenModules(const Replayer::RecordingFile& file) {
    const auto& objects = file.objects();
    return std::any_of(objects.begin(), objects.end(), [](const Replayer::Object& object) {
        return object.kind == Replayer::ObjectKind::module && object.second == -1;
    });
}

/** Whoever waits for this may be killed: then nobody waits for it any more. */
void endWith(pid_t parent) {
    static_cast<void>(prctl(PR_SET_PDEATHSIG, SIGKILL));
    if (getppid() != parent) {
        std::_Exit(EXIT_FAILURE);
    }
}

/** What comes of it with one type, in a process of its own. */
std::string livedWith(Replayer::Player& player, std::int32_t type) {
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) {
        return {};
    }
    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child == 0) {
        endWith(parent);
        static_cast<void>(dup2(ends[1], STDOUT_FILENO));
        player.setUnseenType(type);
        live(player);
    }
    static_cast<void>(close(ends[1]));
    std::string said;
    std::array<char, 4096> bytes{};
    for (ssize_t count = 1; count > 0;) {
        count = read(ends[0], bytes.data(), bytes.size());
        said.append(bytes.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
    }
    static_cast<void>(close(ends[0]));
    static_cast<void>(waitpid(child, nullptr, 0));
    return said;
}

std::uint64_t callsIn(const std::string& said) {
    const std::size_t place = said.find("\ncalls ");
    return place != std::string::npos ? std::strtoull(said.c_str() + place + 7, nullptr, 10) : 0;
}

[[noreturn]] void liveWithTheBestType(Replayer::Player& player) {
    constexpr std::int32_t types = 6;
    std::int32_t best = 0;
    std::uint64_t most = 0;
    for (std::int32_t type = 0; type < types; ++type) {
        const std::uint64_t calls = callsIn(livedWith(player, type));
        if (calls > most) {
            most = calls;
            best = type;
        }
    }
    player.setUnseenType(best);
    live(player);
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
        if (hasUnseenModules(file)) {
            liveWithTheBestType(player);
        }
        live(player);
    } catch (const std::exception& error) {
        Replayer::Report report("unusable");
        report.add("reason", std::string(error.what()));
        report.send(Replayer::Ending::unusable);
    }
}

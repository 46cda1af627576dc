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
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>

namespace {

/** With what it ended. */
volatile std::sig_atomic_t s_signal = 0;

void becomeOf(int signal, void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    // On a stack of its own: that of the library may be used up.
    action.sa_flags = SA_ONSTACK | SA_NODEFER;
    static_cast<void>(sigaction(signal, &action, nullptr));
}

/** Ends the process as the signal would have. */
void die(int /*signal*/) {
    becomeOf(s_signal, SIG_DFL);
    static_cast<void>(std::raise(s_signal));
}

/** The library has crashed, or has no time left, which whoever started this says with SIGXCPU. Should telling
 * it fail, or not come back either, they see the signal. */
void tell(int signal) {
    constexpr unsigned patience = 5;
    s_signal = signal;
    becomeOf(signal, SIG_DFL);
    becomeOf(SIGALRM, &die);
    static_cast<void>(alarm(patience));
    if (const Replayer::Player* const player = Replayer::Player::current()) {
        player->crash(signal);
    }
    die(signal);
}

void guard() {
    alignas(std::max_align_t) static std::array<char, std::size_t{256} << 10U> room{};
    stack_t stack{};
    stack.ss_sp = room.data();
    stack.ss_size = room.size();
    static_cast<void>(sigaltstack(&stack, nullptr));
    for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGXCPU}) {
        becomeOf(signal, &tell);
    }
    const rlimit none{0, 0};
    static_cast<void>(setrlimit(RLIMIT_CORE, &none));
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
    // Nobody waits for the verdict any more when whoever started this is gone.
    static_cast<void>(prctl(PR_SET_PDEATHSIG, SIGKILL));
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

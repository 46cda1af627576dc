// radioctl-replay [--seconds N] -- FILE
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
#include <ctime>
#include <exception>
#include <iostream>
#include <string>
#include <string_view>

namespace {

/** So long the library may go on without an end: of the processor's time in seconds, or of anybody's when it
 * waits for something that does not come. */
unsigned s_mostSeconds = 600;
/** What the processor did for it when that was last looked at, in milliseconds. */
std::int64_t s_processedBefore = 0;
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

/** The library has crashed, or does not come back. Should telling it fail, or not come back either, whoever
 * started this sees the signal. */
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

std::int64_t processed() {
    timespec time{};
    static_cast<void>(clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time));
    return std::int64_t{time.tv_sec} * 1000 + time.tv_nsec / 1000000;
}

/** Whoever gets no processor, because others have it, is given more time; whoever does not want one waits for
 * nothing. */
void look(int /*signal*/) {
    constexpr std::int64_t nothing = 10;
    const std::int64_t now = processed();
    if (now - s_processedBefore < nothing) {
        tell(SIGXCPU);
    }
    s_processedBefore = now;
    static_cast<void>(alarm(s_mostSeconds));
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
    becomeOf(SIGALRM, &look);
    const rlimit none{0, 0};
    static_cast<void>(setrlimit(RLIMIT_CORE, &none));
    const rlim_t used = static_cast<rlim_t>(processed() / 1000);
    const rlimit time{used + s_mostSeconds, used + s_mostSeconds + 10};
    static_cast<void>(setrlimit(RLIMIT_CPU, &time));
    s_processedBefore = processed();
    static_cast<void>(alarm(s_mostSeconds));
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
        std::cerr << "usage: radioctl-replay [--seconds N] -- FILE\n";
        return 2;
    }
    if (count > 3 && std::string_view(arguments[1]) == "--seconds") {
        s_mostSeconds = static_cast<unsigned>(std::strtoul(arguments[2], nullptr, 10));
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

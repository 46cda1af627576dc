#include "radioctl/page/Gnuplot.h"

#include "radio/files/InputError.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <memory>
#include <system_error>

namespace Radio::Page {

namespace {

[[noreturn]] void fail(const std::string& why) {
    throw InputError({"--html", 0}, "the plots need gnuplot, which " + why);
}

std::string reasonText(int reason) {
    return std::generic_category().message(reason);
}

/** A file without a name, gone when it is closed: unlike a pipe it never makes the other side wait. */
class ScratchFile {
public:
    ScratchFile() : m_file(std::tmpfile()) {
        if (m_file == nullptr) {
            fail("cannot be given a temporary file: " + reasonText(errno));
        }
    }

    int descriptor() const { return fileno(m_file.get()); }

    /** Writes the text, and goes back to its beginning. */
    void fill(const std::string& text) {
        if (std::fwrite(text.data(), 1, text.size(), m_file.get()) != text.size() ||
            std::fflush(m_file.get()) != 0 || lseek(descriptor(), 0, SEEK_SET) != 0) {
            fail("cannot be given its script: " + reasonText(errno));
        }
    }

    std::string content() const {
        std::string text;
        std::array<char, 65536> buffer{};
        static_cast<void>(lseek(descriptor(), 0, SEEK_SET));
        for (ssize_t count = 0; (count = read(descriptor(), buffer.data(), buffer.size())) > 0;) {
            text.append(buffer.data(), static_cast<std::size_t>(count));
        }
        return text;
    }

private:
    struct Closer {
        void operator()(std::FILE* file) const { static_cast<void>(std::fclose(file)); }
    };
    std::unique_ptr<std::FILE, Closer> m_file;
};

/** How gnuplot is started: on three files, and with the signals that this program holds back let through. */
class Start {
public:
    Start(const ScratchFile& input, const ScratchFile& output, const ScratchFile& errors) {
        posix_spawn_file_actions_init(&m_actions);
        posix_spawn_file_actions_adddup2(&m_actions, input.descriptor(), STDIN_FILENO);
        posix_spawn_file_actions_adddup2(&m_actions, output.descriptor(), STDOUT_FILENO);
        posix_spawn_file_actions_adddup2(&m_actions, errors.descriptor(), STDERR_FILENO);
        sigset_t none{};
        sigemptyset(&none);
        posix_spawnattr_init(&m_attributes);
        posix_spawnattr_setsigmask(&m_attributes, &none);
        posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETSIGMASK);
    }
    Start(const Start&) = delete;
    Start& operator=(const Start&) = delete;
    ~Start() {
        posix_spawn_file_actions_destroy(&m_actions);
        posix_spawnattr_destroy(&m_attributes);
    }

    /** Runs gnuplot to its end; true when it was content. */
    bool run() const {
        // Without the settings of whoever is at home here: every page looks alike.
        std::array<std::string, 2> words{"gnuplot", "--default-settings"};
        const std::array<char*, 3> arguments{words[0].data(), words[1].data(), nullptr};
        pid_t pid = -1;
        const int reason =
            posix_spawnp(&pid, "gnuplot", &m_actions, &m_attributes, arguments.data(), environ);
        if (reason != 0) {
            fail("cannot be run: " + reasonText(reason) + "; the Debian package gnuplot-nox has it");
        }
        int status = 0;
        while (waitpid(pid, &status, 0) == -1 && errno == EINTR) {
        }
        return WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }

private:
    posix_spawn_file_actions_t m_actions{};
    posix_spawnattr_t m_attributes{};
};

} // namespace

std::string runGnuplot(const std::string& script) {
    ScratchFile input;
    const ScratchFile output;
    const ScratchFile errors;
    input.fill(script);
    if (!Start(input, output, errors).run()) {
        fail("failed: " + errors.content());
    }
    return output.content();
}

void requireGnuplot() {
    static_cast<void>(runGnuplot(""));
}

} // namespace Radio::Page

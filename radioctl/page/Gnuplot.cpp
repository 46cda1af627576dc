#include "radioctl/page/Gnuplot.h"

#include "radio/files/InputError.h"
#include "radio/text/Words.h"
#include "radioctl/console/Child.h"
#include "radioctl/console/Interrupt.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <optional>
#include <sstream>
#include <system_error>
#include <vector>

namespace Radio::Page {

namespace {

[[noreturn]] void fail(const std::string& why) {
    throw InputError({"--html", 0}, "the plots need gnuplot, which " + why);
}

std::string reasonText(int reason) {
    return std::generic_category().message(reason);
}

/** The lines of a text that say something. */
std::string inOneLine(const std::string& text) {
    std::istringstream stream(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) {
        if (line.find_first_not_of(" \t\r") != std::string::npos) {
            lines.push_back(line);
        }
    }
    return joined(lines, "; ");
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

/** Runs gnuplot to its end. Throws InputError when it cannot be run, or when it was not waited for. */
int exitCodeOf(const Child::Streams& streams) {
    try {
        // Without the settings of whoever is at home here: every page looks alike.
        Child gnuplot({"gnuplot", "--default-settings"}, streams);
        if (const std::optional<int> exitCode = gnuplot.wait()) {
            return *exitCode;
        }
    } catch (const std::system_error& error) {
        fail("cannot be run: " + reasonText(error.code().value()) +
             "; the Debian package gnuplot-nox has it");
    }
    throw GivenUp({"gnuplot", 0}, Interrupt::current()->signal());
}

} // namespace

std::string runGnuplot(const std::string& script) {
    ScratchFile input;
    const ScratchFile output;
    const ScratchFile errors;
    input.fill(script);
    if (exitCodeOf({input.descriptor(), output.descriptor(), errors.descriptor()}) != 0) {
        fail("failed: " + inOneLine(errors.content()));
    }
    return output.content();
}

void requireGnuplot() {
    static_cast<void>(runGnuplot(""));
}

} // namespace Radio::Page

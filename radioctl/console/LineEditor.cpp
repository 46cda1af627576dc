#include "radioctl/console/LineEditor.h"

#include "radio/files/StateFolder.h"
#include "radio/language/Completion.h"
#include "radioctl/console/CrashGuard.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <iostream>
#include <sstream>
#include <string_view>
#include <system_error>
#include <utility>

namespace Radio {

namespace {

constexpr int historyLength = 1000;
constexpr const char* promptText = "radio> ";

/** Has what is written to `stream` go to `target` as long as it lives. */
class Redirection {
public:
    Redirection(std::ostream& stream, const std::ostringstream& target)
        : m_stream(stream),
          m_before(stream.rdbuf(target.rdbuf())) {}
    Redirection(const Redirection&) = delete;
    Redirection& operator=(const Redirection&) = delete;
    ~Redirection() { m_stream.rdbuf(m_before); }

private:
    std::ostream& m_stream;
    std::streambuf* m_before;
};

} // namespace

std::filesystem::path historyFile() {
    const std::filesystem::path folder = stateFolder();
    return folder.empty() ? folder : folder / "history";
}

LineEditor::LineEditor(const BoardNames& names, Interrupt& interrupt, std::filesystem::path historyFile)
    : m_names(names),
      m_interrupt(interrupt),
      m_historyFile(std::move(historyFile)),
      m_history(history_init()),
      m_editor(el_init("radioctl", stdin, stdout, stderr)) {
    keepTerminalThroughCrashes();
    static_cast<void>(std::setlocale(LC_CTYPE, ""));
    loadHistory();
    el_set(m_editor, EL_CLIENTDATA, this);
    el_set(m_editor, EL_EDITOR, "emacs");
    el_set(m_editor, EL_PROMPT, &LineEditor::prompt);
    el_set(m_editor, EL_HIST, history, m_history);
    el_set(m_editor, EL_GETCFN, &LineEditor::readCharacter);
    // The narrow el_set would copy these two strings and never free them.
    el_wset(m_editor, EL_ADDFN, L"complete-word", L"Completes the word at the cursor",
            &LineEditor::completeWord);
    el_set(m_editor, EL_BIND, "^I", "complete-word", nullptr);
    el_set(m_editor, EL_BIND, "^R", "em-inc-search-prev", nullptr);
}

LineEditor::~LineEditor() {
    saveHistory();
    el_end(m_editor);
    history_end(m_history);
}

LineEditor& LineEditor::of(EditLine* editor) {
    void* self = nullptr;
    el_get(editor, EL_CLIENTDATA, &self);
    return *static_cast<LineEditor*>(self);
}

const char* LineEditor::prompt(EditLine* /*editor*/) {
    return promptText;
}

void LineEditor::setIdle(std::function<void()> idle) {
    m_idle = std::move(idle);
    m_whileWaiting = m_idle ? [this] { this->idle(); } : std::function<void()>();
}

/** Keeps what is written back until it is known whether there is anything: only then the line gives way. */
void LineEditor::idle() {
    std::ostringstream written;
    {
        const Redirection output(std::cout, written);
        const Redirection errors(std::cerr, written);
        m_idle();
    }
    const std::string text = written.str();
    if (!text.empty()) {
        clearLine();
        std::cout << text << (text.back() == '\n' ? "" : "\n") << std::flush;
        el_set(m_editor, EL_REFRESH);
    }
}

/** Takes prompt and line off the terminal, also where they have several rows. */
void LineEditor::clearLine() const {
    const char* const terminal = std::getenv("TERM");
    if (terminal == nullptr || std::string_view(terminal) == "dumb") {
        std::cout << "\n";
        return;
    }
    winsize size{};
    const LineInfo* const line = el_line(m_editor);
    const std::size_t before =
        std::string_view(promptText).size() + static_cast<std::size_t>(line->cursor - line->buffer);
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col != 0 && before >= size.ws_col) {
        std::cout << "\033[" << before / size.ws_col << "A";
    }
    std::cout << "\r\033[J";
}

/** Gives libedit the next character, or -1 when a signal came: libedit itself would read on. */
int LineEditor::readCharacter(EditLine* editor, wchar_t* character) {
    std::mbstate_t state{};
    for (;;) {
        char byte = 0;
        while (!of(editor).m_interrupt.waitForInput(STDIN_FILENO, of(editor).m_whileWaiting)) {
            if (of(editor).m_interrupt.signal() != 0) {
                return -1;
            }
            takeTerminalBack(editor);
        }
        const ssize_t count = read(STDIN_FILENO, &byte, 1);
        if (count <= 0) {
            return static_cast<int>(count);
        }
        const std::size_t length = std::mbrtowc(character, &byte, 1, &state);
        if (length == 0 || length == 1) {
            of(editor).m_isAboutToLeave = false;
            return 1;
        }
        if (length == static_cast<std::size_t>(-1)) {
            // No character of this locale: it is left out.
            state = {};
        }
    }
}

/** After Ctrl-Z and fg: the shell has left the terminal in a mode of its own, and its text on the line. */
void LineEditor::takeTerminalBack(EditLine* editor) {
    // libedit believes that the terminal is still prepared.
    el_set(editor, EL_PREP_TERM, 0);
    el_set(editor, EL_PREP_TERM, 1);
    el_set(editor, EL_REFRESH);
}

unsigned char LineEditor::completeWord(EditLine* editor, int /*key*/) {
    LineEditor& self = of(editor);
    const LineInfo* const line = el_line(editor);
    const std::string_view before(line->buffer, static_cast<std::size_t>(line->cursor - line->buffer));
    const Completion completion = complete(before, self.m_names);
    if (completion.candidates.empty()) {
        return CC_ERROR;
    }
    std::string more = completion.common.substr(completion.typed);
    const bool isUnique = completion.candidates.size() == 1;
    if (isUnique && completion.common.back() != '=' && completion.common.back() != '/') {
        more += ' ';
    }
    if (!more.empty()) {
        return el_insertstr(editor, more.c_str()) == 0 ? CC_REFRESH : CC_ERROR;
    }
    self.showCandidates(completion.candidates);
    return CC_REDISPLAY;
}

void LineEditor::showCandidates(const std::vector<std::string>& candidates) {
    constexpr std::size_t most = 100;
    std::cout << "\n";
    for (std::size_t i = 0; i < candidates.size() && i < most; ++i) {
        std::cout << "  " << candidates[i] << "\n";
    }
    if (candidates.size() > most) {
        std::cout << "  ... and " << candidates.size() - most << " more\n";
    }
    std::cout << std::flush;
}

bool LineEditor::staysAfterSignal() {
    const LineInfo* const line = el_line(m_editor);
    const bool isEmpty = line->lastchar == line->buffer;
    std::cout << "\n" << std::flush;
    if (m_interrupt.signal() != SIGINT || (isEmpty && m_isAboutToLeave)) {
        return false;
    }
    if (isEmpty) {
        std::cout << "Ctrl-C again leaves, as quit and Ctrl-D do.\n" << std::flush;
    }
    m_isAboutToLeave = isEmpty;
    m_interrupt.forget();
    el_reset(m_editor);
    return true;
}

std::optional<std::string> LineEditor::next() {
    for (;;) {
        // Before the prompt is shown: what is typed at it must not meet a terminal that still edits by
        // itself.
        el_set(m_editor, EL_PREP_TERM, 1);
        int length = 0;
        const char* const text = el_gets(m_editor, &length);
        if (m_interrupt.signal() != 0) {
            if (!staysAfterSignal()) {
                return std::nullopt;
            }
        } else if (text == nullptr || length <= 0) {
            std::cout << "\n" << std::flush;
            return std::nullopt;
        } else {
            std::string line(text, static_cast<std::size_t>(length));
            line.erase(line.find_last_not_of("\r\n") + 1);
            remember(line);
            return line;
        }
    }
}

void LineEditor::remember(const std::string& line) {
    if (line.find_first_not_of(" \t") != std::string::npos) {
        HistEvent event{};
        history(m_history, &event, H_ENTER, line.c_str());
    }
}

void LineEditor::loadHistory() {
    HistEvent event{};
    history(m_history, &event, H_SETSIZE, historyLength);
    history(m_history, &event, H_SETUNIQUE, 1);
    std::error_code error;
    // Who opens a pipe may wait for ever.
    if (std::filesystem::is_regular_file(m_historyFile, error)) {
        history(m_history, &event, H_LOAD, m_historyFile.c_str());
    }
}

/** Best effort: a history that cannot be kept is no reason to trouble the user. */
void LineEditor::saveHistory() {
    if (m_historyFile.empty()) {
        return;
    }
    const mode_t maskBefore = umask(S_IRWXG | S_IRWXO);
    std::error_code error;
    std::filesystem::create_directories(m_historyFile.parent_path(), error);
    umask(maskBefore);
    // Written beside and put in its place: what a link there leads to is not written.
    std::string beside = m_historyFile.string() + ".XXXXXX";
    const int descriptor = mkostemp(beside.data(), O_CLOEXEC);
    if (descriptor == -1) {
        return;
    }
    std::FILE* const file = fdopen(descriptor, "w");
    if (file == nullptr) {
        close(descriptor);
        unlink(beside.c_str());
        return;
    }
    HistEvent event{};
    const bool isWritten = history(m_history, &event, H_SAVE_FP, file) != -1;
    if (std::fclose(file) != 0 || !isWritten || rename(beside.c_str(), m_historyFile.c_str()) != 0) {
        unlink(beside.c_str());
    }
}

} // namespace Radio

#ifndef RADIOCTL_CONSOLE_LINEEDITOR_H
#define RADIOCTL_CONSOLE_LINEEDITOR_H

#include "radio/board/BoardNames.h"
#include "radioctl/console/Interrupt.h"

#include <histedit.h>

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace Radio {

/**
 * Reads lines from a terminal with editing, history and completion.
 *
 * Ctrl-C takes back the line. On an empty line it says that another one leaves, as Ctrl-D does at once.
 */
class LineEditor {
public:
    /** History is loaded from and saved to `historyFile`; empty for none. The others must outlive the object.
     */
    LineEditor(const BoardNames& names, Interrupt& interrupt, std::filesystem::path historyFile);
    LineEditor(const LineEditor&) = delete;
    LineEditor& operator=(const LineEditor&) = delete;
    /** Saves the history and gives the terminal back as it was. */
    ~LineEditor();

    /** Is called every 250 ms while a line is waited for. What it writes to standard output and standard
     * error stands above the line that is edited. */
    void setIdle(std::function<void()> idle);

    /** The next line without its end; nothing when the user leaves. */
    std::optional<std::string> next();

private:
    static const char* prompt(EditLine* editor);
    static int readCharacter(EditLine* editor, wchar_t* character);
    static void takeTerminalBack(EditLine* editor);
    static unsigned char completeWord(EditLine* editor, int key);
    static LineEditor& of(EditLine* editor);

    void idle();
    void clearLine() const;
    void loadHistory();
    void saveHistory();
    void remember(const std::string& line);
    /** What a signal while a line was read comes to: true when the user stays. */
    bool staysAfterSignal();
    void showCandidates(const std::vector<std::string>& candidates);

    const BoardNames& m_names;
    Interrupt& m_interrupt;
    std::filesystem::path m_historyFile;
    History* m_history;
    EditLine* m_editor;
    std::function<void()> m_idle;
    /** What the editor calls for it; empty when there is nothing to be called. */
    std::function<void()> m_whileWaiting;
    /** Ctrl-C came at an empty line, and nothing was typed since. */
    bool m_isAboutToLeave = false;
};

/** Where the prompt's history is kept: below $XDG_STATE_HOME or ~/.local/state. Empty when neither is known.
 */
std::filesystem::path historyFile();

} // namespace Radio

#endif

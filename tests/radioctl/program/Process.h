#ifndef TESTS_RADIOCTL_PROGRAM_PROCESS_H
#define TESTS_RADIOCTL_PROGRAM_PROCESS_H

#include <sys/types.h>

#include <map>
#include <string>
#include <vector>

/** The arguments of radioctl, and variables that its environment has besides those of the test. */
struct Invocation {
    std::vector<std::string> arguments;
    std::map<std::string, std::string> environment{};
    /** At a terminal instead of pipes: what the program shows, errors included, is its output. */
    bool atTerminal = false;
    /** Where standard output goes instead; empty: to the test. */
    std::string outputFile{};
    /** Where standard input comes from instead; empty: from the test. */
    std::string inputFile{};
    /** A variable that its environment lacks. */
    std::string environmentWithout{};
    /** It is started without a standard error. */
    bool hasNoErrors = false;
};

/** What a program left behind. */
struct Ending {
    /** The exit code; the negative number of the signal that killed it. */
    int exitCode;
    std::string output;
    std::string errors;
};

/** A running radioctl. Killed when the object is destroyed before it has ended. */
class Process {
public:
    explicit Process(const Invocation& invocation);
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;
    ~Process();

    void type(const std::string& text);
    void closeInput();
    /** Closes the end from which the test reads the program's output. */
    void closeOutput();
    void signal(int number);
    /** Puts the terminal into the mode in which a shell leaves it that has stopped the program. */
    void leaveTerminalToAShell() const;
    /** True when the terminal is as a shell wants it: what is typed is shown, and comes line by line. */
    bool showsWhatIsTyped() const;
    /** Waits until the program has taken charge of a signal; false when it has not after 10 s. */
    bool waitUntilItCatches(int number) const;
    /** Waits until there is a part of this file beside it, as there is when work on it has begun; false when
     * there is none after 10 s. */
    static bool waitUntilItIsWritten(const std::string& file);
    /**
     * Reads until the output has `text` in it, behind what was waited for before; false when the program
     * ended or was silent for 10 s first.
     */
    bool waitFor(const std::string& text);
    /** Waits until the program has ended, without reading what it writes; false when it has not after 10 s.
     */
    bool waitUntilItEnded() const;
    /** Reads to the end of the output and waits for the end of the program. */
    Ending finish();

private:
    void startOnPipes(const Invocation& invocation);
    void startAtTerminal(const Invocation& invocation);
    [[noreturn]] static void execute(const Invocation& invocation);
    /** Reads what there is; false at the end of all outputs or after 10 s of silence. */
    bool readMore();

    pid_t m_pid = -1;
    int m_input = -1;
    int m_output = -1;
    int m_errors = -1;
    Ending m_ending{};
    /** How much of the output has been waited for. */
    std::size_t m_seen = 0;
};

/** Runs radioctl to its end, with `input` as its standard input. */
Ending runProgram(const Invocation& invocation, const std::string& input = "");

#endif

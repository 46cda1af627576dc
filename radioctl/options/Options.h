#ifndef RADIOCTL_OPTIONS_OPTIONS_H
#define RADIOCTL_OPTIONS_OPTIONS_H

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace CLI {
class App;
class Option;
} // namespace CLI

/**
 * The command line as the program's verbs see it. The library that parses it is known to one source alone:
 * its headers take a compiler longer than any verb does.
 */
namespace Radio::CommandLine {

/** Says what is wrong with a value; empty: nothing. */
using ValueCheck = std::function<std::string(const std::string& value)>;

/** What a value can be, for those who complete a command line; of a value without one, only the user knows.
 */
struct ValueKind {
    std::vector<std::string> words{};
    bool isFile = false;
    /** How the names of such files end, ".toml"; empty: as they like. */
    std::vector<std::string> endings{};
};

using ValueKinds = std::map<const CLI::Option*, ValueKind>;

/** What can stand where a command line is being typed. */
struct Offers {
    struct Word {
        std::string word;
        /** What it does, in one line; may be empty. */
        std::string help;
    };
    std::vector<Word> words{};
    bool areFiles = false;
    /** See ValueKind. */
    std::vector<std::string> endings{};
};

/** One option or argument. Refers to the command line that it belongs to, which must outlive it. */
class Option {
public:
    Option(CLI::Option& option, ValueKinds& kinds) : m_option(&option), m_kinds(&kinds) {}

    /** Without it the command line is wrong. */
    Option& required();
    /** What its value is called in the help. */
    Option& named(const char* value);
    Option& check(const ValueCheck& check);
    /** It is a whole number, or several, from `low` to `high`, in `unit` if it has one. */
    Option& within(std::int64_t low, std::int64_t high, const char* unit = "");
    /** It is one of these; when they are many, the help has to name them. */
    Option& oneOf(const std::vector<std::string>& words);
    /** It is a file; files of its kind have names that end in one of `endings`, or all are. */
    Option& file(const std::vector<std::string>& endings = {});
    /** The help says what it is when it is not there. */
    Option& showDefault();
    /** So many values stand behind it. */
    Option& values(int count);
    /** It may be there more than once, each time with one value. */
    Option& repeated();
    /** Its values stand in one word with `separator` between them. */
    Option& separatedBy(char separator);

    /** It and `other` cannot be there both. */
    Option& excludes(const Option& other);

    bool isThere() const;

private:
    CLI::Option* m_option;
    ValueKinds* m_kinds;
};

/** A command, and what can stand behind its name. Refers to the command line that it belongs to. */
class Command {
public:
    Command(CLI::App& app, ValueKinds& kinds) : m_app(&app), m_kinds(&kinds) {}

    /** A command below this one. */
    Command command(const char* name, const char* help);
    /** One of the commands below has to be there. */
    void requireCommand();

    /**
     * An option, or an argument when the name has no dashes. Its value goes to `value`, which must outlive
     * the parsing: a string, a number of a kind below, or several of them.
     */
    template <typename Value>
    Option option(const char* name, Value& value, const char* help);
    Option flag(const char* name, bool& value, const char* help);
    /** "--json", as all commands have it. */
    Option json(bool& value);
    /** Options of which there has to be exactly one. */
    Command alternatives(const char* name, const char* help);

    /** The command was called. */
    bool isCalled() const;
    /** The option, by one of its names, is there. */
    bool has(const char* option) const;

private:
    CLI::App* m_app;
    ValueKinds* m_kinds;
};

/** One of the things that the program can do. It adds itself to the command line when it is made. */
class Verb {
public:
    Verb() = default;
    Verb(const Verb&) = delete;
    Verb& operator=(const Verb&) = delete;
    virtual ~Verb() = default;

    virtual bool isCalled() const = 0;
    /** Does what was asked for; gives the exit code. `json`: also asked for in front of the verb. */
    virtual int run(bool json) = 0;
};

/** The command line as a whole. */
class Parser {
public:
    Parser(const char* help, const char* name, const char* version);
    Parser(const Parser&) = delete;
    Parser& operator=(const Parser&) = delete;
    ~Parser();

    /** What stands in front of the first command. */
    Command top();
    /**
     * What stands at the end of the help: `footer` is asked for each command that there is, by its names,
     * "plan explain", and with nothing for the program.
     */
    void endHelpWith(const std::function<std::string(std::string_view command)>& footer);
    /**
     * Takes the words behind the program's name. When there is nothing more to do, because help was asked for
     * or something is wrong, people have been told; then false for something wrong, and true for the rest.
     */
    std::optional<bool> parse(std::vector<std::string> words);
    /** What can stand in the place of `typed`, which may be empty, behind the words `before`. */
    Offers offersFor(const std::vector<std::string>& before, const std::string& typed) const;

private:
    /** Throws for a command or an option that there is not, before something else is missed. */
    void refuseUnknownNames(const std::vector<std::string>& words) const;

    std::unique_ptr<CLI::App> m_app;
    ValueKinds m_kinds;
};

} // namespace Radio::CommandLine

#endif

#include "radioctl/options/Options.h"

#include "radio/text/NearestName.h"
#include "radio/text/Numbers.h"
#include "radio/text/Words.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace Radio::CommandLine {

namespace {

std::string failureMessage(const CLI::App* /*app*/, const CLI::Error& error) {
    return "radioctl: " + harmless(error.what()) + "\nRun with --help for more information.\n";
}

/** The commands below `app`; groups of options are none. */
std::vector<const CLI::App*> commandsBelow(const CLI::App& app) {
    return app.get_subcommands([](const CLI::App* below) { return !below->get_name().empty(); });
}

std::vector<std::string> commandNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* const command : commandsBelow(app)) {
        names.push_back(command->get_name());
    }
    return names;
}

/** "run, console and check". */
std::string enumerated(const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names) {
        text += (text.empty() ? "" : &name == &names.back() ? " and " : ", ") + name;
    }
    return text;
}

/** One of the commands below has to be there; of the program always. */
bool wantsCommand(const CLI::App& app) {
    const bool isProgram = app.get_parent() == nullptr;
    return !commandsBelow(app).empty() && (isProgram || app.get_require_subcommand_min() > 0);
}

bool asksForHelp(const std::string& word) {
    return word == "-h" || word == "--help" || word == "--version";
}

const CLI::App& requireCommandNamed(const CLI::App& app, const std::string& name) {
    for (const CLI::App* const command : commandsBelow(app)) {
        if (command->get_name() == name) {
            return *command;
        }
    }
    const std::vector<std::string> names = commandNames(app);
    throw CLI::ExtrasError("unknown command " + inQuotes(name) + didYouMean(name, names) + ", expected " +
                               (names.size() == 1 ? "" : "one of ") + joined(names, ", "),
                           CLI::ExitCodes::ExtrasError);
}

/** The options of `app` that have long names; those of its groups are among them. */
std::vector<std::string> longNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::Option* const option : app.get_options()) {
        for (const std::string& name : option->get_lnames()) {
            names.push_back("--" + name);
        }
    }
    for (const CLI::App* const group :
         app.get_subcommands([](const CLI::App* below) { return below->get_name().empty(); })) {
        const std::vector<std::string> more = longNames(*group);
        names.insert(names.end(), more.begin(), more.end());
    }
    return names;
}

void requireOption(const CLI::App& app, const std::string& name) {
    const std::vector<std::string> names = longNames(app);
    if (std::find(names.begin(), names.end(), name) == names.end()) {
        throw CLI::ExtrasError("unknown option " + inQuotes(name) + didYouMean(name, names),
                               CLI::ExitCodes::ExtrasError);
    }
}

/** Has the help of the commands below `app`, whose names are `path`, end as `footer` says. */
void endHelp(CLI::App& app, const std::string& path,
             const std::function<std::string(std::string_view command)>& footer) {
    for (CLI::App* const command : app.get_subcommands([](const CLI::App*) { return true; })) {
        if (!command->get_name().empty()) {
            const std::string name = path + (path.empty() ? "" : " ") + command->get_name();
            command->footer(footer(name));
            endHelp(*command, name, footer);
        }
    }
}

} // namespace

Option& Option::required() {
    m_option->required();
    return *this;
}

Option& Option::named(const char* value) {
    m_option->type_name(value);
    return *this;
}

Option& Option::check(const ValueCheck& check) {
    m_option->check(check);
    return *this;
}

Option& Option::within(std::int64_t low, std::int64_t high, const char* unit) {
    const std::string kind = std::string("whole number") + (*unit == '\0' ? "" : " of ") + unit;
    const std::string range = " from " + std::to_string(low) + " to " + std::to_string(high);
    m_option->check([low, high, kind, range](const std::string& word) -> std::string {
        const auto number = parseInteger(withoutPlus(word));
        if (!number) {
            return inQuotes(word) + " is no " + kind + ", expected one" + range;
        }
        return *number < low || *number > high
                   ? inQuotes(word) + " is out of range, expected a " + kind + range
                   : "";
    });
    return *this;
}

Option& Option::oneOf(const std::vector<std::string>& words) {
    m_option->check(CLI::IsMember(words));
    return *this;
}

Option& Option::showDefault() {
    m_option->capture_default_str();
    return *this;
}

Option& Option::values(int count) {
    m_option->expected(count);
    // An argument behind them is not one of theirs.
    m_option->allow_extra_args(false);
    return *this;
}

Option& Option::repeated() {
    m_option->allow_extra_args(false);
    return *this;
}

Option& Option::separatedBy(char separator) {
    m_option->delimiter(separator);
    m_option->allow_extra_args(false);
    return *this;
}

Option& Option::excludes(const Option& other) {
    m_option->excludes(other.m_option);
    return *this;
}

bool Option::isThere() const {
    return m_option->count() != 0;
}

Command Command::command(const char* name, const char* help) {
    return Command(*m_app->add_subcommand(name, help));
}

void Command::requireCommand() {
    m_app->require_subcommand(1);
}

template <typename Value>
Option Command::option(const char* name, Value& value, const char* help) {
    return Option(*m_app->add_option(name, value, help));
}

template Option Command::option(const char*, std::string&, const char*);
template Option Command::option(const char*, int&, const char*);
template Option Command::option(const char*, std::optional<int>&, const char*);
template Option Command::option(const char*, std::optional<std::uint32_t>&, const char*);
template Option Command::option(const char*, std::optional<double>&, const char*);
template Option Command::option(const char*, std::vector<std::string>&, const char*);
template Option Command::option(const char*, std::vector<std::int32_t>&, const char*);
template Option Command::option(const char*, std::vector<std::int64_t>&, const char*);

Option Command::flag(const char* name, bool& value, const char* help) {
    return Option(*m_app->add_flag(name, value, help));
}

Option Command::json(bool& value) {
    return flag("--json", value, "One JSON object per event and line");
}

Command Command::alternatives(const char* name, const char* help) {
    CLI::Option_group& group = *m_app->add_option_group(name, help);
    group.require_option(1);
    return Command(group);
}

bool Command::isCalled() const {
    return m_app->parsed();
}

bool Command::has(const char* option) const {
    return m_app->count(option) != 0;
}

Parser::Parser(const char* help, const char* name, const char* version)
    : m_app(std::make_unique<CLI::App>(help, name)) {
    m_app->set_version_flag("--version", version);
    m_app->failure_message(failureMessage);
    m_app->require_subcommand(0, 1);
}

Parser::~Parser() = default;

Command Parser::top() {
    return Command(*m_app);
}

void Parser::endHelpWith(const std::function<std::string(std::string_view command)>& footer) {
    m_app->footer(footer(""));
    endHelp(*m_app, "", footer);
}

void Parser::refuseUnknownNames(const std::vector<std::string>& words) const {
    const CLI::App* command = m_app.get();
    for (const std::string& word : words) {
        if (word == "--" || asksForHelp(word)) {
            return;
        }
        if (word.substr(0, 2) == "--") {
            requireOption(*command, word.substr(0, word.find('=')));
        } else if (word.substr(0, 1) != "-" && wantsCommand(*command)) {
            command = &requireCommandNamed(*command, word);
        }
    }
    if (wantsCommand(*command)) {
        const std::vector<std::string> names = commandNames(*command);
        throw CLI::RequiredError("One of " + enumerated(names));
    }
}

std::optional<bool> Parser::parse(std::vector<std::string> words) {
    try {
        refuseUnknownNames(words);
        std::reverse(words.begin(), words.end()); // as the library wants them
        m_app->parse(std::move(words));
        return std::nullopt;
    } catch (const CLI::ParseError& error) {
        return m_app->exit(error) == 0;
    }
}

} // namespace Radio::CommandLine

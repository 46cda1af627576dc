#include "radioctl/options/Options.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace Radio::CommandLine {

namespace {

std::string failureMessage(const CLI::App* /*app*/, const CLI::Error& error) {
    return std::string("radioctl: ") + error.what() + "\nRun with --help for more information.\n";
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

Option& Option::within(std::int64_t low, std::int64_t high) {
    m_option->check(CLI::Range(low, high));
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

Parser::Parser(const char* help, const char* name, const char* version, const char* footer)
    : m_app(std::make_unique<CLI::App>(help, name)) {
    m_app->set_version_flag("--version", version);
    m_app->footer(footer);
    m_app->failure_message(failureMessage);
    m_app->require_subcommand(0, 1);
}

Parser::~Parser() = default;

Command Parser::top() {
    return Command(*m_app);
}

std::optional<bool> Parser::parse(std::vector<std::string> words) {
    try {
        std::reverse(words.begin(), words.end()); // as the library wants them
        m_app->parse(std::move(words));
        if (m_app->get_subcommands().empty()) {
            std::string names;
            const std::vector<CLI::App*> verbs = m_app->get_subcommands([](const CLI::App*) { return true; });
            for (const CLI::App* const verb : verbs) {
                names += (names.empty() ? "" : verb == verbs.back() ? " and " : ", ") + verb->get_name();
            }
            throw CLI::RequiredError("One of " + names);
        }
        return std::nullopt;
    } catch (const CLI::ParseError& error) {
        return m_app->exit(error) == 0;
    }
}

} // namespace Radio::CommandLine

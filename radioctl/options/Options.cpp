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

/** The command below `app` of that name; null: none. */
const CLI::App* commandNamed(const CLI::App& app, const std::string& name) {
    for (const CLI::App* const command : commandsBelow(app)) {
        if (command->get_name() == name) {
            return command;
        }
    }
    return nullptr;
}

const CLI::App& requireCommandNamed(const CLI::App& app, const std::string& name) {
    if (const CLI::App* const command = commandNamed(app, name)) {
        return *command;
    }
    const std::vector<std::string> names = commandNames(app);
    throw CLI::ExtrasError("unknown command " + inQuotes(name) + didYouMean(name, names) + ", expected " +
                               (names.size() == 1 ? "" : "one of ") + joined(names, ", "),
                           CLI::ExitCodes::ExtrasError);
}

/** The options and arguments of `app`, those of its groups among them. */
std::vector<const CLI::Option*> optionsOf(const CLI::App& app) {
    std::vector<const CLI::Option*> options = app.get_options();
    for (const CLI::App* const group :
         app.get_subcommands([](const CLI::App* below) { return below->get_name().empty(); })) {
        const std::vector<const CLI::Option*> more = optionsOf(*group);
        options.insert(options.end(), more.begin(), more.end());
    }
    return options;
}

/** The options of `app` that have long names. */
std::vector<std::string> longNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::Option* const option : optionsOf(app)) {
        for (const std::string& name : option->get_lnames()) {
            names.push_back("--" + name);
        }
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

bool isOption(const std::string& word) {
    return word.size() > 1 && word.front() == '-';
}

std::string inOneLine(std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

/** Goes through the words of a command line as far as they are typed. */
class TypedLine {
public:
    TypedLine(const CLI::App& app, const ValueKinds& kinds) : m_command(&app), m_kinds(&kinds) {}

    void take(const std::string& word) {
        if (m_valuesToCome > 0) {
            --m_valuesToCome;
        } else if (isOption(word) && !m_areArguments) {
            takeOption(word);
        } else if (wantsCommand(*m_command) ||
                   (m_argumentCount == 0 && commandNamed(*m_command, word) != nullptr)) {
            takeCommand(word);
        } else {
            ++m_argumentCount;
        }
    }

    Offers offersFor(const std::string& typed) const {
        Offers offers;
        const std::size_t equals = typed.find('=');
        if (m_valuesToCome > 0) {
            offerValues(m_option, "", offers);
        } else if (isOption(typed) && !m_areArguments && equals != std::string::npos) {
            offerValues(optionNamed(typed.substr(0, equals)), typed.substr(0, equals + 1), offers);
        } else if (!typed.empty() && typed.front() == '-' && !m_areArguments) {
            offerOptions(offers);
        } else if (wantsCommand(*m_command)) {
            offerCommands(offers);
        } else {
            offerValues(argument(), "", offers);
            if (m_argumentCount == 0) {
                // A command may stand where the argument would.
                offerCommands(offers);
            }
        }
        const auto isOther = [&typed](const Offers::Word& offer) {
            return offer.word.compare(0, typed.size(), typed) != 0;
        };
        offers.words.erase(std::remove_if(offers.words.begin(), offers.words.end(), isOther),
                           offers.words.end());
        return offers;
    }

private:
    /** Nothing when there is none of that name. */
    const CLI::Option* optionNamed(const std::string& name) const {
        for (const CLI::Option* const option : optionsOf(*m_command)) {
            if (option->nonpositional() && option->check_name(name)) {
                return option;
            }
        }
        return nullptr;
    }

    /** The argument that stands here; nothing behind the last. */
    const CLI::Option* argument() const {
        std::size_t before = m_argumentCount;
        for (const CLI::Option* const option : optionsOf(*m_command)) {
            if (!option->nonpositional()) {
                if (before == 0 || option->get_items_expected_max() > 1) {
                    return option;
                }
                --before;
            }
        }
        return nullptr;
    }

    void takeOption(const std::string& word) {
        m_areArguments = word == "--";
        m_option = optionNamed(word.substr(0, word.find('=')));
        if (m_option != nullptr) {
            m_given.push_back(m_option);
            m_valuesToCome = word.find('=') == std::string::npos ? m_option->get_items_expected_min() : 0;
        }
    }

    void takeCommand(const std::string& name) {
        if (const CLI::App* const command = commandNamed(*m_command, name)) {
            m_command = command;
            m_given.clear();
        }
    }

    void offerValues(const CLI::Option* option, const std::string& prefix, Offers& offers) const {
        const auto kind = m_kinds->find(option);
        if (kind != m_kinds->end()) {
            for (const std::string& word : kind->second.words) {
                offers.words.push_back({prefix + word, ""});
            }
            offers.areFiles = kind->second.isFile;
            offers.endings = kind->second.endings;
        }
    }

    void offerOptions(Offers& offers) const {
        for (const CLI::Option* const option : optionsOf(*m_command)) {
            const bool isGiven = std::find(m_given.begin(), m_given.end(), option) != m_given.end();
            const bool isRepeated = option->get_items_expected_max() > option->get_items_expected_min();
            for (const std::string& name : option->get_lnames()) {
                if (!isGiven || isRepeated) {
                    offers.words.push_back({"--" + name, inOneLine(option->get_description())});
                }
            }
        }
    }

    void offerCommands(Offers& offers) const {
        for (const CLI::App* const command : commandsBelow(*m_command)) {
            offers.words.push_back({command->get_name(), inOneLine(command->get_description())});
        }
    }

    const CLI::App* m_command;
    const ValueKinds* m_kinds;
    /** The option taken last, and how many words of its value are still to come. */
    const CLI::Option* m_option = nullptr;
    int m_valuesToCome = 0;
    /** "--" was there. */
    bool m_areArguments = false;
    std::size_t m_argumentCount = 0;
    std::vector<const CLI::Option*> m_given;
};

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
    (*m_kinds)[m_option].words = words;
    CLI::IsMember isMember(words);
    // In the help they stand behind the name, on a line of eighty columns with it.
    constexpr std::size_t most = 50;
    if (joined(words, ",").size() > most) {
        isMember.description("");
    }
    m_option->check(isMember);
    return *this;
}

Option& Option::file(const std::vector<std::string>& endings) {
    ValueKind& kind = (*m_kinds)[m_option];
    kind.isFile = true;
    kind.endings = endings;
    return named("FILE");
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
    return Command(*m_app->add_subcommand(name, help), *m_kinds);
}

void Command::requireCommand() {
    m_app->require_subcommand(1);
}

template <typename Value>
Option Command::option(const char* name, Value& value, const char* help) {
    return Option(*m_app->add_option(name, value, help), *m_kinds);
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
    return Option(*m_app->add_flag(name, value, help), *m_kinds);
}

Option Command::json(bool& value) {
    return flag("--json", value, "One JSON object per event and line");
}

Command Command::alternatives(const char* name, const char* help) {
    CLI::Option_group& group = *m_app->add_option_group(name, help);
    group.require_option(1);
    return Command(group, *m_kinds);
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
    return Command(*m_app, m_kinds);
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
        } else if (const CLI::App* const below = commandNamed(*command, word)) {
            command = below;
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

Offers Parser::offersFor(const std::vector<std::string>& before, const std::string& typed) const {
    TypedLine line(*m_app, m_kinds);
    for (const std::string& word : before) {
        line.take(word);
    }
    return line.offersFor(typed);
}

} // namespace Radio::CommandLine

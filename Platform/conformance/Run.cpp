#include "conformance/Look.h"
#include "conformance/Rule.h"

#include <unistd.h>

#include <charconv>
#include <cstring>
#include <iostream>
#include <string>
#include <string_view>

namespace Conformance {

namespace {

constexpr const char* help =
    R"(Looks whether a platform keeps the rules of the contracts that the frequency library is built against.

    --only TEXT   only rules whose name begins so
    --list        names and sentences, and looks at nothing
    --json        a line of JSON for each rule
    --strict      a rule that cannot be looked at is as one that does not hold
    --deadline N  a rule that is not through after N seconds does not hold; 20 unless told
    --here        in this process and not in forks of it, for a debugger: one rule, with --only

0: all that could be looked at holds. 1: a rule does not hold. 2: arguments that are not understood.
)";

constexpr unsigned usualDeadline = 20;
constexpr unsigned longestDeadline = 86400;

struct Options {
    std::string only;
    bool lists = false;
    bool isJson = false;
    bool isStrict = false;
    bool isHere = false;
    bool wantsHelp = false;
    unsigned deadline = usualDeadline;
};

/** Throws std::invalid_argument. */
unsigned readDeadline(const std::string& word) {
    unsigned seconds = 0;
    const char* const end = word.data() + word.size();
    const auto [rest, error] = std::from_chars(word.data(), end, seconds);
    if (error != std::errc() || rest != end || seconds == 0 || seconds > longestDeadline) {
        throw std::invalid_argument("--deadline " + word + ": expected seconds from 1 to " +
                                    std::to_string(longestDeadline));
    }
    return seconds;
}

/** Throws std::invalid_argument. */
Options read(int argc, const char* const* argv) {
    Options options;
    for (int n = 1; n < argc; ++n) {
        const std::string word = argv[n];
        if (word == "--only" && n + 1 < argc) {
            options.only = argv[++n];
        } else if (word == "--deadline" && n + 1 < argc) {
            options.deadline = readDeadline(argv[++n]);
        } else if (word == "--list") {
            options.lists = true;
        } else if (word == "--json") {
            options.isJson = true;
        } else if (word == "--strict") {
            options.isStrict = true;
        } else if (word == "--here") {
            options.isHere = true;
        } else if (word == "--help") {
            options.wantsHelp = true;
        } else {
            throw std::invalid_argument("not understood: " + word +
                                        ", expected one of those that --help names");
        }
    }
    return options;
}

Rules rulesWanted(const std::string& only) {
    Rules wanted;
    for (const auto rules : {traceRules, brokerRules, moduleRules, storageRules, calibrationRules,
                             temperatureRules, driverRules, remoteUnitRules}) {
        for (const Rule& rule : rules()) {
            if (std::strncmp(rule.name, only.c_str(), only.size()) == 0) {
                wanted.push_back(rule);
            }
        }
    }
    return wanted;
}

const char* wordOf(State state) {
    return state == State::holds ? "holds" : state == State::broken ? "BROKEN" : "not seen";
}

std::string quoted(const std::string& text) {
    std::string result = "\"";
    for (const char letter : text) {
        if (letter == '"' || letter == '\\') {
            result += '\\';
        }
        result += static_cast<unsigned char>(letter) < ' ' ? ' ' : letter;
    }
    return result + '"';
}

/** What somebody else wrote, for a terminal: whatever is no printable ASCII as \xNN. */
std::string harmless(const std::string& text) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string result;
    for (const char letter : text) {
        const auto byte = static_cast<unsigned char>(letter);
        if (byte >= ' ' && byte < 0x7FU) {
            result += letter;
        } else {
            result += {'\\', 'x', digits[byte / 16U], digits[byte % 16U]};
        }
    }
    return result;
}

void tell(const Rule& rule, const Finding& finding, bool isJson) {
    if (isJson) {
        std::cout << R"({"rule":)" << quoted(rule.name) << R"(,"state":)" << quoted(wordOf(finding.state))
                  << R"(,"sentence":)" << quoted(rule.sentence) << R"(,"dependent":)"
                  << quoted(rule.dependent) << R"(,"why":)" << quoted(finding.why) << "}\n";
        return;
    }
    const std::string indent(10, ' ');
    std::string word = wordOf(finding.state);
    word.resize(indent.size(), ' ');
    std::cout << word << rule.name << '\n';
    if (finding.state != State::holds) {
        std::cout << indent << rule.sentence << '\n' << indent << finding.why << '\n';
        std::cout << indent << "On it depends: " << rule.dependent << '\n';
    }
}

int look(Adapter& adapter, int argc, const char* const* argv) {
    constexpr int misused = 2;
    Options options;
    try {
        options = read(argc, argv);
    } catch (const std::invalid_argument& error) {
        std::cerr << "frequencyhandler-conformance: " << harmless(error.what()) << '\n';
        return misused;
    }
    if (options.wantsHelp) {
        std::cout << help;
        return 0;
    }
    const Rules rules = rulesWanted(options.only);
    if (rules.empty() || (options.isHere && rules.size() != 1)) {
        std::cerr << "frequencyhandler-conformance: "
                  << (rules.empty()
                          ? "no rule begins with \"" + harmless(options.only) + "\", expected one of --list"
                          : "--here is for one rule, expected --only with its whole name")
                  << '\n';
        return misused;
    }
    std::size_t holding = 0;
    std::size_t unseen = 0;
    for (const Rule& rule : rules) {
        if (options.lists) {
            std::cout << rule.name << "\n    " << rule.sentence << "\n    On it depends: " << rule.dependent
                      << '\n';
            continue;
        }
        const Finding finding =
            options.isHere ? lookHere(rule, adapter) : lookApart(rule, adapter, options.deadline);
        holding += finding.state == State::holds ? 1U : 0U;
        unseen += finding.state == State::unseen ? 1U : 0U;
        tell(rule, finding, options.isJson);
    }
    if (options.lists) {
        return 0;
    }
    const std::size_t broken = rules.size() - holding - unseen;
    if (!options.isJson) {
        std::cout << '\n'
                  << rules.size() << " rules: " << holding << " hold, " << broken << " do not, " << unseen
                  << " could not be looked at.\n";
    }
    return broken != 0 || (options.isStrict && unseen != 0) ? 1 : 0;
}

} // namespace

void run(Adapter& adapter, int argc, const char* const* argv) {
    const int code = look(adapter, argc, argv);
    std::cout.flush();
    ::_exit(code);
}

} // namespace Conformance

#include "radioctl/replay/Verdict.h"

#include <cstdlib>
#include <map>
#include <sstream>

namespace Radio::Replaying {

namespace {

/** With what a process ends whose libraries lack something. */
constexpr int couldNotBegin = 127;

using Lines = std::map<std::string, std::string>;

Lines linesOf(const std::string& said) {
    Lines lines;
    std::istringstream stream(said);
    std::string line;
    while (std::getline(stream, line)) {
        const std::size_t space = line.find(' ');
        if (space != std::string::npos) {
            lines[line.substr(0, space)] = line.substr(space + 1);
        }
    }
    return lines;
}

std::uint64_t numberIn(const Lines& lines, const char* name) {
    const auto found = lines.find(name);
    return found != lines.end() ? std::strtoull(found->second.c_str(), nullptr, 10) : 0;
}

std::string textIn(const Lines& lines, const char* name) {
    const auto found = lines.find(name);
    return found != lines.end() ? found->second : "";
}

Outcome outcomeOf(const std::string& word) {
    static const std::map<std::string, Outcome> words = {{"identical", Outcome::identical},
                                                         {"gap", Outcome::identicalUntilGap},
                                                         {"different", Outcome::different},
                                                         {"stopped", Outcome::stopped}};
    const auto found = words.find(word);
    return found != words.end() ? found->second : Outcome::unusable;
}

Difference differenceOf(const std::string& why) {
    static const std::map<std::string, Difference> words = {{"call", Difference::call},
                                                            {"more", Difference::more},
                                                            {"less", Difference::less},
                                                            {"answer", Difference::answer}};
    const auto found = words.find(why);
    return found != words.end() ? found->second : Difference::crash;
}

std::string bytesOf(const std::string& hexadecimal) {
    std::string bytes;
    for (std::size_t at = 0; at + 1 < hexadecimal.size(); at += 2) {
        bytes += static_cast<char>(std::strtoul(hexadecimal.substr(at, 2).c_str(), nullptr, 16));
    }
    return bytes;
}

void readNow(const Lines& lines, Verdict& verdict) {
    std::istringstream words(textIn(lines, "now"));
    int kind = 0;
    int outcome = 0;
    int objectKind = 0;
    int number = 0;
    Recordings::Record& now = verdict.now;
    words >> kind >> outcome >> now.code >> now.a >> now.b >> now.c >> objectKind >> number >> now.d;
    now.kind = static_cast<Recordings::Kind>(kind);
    now.outcome = static_cast<Recordings::Outcome>(outcome);
    now.bytes = bytesOf(textIn(lines, "now_bytes"));
    if (objectKind != 0) {
        verdict.object =
            Recordings::Object{static_cast<Recordings::ObjectKind>(objectKind),
                               static_cast<std::uint16_t>(number), textIn(lines, "now_name"), number, 0};
    }
}

} // namespace

Verdict readVerdict(const std::string& file, const std::string& said, int ending) {
    const Lines lines = linesOf(said);
    Verdict verdict;
    verdict.file = file;
    verdict.outcome = outcomeOf(textIn(lines, "outcome"));
    verdict.calls = numberIn(lines, "calls");
    verdict.recorded = numberIn(lines, "recorded");
    verdict.notCompared = numberIn(lines, "not_compared");
    verdict.passedOver = numberIn(lines, "passed_over");
    verdict.operation = numberIn(lines, "operation");
    if (lines.count("begin") != 0) {
        verdict.begin = numberIn(lines, "begin");
    }
    verdict.reason = textIn(lines, "reason");
    if (lines.count("at") != 0) {
        verdict.at = numberIn(lines, "at");
    }
    if (verdict.outcome == Outcome::different) {
        const std::string why = textIn(lines, "why");
        verdict.difference = differenceOf(why);
        verdict.signal = std::atoi(why.substr(why.find(' ') + 1).c_str());
        readNow(lines, verdict);
    } else if (said.empty() && ending == couldNotBegin) {
        verdict.reason = "radioctl-replay: cannot be carried out with the library beside it";
    } else if (lines.count("outcome") == 0) {
        // It could not even say what happened.
        verdict.outcome = Outcome::different;
        verdict.difference = Difference::crash;
        verdict.signal = ending < 0 ? -ending : 0;
        verdict.ending = ending;
    }
    return verdict;
}

} // namespace Radio::Replaying

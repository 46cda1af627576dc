#include "radio/recording/Comparison.h"

#include "radio/recording/RecordingWords.h"

#include <algorithm>
#include <map>
#include <utility>

namespace Radio::Recordings {

namespace {

/** One of them is null: the other recording alone has it. */
using Visit = std::function<bool(const Item* before, const Item* after)>;

/** Tells of all that is not the same, in the order of both; false when `visit` wants no more. */
bool visitDifferences(const std::vector<Item>& before, const std::vector<Item>& after,
                      const std::vector<Match>& matches, const Visit& visit) {
    std::size_t nextBefore = 0;
    std::size_t nextAfter = 0;
    const auto only = [&](std::size_t endBefore, std::size_t endAfter) {
        for (; nextBefore < endBefore; ++nextBefore) {
            if (!visit(&before[nextBefore], nullptr)) {
                return false;
            }
        }
        for (; nextAfter < endAfter; ++nextAfter) {
            if (!visit(nullptr, &after[nextAfter])) {
                return false;
            }
        }
        return true;
    };
    for (const Match& match : matches) {
        if (!only(match.before, match.after)) {
            return false;
        }
        for (std::size_t index = 0; index < match.count; ++index, ++nextBefore, ++nextAfter) {
            if (before[nextBefore].outcome != after[nextAfter].outcome &&
                !visit(&before[nextBefore], &after[nextAfter])) {
                return false;
            }
        }
    }
    return only(before.size(), after.size());
}

Counts count(const std::vector<Item>& before, const std::vector<Item>& after,
             const std::vector<Match>& matches) {
    Counts counts;
    visitDifferences(before, after, matches, [&counts](const Item* one, const Item* other) {
        std::uint64_t& place = other == nullptr ? counts.onlyBefore
                               : one == nullptr ? counts.onlyAfter
                                                : counts.different;
        ++place;
        return true;
    });
    counts.same = before.size() - counts.onlyBefore - counts.different;
    return counts;
}

bool isOneOfTheRadio(const Object& object) {
    return object.kind == ObjectKind::driver || object.kind == ObjectKind::variable ||
           object.kind == ObjectKind::table || object.kind == ObjectKind::interface;
}

/** What came of looking for something by its name. */
struct Lookup {
    bool isAskedFor = false;
    bool isFound = false;
};
using Lookups = std::map<std::pair<ObjectKind, std::string_view>, Lookup>;

Lookups lookupsOf(const ComparedRecording& recording) {
    Lookups lookups;
    const std::vector<Object>& objects = recording.file().objects();
    for (std::size_t index = 0; index < objects.size(); ++index) {
        if (isOneOfTheRadio(objects[index])) {
            Lookup& lookup = lookups[{objects[index].kind, objects[index].name}];
            lookup.isAskedFor |= recording.isAskedFor(index);
            lookup.isFound |= recording.isFound(index);
        }
    }
    return lookups;
}

void addFoundOnlyIn(const Lookups& lookups, const Lookups& others, bool isBefore,
                    std::vector<ObjectDifference>& differences) {
    for (const auto& [object, lookup] : lookups) {
        const auto there = others.find(object);
        const Lookup other = there != others.end() ? there->second : Lookup{};
        if (lookup.isFound && !other.isFound) {
            differences.push_back({object.first, std::string(object.second), isBefore, other.isAskedFor});
        }
    }
}

std::vector<Item> callsOf(const ComparedRecording& recording, const std::optional<Seen>& operation) {
    return operation ? recording.callsOf(operation->record.sequence) : std::vector<Item>();
}

} // namespace

Comparison::Comparison(RecordingFile& before, RecordingFile& after, const Wanted& wanted)
    : m_before(before, wanted),
      m_after(after, wanted),
      m_matches(align(m_before.steps(), m_after.steps())),
      m_counts(count(m_before.steps(), m_after.steps(), m_matches)) {}

std::vector<HeaderDifference> Comparison::header() const {
    const Header& before = m_before.file().header();
    const Header& after = m_after.file().header();
    std::vector<HeaderDifference> differences{
        {"library", before.library, after.library},
        {"build id", before.buildId, after.buildId},
        {"unit", before.unit, after.unit},
        {"board", before.board, after.board},
        {"machine", before.machine, after.machine},
        {"bits", std::to_string(before.wordBits), std::to_string(after.wordBits)},
        {"program", before.program, after.program}};
    differences.erase(std::remove_if(differences.begin(), differences.end(),
                                     [](const HeaderDifference& one) { return one.before == one.after; }),
                      differences.end());
    return differences;
}

std::vector<ObjectDifference> Comparison::objects() const {
    const Lookups before = lookupsOf(m_before);
    const Lookups after = lookupsOf(m_after);
    std::vector<ObjectDifference> differences;
    addFoundOnlyIn(before, after, true, differences);
    addFoundOnlyIn(after, before, false, differences);
    return differences;
}

void Comparison::operations(const std::function<bool(const Difference&)>& visit) const {
    visitDifferences(m_before.steps(), m_after.steps(), m_matches, [&](const Item* one, const Item* other) {
        Difference difference;
        if (one != nullptr) {
            difference.before = m_before.open(one->sequence).begin();
        }
        if (other != nullptr) {
            difference.after = m_after.open(other->sequence).begin();
        }
        return visit(difference);
    });
}

Counts Comparison::calls(const Difference& operation,
                         const std::function<bool(const Difference&)>& visit) const {
    const std::vector<Item> before = callsOf(m_before, operation.before);
    const std::vector<Item> after = callsOf(m_after, operation.after);
    const std::vector<Match> matches = align(before, after);
    std::optional<OperationReader> beforeAgain;
    std::optional<OperationReader> afterAgain;
    if (operation.before) {
        beforeAgain.emplace(m_before.open(operation.before->record.sequence));
    }
    if (operation.after) {
        afterAgain.emplace(m_after.open(operation.after->record.sequence));
    }
    visitDifferences(before, after, matches, [&](const Item* one, const Item* other) {
        Difference difference;
        if (one != nullptr) {
            difference.before = beforeAgain->find(one->sequence);
        }
        if (other != nullptr) {
            difference.after = afterAgain->find(other->sequence);
        }
        return visit(difference);
    });
    return count(before, after, matches);
}

} // namespace Radio::Recordings

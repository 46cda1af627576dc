#include "python/binding/Binding.h"
#include "python/binding/BoardHandle.h"
#include "python/binding/Reading.h"
#include "radio/recording/Comparison.h"
#include "radio/recording/RecordingFile.h"
#include "radio/recording/RecordingWords.h"
#include "radio/text/Words.h"

#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

namespace Radio::Python {

namespace {

py::dict headerOf(const Recordings::RecordingFile& file) {
    const Recordings::Header& header = file.header();
    py::dict dict;
    dict["version"] = header.version;
    dict["word_bits"] = header.wordBits;
    dict["process"] = header.process;
    dict["started_ns"] = header.started;
    dict["build_id"] = orNone(std::string_view(header.buildId));
    dict["machine"] = orNone(std::string_view(header.machine));
    dict["library"] = orNone(std::string_view(header.library));
    dict["unit"] = orNone(std::string_view(header.unit));
    dict["board"] = orNone(std::string_view(header.board));
    dict["program"] = orNone(std::string_view(header.program));
    dict["passed_over"] = header.passedOver;
    return dict;
}

/** (sequence, kind, incoming, thread, depth, object kind or None, object name or None, channel or None,
 * outcome, code, (a, b, c, d), bytes). */
py::tuple recordTuple(const Recordings::RecordingFile& file, const Recordings::Record& record) {
    const Recordings::Object* const object = record.object;
    return py::make_tuple(
        record.sequence, text(Recordings::toString(record.kind)), Recordings::isIncoming(record.kind),
        record.thread, record.depth,
        object == nullptr ? py::object(py::none()) : py::object(text(Recordings::toString(object->kind))),
        object == nullptr ? py::object(py::none()) : orNone(std::string_view(object->name)),
        object == nullptr ? py::object(py::none()) : orNone(Recordings::channelOf(file, *object)),
        text(Recordings::toString(record.outcome)), record.code,
        py::make_tuple(record.a, record.b, record.c, record.d), py::bytes(record.bytes));
}

/** One that is gone through by several at a time. */
struct ReadRecording {
    explicit ReadRecording(Recordings::RecordingFile read) : file(std::move(read)) {}

    Recordings::RecordingFile file;
    /** The number of the cursor for which the file was read last. */
    std::uint64_t reader = 0;
    std::uint64_t cursors = 0;
    /** What was missing as far as the farthest of them has come. */
    Recordings::Losses losses;
    std::uint64_t farthest = 0;
};

/** Where somebody is in a recording. */
struct Cursor {
    std::uint64_t number = 0;
    std::optional<std::uint64_t> given;
    Recordings::Losses losses;
    bool isOver = false;
};

void takeUp(ReadRecording& recording, const Cursor& cursor) {
    if (recording.reader == cursor.number) {
        return;
    }
    recording.reader = cursor.number;
    if (cursor.given) {
        recording.file.goTo(*cursor.given);
        static_cast<void>(recording.file.next());
    } else {
        recording.file.rewind();
    }
}

py::object next(ReadRecording& recording, Cursor& cursor) {
    if (cursor.isOver) {
        return py::none();
    }
    takeUp(recording, cursor);
    const Recordings::Losses before = recording.file.losses();
    const std::optional<Recordings::Record> record = recording.file.next();
    cursor.losses.overwritten += recording.file.losses().overwritten - before.overwritten;
    cursor.losses.unfinished += recording.file.losses().unfinished - before.unfinished;
    const std::uint64_t at = record ? record->sequence : std::numeric_limits<std::uint64_t>::max();
    if (at >= recording.farthest) {
        recording.farthest = at;
        recording.losses = cursor.losses;
    }
    if (!record) {
        cursor.isOver = true;
        return py::none();
    }
    cursor.given = record->sequence;
    return recordTuple(recording.file, *record);
}

py::list objectsOf(const Recordings::RecordingFile& file) {
    py::list list;
    for (const Recordings::Object& object : file.objects()) {
        list.append(py::make_tuple(object.number, text(Recordings::toString(object.kind)), text(object.name),
                                   orNone(Recordings::channelOf(file, object))));
    }
    return list;
}

using RecordingCounts = Recordings::Counts;
using RecordingDifference = Recordings::Difference;

/** An operation that differs, with the calls in it that do. */
struct ComparedOperation {
    RecordingDifference operation;
    std::vector<RecordingDifference> calls;
    RecordingCounts counts;
};

/** Two recordings, and what they have otherwise. */
struct ComparedFiles {
    ComparedFiles(const std::string& one, const std::string& other, const Recordings::Wanted& wanted,
                  const std::function<void()>& tick)
        : before(readPatiently(one, tick)),
          after(readPatiently(other, tick)),
          comparison(before, after, wanted) {}

    Recordings::RecordingFile before;
    Recordings::RecordingFile after;
    Recordings::Comparison comparison;
};

/** At most `limit`, and so many calls of each. */
std::vector<ComparedOperation> operationsOf(const Recordings::Comparison& comparison, std::size_t limit) {
    std::vector<ComparedOperation> operations;
    comparison.operations([&](const RecordingDifference& operation) {
        if (operations.size() == limit) {
            return false;
        }
        ComparedOperation& told = operations.emplace_back();
        told.operation = operation;
        told.counts = comparison.calls(operation, [&](const RecordingDifference& call) {
            if (told.calls.size() == limit) {
                return false;
            }
            told.calls.push_back(call);
            return true;
        });
        return true;
    });
    return operations;
}

py::tuple countsTuple(const RecordingCounts& counts) {
    return py::make_tuple(counts.same, counts.different, counts.onlyBefore, counts.onlyAfter);
}

/** (record or None, record or None). */
py::tuple pairOf(const ComparedFiles& compared, const RecordingDifference& difference) {
    const auto side = [](const Recordings::RecordingFile& file, const std::optional<Recordings::Seen>& seen) {
        return seen ? py::object(recordTuple(file, seen->record)) : py::object(py::none());
    };
    return py::make_tuple(side(compared.before, difference.before), side(compared.after, difference.after));
}

py::list operationList(const ComparedFiles& compared, const std::vector<ComparedOperation>& operations) {
    py::list list;
    for (const ComparedOperation& one : operations) {
        py::list calls;
        for (const RecordingDifference& call : one.calls) {
            calls.append(pairOf(compared, call));
        }
        list.append(py::make_tuple(pairOf(compared, one.operation), calls, countsTuple(one.counts)));
    }
    return list;
}

py::tuple lossesOf(const Recordings::ComparedRecording& recording) {
    return py::make_tuple(recording.losses().overwritten, recording.losses().unfinished);
}

/** ((what, before, after)..., (kind, name, is in before, is asked for by the other)..., (operation, calls,
 * counts)..., counts, (losses, losses)). */
py::tuple diffRecordings(const std::string& before, const std::string& after,
                         const std::optional<int>& channel, const std::string& driver, std::size_t limit) {
    const Recordings::Wanted wanted{channel, driver, {}, {}};
    std::vector<ComparedOperation> operations;
    const auto compared = patiently([&](const std::function<void()>& tick) {
        auto made = std::make_unique<ComparedFiles>(before, after, wanted, tick);
        if (made->comparison.operations().isNothing()) {
            throw InputError({before, 0}, "nothing was compared with " + harmless(after) +
                                              ", expected operations that were asked for in one of them");
        }
        operations = operationsOf(made->comparison, limit);
        return made;
    });
    const Recordings::Comparison& comparison = compared->comparison;
    py::list header;
    for (const Recordings::HeaderDifference& one : comparison.header()) {
        header.append(py::make_tuple(text(one.what), text(one.before), text(one.after)));
    }
    py::list objects;
    for (const Recordings::ObjectDifference& one : comparison.objects()) {
        objects.append(py::make_tuple(text(Recordings::toString(one.kind)), text(one.name), one.isInBefore,
                                      one.isAskedForByTheOther));
    }
    return py::make_tuple(header, objects, operationList(*compared, operations),
                          countsTuple(comparison.operations()),
                          py::make_tuple(lossesOf(comparison.before()), lossesOf(comparison.after())));
}

} // namespace

void bindRecordings(py::module_& module) {
    module.def("diff_recordings", &diffRecordings);
    const py::class_<Cursor> cursor(module, "Cursor", "Where somebody is in a recording.");
    py::class_<ReadRecording> type(module, "Recording", "A recording, read from the beginning to the end.");
    type.def_static("read",
                    [](const std::string& file) {
                        return patiently([&file](const std::function<void()>& tick) {
                            return std::make_unique<ReadRecording>(readPatiently(file, tick));
                        });
                    })
        .def("header", [](const ReadRecording& recording) { return headerOf(recording.file); })
        .def("objects", [](const ReadRecording& recording) { return objectsOf(recording.file); })
        .def("cursor",
             [](ReadRecording& recording) {
                 Cursor made;
                 made.number = ++recording.cursors;
                 return made;
             })
        .def("next", &next)
        .def("losses", [](const ReadRecording& recording) {
            return py::make_tuple(recording.losses.overwritten, recording.losses.unfinished);
        });
    madeByTheModuleAlone(cursor);
    madeByTheModuleAlone(type);
}

} // namespace Radio::Python

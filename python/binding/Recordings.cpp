#include "python/binding/Binding.h"
#include "python/binding/BoardHandle.h"
#include "radio/recording/RecordingFile.h"
#include "radio/recording/RecordingWords.h"

#include <utility>

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

py::object next(Recordings::RecordingFile& file) {
    const std::optional<Recordings::Record> record = file.next();
    return record ? py::object(recordTuple(file, *record)) : py::object(py::none());
}

py::list objectsOf(const Recordings::RecordingFile& file) {
    py::list list;
    for (const Recordings::Object& object : file.objects()) {
        list.append(py::make_tuple(object.number, text(Recordings::toString(object.kind)), text(object.name),
                                   orNone(Recordings::channelOf(file, object))));
    }
    return list;
}

} // namespace

void bindRecordings(py::module_& module) {
    using Recordings::RecordingFile;
    py::class_<RecordingFile>(module, "Recording", "A recording, read from the beginning to the end.")
        .def(py::init([](const std::string& file) {
            return unlocked(
                [&file] { return std::make_unique<RecordingFile>(Recordings::readRecording(file)); });
        }))
        .def("header", &headerOf)
        .def("objects", &objectsOf)
        .def("next", &next)
        .def("rewind", &RecordingFile::rewind)
        .def("losses", [](const RecordingFile& file) {
            return py::make_tuple(file.losses().overwritten, file.losses().unfinished);
        });
}

} // namespace Radio::Python

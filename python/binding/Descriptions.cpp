#include "python/binding/Binding.h"
#include "python/binding/BoardHandle.h"
#include "python/binding/Reading.h"
#include "radio/board/BoardFile.h"
#include "radio/calibration/OwnFiles.h"
#include "radio/description/Description.h"
#include "radio/files/AtomicFile.h"
#include "radio/recording/RecordingTime.h"
#include "radio/text/WordError.h"

namespace Radio::Python {

namespace {

py::dict describeRecording(const std::string& name) {
    const Describing::Description description = patiently([&name](const std::function<void()>& tick) {
        Recordings::RecordingFile file = readPatiently(name, tick);
        return Describing::describe(file, name, Recordings::timeText(file.header().started));
    });
    py::dict dict;
    dict["board"] = text(description.board);
    dict["script"] = text(description.script);
    dict["channels"] = description.channels;
    dict["drivers"] = description.drivers;
    dict["variables"] = description.variables;
    dict["tables"] = description.tables;
    dict["unknown"] = texts(description.unknown);
    return dict;
}

/** The board that `content` describes, with all that it has; `file` is what messages call it. */
BoardHandle readBoardText(const std::string& content, const std::string& file) {
    return unlocked([&] {
        return BoardHandle{readBoard(content, file, [](const auto& /*csv*/) { return std::nullopt; })};
    });
}

void write(AtomicFile& file, const std::string& content) {
    file.stream() << content << std::flush;
}

/** Both are written before either is put in its place; no script where its name is empty. */
void saveDescription(const std::string& recording, const std::string& board, const std::string& boardText,
                     const std::string& script, const std::string& scriptText) {
    const std::string wrong = Calibration::whyNotOwnFiles(
        {{"the recording", recording}, {"the board", board}, {"the script", script}});
    if (!wrong.empty()) {
        throw WordError(wrong);
    }
    unlocked([&] {
        AtomicFile boardFile(board);
        write(boardFile, boardText);
        if (!script.empty()) {
            AtomicFile scriptFile(script);
            write(scriptFile, scriptText);
            scriptFile.commit();
        }
        boardFile.commit();
    });
}

} // namespace

void bindDescriptions(py::module_& module) {
    module.def("describe", &describeRecording);
    module.def("read_board", &readBoardText);
    module.def("save_description", &saveDescription);
}

} // namespace Radio::Python

#include "radio/store/Spool.h"

#include "radio/files/AtomicFile.h"
#include "radio/files/InputError.h"
#include "radio/files/StateFolder.h"
#include "radio/store/RunText.h"

#include <algorithm>
#include <system_error>

namespace Radio::Store {

namespace {

constexpr const char* ending = ".run";

std::filesystem::path writeInto(const std::filesystem::path& folder, const Run& run, const Address& address) {
    std::filesystem::path place = folder / (run.id + ending);
    AtomicFile file(place);
    file.stream() << toLine(run, address.shown()) << "\n";
    file.commit();
    return place;
}

std::filesystem::path spoolFolder() {
    const std::filesystem::path state = stateFolder();
    return state.empty() ? state : state / "spool";
}

} // namespace

std::filesystem::path spool(const Run& run, const Address& address, const std::filesystem::path& folder) {
    try {
        return writeInto(folder, run, address);
    } catch (const InputError& /*error*/) {
        const std::filesystem::path other = spoolFolder();
        if (other.empty()) {
            throw;
        }
        std::error_code problem;
        std::filesystem::create_directories(other, problem);
        return writeInto(other, run, address);
    }
}

std::vector<std::filesystem::path> waitingRuns(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> files;
    for (const std::filesystem::path& place : {folder.empty() ? "." : folder, spoolFolder()}) {
        std::error_code problem;
        for (std::filesystem::directory_iterator entry(place, problem), end; !problem && entry != end;
             entry.increment(problem)) {
            const std::filesystem::path& file = entry->path();
            if (file.extension() == ending && isRunId(file.stem().string())) {
                files.push_back(file);
            }
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

Pushed push(Database& database, const Address& address, const std::vector<std::filesystem::path>& files,
            bool all) {
    Pushed pushed;
    for (const std::filesystem::path& file : files) {
        std::optional<ReadRun> read;
        try {
            read = RunReader(file).next();
            if (!read) {
                throw InputError({file, 0}, "is empty, expected a run");
            }
        } catch (const InputError& error) {
            std::error_code problem;
            if (std::filesystem::exists(file, problem)) { // else somebody else was faster
                pushed.problems.emplace_back(error.what());
            }
            continue;
        }
        if (!all && read->store != address.shown()) {
            ++pushed.others;
            continue;
        }
        ++(database.add(read->run) ? pushed.stored : pushed.known);
        std::error_code problem;
        std::filesystem::remove(file, problem);
    }
    return pushed;
}

} // namespace Radio::Store

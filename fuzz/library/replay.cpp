// Replays files, or the files of folders, that the fuzzer kept: `library_replay FILE-OR-FOLDER...`

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count);

namespace {

int replayed = 0;

void replay(const std::filesystem::path& path) {
    if (std::filesystem::is_directory(path)) {
        for (const auto& entry : std::filesystem::directory_iterator(path)) {
            replay(entry.path());
        }
        return;
    }
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
    std::printf("%s\n", path.c_str());
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    ++replayed;
}

} // namespace

int main(int argumentCount, char** arguments) {
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    for (int i = 1; i < argumentCount; ++i) {
        replay(arguments[i]);
    }
    std::printf("%d inputs, library and model agree\n", replayed);
    return replayed > 0 ? 0 : 1;
}

// Gives every file of some folders to a fuzz target, without a fuzzer: what was once found stays mended.

#include "FuzzTarget.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

int main(int count, char** arguments) {
    std::size_t replayed = 0;
    for (int index = 1; index < count; ++index) {
        const std::filesystem::directory_iterator files(arguments[index]);
        for (const auto& file : std::set<std::filesystem::path>(begin(files), end(files))) {
            std::ifstream stream(file, std::ios::binary);
            const std::string text(std::istreambuf_iterator<char>(stream), {});
            // Said before, so that the last line names the file of a crash.
            std::printf("%s\n", file.filename().c_str());
            static_cast<void>(std::fflush(stdout));
            LLVMFuzzerTestOneInput(reinterpret_cast<const unsigned char*>(text.data()), text.size());
            ++replayed;
        }
    }
    std::printf("%zu files\n", replayed);
    return replayed == 0 ? 1 : 0;
}

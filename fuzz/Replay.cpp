// Gives every file of some folders to a fuzz target, without a fuzzer: what was once found stays mended.

#include "FuzzTarget.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

int main(int count, char** arguments) {
    std::size_t replayed = 0;
    for (int index = 1; index < count; ++index) {
        for (const auto& file : std::filesystem::directory_iterator(arguments[index])) {
            std::ifstream stream(file.path(), std::ios::binary);
            const std::string text(std::istreambuf_iterator<char>(stream), {});
            // Said before, so that the last line names the file of a crash.
            std::printf("%s\n", file.path().filename().c_str());
            static_cast<void>(std::fflush(stdout));
            LLVMFuzzerTestOneInput(reinterpret_cast<const unsigned char*>(text.data()), text.size());
            ++replayed;
        }
    }
    std::printf("%zu files\n", replayed);
    return replayed == 0 ? 1 : 0;
}

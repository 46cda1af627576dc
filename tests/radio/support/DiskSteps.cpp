#include "tests/radio/support/DiskSteps.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>

namespace DiskSteps {
namespace {

std::vector<std::string> steps;
unsigned lastStep = 0;

void take(const std::string& step) {
    steps.push_back(step);
    if (steps.size() == lastStep) {
        _exit(0);
    }
}

/** NAME.XXXXXX.part is NAME.part. */
std::string nameOf(const std::filesystem::path& path) {
    const std::string name = path.filename().string();
    const std::string ending = ".part";
    constexpr std::size_t letters = 7; // and a point
    const std::size_t length = ending.size() + letters;
    const bool isPart =
        name.size() > length && name.compare(name.size() - ending.size(), ending.size(), ending) == 0;
    return isPart ? name.substr(0, name.size() - length) + ending : name;
}

std::string syncOf(int descriptor) {
    struct stat status {};
    if (fstat(descriptor, &status) == 0 && S_ISDIR(status.st_mode)) {
        return "sync folder";
    }
    const auto path = std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(descriptor));
    return "sync " + nameOf(path) + ", " + std::to_string(status.st_size) + " bytes";
}

} // namespace

std::vector<std::string> taken() {
    return steps;
}

void forget() {
    steps.clear();
}

void endInPlaceOf(unsigned step) {
    lastStep = step;
}

} // namespace DiskSteps

// In place of those of the C library.

extern "C" int fsync(int descriptor) {
    DiskSteps::take(DiskSteps::syncOf(descriptor));
    return static_cast<int>(syscall(SYS_fsync, descriptor));
}

extern "C" int fdatasync(int descriptor) {
    DiskSteps::take(DiskSteps::syncOf(descriptor));
    return static_cast<int>(syscall(SYS_fdatasync, descriptor));
}

extern "C" int rename(const char* from, const char* to) noexcept {
    DiskSteps::take("rename " + DiskSteps::nameOf(from) + " to " + DiskSteps::nameOf(to));
    return static_cast<int>(syscall(SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, 0U));
}

extern "C" int renameat2(int fromFolder, const char* from, int toFolder, const char* to,
                         unsigned flags) noexcept {
    DiskSteps::take("rename " + DiskSteps::nameOf(from) + " to " + DiskSteps::nameOf(to));
    return static_cast<int>(syscall(SYS_renameat2, fromFolder, from, toFolder, to, flags));
}

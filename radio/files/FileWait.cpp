#include "radio/files/FileWait.h"

#include <poll.h>

namespace Radio {

namespace {

constexpr std::chrono::hours someWhile(1);

int waitUndisturbed(FileUse use, int descriptor, std::chrono::milliseconds most) {
    pollfd wanted{descriptor, static_cast<short>(use == FileUse::reading ? POLLIN : POLLOUT), 0};
    static_cast<void>(poll(&wanted, 1, static_cast<int>(most.count())));
    return 0;
}

FileWait fileWait = &waitUndisturbed;

} // namespace

void setFileWait(FileWait wait) {
    fileWait = wait == nullptr ? &waitUndisturbed : wait;
}

int waitForFile(FileUse use, int descriptor, std::chrono::milliseconds most) {
    return fileWait(use, descriptor, most);
}

int waitForFile(FileUse use, int descriptor) {
    return fileWait(use, descriptor, someWhile);
}

} // namespace Radio

/** What is known of a library that is loaded. */
#ifndef PLATFORM_RECORDING_IMAGE_H
#define PLATFORM_RECORDING_IMAGE_H

#include "recording/RecordingFormat.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace Recording {

/** Where a library's code lies, and its build id. */
struct Image {
    std::uintptr_t begin;
    std::size_t size;
    std::array<unsigned char, buildIdRoom> buildId;
    std::size_t buildIdLength;
};

/** That of the library whose code has `address` in it; of size 0 when there is none. */
Image imageOf(const void* address);
/** Whether it is the library that is recorded, by the name of its file. */
bool isFrequencyLibrary(const void* address);
/** "libFrequencyHandler.so.0.1.0", of the file that was loaded under a shorter name. */
void putLibraryName(const void* address, char* place, std::size_t room);

} // namespace Recording

#endif

#include "Image.h"

#include <dlfcn.h>
#include <link.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace Recording {

namespace {

struct Wanted {
    std::uintptr_t address;
    Image image;
};

const char* baseName(const char* path) {
    const char* const slash = std::strrchr(path, '/');
    return slash != nullptr ? slash + 1 : path;
}

void findBuildId(const char* notes, std::size_t bytes, Image& image) {
    while (bytes >= sizeof(ElfW(Nhdr))) {
        ElfW(Nhdr) head{};
        std::memcpy(&head, notes, sizeof head);
        const std::size_t name = (head.n_namesz + 3U) & ~std::size_t{3};
        const std::size_t length = sizeof head + name + ((head.n_descsz + 3U) & ~std::size_t{3});
        if (length > bytes) {
            return;
        }
        if (head.n_type == NT_GNU_BUILD_ID && head.n_namesz == 4 &&
            std::memcmp(notes + sizeof head, "GNU", 4) == 0) {
            image.buildIdLength = std::min<std::size_t>(head.n_descsz, image.buildId.size());
            std::memcpy(image.buildId.data(), notes + sizeof head + name, image.buildIdLength);
            return;
        }
        notes += length;
        bytes -= length;
    }
}

int lookAtImage(dl_phdr_info* info, std::size_t /*size*/, void* data) {
    const std::uintptr_t address = static_cast<Wanted*>(data)->address;
    Image& image = static_cast<Wanted*>(data)->image;
    for (int index = 0; index < info->dlpi_phnum; ++index) {
        const ElfW(Phdr)& part = info->dlpi_phdr[index];
        const std::uintptr_t begin = info->dlpi_addr + part.p_vaddr;
        if (part.p_type == PT_LOAD && (part.p_flags & PF_X) != 0 && address - begin < part.p_memsz) {
            image.begin = begin;
            image.size = part.p_memsz;
        }
    }
    for (int index = 0; image.size != 0 && index < info->dlpi_phnum; ++index) {
        const ElfW(Phdr)& part = info->dlpi_phdr[index];
        if (part.p_type == PT_NOTE && image.buildIdLength == 0) {
            // NOLINTNEXTLINE(performance-no-int-to-ptr): that is where it was loaded
            findBuildId(reinterpret_cast<const char*>(info->dlpi_addr + part.p_vaddr), part.p_memsz, image);
        }
    }
    return image.size != 0 ? 1 : 0;
}

} // namespace

Image imageOf(const void* address) {
    Wanted wanted{reinterpret_cast<std::uintptr_t>(address), {}};
    static_cast<void>(dl_iterate_phdr(&lookAtImage, &wanted));
    return wanted.image;
}

bool isFrequencyLibrary(const void* address) {
    constexpr std::string_view name = "libFrequencyHandler.so";
    Dl_info info{};
    return dladdr(address, &info) != 0 && info.dli_fname != nullptr &&
           std::string_view(baseName(info.dli_fname)).substr(0, name.size()) == name;
}

void putLibraryName(const void* address, char* place, std::size_t room) {
    Dl_info info{};
    if (dladdr(address, &info) == 0 || info.dli_fname == nullptr) {
        return;
    }
    std::array<char, PATH_MAX> whole{};
    const bool isFound = realpath(info.dli_fname, whole.data()) != nullptr;
    std::string_view(baseName(isFound ? whole.data() : info.dli_fname)).copy(place, room);
}

} // namespace Recording

#include "Recorder.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cinttypes>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <utility>

namespace Recording {

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "slots are written as they lie in memory");

static_assert(std::atomic<std::uint64_t>::is_always_lock_free, "nobody waits for anybody");

__thread Thread t_thread __attribute__((tls_model("initial-exec")));

Recorder::Text Recorder::s_text;
std::atomic<std::uint64_t>* Recorder::s_claimed;
Slot* Recorder::s_slots;
std::uint64_t Recorder::s_beginning;
std::uint64_t Recorder::s_mask;
char* Recorder::s_file;
std::size_t Recorder::s_fileBytes;
std::size_t Recorder::s_nameSlots;
std::uint64_t Recorder::s_started;

namespace {

/** What the code is for, whatever the kernel is for. */
#if defined(__x86_64__)
constexpr const char* machineName = "x86_64";
#elif defined(__arm__)
constexpr const char* machineName = "arm";
#elif defined(__aarch64__)
constexpr const char* machineName = "aarch64";
#else
constexpr const char* machineName = "other";
#endif

constexpr const char* self = "librecordingplatform.so";

std::uint64_t nanoseconds(clockid_t clock) {
    timespec time{};
    static_cast<void>(clock_gettime(clock, &time));
    return static_cast<std::uint64_t>(time.tv_sec) * 1000000000U + static_cast<std::uint64_t>(time.tv_nsec);
}

const char* baseName(const char* path) {
    const char* const slash = std::strrchr(path, '/');
    return slash != nullptr ? slash + 1 : path;
}

/** An empty value is none. The environment is read while the library is loaded. */
const char* environment(const char* name) {
    const char* const value = std::getenv(name); // NOLINT(concurrency-mt-unsafe)
    return value != nullptr && *value != '\0' ? value : nullptr;
}

/** RADIO_RECORDING_SIZE: a number of bytes, with K or M behind it if wished. */
std::size_t sizeWanted() {
    const char* const text = environment("RADIO_RECORDING_SIZE");
    if (text == nullptr) {
        return usualFile;
    }
    char* end = nullptr;
    errno = 0;
    std::uintmax_t bytes = std::strtoumax(text, &end, 10);
    if (*end == 'K' || *end == 'M') {
        const unsigned shift = *end == 'K' ? 10 : 20;
        bytes = bytes <= largestFile ? bytes << shift : bytes;
        ++end;
    }
    if (*text < '0' || *text > '9' || *end != '\0' || errno != 0 || bytes < smallestFile ||
        bytes > largestFile) {
        static_cast<void>(dprintf(STDERR_FILENO,
                                  "%s: RADIO_RECORDING_SIZE is \"%s\", expected 64K to 256M; taken as 4M\n",
                                  self, text));
        return usualFile;
    }
    return static_cast<std::size_t>(bytes) / slotBytes * slotBytes;
}

/** RADIO_RECORDING, with the number of the process in the place of "%p". */
bool fileWanted(std::array<char, PATH_MAX>& path) {
    const char* const text = environment("RADIO_RECORDING");
    if (text == nullptr) {
        return false;
    }
    const char* const mark = std::strstr(text, "%p");
    if (mark == nullptr) {
        static_cast<void>(std::snprintf(path.data(), path.size(), "%s", text));
    } else {
        static_cast<void>(std::snprintf(path.data(), path.size(), "%.*s%d%s", static_cast<int>(mark - text),
                                        text, static_cast<int>(getpid()), mark + 2));
    }
    return true;
}

void tellUnrecorded(const char* path, int error) {
    static_cast<void>(dprintf(STDERR_FILENO, "%s: %s: %s; the radio goes on unrecorded\n", self, path,
                              std::strerror(error))); // NOLINT(concurrency-mt-unsafe)
}

/** A new file of so many bytes, all of which the disk has room for; -1 and what was wrong. */
int makeFile(const char* path, std::size_t bytes, int& error) {
    rlimit limit{};
    if (getrlimit(RLIMIT_FSIZE, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY && limit.rlim_cur < bytes) {
        error = EFBIG; // found out by trying, it would be a signal
        return -1;
    }
    // Who reads the one that was there, or still writes it, keeps it.
    static_cast<void>(unlink(path));
    const int file = ::open(path, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    if (file < 0) {
        error = errno;
        return -1;
    }
    error = posix_fallocate(file, 0, static_cast<off_t>(bytes));
    if (error != 0) {
        static_cast<void>(close(file));
        static_cast<void>(unlink(path));
        return -1;
    }
    return file;
}

/** Where a library's code lies, and its build id. */
struct Image {
    std::uintptr_t address;
    std::uintptr_t begin;
    std::size_t size;
    std::array<unsigned char, buildIdRoom> buildId;
    std::size_t buildIdLength;
};

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
    auto& image = *static_cast<Image*>(data);
    for (int index = 0; index < info->dlpi_phnum; ++index) {
        const ElfW(Phdr)& part = info->dlpi_phdr[index];
        const std::uintptr_t begin = info->dlpi_addr + part.p_vaddr;
        if (part.p_type == PT_LOAD && (part.p_flags & PF_X) != 0 && image.address - begin < part.p_memsz) {
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

Image imageOf(const void* address) {
    Image image{};
    image.address = reinterpret_cast<std::uintptr_t>(address);
    static_cast<void>(dl_iterate_phdr(&lookAtImage, &image));
    return image;
}

void putNumber(char* file, std::size_t at, std::uint64_t number, std::size_t bytes) {
    std::memcpy(file + at, &number, bytes);
}

void putText(char* file, std::size_t at, std::string_view text, std::size_t room = textRoom) {
    text.copy(file + at, room);
}

/** "libFrequencyHandler.so.0.1.0", of the file that was loaded under a shorter name. */
void putLibrary(char* file, const char* path) {
    std::array<char, PATH_MAX> whole{};
    const bool isFound = realpath(path, whole.data()) != nullptr;
    putText(file, At::library, baseName(isFound ? whole.data() : path));
}

/** A name that was given a number. */
struct Name {
    std::atomic<bool> isThere;
    ObjectKind kind;
    std::uint32_t hash;
    std::int32_t first;
    std::int32_t second;
    std::size_t text;
    std::size_t length;
};

constexpr std::size_t mostNames = 8192;
constexpr std::size_t mostLength = 1024;
std::array<Name, mostNames> s_names;
std::atomic<std::uint32_t> s_nameCount;
std::array<char, std::size_t{512} << 10U> s_texts;
std::atomic<std::size_t> s_textCount;

std::uint32_t hashOf(ObjectKind kind, std::string_view text) {
    std::uint32_t hash = 2166136261U + static_cast<unsigned>(kind);
    for (const char character : text) {
        hash = (hash ^ static_cast<unsigned char>(character)) * 16777619U;
    }
    return hash;
}

bool isSame(const Name& name, const Name& other, std::string_view text) {
    return name.isThere.load(std::memory_order_acquire) && name.hash == other.hash &&
           name.kind == other.kind && name.first == other.first && name.second == other.second &&
           std::string_view(&s_texts[name.text], name.length) == text;
}

} // namespace

void Recorder::begin(const void* address) {
    static std::atomic<bool> s_hasBegun;
    if (s_hasBegun.load(std::memory_order_relaxed)) {
        return;
    }
    Dl_info info{};
    if (dladdr(address, &info) == 0 || info.dli_fname == nullptr ||
        std::strncmp(baseName(info.dli_fname), "libFrequencyHandler.so", 22) != 0 ||
        s_hasBegun.exchange(true) || !open(address)) {
        return;
    }
    static_cast<void>(pthread_atfork(nullptr, nullptr, &leaveToTheParent));
    const Image image = imageOf(address);
    s_text = {image.begin, image.size};
}

/** A process that is made of this one has its own life. What it still writes, by the records that the library
 * was given, goes into memory of its own. */
void Recorder::leaveToTheParent() {
    s_text.size = 0;
    static_cast<void>(
        mmap(s_file, s_fileBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0));
}

bool Recorder::open(const void* library) {
    static std::array<char, PATH_MAX> s_path;
    if (!fileWanted(s_path)) {
        return false;
    }
    const std::size_t bytes = sizeWanted();
    int error = 0;
    const int file = makeFile(s_path.data(), bytes, error);
    if (file < 0) {
        tellUnrecorded(s_path.data(), error);
        return false;
    }
    void* const mapped = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    error = errno;
    static_cast<void>(close(file));
    if (mapped == MAP_FAILED) {
        tellUnrecorded(s_path.data(), error);
        return false;
    }
    s_file = static_cast<char*>(mapped);
    s_fileBytes = bytes;
    describe(bytes, library);
    return true;
}

void Recorder::describe(std::size_t bytes, const void* library) {
    const Shares shares = sharesOf(bytes);
    s_nameSlots = shares.names;
    s_slots = reinterpret_cast<Slot*>(s_file + headerBytes) + shares.names;
    s_beginning = shares.beginning;
    s_mask = shares.ring - 1;
    s_claimed = reinterpret_cast<std::atomic<std::uint64_t>*>(s_file + At::claimed);
    s_started = nanoseconds(CLOCK_MONOTONIC);

    putNumber(s_file, At::version, formatVersion, 4);
    putNumber(s_file, At::byteOrder, byteOrderMark, 4);
    putNumber(s_file, At::wordBits, sizeof(void*) * CHAR_BIT, 4);
    putNumber(s_file, At::slotSize, slotBytes, 4);
    putNumber(s_file, At::nameSlots, shares.names, 4);
    putNumber(s_file, At::beginningSlots, shares.beginning, 4);
    putNumber(s_file, At::ringSlots, shares.ring, 4);
    putNumber(s_file, At::process, static_cast<std::uint32_t>(getpid()), 4);
    putNumber(s_file, At::started, nanoseconds(CLOCK_REALTIME), 8);

    const Image image = imageOf(library);
    putNumber(s_file, At::buildIdLength, image.buildIdLength, 4);
    std::memcpy(s_file + At::buildId, image.buildId.data(), image.buildIdLength);
    Dl_info info{};
    if (dladdr(library, &info) != 0) {
        putLibrary(s_file, info.dli_fname);
    }
    putText(s_file, At::machine, machineName, machineRoom);
    for (const auto& [place, name] :
         {std::pair(At::unit, "RADIO_RECORDING_UNIT"), std::pair(At::board, "RADIO_RECORDING_BOARD")}) {
        const char* const text = environment(name);
        putText(s_file, place, text != nullptr ? text : "");
    }
    putText(s_file, At::program, program_invocation_short_name);
    // Last: a file that says what it is, is one.
    putText(s_file, 0, magic);
}

void Recorder::write(const Entry& entry, const void* bytes, std::size_t count) {
    count = std::min(count, mostBytes);
    const std::size_t more = (count + continuationBytes - 1) / continuationBytes;
    const std::uint64_t sequence = claim(static_cast<std::uint32_t>(more) + 1);
    const char* rest = static_cast<const char*>(bytes);
    for (std::size_t index = 0; index < more; ++index) {
        const std::size_t here = std::min(count - index * continuationBytes, continuationBytes);
        const std::uint64_t behind = sequence + 1 + index;
        fillContinuation(at(behind), behind, rest + index * continuationBytes, here);
    }
    fill(at(sequence), sequence, entry, more, secondOf(entry.outcome, count));
}

void Recorder::fillContinuation(Slot& slot, std::uint64_t sequence, const char* bytes, std::size_t count) {
    commitOf(slot).store(0, std::memory_order_relaxed);
    std::atomic_thread_fence(std::memory_order_release);
    std::memcpy(&slot.kind, bytes, count);
    std::memset(&slot.kind + count, 0, continuationBytes - count);
    commitOf(slot).store(commitMark(sequence, true), std::memory_order_release);
}

std::uint8_t Recorder::numberThread() {
    static std::atomic<unsigned> s_threads;
    const unsigned number = s_threads.fetch_add(1, std::memory_order_relaxed) + 1;
    t_thread.number =
        static_cast<std::uint8_t>(std::min(number, 255U)); // the last number is that of all others
    return t_thread.number;
}

std::uint16_t Recorder::name(ObjectKind kind, std::string_view text, std::int32_t first,
                             std::int32_t second) {
    text = text.substr(0, mostLength);
    Name wanted{};
    wanted.kind = kind;
    wanted.hash = hashOf(kind, text);
    wanted.first = first;
    wanted.second = second;
    const std::size_t count = std::min<std::size_t>(s_nameCount.load(), mostNames);
    for (std::size_t index = 0; index < count; ++index) {
        if (isSame(s_names[index], wanted, text)) {
            return static_cast<std::uint16_t>(index + 1);
        }
    }
    // Two threads that meet a name for the first time at once give it two numbers, which does no harm.
    const std::size_t index = s_nameCount.fetch_add(1);
    const std::size_t place = index < mostNames ? s_textCount.fetch_add(text.size()) : s_texts.size();
    if (place + text.size() > s_texts.size() || index >= mostNames ||
        !writeName(static_cast<std::uint16_t>(index + 1), kind, text, first, second)) {
        s_nameCount.store(std::min<std::uint32_t>(s_nameCount.load(), mostNames));
        passOver();
        return 0;
    }
    Name& name = s_names[index];
    std::memcpy(&s_texts[place], text.data(), text.size());
    name.kind = kind;
    name.hash = wanted.hash;
    name.first = first;
    name.second = second;
    name.text = place;
    name.length = text.size();
    name.isThere.store(true, std::memory_order_release);
    return static_cast<std::uint16_t>(index + 1);
}

bool Recorder::writeName(std::uint16_t number, ObjectKind kind, std::string_view text, std::int32_t first,
                         std::int32_t second) {
    auto& claimed = reinterpret_cast<std::atomic<std::uint32_t>&>(s_file[At::namesClaimed]);
    const std::size_t more = (text.size() + continuationBytes - 1) / continuationBytes;
    std::uint32_t sequence = claimed.load(std::memory_order_relaxed);
    do {
        if (sequence + more + 1 > s_nameSlots) {
            return false;
        }
    } while (!claimed.compare_exchange_weak(sequence, static_cast<std::uint32_t>(sequence + more + 1)));
    Slot* const slots = reinterpret_cast<Slot*>(s_file + headerBytes);
    for (std::size_t index = 0; index < more; ++index) {
        const std::string_view here = text.substr(index * continuationBytes, continuationBytes);
        const std::size_t behind = sequence + 1 + index;
        fillContinuation(slots[behind], behind, here.data(), here.size());
    }
    Slot& head = slots[sequence];
    head.kind = static_cast<std::uint8_t>(kind);
    head.more = static_cast<std::uint8_t>(more);
    head.object = number;
    head.second = static_cast<std::uint16_t>(text.size());
    head.a = first;
    head.b = second;
    commitOf(head).store(commitMark(sequence, false), std::memory_order_release);
    return true;
}

void Recorder::passOver() {
    if (s_file != nullptr) {
        reinterpret_cast<std::atomic<std::uint32_t>&>(s_file[At::passedOver]).fetch_add(1);
    }
}

std::uint64_t Recorder::now() {
    return nanoseconds(CLOCK_MONOTONIC) - s_started;
}

} // namespace Recording

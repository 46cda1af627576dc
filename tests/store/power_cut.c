/* As the power goes: loaded before a program, ends it by SIGKILL in place of the write of the number
 * POWER_CUT_AT, counted from 1 on, of all that reach files or take them away. Without that number it counts
 * them, into the file POWER_CUT_COUNT. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

static unsigned long steps;

static void step(void) {
    const char* const at = getenv("POWER_CUT_AT");
    ++steps;
    if (at != NULL && strtoul(at, NULL, 10) == steps) {
        kill(getpid(), SIGKILL);
    }
}

__attribute__((destructor)) static void tell(void) {
    const char* const name = getenv("POWER_CUT_COUNT");
    FILE* const file = name == NULL ? NULL : fopen(name, "w");
    if (file != NULL) {
        fprintf(file, "%lu\n", steps);
        fclose(file);
    }
}

/* Terminals and pipes are no disk. */
static int is_file(int descriptor) {
    struct stat status;
    return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

/* What is called in place of the operation of this name. */
static size_t next(const char* name) {
    return (size_t)dlsym(RTLD_NEXT, name);
}

typedef ssize_t (*Write)(int, const void*, size_t);
typedef ssize_t (*WriteAt)(int, const void*, size_t, off64_t);
typedef int (*Truncate)(int, off64_t);
typedef int (*Sync)(int);
typedef int (*Unlink)(const char*);
typedef int (*Rename)(const char*, const char*);

ssize_t write(int descriptor, const void* bytes, size_t count) {
    if (is_file(descriptor)) {
        step();
    }
    return ((Write)next("write"))(descriptor, bytes, count);
}

ssize_t pwrite64(int descriptor, const void* bytes, size_t count, off64_t at) {
    step();
    return ((WriteAt)next("pwrite64"))(descriptor, bytes, count, at);
}

/* Offsets have 64 bits, so that both are the same. */
ssize_t pwrite(int descriptor, const void* bytes, size_t count, off_t at) {
    return pwrite64(descriptor, bytes, count, at);
}

int ftruncate64(int descriptor, off64_t size) {
    step();
    return ((Truncate)next("ftruncate64"))(descriptor, size);
}

int ftruncate(int descriptor, off_t size) {
    return ftruncate64(descriptor, size);
}

int fsync(int descriptor) {
    step();
    return ((Sync)next("fsync"))(descriptor);
}

int fdatasync(int descriptor) {
    step();
    return ((Sync)next("fdatasync"))(descriptor);
}

int unlink(const char* name) {
    step();
    return ((Unlink)next("unlink"))(name);
}

int rename(const char* from, const char* to) {
    step();
    return ((Rename)next("rename"))(from, to);
}

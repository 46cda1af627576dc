#ifndef TESTS_SUPPORT_POORFILESYSTEM_H
#define TESTS_SUPPORT_POORFILESYSTEM_H

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <vector>

/** Work on file systems that know less: the kernel is told to answer as they do. */
namespace PoorFileSystem {

/** What a file system does not know. */
enum class Unknown { renamingToNew, renamingToNewAndLinks };

/** From now on this process, and what it starts, works as on a file system that does not know it. */
inline bool forget(Unknown unknown) {
    constexpr unsigned number = offsetof(seccomp_data, nr);
    constexpr unsigned flags = offsetof(seccomp_data, args) + 4 * sizeof(std::uint64_t);
    std::vector<sock_filter> filter = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, number),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_renameat2, 0, 3),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, flags),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, 0, 1, 0),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EINVAL),
    };
    if (unknown == Unknown::renamingToNewAndLinks) {
        for (const long link : {
#ifdef SYS_link
                 long{SYS_link},
#endif
                 long{SYS_linkat}}) {
            filter.push_back(BPF_STMT(BPF_LD | BPF_W | BPF_ABS, number));
            filter.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<unsigned>(link), 0, 1));
            filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EPERM));
        }
    }
    filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
    const sock_fprog program = {static_cast<unsigned short>(filter.size()), filter.data()};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

/** What `work` says, in a process for which the file system knows less. */
template <typename Work>
bool holdsThere(Unknown unknown, Work work) {
    const pid_t child = fork();
    if (child == 0) {
        _exit(forget(unknown) && work() ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return status == 0;
}

} // namespace PoorFileSystem

#endif

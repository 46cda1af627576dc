#ifndef PLATFORM_DEVICES_QUIET_H
#define PLATFORM_DEVICES_QUIET_H

namespace Devices {

/**
 * As long as the object lives, what this thread prints to the C library's standard error is dropped: a
 * library that reports errors there, beside the code that it returns, would spoil the program's output. What
 * other threads print meanwhile arrives. For that `stderr` is another stream in the whole process until no
 * thread is quiet any more.
 */
class Quiet {
public:
    Quiet();
    Quiet(const Quiet&) = delete;
    Quiet& operator=(const Quiet&) = delete;
    ~Quiet();
};

} // namespace Devices

#endif

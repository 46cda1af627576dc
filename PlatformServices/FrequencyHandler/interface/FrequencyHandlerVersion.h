/**
 * Which version of the library these headers belong to. The build takes the version from here.
 *
 * Usable from C99 and from C++17 on.
 */
#ifndef FREQUENCYHANDLER_INTERFACE_FREQUENCYHANDLERVERSION_H
#define FREQUENCYHANDLER_INTERFACE_FREQUENCYHANDLERVERSION_H

#define FREQUENCYHANDLER_VERSION_MAJOR 0
#define FREQUENCYHANDLER_VERSION_MINOR 1
#define FREQUENCYHANDLER_VERSION_PATCH 0

/** The three as one number that grows, as FrequencyHandler_GetVersion() gives them of the library that is
 * there. */
#define FREQUENCYHANDLER_VERSION                                                                             \
    ((FREQUENCYHANDLER_VERSION_MAJOR << 16) | (FREQUENCYHANDLER_VERSION_MINOR << 8) |                        \
     FREQUENCYHANDLER_VERSION_PATCH)

/**
 * The binary interface: slots of virtual operations, members of classes. It grows by one whenever something
 * that was compiled against the classes of these headers would no longer fit. From 1 on it is in the names of
 * their symbols: what was compiled with one number is not linked with or loaded beside what was compiled with
 * another, and the symbol that is missing says "interface" and the number.
 */
#ifndef FREQUENCYHANDLER_BINARY_INTERFACE
#define FREQUENCYHANDLER_BINARY_INTERFACE 0
#endif

#endif

/**
 * Which version of the library these headers belong to. The build takes the version from here.
 *
 * Usable from C99 and from C++17 on.
 */
#ifndef FREQUENCYHANDLER_INTERFACE_FREQUENCYHANDLERVERSION_H
#define FREQUENCYHANDLER_INTERFACE_FREQUENCYHANDLERVERSION_H

#define FREQUENCYHANDLER_VERSION_MAJOR 0
#define FREQUENCYHANDLER_VERSION_MINOR 2
#define FREQUENCYHANDLER_VERSION_PATCH 0

/** The three as one number that grows, as FrequencyHandler_GetVersion() gives them of the library that is
 * there. */
#define FREQUENCYHANDLER_VERSION                                                                             \
    ((FREQUENCYHANDLER_VERSION_MAJOR << 16) | (FREQUENCYHANDLER_VERSION_MINOR << 8) |                        \
     FREQUENCYHANDLER_VERSION_PATCH)

/**
 * The binary interface: slots of virtual operations, members of classes. It grows by one whenever something
 * that was compiled against these headers would no longer fit. It is in the name of the library's file, and
 * in that of a symbol that only the library of this number has: see Handshake.h. From 1 on it is in the names
 * of the symbols of all classes, too. What was compiled with one number is not linked with or loaded beside
 * what was compiled with another. The build takes the number from here.
 */
#ifndef FREQUENCYHANDLER_BINARY_INTERFACE
#define FREQUENCYHANDLER_BINARY_INTERFACE 0
#endif

#endif

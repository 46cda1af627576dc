/**
 * What was compiled against these headers asks for the library of their binary interface, by the name of a
 * symbol that only such a library has: otherwise linker or loader say which one is missing. It costs a
 * pointer in each object file.
 *
 * Whoever does not link the library, and is there before it, defines FREQUENCYHANDLER_WITHOUT_HANDSHAKE: a
 * host that loads it with dlopen(), or a platform that is loaded first. The host can look the symbol up
 * itself, with FREQUENCYHANDLER_HANDSHAKE_NAME.
 *
 * Usable from C99 and from C++17 on.
 */
#ifndef FREQUENCYHANDLER_INTERFACE_HANDSHAKE_H
#define FREQUENCYHANDLER_INTERFACE_HANDSHAKE_H

#include "Visibility.h"

#define RADIO_JOIN_(first, second) first##second
#define RADIO_JOIN(first, second) RADIO_JOIN_(first, second)
/** The symbol of the binary interface of these headers, and its name as text. */
#define FREQUENCYHANDLER_HANDSHAKE                                                                           \
    RADIO_JOIN(FrequencyHandler_BinaryInterface_, FREQUENCYHANDLER_BINARY_INTERFACE)
#define FREQUENCYHANDLER_HANDSHAKE_NAME RADIO_TEXT(FREQUENCYHANDLER_HANDSHAKE)

#ifdef __cplusplus
extern "C" {
#endif
RADIO_API extern const char FREQUENCYHANDLER_HANDSHAKE;
#ifdef __cplusplus
}
#endif

#if defined(__GNUC__) && !defined(FREQUENCYHANDLER_WITHOUT_HANDSHAKE)
static const char* const frequencyHandlerHandshake __attribute__((used)) = &FREQUENCYHANDLER_HANDSHAKE;
#endif

#endif

#ifndef TESTS_SUPPORT_SANITIZED_H
#define TESTS_SUPPORT_SANITIZED_H

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TESTS_ARE_SANITIZED
#endif
#endif

/** Whether AddressSanitizer is in the program, which has uses of its own for memory and for signals. */
#if defined(__SANITIZE_ADDRESS__) || defined(TESTS_ARE_SANITIZED)
constexpr bool isSanitized = true;
#else
constexpr bool isSanitized = false;
#endif

#endif

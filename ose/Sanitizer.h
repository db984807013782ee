#pragma once
// OSE_ADDRESS_SANITIZER is defined when AddressSanitizer instruments the
// build: GCC says so with a macro, clang through __has_feature.

#if defined(__SANITIZE_ADDRESS__)
#define OSE_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define OSE_ADDRESS_SANITIZER 1
#endif
#endif

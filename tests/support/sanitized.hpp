#pragma once

/// Whether the tests, and the program with them, are built for the address sanitizer. It reserves
/// more memory than any limit leaves.
#if defined(__SANITIZE_ADDRESS__)
inline constexpr bool ADDRESS_SANITIZED = true;
#elif defined(__has_feature)
inline constexpr bool ADDRESS_SANITIZED = __has_feature(address_sanitizer);
#else
inline constexpr bool ADDRESS_SANITIZED = false;
#endif

/// Where tests go through very many tables: they try one of so many, since the sanitizers take
/// long.
inline constexpr unsigned TRIED_EVERY = ADDRESS_SANITIZED ? 20 : 1;

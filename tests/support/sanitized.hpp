#pragma once

/// Whether the tests and the program are built for the address sanitizer. The sanitizer reserves
/// more memory than any test limit allows.
#if defined(__SANITIZE_ADDRESS__)
inline constexpr bool ADDRESS_SANITIZED = true;
#elif defined(__has_feature)
inline constexpr bool ADDRESS_SANITIZED = __has_feature(address_sanitizer);
#else
inline constexpr bool ADDRESS_SANITIZED = false;
#endif

/// Tests that enumerate very many tables try only one of this many, since the sanitizers are slow.
inline constexpr unsigned TRIED_EVERY = ADDRESS_SANITIZED ? 20 : 1;

/// Tests that draw the same many tables for each of many readers draw only one of this many.
inline constexpr unsigned DRAWN_EVERY = ADDRESS_SANITIZED ? 3 : 1;

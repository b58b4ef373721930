#pragma once

// Which sanitizer this source is built with. gcc defines a macro, clang has a feature.
#if !defined(__has_feature)
#define __has_feature(feature) 0  // NOLINT(bugprone-reserved-identifier)
#endif

namespace support {

#if defined(__SANITIZE_THREAD__) || __has_feature(thread_sanitizer)
inline constexpr bool kThreadSanitizer = true;
#else
inline constexpr bool kThreadSanitizer = false;
#endif

#if defined(__SANITIZE_ADDRESS__) || __has_feature(address_sanitizer)
inline constexpr bool kAddressSanitizer = true;
#else
inline constexpr bool kAddressSanitizer = false;
#endif

}  // namespace support

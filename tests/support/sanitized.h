#pragma once

namespace support
{
/// Whether this is a build whose memory accesses are checked: ten times as slow, so that long tests do a part of their
/// work there.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool isSanitized = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
constexpr bool isSanitized = true;
#else
constexpr bool isSanitized = false;
#endif
#else
constexpr bool isSanitized = false;
#endif
}  // namespace support

// What would happen at a process's usual end, for processes that end by _exit(): builds that
// measure coverage keep what they have counted, and those under AddressSanitizer look for leaks.
// Does nothing in other builds.
#pragma once

#ifdef __has_feature
#if __has_feature(address_sanitizer)
#define THERMIKA_LOOKS_FOR_LEAKS
#endif
#endif
#ifdef __SANITIZE_ADDRESS__
#define THERMIKA_LOOKS_FOR_LEAKS
#endif

namespace thermika_test {

constexpr int kLeaked = 23;  // as the leak checker's own usual end
#ifdef THERMIKA_LOOKS_FOR_LEAKS
constexpr bool kLooksForLeaks = true;
#else
constexpr bool kLooksForLeaks = false;
#endif

/// To be called right before _exit(), with what it returns: `status`, or kLeaked after a
/// report on standard error. Programs that link
/// this in keep their counters in an abort() too. Process: in both builds the soft limit on open
/// files is lifted.
int statusAtEnd(int status);

}  // namespace thermika_test

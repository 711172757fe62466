// The forms of read() and openat() that FORTIFY calls where it knows a buffer's size or sees no
// mode. They lead to the plain functions, so that a test that replaces those replaces these too:
// which form is called depends on compiler and C library. For programs that replace one of the two.
#include <fcntl.h>
#include <unistd.h>

#include <cstddef>

extern "C" ssize_t checkedRead(int descriptor, void* buffer, std::size_t bytes,
                               std::size_t size) __asm__("__read_chk");
extern "C" int checkedOpenat(int folder, const char* path, int flags) __asm__("__openat_2");
extern "C" int checkedOpenat64(int folder, const char* path, int flags) __asm__("__openat64_2");

extern "C" ssize_t checkedRead(int descriptor, void* buffer, std::size_t bytes, std::size_t) {
    return read(descriptor, buffer, bytes);
}

// The mode is without effect; without it FORTIFY would lead back here.
extern "C" int checkedOpenat(int folder, const char* path, int flags) {
    return openat(folder, path, flags, 0);
}

extern "C" int checkedOpenat64(int folder, const char* path, int flags) {
    return openat(folder, path, flags, 0);
}

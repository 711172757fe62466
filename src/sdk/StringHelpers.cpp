// Text operations and number scanners; each calls one function of the C library.
#include "sdk/StringHelpers.h"

#include <cctype>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <cwctype>

#include "sdk/base/NumericLocale.h"

namespace {

template <typename T>
int scanInNumericC(const char* text, const char* format, T* out) {
    const dax::NumericLocaleGuard numericC;
    return std::sscanf(text, format, out);
}

template <typename Char, typename Convert>
Char* convertInPlace(Char* text, Convert convert) {
    for (Char* at = text; *at != 0; ++at) *at = convert(*at);
    return text;
}

}  // namespace

int tscanf(const char* text, const char* format, unsigned short* out) {
    return scanInNumericC(text, format, out);
}
int tscanf(const char* text, const char* format, float* out) {
    return scanInNumericC(text, format, out);
}
int tscanf(const char* text, const char* format, long* out) {
    return scanInNumericC(text, format, out);
}
int tscanf(const char* text, const char* format, int* out) {
    return scanInNumericC(text, format, out);
}

int tscanf(const wchar_t* text, const wchar_t* format, unsigned short* out) {
    return std::swscanf(text, format, out);
}
int tscanf(const wchar_t* text, const wchar_t* format, float* out) {
    return std::swscanf(text, format, out);
}
int tscanf(const wchar_t* text, const wchar_t* format, long* out) {
    return std::swscanf(text, format, out);
}
int tscanf(const wchar_t* text, const wchar_t* format, int* out) {
    return std::swscanf(text, format, out);
}

char* tstrstr(char* haystack, char* needle) { return std::strstr(haystack, needle); }
wchar_t* tstrstr(wchar_t* haystack, wchar_t* needle) { return std::wcsstr(haystack, needle); }

// Signed on every machine: the C library is asked about the same value everywhere.
char* tstrupr(char* text) {
    return convertInPlace(
        text, [](char c) { return static_cast<char>(std::toupper(static_cast<signed char>(c))); });
}
char* tstrlwr(char* text) {
    return convertInPlace(
        text, [](char c) { return static_cast<char>(std::tolower(static_cast<signed char>(c))); });
}
wchar_t* tstrupr(wchar_t* text) {
    return convertInPlace(text, [](wchar_t c) {
        return static_cast<wchar_t>(std::towupper(static_cast<std::wint_t>(c)));
    });
}
wchar_t* tstrlwr(wchar_t* text) {
    return convertInPlace(text, [](wchar_t c) {
        return static_cast<wchar_t>(std::towlower(static_cast<std::wint_t>(c)));
    });
}

int tsnprintf(char* buffer, unsigned int size, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(buffer, size, format, arguments);
    va_end(arguments);
    return length;
}
int tsnprintf(wchar_t* buffer, unsigned int size, const wchar_t* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int length = std::vswprintf(buffer, size, format, arguments);
    va_end(arguments);
    // The C library may leave a text that does not fit without a terminator.
    if (length < 0 && size > 0) buffer[size - 1] = 0;
    return length;
}

unsigned int tstrlen(const char* text) { return static_cast<unsigned int>(std::strlen(text)); }
unsigned int tstrlen(const wchar_t* text) { return static_cast<unsigned int>(std::wcslen(text)); }

// Deliberate: the bound counts the characters appended, not the room in `dest`.
char* tstrcat(char* dest, unsigned int size, const char* src) {
    return std::strncat(dest, src, size);
}
// Deliberate: the wide forms ignore the size, so wide callers must provide room for all of `src`.
wchar_t* tstrcat(wchar_t* dest, unsigned int /*size*/, const wchar_t* src) {
    return std::wcscat(dest, src);
}

char* tstrcpy(char* dest, unsigned int size, const char* src) {
    return std::strncpy(dest, src, size);
}
// Deliberate: as for the wide tstrcat.
wchar_t* tstrcpy(wchar_t* dest, unsigned int /*size*/, const wchar_t* src) {
    return std::wcscpy(dest, src);
}

int tstrcmp(const char* lhs, const char* rhs) { return std::strcmp(lhs, rhs); }
int tstrcmp(const wchar_t* lhs, const wchar_t* rhs) { return std::wcscmp(lhs, rhs); }

namespace dax {

int _tscanff(const char* text, float* out) { return scanInNumericC(text, "%f", out); }
int _tscanfld(const char* text, long* out) { return scanInNumericC(text, "%ld", out); }
int _tscanfi(const char* text, int* out) { return scanInNumericC(text, "%i", out); }
int _tscanfus(const char* text, unsigned short* out) { return scanInNumericC(text, "%hu", out); }

}  // namespace dax

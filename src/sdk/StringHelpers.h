// One name for the narrow and the wide form of each C text operation, and four number scanners
// that read "." as the decimal point whatever the user's locale. Not a string class: every
// function works on the caller's buffers and allocates nothing that outlives the call.
//
// Process: the narrow tscanf and the dax::_tscanf functions leave LC_NUMERIC bearing the name that
// LC_CTYPE has, or "C" where the system has no numeric locale of that name. No pointer may be null.
#pragma once

/// Items converted by a scan of `text` with `format` (0 or 1 for a single conversion), EOF when the
/// text ends before the first one. `*out` keeps its value when nothing was converted. The type that
/// `format` names must be that of `out`. The wide forms read numbers as LC_NUMERIC says.
int tscanf(const char* text, const char* format, unsigned short* out);
int tscanf(const char* text, const char* format, float* out);
int tscanf(const char* text, const char* format, long* out);
int tscanf(const char* text, const char* format, int* out);
int tscanf(const wchar_t* text, const wchar_t* format, unsigned short* out);
int tscanf(const wchar_t* text, const wchar_t* format, float* out);
int tscanf(const wchar_t* text, const wchar_t* format, long* out);
int tscanf(const wchar_t* text, const wchar_t* format, int* out);

/// The first occurrence of `needle` in `haystack`, pointing into it; null when there is none.
char* tstrstr(char* haystack, char* needle);
wchar_t* tstrstr(wchar_t* haystack, wchar_t* needle);

/// Converts to upper case in place by LC_CTYPE and returns `text`. Bytes above 127 reach the C
/// library as negative values, so they are converted as it converts those.
char* tstrupr(char* text);
wchar_t* tstrupr(wchar_t* text);
char* tstrlwr(char* text);        ///< as tstrupr(), to lower case
wchar_t* tstrlwr(wchar_t* text);  ///< as tstrupr(), to lower case

/// Prints at most `size` - 1 characters and a terminator (nothing at all when `size` is 0).
/// Narrow: the length of the whole text, printed or not, negative when LC_CTYPE has no bytes for a
/// wide character of it. Wide: the length written, or -1 when the text does not fit.
/// A hardened build (-D_FORTIFY_SOURCE=2, as ours are) ends the process at "%n" in a format that
/// lies in writable memory.
int tsnprintf(char* buffer, unsigned int size, const char* format, ...)
    __attribute__((format(printf, 3, 4)));
int tsnprintf(wchar_t* buffer, unsigned int size, const wchar_t* format, ...);

/// Characters before the terminator.
unsigned int tstrlen(const char* text);
unsigned int tstrlen(const wchar_t* text);

/// Appends and terminates; returns `dest`. Narrow: at most `size` characters of `src`, so `dest`
/// has to hold its own text, that many more and the terminator: `size` is not the room in `dest`.
/// Wide: all of `src`; `size` is ignored.
char* tstrcat(char* dest, unsigned int size, const char* src);
wchar_t* tstrcat(wchar_t* dest, unsigned int size, const wchar_t* src);

/// Copies; returns `dest`. Narrow: exactly `size` bytes are written, the text and then zero bytes;
/// a text of `size` or more characters is cut and left without a terminator.
/// Wide: all of `src` with its terminator; `size` is ignored.
char* tstrcpy(char* dest, unsigned int size, const char* src);
wchar_t* tstrcpy(wchar_t* dest, unsigned int size, const wchar_t* src);

/// Negative, 0 or positive: how `lhs` compares with `rhs`, byte by byte (wide: character by
/// character).
int tstrcmp(const char* lhs, const char* rhs);
int tstrcmp(const wchar_t* lhs, const wchar_t* rhs);

namespace dax {

/// Scan one number: 1 when `*out` was set, 0 when `text` does not begin with one, EOF when it is
/// empty or blank; `*out` then keeps its value. A whole number beyond the limits of long (for
/// unsigned short: of unsigned long) becomes that limit first; then an int or unsigned short gets
/// its low bits.
int _tscanff(const char* text, float* out);
int _tscanfld(const char* text, long* out);  ///< as _tscanff()
int _tscanfi(const char* text, int* out);    ///< "0x" reads hexadecimal, a leading "0" octal
int _tscanfus(const char* text, unsigned short* out);  ///< as _tscanff()

}  // namespace dax

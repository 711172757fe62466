// The text and number helpers on any two texts, in buffers of exactly the size that each needs. The
// input's first byte is the size they are given, its first zero byte after that divides the texts.
#include "sdk/StringHelpers.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "sdk/xml/NumberText.h"

namespace {

void require(bool kept) {
    if (!kept) std::abort();
}

int sign(int number) { return (number > 0) - (number < 0); }

/// Bytes above 127 become characters up to 0xFFFF.
std::wstring widened(const std::string& text) {
    std::wstring characters;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        characters += static_cast<wchar_t>(byte < 128 ? byte : byte * 0x101);
    }
    return characters;
}

std::vector<char> buffer(const std::string& text, std::size_t more = 1) {
    std::vector<char> bytes(text.begin(), text.end());
    bytes.resize(text.size() + more);
    return bytes;
}

/// `quick` reads the plain numbers only, and then as the scanner does.
template <typename Out, typename Plain>
void scan(const char* text, int (*scanner)(const char*, Out*), const char* format, Plain quick) {
    Out out = 77;
    const int found = scanner(text, &out);
    require(found == 1 || ((found == 0 || found == EOF) && out == Out{77}));
    Out same = 77;
    require(tscanf(text, format, &same) == found);
    // Byte by byte: a number that is none is the same, too.
    // NOLINTBEGIN(bugprone-suspicious-memory-comparison)
    require(std::memcmp(&out, &same, sizeof out) == 0);
    const auto plain = quick(text);
    if (!plain) return;
    const Out read = static_cast<Out>(*plain);
    require(found == 1 && std::memcmp(&out, &read, sizeof out) == 0);
    // NOLINTEND(bugprone-suspicious-memory-comparison)
}

void scanNumbers(const char* text) {
    scan<int>(text, dax::_tscanfi, "%i", dax::plainInteger);
    scan<long>(text, dax::_tscanfld, "%ld", dax::plainInteger);
    scan<unsigned short>(text, dax::_tscanfus, "%hu", dax::plainInteger);
    scan<float>(text, dax::_tscanff, "%f", dax::plainFloat);
}

void narrow(const std::string& a, const std::string& b, unsigned int size) {
    require(tstrlen(a.c_str()) == a.size());
    require(sign(tstrcmp(a.c_str(), b.c_str())) == sign(a.compare(b)));
    std::vector<char> haystack = buffer(a);
    std::vector<char> needle = buffer(b);
    const char* const found = tstrstr(haystack.data(), needle.data());
    require(found == (a.find(b) == std::string::npos ? nullptr : haystack.data() + a.find(b)));
    require(std::strlen(tstrlwr(tstrupr(haystack.data()))) == a.size());

    const std::unique_ptr<char[]> copy(new char[size]);  // not null, whatever the size
    require(tstrcpy(copy.get(), size, a.c_str()) == copy.get());
    std::string padded = a.substr(0, size);
    padded.resize(size);
    require(std::string(copy.get(), size) == padded);

    const std::string part = b.substr(0, size);
    std::vector<char> joined = buffer(a, part.size() + 1);
    require(tstrcat(joined.data(), size, b.c_str()) == a + part);

    const std::unique_ptr<char[]> printed(new char[size]);
    require(tsnprintf(printed.get(), size, "%s", a.c_str()) == static_cast<int>(a.size()));
    require(size == 0 || printed.get() == a.substr(0, size - 1));
}

void wide(const std::wstring& a, const std::wstring& b, unsigned int size) {
    require(tstrlen(a.c_str()) == a.size());
    require(sign(tstrcmp(a.c_str(), b.c_str())) == sign(a.compare(b)));
    std::wstring haystack = a;
    std::wstring needle = b;
    const wchar_t* const found = tstrstr(haystack.data(), needle.data());
    require(found == (a.find(b) == std::wstring::npos ? nullptr : haystack.data() + a.find(b)));
    require(tstrlen(tstrlwr(tstrupr(haystack.data()))) == a.size());

    std::vector<wchar_t> joined(a.size() + b.size() + 1);
    require(tstrcat(tstrcpy(joined.data(), size, a.c_str()), size, b.c_str()) == a + b);

    const std::unique_ptr<wchar_t[]> printed(new wchar_t[size]);
    const int length = tsnprintf(printed.get(), size, L"%ls", a.c_str());
    require(length == (a.size() < size ? static_cast<int>(a.size()) : -1));
    require(length < 0 || printed.get() == a);
    int number = 77;
    require(tscanf(a.c_str(), L"%i", &number) == 1 || number == 77);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::string texts(reinterpret_cast<const char*>(data) + 1, size - 1);
    const std::string a = texts.substr(0, texts.find('\0'));
    const std::string b = texts.c_str() + (a.size() < texts.size() ? a.size() + 1 : a.size());
    scanNumbers(a.c_str());
    narrow(a, b, data[0]);
    wide(widened(a), widened(b), data[0]);
    return 0;
}

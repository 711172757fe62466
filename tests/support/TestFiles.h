// Files for tests: a folder that goes away with its test, whole files in one call, and what was
// written to standard error meanwhile. Every failure here throws, which fails the test.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace thermika_test {

/// An empty folder of its own under the system's temporary folder; removed with all it holds.
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    /// Absolute, without a "/" at its end.
    const std::string& path() const { return m_path; }

    /// The path of `name` in this folder.
    std::string operator/(std::string_view name) const;

private:
    std::string m_path;
};

/// Creates or replaces the file.
void writeFile(const std::string& path, std::string_view bytes);

/// Every byte of the file.
std::string readFile(const std::string& path);

/// How many files the process has open.
std::size_t openDescriptors();

/// While it lives, what the process (and its children) write to standard error is kept here.
class StderrCapture {
public:
    StderrCapture();
    ~StderrCapture();
    StderrCapture(const StderrCapture&) = delete;
    StderrCapture& operator=(const StderrCapture&) = delete;

    /// What was written so far.
    std::string text();

private:
    int m_captured;
    int m_original;
};

}  // namespace thermika_test

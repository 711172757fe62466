// A folder of its own below TMPDIR (or /tmp), removed with all it holds.
#pragma once

#include <string>
#include <string_view>

namespace bench {

class TemporaryFolder {
public:
    /// Ends the process with a message when no folder can be made.
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string& path() const { return m_path; }

    /// Writes a file and answers its path; ends the process with a message when that fails.
    std::string write(std::string_view name, std::string_view content) const;

private:
    std::string m_path;
};

}  // namespace bench

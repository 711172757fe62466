// The directory that files are installed into. It is opened once; every file there is reached
// through its descriptor, so that nobody can put another directory in its place meanwhile.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "fetch/Descriptor.h"

namespace thermika::fetch {

class Destination {
public:
    explicit Destination(std::string path) : m_path(std::move(path)) {}

    /// Opens what is there; false when there is no directory or it cannot be opened.
    bool openExisting();

    /// Creates it with its parents, each with mode 0755, where absent, opens it and creates and
    /// removes a part file. What went wrong and what to do; "" when files can be installed.
    std::string openForWriting();

    /// Size of the regular file `name` that is not empty; nothing for anything else.
    std::optional<std::uint64_t> presentBytes(const std::string& name) const;

    /// Removes part files that no running call holds.
    void removeLeftovers() const;

    /// Writes the directory's entries to the disk. What went wrong; "" when nothing did.
    std::string sync() const;

    bool isOpen() const { return m_directory.isOpen(); }
    int get() const { return m_directory.get(); }
    const std::string& path() const { return m_path; }

    /// The path of `name` there.
    std::string pathOf(const std::string& name) const;

private:
    std::string m_path;
    Descriptor m_directory;
};

}  // namespace thermika::fetch

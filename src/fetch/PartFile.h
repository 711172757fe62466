// One file on its way into the directory: under a name of its own until it is whole, then under the
// final one. Whatever is not installed goes away with this object.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "fetch/Descriptor.h"

namespace thermika::fetch {

class Destination;

/// How many bytes may still be written, by one file and by all of a call together.
struct Allowance {
    std::uint64_t fileBytes = 0;
    std::uint64_t totalBytesLeft = 0;  ///< shared: part files take from it and give back
};

class PartFile {
public:
    /// Both outlive it.
    PartFile(const Destination& directory, Allowance& allowance);
    ~PartFile();
    PartFile(const PartFile&) = delete;
    PartFile& operator=(const PartFile&) = delete;

    /// Each is false when it went wrong; problem() then says why.
    bool create();
    /// Creates the file when there is none yet.
    bool append(std::string_view bytes);
    /// Checks that there is something, gives mode 0644, writes it to the disk and renames it.
    bool install(const std::string& name);

    /// Removes what was written; append() begins anew.
    void discard();

    const std::string& problem() const { return m_problem; }
    std::uint64_t size() const { return m_size; }

private:
    bool fail(const std::string& what);
    bool failWithError(const std::string& doing);
    bool lock() const;
    /// When its mode could not be changed; errno tells why.
    bool isForEveryUser() const;

    const Destination& m_directory;
    Allowance& m_allowance;
    Descriptor m_file;
    std::string m_name;  ///< "" while there is no file
    std::uint64_t m_size = 0;
    std::string m_problem;
};

}  // namespace thermika::fetch

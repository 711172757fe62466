// See the header.
#include "support/TemporaryFolder.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace bench {

namespace {

[[noreturn]] void fail(const std::string& what) {
    std::perror(what.c_str());
    std::exit(1);
}

}  // namespace

TemporaryFolder::TemporaryFolder() {
    const char* const parent = std::getenv("TMPDIR");
    m_path = std::string(parent == nullptr ? "/tmp" : parent) + "/thermika-bench-XXXXXX";
    if (mkdtemp(m_path.data()) == nullptr) fail("cannot make " + m_path);
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

std::string TemporaryFolder::write(std::string_view name, std::string_view content) const {
    const std::string file = m_path + "/" + std::string(name);
    std::ofstream out(file, std::ios::binary);
    out.write(content.data(), static_cast<std::streamsize>(content.size()));
    if (!out.flush()) fail("cannot write " + file);
    return file;
}

}  // namespace bench

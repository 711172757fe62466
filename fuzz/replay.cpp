// Runs a fuzz target on saved inputs, without the fuzzer: in the ordinary tests, with any compiler.
//
// usage: TARGET-replay FILE-OR-FOLDER...
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>

#include "support/TestFiles.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

int g_inputs = 0;

void replay(const std::filesystem::path& file) {
    std::fprintf(stderr, "%s\n", file.c_str());  // the last one named is the one that failed
    const std::string bytes = thermika_test::readFile(file);
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    ++g_inputs;
}

}  // namespace

int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        if (!std::filesystem::is_directory(argv[i])) {
            replay(argv[i]);
            continue;
        }
        for (const auto& file : std::filesystem::directory_iterator(argv[i])) replay(file.path());
    }
    std::printf("%d inputs\n", g_inputs);
    return g_inputs == 0 ? 1 : 0;
}

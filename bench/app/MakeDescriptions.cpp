// Writes the descriptions that FirstLoad_bench.sh lets programs load:
//   thermika-bench-make-descriptions FOLDER
#include <cstdio>
#include <fstream>
#include <string>
#include <utility>

#include "support/Descriptions.h"

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    for (const auto& [name, bytes] :
         {std::pair("11K", bench::kSmallBytes), std::pair("1M", bench::kLargeBytes)}) {
        std::ofstream file(std::string(argv[1]) + "/" + name + ".xml", std::ios::binary);
        file << bench::makeDescription(bytes, bench::Content::kPlain);
        if (!file.flush()) {
            std::fprintf(stderr, "cannot write to %s\n", argv[1]);
            return 1;
        }
    }
    return 0;
}

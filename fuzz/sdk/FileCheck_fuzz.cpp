// The file check of any description, in and below directories of any length: it fills what it asked
// for, and both its forms name the same files. The last four bytes are the directories' lengths.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>

#include "imgproc/Cali.h"
#include "sdk/IRCalibrationManager.h"
#include "support/TestFiles.h"

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLengthBytes = 4;
constexpr std::size_t kMostCharsAround = 700;
constexpr std::size_t kMostChars = 300;
constexpr std::size_t kNameChars = 200;

void require(bool kept) {
    if (!kept) std::abort();
}

/// Makes a directory below `folder` whose path has about `length` characters the working one.
void enterDirectoryOfLength(const std::string& folder, std::size_t length) {
    std::string path = folder;
    while (path.size() + 1 < length)
        path += "/" + std::string(std::min(length - path.size() - 1, kNameChars), 'd');
    fs::create_directories(path);
    fs::current_path(path);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < kLengthBytes) return 0;
    static const thermika_test::TempDir folder;
    static const fs::path former = fs::current_path();
    static int serial = 1;
    serial = 3 - serial;  // another one each time, so that the description is read
    size -= kLengthBytes;
    thermika_test::writeFile(folder / ("Cali-" + std::to_string(serial) + ".xml"),
                             {reinterpret_cast<const char*>(data), size});
    if (ConfigCali::getInstance()->load(folder.path().c_str(), serial) != 0) return 0;

    enterDirectoryOfLength(folder.path(), (data[size] + 256U * data[size + 1]) % kMostCharsAround);
    const std::string directory((data[size + 2] + 256U * data[size + 3]) % kMostChars, 'd');
    auto* const manager = dax::IRCalibrationManager::getInstance();
    manager->setCalibrationDir(directory.c_str());
    const std::unique_ptr<char[]> all(manager->checkCalibration(static_cast<unsigned>(serial)));
    const auto check = [&](char* list, int& bytes) {
        return manager->checkCaliFiles(directory.c_str(), serial, list, &bytes, "Cali-%i.xml",
                                       "Cali-%s.dat", "Kennlinie-%s.prn", ";");
    };
    int bytes = 0;
    require(check(nullptr, bytes) == (all == nullptr));
    if (all) {
        const std::unique_ptr<char[]> list(new char[static_cast<std::size_t>(bytes)]);
        require(!check(list.get(), bytes));
        require(std::strcmp(list.get(), all.get()) == 0);
        require(std::strlen(list.get()) + 1 == static_cast<std::size_t>(bytes));
    }
    fs::current_path(former);
    return 0;
}

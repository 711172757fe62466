// A folder is opened one component at a time, from the one before it or from the root on: however
// deep a tree is, few descriptors are enough, and a component that becomes a link is not followed.
#include "fetch/FolderWalk.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include "fetch/DirectoryStream.h"

namespace thermika::fetch {

namespace {

constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK;

/// The folder that was opened last.
struct OpenFolder {
    std::string path;  // relative to the root: names, each followed by "/"; "" is the root itself
    Descriptor file;
};

/// Opens `path`, from `last` on when it lies below that, else from the root on.
OpenFolder openFolder(int root, OpenFolder last, std::string path) {
    std::string_view left = path;
    if (last.file.isOpen() && left.substr(0, last.path.size()) == last.path)
        left.remove_prefix(last.path.size());
    else
        last.file = Descriptor(retrying([&] { return openat(root, ".", kFolderFlags); }));
    while (last.file.isOpen() && !left.empty()) {
        const std::string name(left.substr(0, left.find('/')));
        left.remove_prefix(name.size() + 1);
        last.file = Descriptor(retrying(
            [&] { return openat(last.file.get(), name.c_str(), kFolderFlags | O_NOFOLLOW); }));
    }
    last.path = std::move(path);
    return last;
}

bool isFolder(int parent, const dirent& entry) {
    if (entry.d_type != DT_UNKNOWN) return entry.d_type == DT_DIR;
    struct stat status {};
    return fstatat(parent, entry.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
           S_ISDIR(status.st_mode);
}

struct Listing {
    std::vector<std::string> files;  // wanted ones
    std::vector<std::string> subfolders;
    int error = 0;
};

Listing list(int folder, const std::function<bool(const std::string&)>& isWanted,
             const Stop& stop) {
    Listing found;
    const DirectoryStream entries =
        openStream(Descriptor(retrying([&] { return openat(folder, ".", kFolderFlags); })));
    errno = entries != nullptr ? 0 : errno;
    const dirent* entry = nullptr;
    while (entries != nullptr && !stop.isDue() && (entry = readdir(entries.get())) != nullptr) {
        std::string name = entry->d_name;
        if (name == "." || name == "..") continue;
        if (isFolder(folder, *entry))
            found.subfolders.push_back(std::move(name));
        else if (isWanted(name))
            found.files.push_back(std::move(name));
        errno = 0;
    }
    found.error = errno;
    std::sort(found.files.begin(), found.files.end());
    std::sort(found.subfolders.begin(), found.subfolders.end());
    return found;
}

/// Of a folder that is open, whose path is not empty.
std::string withSlash(const std::string& path) { return path.back() == '/' ? path : path + "/"; }

}  // namespace

Descriptor openRoot(const std::string& root, std::string& problem) {
    Descriptor top(retrying([&] { return open(root.c_str(), kFolderFlags); }));
    if (!top.isOpen()) problem = "cannot read the folder " + root + ": " + errorText(errno);
    return top;
}

WalkResult walkFolder(const std::string& root,
                      const std::function<bool(const std::string& name)>& isWanted,
                      const std::function<bool(const FolderEntry&)>& visit, const Stop& stop) {
    WalkResult result;
    const Descriptor top = openRoot(root, result.problem);
    if (!top.isOpen()) return result;
    std::vector<std::string> waiting = {""};
    OpenFolder folder;
    while (!waiting.empty() && !stop.isDue()) {
        folder = openFolder(top.get(), std::move(folder), std::move(waiting.back()));
        waiting.pop_back();
        const std::string& path = folder.path;
        const std::string place = withSlash(root).append(path);
        const Listing found =
            folder.file.isOpen() ? list(folder.file.get(), isWanted, stop) : Listing{{}, {}, errno};
        if (found.error != 0 && ++result.foldersSkipped == 1)
            result.firstSkipped = place + ": " + errorText(found.error);
        for (const std::string& name : found.files)
            if (!visit({folder.file.get(), name, place + name})) return result;
        // The last one is taken first.
        for (auto name = found.subfolders.rbegin(); name != found.subfolders.rend(); ++name)
            waiting.push_back(std::string(path).append(*name).append("/"));
    }
    return result;
}

}  // namespace thermika::fetch

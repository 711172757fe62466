// Calls the fetch library as an embedding program does: asks a folder that is not there.
#include <fetch/Fetch.h>

#include <cstdio>

int main() {
    thermika::fetch::Request request;
    request.serial = "14080045";
    request.names = {"Cali-14080045.xml"};
    request.source = thermika::fetch::Folder{"/no such folder"};
    request.directory = "/no such directory either";
    std::printf("%s\n", thermika::fetch::plan(request).isComplete() ? "complete" : "incomplete");
}

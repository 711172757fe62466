// Plain concatenation: every character of a command can be read off here.
#include "sdk/camera/ShellCommands.h"

#include <cstdio>
#include <cstdlib>
#include <initializer_list>

#include "sdk/base/BuildConfig.h"
#include "sdk/camera/DownloadLinks.h"

namespace dax {

namespace {

std::string join(std::initializer_list<std::string_view> pieces) {
    std::string text;
    for (const std::string_view piece : pieces) text += piece;
    return text;
}

}  // namespace

std::string fetchLinksCommand(std::string_view file) {
    return join({"wget http://", kDownloadHost, kLinksPath, " -O ", file});
}

std::string quotedFileAddress(std::string_view base, std::string_view serial,
                              std::string_view name) {
    std::string address = "\"";
    address += base;
    for (const std::string& part : serverPath(serial, name)) address.append(1, '/').append(part);
    return address += '"';
}

std::string fetchFileCommand(std::string_view quotedAddress, std::string_view targetDir,
                             std::string_view name) {
    return join({"wget ", quotedAddress, " -O ", targetDir, "/", name});
}

std::string copyFilesCommand(std::string_view sourceDir, std::string_view serial,
                             std::string_view targetDir) {
    return join({"find ", sourceDir, " -name Cali-", serial, "* -exec cp \"{}\" ", targetDir,
                 " \\; -o -name Kennlinie-", serial, "* -exec cp \"{}\" ", targetDir,
                 " \\; 2> /dev/null"});
}

std::string countDefaultRoutesCommand() { return R"(/sbin/route -n | grep -c '^0\.0\.0\.0')"; }

bool runCommand(const std::string& command) {
    std::fflush(stdout);
    return std::system(command.c_str()) != -1;
}

}  // namespace dax

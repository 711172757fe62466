// The steps that every source shares; the sources themselves are in files of their own.
#include "fetch/Fetch.h"

#include <variant>

#include "fetch/Call.h"
#include "fetch/FolderSource.h"
#include "fetch/FolderWalk.h"
#include "fetch/ServerSource.h"
#include "sdk/base/BuildConfig.h"
#include "sdk/camera/DownloadLinks.h"

namespace thermika::fetch {

namespace {

struct SourceVisitor {
    Call& call;

    void operator()(const Folder& folder) const { fetchFromFolder(folder, call); }
    void operator()(const VendorServer& server) const { fetchFromServer(server, call); }
    void operator()(const Mirror& mirror) const { fetchFromServer(mirror, call); }
};

struct SourceProbe {
    const Request& request;

    ProbeReport operator()(const Folder& folder) const {
        ProbeReport report;
        report.address = folder.path;
        report.answers = openRoot(folder.path, report.reason).isOpen();
        return report;
    }
    ProbeReport operator()(const VendorServer& server) const {
        return probeServer(server, request);
    }
    ProbeReport operator()(const Mirror& mirror) const { return probeServer(mirror, request); }
};

Report carryOut(const Request& request, bool isPlan) {
    Call call(request, isPlan);
    if (call.prepare() || call.follow()) std::visit(SourceVisitor{call}, request.source);
    return call.finish();
}

}  // namespace

std::string vendorLinksAddress() {
    return std::string("http://") + dax::kDownloadHost + dax::kLinksPath;
}

Report fetch(const Request& request) { return carryOut(request, false); }

Report plan(const Request& request) { return carryOut(request, true); }

ProbeReport probe(const Request& request) {
    return std::visit(SourceProbe{request}, request.source);
}

}  // namespace thermika::fetch

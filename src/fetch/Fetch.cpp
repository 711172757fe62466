// The steps that every source shares; the sources themselves are in files of their own.
#include "fetch/Fetch.h"

#include <variant>

#include "fetch/Call.h"
#include "fetch/FolderSource.h"
#include "fetch/FolderWalk.h"
#include "sdk/base/BuildConfig.h"

namespace thermika::fetch {

namespace {

struct SourceVisitor {
    Call& call;

    void operator()(const Folder& folder) const { fetchFromFolder(folder, call); }
    void operator()(const VendorServer&) const { refuseServer(); }
    void operator()(const Mirror&) const { refuseServer(); }

    void refuseServer() const { call.setProblem("this build cannot fetch from servers yet"); }
};

Report carryOut(const Request& request, bool isPlan) {
    Call call(request, isPlan);
    if (call.prepare()) std::visit(SourceVisitor{call}, request.source);
    return call.finish();
}

}  // namespace

std::string vendorLinksAddress() {
    return std::string("http://") + dax::kDownloadHost + "/downloadlinks.xml";
}

Report fetch(const Request& request) { return carryOut(request, false); }

Report plan(const Request& request) { return carryOut(request, true); }

ProbeReport probe(const Request& request) {
    ProbeReport report;
    if (const auto* const folder = std::get_if<Folder>(&request.source)) {
        report.address = folder->path;
        openRoot(folder->path, report.reason);
    } else {
        report.reason = "this build cannot ask servers yet";
    }
    report.answers = report.reason.empty();
    return report;
}

}  // namespace thermika::fetch

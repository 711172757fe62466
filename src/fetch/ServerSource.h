// Fetching a camera's files from a server with the vendor's layout.
#pragma once

#include "fetch/Call.h"
#include "fetch/Fetch.h"

namespace thermika::fetch {

/// Each gives every wanted file of `call` its outcome, or `call` its problem. In a plan the files
/// are not asked for.
void fetchFromServer(const VendorServer& server, Call& call);
void fetchFromServer(const Mirror& mirror, Call& call);

/// As the public probe().
ProbeReport probeServer(const VendorServer& server, const Request& request);
ProbeReport probeServer(const Mirror& mirror, const Request& request);

}  // namespace thermika::fetch

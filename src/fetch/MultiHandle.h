// libcurl's handle for many transfers, none of whose descriptors a started program inherits.
#pragma once

#include <curl/curl.h>

#include <memory>

namespace thermika::fetch {

using MultiHandle = std::unique_ptr<CURLM, decltype(&curl_multi_cleanup)>;

/// Throws std::bad_alloc.
MultiHandle makeMultiHandle();

}  // namespace thermika::fetch

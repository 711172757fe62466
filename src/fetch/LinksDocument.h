// Asking a server one thing, and the vendor's server where the files are.
#pragma once

#include <string>
#include <string_view>

#include "fetch/HttpQueue.h"

namespace thermika::fetch {

struct Asked {
    std::string address;  ///< as it was asked; "" when it cannot be used
    Answer answer;        ///< the last one
    std::string bytes;    ///< of its body, 64 KiB at most
    std::string problem;  ///< what went wrong; "" when the answer is good
};

/// Asks for what is at `address`, which is checked first.
Asked ask(const std::string& address, HttpQueue& queue);

/// The base address in a links document, checked; "" without one, and `problem` says why.
std::string baseAddressIn(std::string_view document, std::string& problem);

}  // namespace thermika::fetch

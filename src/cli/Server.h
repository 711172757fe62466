// Whether the place that calibration files come from answers.
#pragma once

#include <string>

#include <nlohmann/json_fwd.hpp>

#include "cli/Output.h"
#include "fetch/Fetch.h"

namespace thermika::cli {

struct ServerAnswer {
    fetch::ProbeReport report;
    bool isKnown = true;  ///< false when nobody could be asked, so that it is neither yes nor no
    bool isGood() const { return report.answers && report.reason.empty(); }
};

/// Asks it once, `seconds` without a byte at most. See sourceFrom(). A Problem when the user
/// interrupts it.
ServerAnswer askServer(const std::string& from, unsigned seconds);

/// What came of it, in a sentence, with outside bytes as they are.
std::string answerText(const ServerAnswer& answer);

/// The same for programs.
Json answerDocument(const ServerAnswer& answer);

}  // namespace thermika::cli

// What is wrong with the text of a configuration document that somebody edited: its markup, then
// its elements by the schema share/thermika/imager.xsd, which is compiled in. Knows nothing of
// cameras, files and terminals.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/ValidateFinding.h"

namespace thermika::cli {

struct DocumentNumber {
    long value = 0;
    long line = 0;
};

struct DocumentText {
    std::string value;
    long line = 0;
};

/// What the document says of camera and optics: what is there and as the schema wants it.
struct ImagerSettings {
    std::optional<DocumentNumber> serial;
    std::optional<DocumentNumber> fovDeg;
    std::optional<DocumentNumber> minTempC;
    std::optional<DocumentNumber> maxTempC;
    std::optional<DocumentText> opticsText;
};

struct DocumentFindings {
    std::vector<Finding> findings;  ///< by line; the first kMostFindings
    ImagerSettings settings;        ///< empty when the markup is wrong
    bool areMore = false;           ///< findings than these
};

constexpr std::size_t kMostDocumentBytes = 1U << 20U;  // the tool prints 3 KiB
constexpr std::size_t kMostFindings = 100;

/// One finding only when the markup is wrong: what follows it would be guesses. No file is opened,
/// whatever the document asks for: a document type is a finding, schema locations are not followed.
/// Allocation failures propagate.
DocumentFindings checkDocument(std::string_view bytes);

}  // namespace thermika::cli

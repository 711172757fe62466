// From the bytes of a configuration document to its tree, or to what is wrong with its markup.
// Knows nothing of the schema.
#pragma once

#include <libxml/tree.h>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "cli/ValidateFinding.h"

namespace thermika::cli {

struct DocumentDeleter {
    void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
};
using DocumentPointer = std::unique_ptr<xmlDoc, DocumentDeleter>;

struct Markup {
    DocumentPointer document;      ///< null when `wrong` is set
    std::optional<Finding> wrong;  ///< the first one
    /// Where each element's start tag ends, and where each text that is more than white space
    /// begins; the tree itself knows 16 bits of an element's line. A line ends with a line feed. A
    /// text with carriage returns that stand alone may begin later than said here, but not before
    /// the element around it.
    std::map<const xmlNode*, long> lines;
};

/// Opens no file and substitutes no entity of the document's own.
Markup parseMarkup(std::string_view bytes);

/// A name of the tree, with its prefix where it has one.
std::string nameOf(const xmlNode* node);

/// All text below `node`.
std::string contentOf(const xmlNode* node);

/// `bytes` between quotes, cut where they are long.
std::string inQuotes(std::string_view bytes);

}  // namespace thermika::cli

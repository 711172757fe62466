// The schema of the configuration document, as compiled in, and what it says of each element in
// words. Knows nothing of findings.
#pragma once

#include <libxml/xmlschemas.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "cli/ValidateMarkup.h"

namespace thermika::cli {

/// One element of the schema. Names are unique in it.
struct SchemaElement {
    std::string name;
    std::string parent;  ///< "" for the root
    std::string words;   ///< what it may hold, and what it means
    bool isRequired = false;
    bool isContainer = false;  ///< holds elements
};

class ImagerSchema {
public:
    /// The one schema, read on first use. Allocation failures propagate.
    static const ImagerSchema& instance();

    const std::vector<SchemaElement>& elements() const { return m_elements; }

    /// Null when the schema has no such element.
    const SchemaElement* find(std::string_view name) const;

    /// For the validation.
    xmlSchema* get() const { return m_schema.get(); }

private:
    struct SchemaDeleter {
        void operator()(xmlSchema* schema) const { xmlSchemaFree(schema); }
    };

    ImagerSchema();

    DocumentPointer m_document;  // the schema points into it
    std::unique_ptr<xmlSchema, SchemaDeleter> m_schema;
    std::vector<SchemaElement> m_elements;
};

/// share/thermika/imager.xsd.
std::string_view imagerSchemaText();

}  // namespace thermika::cli

// libxml2 parses; three of its steps are ours: a document type ends the parsing, elements and texts
// are noted with their lines.
#include "cli/ValidateMarkup.h"

#include <libxml/SAX2.h>
#include <libxml/parser.h>
#include <libxml/xmlerror.h>

#include <algorithm>
#include <cstddef>
#include <iterator>

#include "cli/Escape.h"
#include "cli/XmlText.h"
#include "fetch/Memory.h"

namespace thermika::cli {

namespace {

constexpr std::size_t kMostQuotedBytes = 80;

struct ContextDeleter {
    void operator()(xmlParserCtxt* context) const {
        xmlFreeDoc(context->myDoc);
        xmlFreeParserCtxt(context);
    }
};
using ContextPointer = std::unique_ptr<xmlParserCtxt, ContextDeleter>;

struct MessageRow {
    int code;
    const char* wrong;
    const char* right;
};

constexpr const char* kCommentLines =
    "end the comment that is open here with \"-->\" (of the two comment lines around the suggested "
    "field of view, remove both or none)";
constexpr const char* kBegin = "begin with the one that thermika config prints";
constexpr const char* kSaveAsUtf8 =
    "save it as UTF-8, and let its first line name no other encoding";
constexpr const char* kAmpersand = "write \"&amp;\" for the character \"&\"";

// What users of an editor get wrong; the parser's own words stand in for all others.
constexpr MessageRow kMessages[] = {
    {XML_ERR_DOCUMENT_EMPTY, "the root element does not begin here",
     "remove what stands before <imager>, or begin with the document that thermika config prints"},
    {XML_ERR_DOCUMENT_END, "something stands outside the root element", "end with </imager>"},
    {XML_ERR_HYPHEN_IN_COMMENT, "\"--\" stands inside a comment", kCommentLines},
    {XML_ERR_COMMENT_NOT_FINISHED, "a comment has no end", kCommentLines},
    {XML_ERR_ENTITYREF_SEMICOL_MISSING, "a \"&\" stands alone", kAmpersand},
    {XML_ERR_NAME_REQUIRED, "a \"&\" or \"<\" stands alone",
     "write \"&amp;\" for the character \"&\" and \"&lt;\" for \"<\""},
    {XML_ERR_UNDECLARED_ENTITY, "a \"&\" begins a name that is not known", kAmpersand},
    {XML_ERR_TAG_NOT_FINISHED, "the document ends inside an element", "end with </imager>"},
    {XML_ERR_INVALID_ENCODING, "the document is not in the encoding that it names, or in UTF-8",
     kSaveAsUtf8},
    {XML_ERR_UNSUPPORTED_ENCODING, "the document names an encoding that is not known", kSaveAsUtf8},
    {XML_ERR_INVALID_CHAR, "a character is not allowed in a document", "remove it"},
};

Finding findingOf(const xmlError& error, bool isConverted) {
    const long line = std::max(error.line, 1);
    if (error.code == XML_ERR_TAG_NAME_MISMATCH && error.str1 != nullptr && error.str2 != nullptr) {
        const std::string open = error.str1;
        return {line,
                "</" + std::string(error.str2) + "> stands where <" + open + "> of line " +
                    std::to_string(error.int1) + " is still open",
                "end <" + open + "> with </" + open + "> where it belongs"};
    }
    const std::string_view words = error.message != nullptr ? error.message : "";
    // libxml2 2.9 has one code for characters that are not allowed and bytes that are none.
    const bool isText = isConverted && words.find("not proper UTF-8") == words.npos;
    const int code = isText ? error.code : XML_ERR_INVALID_ENCODING;
    for (const MessageRow& row : kMessages)
        if (row.code == code) return {line, row.wrong, row.right};
    return {line, "the markup is wrong: " + std::string(trimmed(words)),
            "correct it here or shortly before"};
}

/// What our steps of the parsing note.
struct Notes {
    std::optional<Finding> wrong;
    std::map<const xmlNode*, long> lines;
    bool isConverted = true;  ///< to UTF-8, from the encoding that the document names
};

/// Takes what libxml2 complains of outside the parser: that bytes cannot be converted. It would
/// write to standard error.
class ConversionErrors {
public:
    explicit ConversionErrors(Notes& notes) {
        xmlSetStructuredErrorFunc(
            &notes, [](void* self, xmlError*) { static_cast<Notes*>(self)->isConverted = false; });
    }
    ConversionErrors(const ConversionErrors&) = delete;
    ConversionErrors& operator=(const ConversionErrors&) = delete;
    ~ConversionErrors() { xmlSetStructuredErrorFunc(nullptr, nullptr); }
};

Notes& notesOf(void* context) {
    return *static_cast<Notes*>(static_cast<xmlParserCtxt*>(context)->_private);
}

void noteError(void* context, xmlError* error) {
    Notes& notes = notesOf(context);
    if (!notes.wrong && error->level >= XML_ERR_ERROR && error->domain != XML_FROM_NAMESPACE)
        notes.wrong = findingOf(*error, notes.isConverted);
}

void refuseDocumentType(void* context, const xmlChar*, const xmlChar*, const xmlChar*) {
    auto* const parser = static_cast<xmlParserCtxt*>(context);
    notesOf(context).wrong = {parser->input->line, "a document type declaration stands here",
                              "remove everything from \"<!DOCTYPE\" to its \">\""};
    xmlStopParser(parser);
}

void noteElement(void* context, const xmlChar* name, const xmlChar* prefix, const xmlChar* uri,
                 int namespaceCount, const xmlChar** namespaces, int attributeCount,
                 int defaultedCount, const xmlChar** attributes) {
    auto* const parser = static_cast<xmlParserCtxt*>(context);
    xmlSAX2StartElementNs(context, name, prefix, uri, namespaceCount, namespaces, attributeCount,
                          defaultedCount, attributes);
    if (parser->node != nullptr) notesOf(context).lines.emplace(parser->node, parser->input->line);
}

/// Notes what was read last, `text` from its byte `first` on. The parser has counted its lines
/// already, but not the carriage returns without a line feed that became line feeds in `text`: a
/// line before that of the element around it cannot be right.
void noteFrom(void* context, std::string_view text, std::size_t first) {
    auto* const parser = static_cast<xmlParserCtxt*>(context);
    if (parser->node == nullptr) return;
    const auto linesBehind =
        std::count(text.begin() + static_cast<std::ptrdiff_t>(first), text.end(), '\n');
    const long line = parser->input->line - linesBehind;
    auto& lines = notesOf(context).lines;
    lines.emplace(parser->node->last, std::max(line, lines.at(parser->node)));
}

std::string_view bytesOf(const xmlChar* text, int length) {
    return {reinterpret_cast<const char*>(text), static_cast<std::size_t>(length)};
}

void noteText(void* context, const xmlChar* text, int length) {
    xmlSAX2Characters(context, text, length);
    const std::string_view piece = bytesOf(text, length);
    const std::size_t first = piece.find_first_not_of(kBlanks);
    if (first != std::string_view::npos) noteFrom(context, piece, first);
}

/// The schema takes a section for text even where it holds nothing but blanks.
void noteSection(void* context, const xmlChar* text, int length) {
    xmlSAX2CDataBlock(context, text, length);
    const std::string_view piece = bytesOf(text, length);
    const std::size_t first = piece.find_first_not_of(kBlanks);
    noteFrom(context, piece, first == std::string_view::npos ? 0 : first);
}

}  // namespace

Markup parseMarkup(std::string_view bytes) {
    Notes notes;
    const ConversionErrors conversion(notes);
    const ContextPointer context(xmlNewParserCtxt());
    fetch::ensureMemory(context != nullptr);
    context->_private = &notes;
    context->sax->serror = noteError;
    context->sax->internalSubset = refuseDocumentType;
    context->sax->startElementNs = noteElement;
    context->sax->characters = noteText;
    context->sax->ignorableWhitespace = noteText;
    context->sax->cdataBlock = noteSection;
    DocumentPointer document(xmlCtxtReadMemory(context.get(), bytes.data(),
                                               static_cast<int>(bytes.size()), nullptr, nullptr,
                                               XML_PARSE_NONET));
    fetch::ensureMemory(document || context->errNo != XML_ERR_NO_MEMORY);
    if (!document && (!notes.wrong || trimmed(bytes).empty()))
        notes.wrong = Finding{1, "there is no document", kBegin};
    if (notes.wrong) document.reset();
    return {std::move(document), std::move(notes.wrong), std::move(notes.lines)};
}

std::string nameOf(const xmlNode* node) {
    std::string name(view(node->name));
    if (node->ns == nullptr || node->ns->prefix == nullptr) return name;
    return std::string(view(node->ns->prefix)) + ":" + name;
}

std::string contentOf(const xmlNode* node) {
    const XmlText text(xmlNodeGetContent(node));
    return text ? std::string(view(text.get())) : std::string();
}

std::string inQuotes(std::string_view bytes) {
    return '"' + shortened(bytes, kMostQuotedBytes) + '"';
}

}  // namespace thermika::cli

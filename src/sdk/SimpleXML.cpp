// The reader's cursor and getters. How a file becomes text and how tags are found stands in
// units of its own.
#include "sdk/SimpleXML.h"

#include <sys/stat.h>

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>

#include "sdk/IRCalibrationManager.h"
#include "sdk/Logger.h"
#include "sdk/StringHelpers.h"
#include "sdk/base/CaliDirectory.h"
#include "sdk/base/NumericLocale.h"
#include "sdk/base/PathLimits.h"
#include "sdk/xml/DocumentText.h"
#include "sdk/xml/NumberText.h"
#include "sdk/xml/TagSearch.h"

namespace dax {

namespace {

constexpr std::size_t kPathChars = kPathBytes - 1;
constexpr std::uint16_t kDeepestParent = 253;  // one level below is the deepest that is reached
constexpr std::int32_t kNoOccurrence = -1;
constexpr std::int32_t kNotFound = -1;

void log(unsigned int severity, int line, const std::string& message) {
    kelvra::Logger::getInstance()->print(severity, "SimpleXML", line, message);
}

[[noreturn]] void endOnLongPath(const std::string& path) {
    std::fprintf(stderr, "path of %zu characters exceeds the limit of %zu: %s\n", path.size(),
                 kPathChars, path.c_str());
    std::abort();
}

/// The value in its plainest form, or as `scan` leaves it in what `*out` held. Callers know that
/// there is one: to look at an optional here costs a tenth of a document's reading time.
template <typename T, typename Plain>
void convert(std::string_view value, Plain plain, int (*scan)(const char*, T*), T* out) {
    if (const auto number = plain(value)) {
        *out = static_cast<T>(*number);
        leaveNumericLocaleAsGuardDoes();
    } else {
        scan(std::string(value).c_str(), out);
    }
}

}  // namespace

bool compTokens(CommentToken a, CommentToken b) { return a.pos < b.pos; }

// Deliberate: LC_NUMERIC stays "C" for the whole process, so that decimal points read as ".".
SimpleXML::SimpleXML() {
    std::setlocale(LC_NUMERIC, "C");
    forgetElements();
}

SimpleXML::~SimpleXML() = default;

bool SimpleXML::open(const char* dir, char* name, const char* rootName) {
    if (dir == nullptr || name == nullptr) return false;
    // Deliberate: the manager exists after this call even though nothing of it is used here.
    IRCalibrationManager::getInstance();
    std::optional<std::string> path = caliDirectory(dir, kPathChars + 1);
    if (!path) return false;
    if (path->size() > kPathChars) endOnLongPath(*path);
    mkdir(path->c_str(), kDirectoryMode);
    path->append("/").append(name).append(".xml");
    if (path->size() > kPathChars) endOnLongPath(*path);
    return open(path->c_str(), rootName);
}

bool SimpleXML::open(const char* file, const char* rootName) {
    if (file == nullptr || rootName == nullptr) return false;
    std::optional<DocumentText> document = readDocumentText(file, rootName);
    if (!document) {
        log(kelvra::kLogDebug, __LINE__, std::string("Failed to open file ") + file);
        return false;
    }
    text = std::move(document->text);
    // Deliberate: `size` also counts the comments; every search stops at the zero byte.
    size = static_cast<std::int32_t>(document->joinedSize);
    m_length = document->size;
    depth = 0;
    start[0] = end[0] = 0;
    forgetElements();
    if (document->commentsPairUp) return true;
    log(kelvra::kLogError, __LINE__, text.get());
    log(kelvra::kLogError, __LINE__,
        std::string("Format of file ") + file +
            " is wrong. Verify, that the XML document is well-formed!");
    return false;
}

bool SimpleXML::setNode() {
    depth = 0;
    start[0] = 0;
    end[0] = size;
    m_closingTag[0] = static_cast<std::uint32_t>(m_tags.count());
    return true;
}

bool SimpleXML::descend(const ElementName& name, int index) {
    if (index < 0 || depth > kDeepestParent || !text) return false;
    const std::size_t child = depth + std::size_t{1};
    ensureIndex();
    const std::size_t from = m_firstTag[depth];
    const std::size_t to = m_closingTag[depth];
    std::int32_t occurrence = 0;
    Element found;
    if (m_occurrence[child] <= index && holdsElement(child, name)) {
        found = {start[child], end[child], m_openingTag[child], m_firstTag[child],
                 m_closingTag[child]};
        occurrence = m_occurrence[child];
    } else if (!findElement(name, from, to, to, found)) {
        return false;
    }
    for (; occurrence < index; ++occurrence)
        if (!findElement(name, found.closingTag, to, to, found)) return false;

    // What was found below stays found while the element is the same.
    if (start[child] != found.start || end[child] != found.end)
        m_occurrence[child + 1] = kNoOccurrence;
    start[child] = found.start;
    end[child] = found.end;
    m_openingTag[child] = found.openingTag;
    m_firstTag[child] = found.firstTag;
    m_closingTag[child] = found.closingTag;
    m_occurrence[child] = occurrence;
    ++depth;
    return true;
}

bool SimpleXML::getNode(char** out) {
    if (out == nullptr || end[depth] <= start[depth]) return false;
    const auto from = static_cast<std::size_t>(start[depth]);
    const auto length = static_cast<std::size_t>(end[depth]) - from;
    auto copy = std::make_unique<char[]>(length + 1);
    // The whole document's range also counts comments that are gone.
    std::memcpy(copy.get(), text.get() + from, std::min(length, m_length - from));
    *out = copy.release();
    return true;
}

// Deliberate: unlike for setNode(), an element also counts whose content starts or whose closing
// tag stands right at the current element's end.
int SimpleXML::countElements(const ElementName& name) {
    if (depth > kDeepestParent || !text) return 0;
    ensureIndex();
    std::size_t from = m_firstTag[depth];
    const std::size_t to = m_closingTag[depth];
    const std::size_t closingTo = std::min(to + 1, m_tags.count());
    int count = 0;
    for (Element found; findElement(name, from, to, closingTo, found); ++count)
        from = found.closingTag;
    return count;
}

int SimpleXML::getKey(const char* name, int from, int limit, bool closing) {
    if (name == nullptr || !text || from < 0 || limit < 0) return kNotFound;
    const TagKind kind = closing ? TagKind::kClosing : TagKind::kOpening;
    const std::size_t at = findTag(loadedText(), name, kind, static_cast<std::size_t>(from),
                                   static_cast<std::size_t>(limit));
    if (at == kNoTag) return kNotFound;
    return static_cast<int>(closing ? at : at + tagLength(name, kind));
}

bool SimpleXML::read(const ElementName& name, int* out) {
    const auto value = firstValue(name);
    if (!value || out == nullptr) return false;
    convert(*value, plainInteger, _tscanfi, out);
    return true;
}

bool SimpleXML::read(const ElementName& name, unsigned short* out) {
    const auto value = firstValue(name);
    if (!value || out == nullptr) return false;
    convert(*value, plainInteger, _tscanfus, out);
    return true;
}

bool SimpleXML::read(const ElementName& name, bool* out) {
    const auto value = firstValue(name);
    if (!value || out == nullptr) return false;
    int number = 0;
    convert(*value, plainInteger, _tscanfi, &number);
    *out = number > 0;
    return true;
}

bool SimpleXML::read(const ElementName& name, long* out) {
    const auto value = firstValue(name);
    if (!value || out == nullptr) return false;
    // A leading zero announces no other base here; the scanner reads what plainInteger declines.
    convert(*value, plainInteger, _tscanfld, out);
    return true;
}

bool SimpleXML::read(const ElementName& name, float* out) {
    const auto value = firstValue(name);
    if (!value || out == nullptr) return false;
    convert(*value, plainFloat, _tscanff, out);
    return true;
}

bool SimpleXML::read(const ElementName& name, char** out) {
    if (out == nullptr) return false;
    *out = nullptr;
    const auto value = firstValue(name);
    if (!value) return false;
    auto copy = std::make_unique<char[]>(value->size() + 1);
    std::memcpy(copy.get(), value->data(), value->size());
    *out = copy.release();
    return true;
}

void SimpleXML::forgetElements() {
    m_tags.clear();
    m_occurrence.fill(kNoOccurrence);
}

void SimpleXML::buildIndex() {
    m_tags.build(loadedText());
    m_firstTag[0] = 0;
    // No element is found before the cursor was set to the document.
    m_closingTag[0] = end[0] == 0 ? 0 : static_cast<std::uint32_t>(m_tags.count());
}

/// Whether what is kept for `level` is an element `name` of the level above.
bool SimpleXML::holdsElement(std::size_t level, const ElementName& name) const {
    if (m_occurrence[level] == kNoOccurrence) return false;
    const std::size_t content =
        m_tags.offsetOf(m_openingTag[level]) + tagLength(name.text(), TagKind::kOpening);
    return content == static_cast<std::size_t>(start[level]) &&
           m_tags.isAt(loadedText(), name, TagKind::kOpening, m_openingTag[level]);
}

/// The element whose opening tag is `opening`, when its closing tag comes before `closingTo`.
bool SimpleXML::completeElement(const ElementName& name, std::size_t opening, std::size_t closingTo,
                                Element& found) const {
    const std::string_view all = loadedText();
    const std::size_t content =
        m_tags.offsetOf(opening) + tagLength(name.text(), TagKind::kOpening);
    // Deliberate: the first closing tag of the name, so an element that holds one of its own name
    // ends where that one does.
    const std::size_t first = m_tags.firstAt(content, opening + 1);
    std::size_t closing = first;  // where the element is a value
    if (closing >= closingTo || !m_tags.isAt(all, name, TagKind::kClosing, closing))
        closing = m_tags.find(all, name, TagKind::kClosing, first, closingTo);
    if (closing == kNoTag) return false;
    found.start = static_cast<std::int32_t>(content);
    found.end = static_cast<std::int32_t>(m_tags.offsetOf(closing));
    found.openingTag = static_cast<std::uint32_t>(opening);
    found.firstTag = static_cast<std::uint32_t>(first);
    found.closingTag = static_cast<std::uint32_t>(closing);
    return true;
}

/// The text of the first element `name` in the current one; the cursor stays where it is.
std::optional<std::string_view> SimpleXML::firstValue(const ElementName& name) {
    if (depth > kDeepestParent || !text) return std::nullopt;
    ensureIndex();
    const std::size_t to = m_closingTag[depth];
    Element found;
    if (!findElement(name, m_firstTag[depth], to, to, found)) return std::nullopt;
    return std::string_view(text.get() + found.start,
                            static_cast<std::size_t>(found.end - found.start));
}

}  // namespace dax

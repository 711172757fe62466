// The reader's cursor and getters. Units of their own turn a file into text and find tags.
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
#include "sdk/xml/TagIndex.h"

namespace dax {

namespace {

constexpr std::size_t kPathChars = kPathBytes - 1;
constexpr std::int32_t kNotFound = -1;

void log(unsigned int severity, int line, const std::string& message) {
    kelvra::Logger::getInstance()->print(severity, "SimpleXML", line, message);
}

[[noreturn]] void endOnLongPath(const std::string& path) {
    std::fprintf(stderr, "path of %zu characters exceeds the limit of %zu: %s\n", path.size(),
                 kPathChars, path.c_str());
    std::abort();
}

/// Stores the value in its plainest form, or as `scan` leaves it in what `*out` held. False when
/// there is none.
template <typename T, typename Plain>
bool convert(std::optional<std::string_view> value, Plain plain, int (*scan)(const char*, T*),
             T* out) {
    if (!value || out == nullptr) return false;
    if (const auto number = plain(*value)) {
        *out = static_cast<T>(*number);
        setNumericLocaleAsCharacterLocale();
    } else {
        scan(std::string(*value).c_str(), out);
    }
    return true;
}

}  // namespace

bool compTokens(CommentToken a, CommentToken b) { return a.pos < b.pos; }

// Deliberate: for the whole process, so that decimal points read as ".", until the first getter
// that finds its element gives LC_NUMERIC the name of LC_CTYPE.
SimpleXML::SimpleXML() { std::setlocale(LC_NUMERIC, "C"); }

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
    m_tags.reset();
    m_levels.fill(Level());
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
    if (m_tags) m_levels[0].closingTag = static_cast<std::uint32_t>(m_tags->count());
    return true;
}

bool SimpleXML::descend(std::string_view name, int index) {
    if (index < 0 || depth > kDeepestParent || !text) return false;
    ensureIndex();
    const Level found = findSibling(name, index);
    if (!found.exists()) return false;
    const std::size_t child = depth + std::size_t{1};
    const std::int32_t contentFrom = contentStart(found, name);
    const auto contentTo = static_cast<std::int32_t>(m_tags->offsetOf(found.closingTag));
    // What was found below stays found while the element is the same.
    if (start[child] != contentFrom || end[child] != contentTo) m_levels[child + 1] = Level();
    start[child] = contentFrom;
    end[child] = contentTo;
    m_levels[child] = found;
    ++depth;
    return true;
}

bool SimpleXML::resetNode() {
    if (depth == 0) return false;
    --depth;
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
int SimpleXML::countElements(std::string_view name) {
    if (depth > kDeepestParent || !text) return 0;
    ensureIndex();
    const Level& current = m_levels[depth];
    const std::size_t closingTo = std::min(current.closingTag + std::size_t{1}, m_tags->count());
    int count = 0;
    Level found = findElement(name, current.firstTag, current.closingTag, closingTo);
    for (; found.exists(); ++count)
        found = findElement(name, found.closingTag, current.closingTag, closingTo);
    return count;
}

int SimpleXML::getKey(const char* name, int from, int limit, bool closing) {
    if (name == nullptr || !text || from < 0 || limit < 0) return kNotFound;
    const TagKind kind = closing ? TagKind::kClosing : TagKind::kOpening;
    const std::size_t at = findTag({text.get(), m_length}, name, kind,
                                   static_cast<std::size_t>(from), static_cast<std::size_t>(limit));
    if (at == kNoTag) return kNotFound;
    return static_cast<int>(closing ? at : at + tagLength(name, kind));
}

bool SimpleXML::read(std::string_view name, int* out) {
    return convert(firstValue(name), plainInteger, _tscanfi, out);
}

bool SimpleXML::read(std::string_view name, unsigned short* out) {
    return convert(firstValue(name), plainInteger, _tscanfus, out);
}

bool SimpleXML::read(std::string_view name, bool* out) {
    int number = 0;
    if (!convert(firstValue(name), plainInteger, _tscanfi, out == nullptr ? nullptr : &number))
        return false;
    *out = number > 0;
    return true;
}

bool SimpleXML::read(std::string_view name, long* out) {
    // A leading zero announces no other base here; the scanner reads what plainInteger declines.
    return convert(firstValue(name), plainInteger, _tscanfld, out);
}

bool SimpleXML::read(std::string_view name, float* out) {
    return convert(firstValue(name), plainFloat, _tscanff, out);
}

bool SimpleXML::read(std::string_view name, char** out) {
    if (out == nullptr) return false;
    *out = nullptr;
    const auto value = firstValue(name);
    if (!value) return false;
    auto copy = std::make_unique<char[]>(value->size() + 1);
    std::memcpy(copy.get(), value->data(), value->size());
    *out = copy.release();
    return true;
}

void SimpleXML::ensureIndex() {
    if (m_tags) return;
    m_tags = std::make_unique<TagIndex>(std::string_view(text.get(), m_length));
    // No element is found before the cursor was set to the document.
    m_levels[0].closingTag = end[0] == 0 ? 0 : static_cast<std::uint32_t>(m_tags->count());
}

/// Where the content of an element `name` begins.
std::int32_t SimpleXML::contentStart(const Level& element, std::string_view name) const {
    return static_cast<std::int32_t>(m_tags->offsetOf(element.openingTag) +
                                     tagLength(name, TagKind::kOpening));
}

/// The element `name` of the current one with this occurrence number. Begins at the one that was
/// found there last, where that is not behind it.
SimpleXML::Level SimpleXML::findSibling(std::string_view name, int index) const {
    const std::size_t child = depth + std::size_t{1};
    const Level& last = m_levels[child];
    const std::size_t to = m_levels[depth].closingTag;
    const bool isKnown = last.exists() && last.occurrence <= index &&
                         start[child] == contentStart(last, name) &&
                         m_tags->isAt(name, TagKind::kOpening, last.openingTag);
    Level found = isKnown ? last : findElement(name, m_levels[depth].firstTag, to, to);
    for (int next = found.occurrence + 1; found.exists() && next <= index; ++next) {
        found = findElement(name, found.closingTag, to, to);
        if (found.exists()) found.occurrence = next;
    }
    return found;
}

/// The first element `name` whose opening tag is one of the tags `from` to `to` - 1 and whose
/// closing tag comes before `closingTo`.
SimpleXML::Level SimpleXML::findElement(std::string_view name, std::size_t from, std::size_t to,
                                        std::size_t closingTo) const {
    const std::size_t opening = m_tags->find(name, TagKind::kOpening, from, to);
    if (opening == kNoTag) return {};
    const std::size_t content = m_tags->offsetOf(opening) + tagLength(name, TagKind::kOpening);
    const std::size_t first = m_tags->firstAt(content, opening + 1);
    // Deliberate: the first closing tag of the name, so an element that holds one of its own name
    // ends where that one does.
    std::size_t closing = first;  // where the element is a value
    if (closing >= closingTo || !m_tags->isAt(name, TagKind::kClosing, closing))
        closing = m_tags->find(name, TagKind::kClosing, first, closingTo);
    if (closing == kNoTag) return {};
    return Level{static_cast<std::uint32_t>(opening), static_cast<std::uint32_t>(first),
                 static_cast<std::uint32_t>(closing), 0};
}

/// The text of the first element `name` in the current one; the cursor stays where it is.
std::optional<std::string_view> SimpleXML::firstValue(std::string_view name) {
    if (depth > kDeepestParent || !text) return std::nullopt;
    ensureIndex();
    const Level& current = m_levels[depth];
    const Level found = findElement(name, current.firstTag, current.closingTag, current.closingTag);
    if (!found.exists()) return std::nullopt;
    const auto from = static_cast<std::size_t>(contentStart(found, name));
    return std::string_view(text.get() + from, m_tags->offsetOf(found.closingTag) - from);
}

}  // namespace dax

// A small reader for the line-oriented XML documents that the system consumes. Not a general XML
// parser: attributes, entities, CDATA and self-closing elements are not understood; an element is
// the text between the first "<name>" and the first "</name>" after it, at whatever nesting level.
//
// Use: open(), then setNode() to select the whole document, then descend and read. An operation
// called before that, or with a null pointer, finds nothing; only getKey() needs no setNode().
// Nothing outside the text is read. Allocation failures propagate, and the object stays usable.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

namespace dax {

class TagIndex;

/// A comment delimiter in a text.
struct CommentToken {
    std::int32_t type;  ///< 0 for "<!--", 1 for "-->"
    std::int32_t pos;   ///< offset of the opening's "<", or just past the closing's ">"
};

/// Whether `a` stands before `b`; the type plays no part. For callers that sort delimiters.
bool compTokens(CommentToken a, CommentToken b);

/// A loaded document and a cursor in it.
class SimpleXML {
public:
    /// Process: LC_NUMERIC is "C" afterwards.
    SimpleXML();
    ~SimpleXML();  ///< texts handed out stay valid
    SimpleXML(const SimpleXML&) = delete;
    SimpleXML& operator=(const SimpleXML&) = delete;

    /// Opens "<dir>/<name>.xml", or "Imager/<name>.xml" below the working directory when `dir` is
    /// empty (false when there is none or its own path has more than 259 characters).
    /// Process: creates the directory, one level, mode 0777 less the umask, when it is missing, and
    /// the calibration manager; a file that cannot be opened or whose comments do not pair up also
    /// creates the logger. A path of more than 259 characters ends the process with abort() and a
    /// line on standard error.
    bool open(const char* dir, char* name, const char* rootName);

    /// Loads the lines strictly between the first line that contains "<rootName" and the next that
    /// contains "</rootName>", joined, without comments; comments may be nested. Reading begins at
    /// the file's first "<". A line of more than 4095 characters ends the document there; a line is
    /// read up to its first zero byte; a carriage return reads as a line feed. A document without
    /// the root reads as empty, and that is success, as is a file without any "<".
    ///
    /// False when the file is empty, is no regular file, has more than 2^31 bytes or cannot be
    /// read: with a DEBUG line in the log (none for null), and what was loaded before still there.
    /// False, with the document and a message as ERROR lines, when comment delimiters do not pair
    /// up; the text with its comments is loaded then. A document loaded before is released. A read
    /// error in mid-file counts as a file that cannot be opened. Waits for no pipe and no device,
    /// but for the end of a lease that another process has on the file, unless the file is replaced
    /// by one at that very moment.
    /// Process: a failure with a line in the log creates the logger, which says once when nobody
    /// has configured it.
    bool open(const char* file, const char* rootName);

    /// Moves the cursor to the whole document. Always true.
    bool setNode();

    /// Descends to the first element `name` in the current one, or to the one with zero-based
    /// occurrence number `index`. False, cursor unchanged, when there is none or at depth 254.
    bool setNode(const char* name) { return descend(nameOf(name), 0); }
    bool setNode(const char* name, int index) { return descend(nameOf(name), index); }

    bool resetNode();  ///< goes up one level; false at the top

    /// A copy of the current element's text; the caller frees it with delete[]. False, `*out`
    /// unchanged, when it is empty. The whole document's is as long as it was with its comments,
    /// and ends in zero bytes.
    bool getNode(char** out);

    /// How many elements `name` follow one another in the current one; 0 at depth 254. May count
    /// one more than setNode() reaches, whose tag stands right at the current element's end.
    int getNodeCount(const char* name) { return countElements(nameOf(name)); }

    /// Searches "<name>" (or "</name>" when `closing`) from byte offset `from` on. The offset of
    /// the closing tag, or that of the first byte after the opening tag; -1 when none begins before
    /// `limit` and when one of the two is negative.
    int getKey(const char* name, int from, int limit, bool closing);

    /// Reads the first element `name` in the current one: as "%i" (hexadecimal after "0x", octal
    /// after "0"), "%hu", "%i" (true when above 0), "%ld" and "%f" scan it. True when the element
    /// is there; `*out` keeps its value when the text is no such number (getBool: false). False,
    /// `*out` unchanged, when it is not, and at depth 254.
    /// Process: LC_NUMERIC bears the name of LC_CTYPE once the element was found ("C" where there
    /// is no such numeric locale); while the number is read it may be "C".
    bool getInt(const char* name, int* out) { return read(nameOf(name), out); }
    /// As getInt().
    bool getUnsignedShort(const char* name, unsigned short* out) { return read(nameOf(name), out); }
    bool getBool(const char* name, bool* out) { return read(nameOf(name), out); }  ///< as getInt()
    bool getLong(const char* name, long* out) { return read(nameOf(name), out); }  ///< as getInt()
    /// As getInt(); exactly the nearest to the decimal number, in the rounding mode to nearest.
    bool getFloat(const char* name, float* out) { return read(nameOf(name), out); }

    /// A copy of the text of the first element `name` in the current one, which may be empty; the
    /// caller frees it with delete[]. False, `*out` null, when there is none.
    bool getString(const char* name, char** out) { return read(nameOf(name), out); }

private:
    static constexpr std::uint16_t kCursorLevels = 256;
    static constexpr std::uint16_t kDeepestParent = kCursorLevels - 3;  ///< has children in reach
    std::int32_t size = 0;
    std::array<std::int32_t, kCursorLevels> start{};
    std::array<std::int32_t, kCursorLevels> end{};
    std::uint16_t depth = 0;
    std::unique_ptr<char[]> text;

    /// The tags of an element, by their numbers in the index.
    struct Level {
        std::uint32_t openingTag = 0;
        std::uint32_t firstTag = 0;  ///< the first one behind the opening tag
        std::uint32_t closingTag = 0;
        std::int32_t occurrence = -1;  ///< of its name, in the level above; -1 for no element
        bool exists() const { return occurrence >= 0; }
    };

    std::size_t m_length = 0;  ///< before the terminator; less than `size` once comments are gone
    std::unique_ptr<TagIndex> m_tags;  ///< made by the first search of the document
    /// Of each `start` and `end`; kept when the cursor leaves: the next sibling is searched there.
    std::array<Level, kCursorLevels> m_levels{};

    /// A null name is one that no text holds. Inline, so that a literal's length is known.
    static std::string_view nameOf(const char* name) {
        return name != nullptr ? std::string_view(name) : std::string_view("\0", 1);
    }
    bool descend(std::string_view name, int index);
    int countElements(std::string_view name);
    bool read(std::string_view name, int* out);
    bool read(std::string_view name, unsigned short* out);
    bool read(std::string_view name, bool* out);
    bool read(std::string_view name, long* out);
    bool read(std::string_view name, float* out);
    bool read(std::string_view name, char** out);

    void ensureIndex();
    Level findElement(std::string_view name, std::size_t from, std::size_t to,
                      std::size_t closingTo) const;
    Level findSibling(std::string_view name, int index) const;
    std::int32_t contentStart(const Level& element, std::string_view name) const;
    std::optional<std::string_view> firstValue(std::string_view name);
};

}  // namespace dax

// See the header.
#include "support/ReaderModel.h"

#include <sys/stat.h>

#include <algorithm>
#include <clocale>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <fstream>

namespace thermika_test {

namespace {

constexpr int kDeepestParent = 253;
constexpr std::size_t kLongestLine = 4095;

struct Token {
    bool isClosing;
    int pos;
};

bool standsBefore(const Token& a, const Token& b) {
    return a.pos < b.pos || (a.pos == b.pos && a.isClosing && !b.isClosing);
}

/// Whole regular files of at least one byte only.
bool readRegularFile(const char* file, std::string& bytes) {
    struct stat status {};
    if (stat(file, &status) != 0 || !S_ISREG(status.st_mode)) return false;
    std::ifstream in(file, std::ios::binary);
    if (!in) return false;
    bytes.resize(static_cast<std::size_t>(status.st_size));
    in.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return in && !bytes.empty();
}

/// The next line up to its first zero byte; false at the end and at a line that is too long.
bool readLine(const std::string& bytes, std::size_t& at, std::string& line) {
    line.clear();
    for (bool isAnyRead = false;; isAnyRead = true) {
        if (at == bytes.size()) {
            if (!isAnyRead) return false;
            break;
        }
        if (bytes[at] == '\n') {
            ++at;
            break;
        }
        if (line.size() == kLongestLine) return false;
        line += bytes[at++];
    }
    line.erase(std::min(line.find('\0'), line.size()));
    return true;
}

bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

/// Offset, or -1.
int find(const std::string& text, const std::string& part, int from) {
    if (from < 0 || static_cast<std::size_t>(from) > text.size()) return -1;
    const std::size_t at = text.find(part, static_cast<std::size_t>(from));
    return at == std::string::npos ? -1 : static_cast<int>(at);
}

char* handOut(const std::string& text) {
    char* const copy = new char[text.size() + 1];
    std::memcpy(copy, text.c_str(), text.size() + 1);
    return copy;
}

}  // namespace

bool ReaderModel::open(const char* file, const char* rootName) {
    std::string bytes;
    if (!readRegularFile(file, bytes)) {
        m_log.push_back({3, std::string("Failed to open file ") + file});
        return false;
    }
    load(bytes, rootName);
    if (removeComments()) return true;
    m_log.push_back({0, m_text});
    m_log.push_back({0, std::string("Format of file ") + file +
                            " is wrong. Verify, that the XML document is well-formed!"});
    return false;
}

void ReaderModel::load(const std::string& bytes, const std::string& rootName) {
    const std::string opening = "<" + rootName;
    const std::string closing = "</" + rootName + ">";
    std::size_t at = 0;
    while (at < bytes.size() && bytes[at] != '<') ++at;

    m_text.clear();
    bool isInRoot = false;
    std::string line;
    while (readLine(bytes, at, line)) {
        if (!isInRoot) {
            isInRoot = contains(line, opening);
            continue;
        }
        if (contains(line, closing)) break;
        m_text += line;
    }
    for (char& byte : m_text)
        if (byte == '\r') byte = '\n';
    m_size = static_cast<int>(m_text.size());
    m_depth = 0;
    m_start[0] = m_end[0] = 0;
}

bool ReaderModel::removeComments() {
    std::vector<Token> tokens;
    int opening = find(m_text, "<!--", 0);
    int closing = find(m_text, "-->", 0);
    while (opening >= 0 || closing >= 0) {
        if (opening >= 0) {
            tokens.push_back({false, opening});
            opening = opening < m_size - 4 ? find(m_text, "<!--", opening + 1) : -1;
        }
        if (closing >= 0) {
            const int past = closing + 3;
            tokens.push_back({true, past});
            closing = past < m_size - 3 ? find(m_text, "-->", past + 1) : -1;
        }
    }
    if (tokens.empty()) return true;
    std::stable_sort(tokens.begin(), tokens.end(), standsBefore);

    std::string scratch = m_text;
    int nesting = 0;
    int removed = 0;
    int commentStart = 0;
    for (const Token& token : tokens) {
        if (!token.isClosing) {
            if (nesting == 0) commentStart = token.pos;
            ++nesting;
            continue;
        }
        --nesting;
        if (nesting < 0) return false;
        if (nesting > 0) continue;
        for (int from = token.pos, to = commentStart - removed; from < m_size; ++from, ++to)
            scratch[static_cast<std::size_t>(to)] = m_text[static_cast<std::size_t>(from)];
        removed += token.pos - commentStart;
    }
    if (nesting != 0) return false;
    m_text = scratch.substr(0, static_cast<std::size_t>(m_size - removed));
    return true;
}

bool ReaderModel::setNode() {
    m_depth = 0;
    m_start[0] = 0;
    m_end[0] = m_size;
    return true;
}

bool ReaderModel::setNode(const char* name) {
    if (m_depth > kDeepestParent) return false;
    const auto d = static_cast<std::size_t>(m_depth);
    const int start = getKey(name, m_start[d], m_end[d], false);
    if (start < 0) return false;
    const int end = getKey(name, start, m_end[d], true);
    if (end < 0) return false;
    m_start[d + 1] = start;
    m_end[d + 1] = end;
    ++m_depth;
    return true;
}

bool ReaderModel::setNode(const char* name, int index) {
    if (index < 0 || m_depth > kDeepestParent) return false;
    const auto d = static_cast<std::size_t>(m_depth);
    int from = m_start[d];
    for (int count = 0; count <= index; ++count) {
        const int start = getKey(name, from, m_end[d], false);
        if (start < 0) return false;
        const int end = getKey(name, start, m_end[d], true);
        if (end < 0) return false;
        m_start[d + 1] = start;
        m_end[d + 1] = end;
        from = end;
    }
    ++m_depth;
    return true;
}

bool ReaderModel::resetNode() {
    if (m_depth == 0) return false;
    --m_depth;
    return true;
}

bool ReaderModel::getNode(char** out) {
    const auto d = static_cast<std::size_t>(m_depth);
    const int length = m_end[d] - m_start[d];
    if (length < 1) return false;
    *out = handOut(
        m_text.substr(static_cast<std::size_t>(m_start[d]), static_cast<std::size_t>(length)));
    return true;
}

int ReaderModel::getNodeCount(const char* name) {
    if (m_depth > kDeepestParent) return 0;
    const auto d = static_cast<std::size_t>(m_depth);
    const std::string tag = std::string("<") + name + ">";
    int from = m_start[d];
    int count = 0;
    for (;;) {
        const int opening = find(m_text, tag, from);
        if (opening < 0 || opening >= m_size) return count;
        const int start = opening + static_cast<int>(tag.size());
        if (start > m_end[d]) return count;
        const int end = getKey(name, start, m_size, true);
        if (end < 0 || end > m_end[d]) return count;
        ++count;
        from = end;
    }
}

int ReaderModel::getKey(const char* name, int from, int limit, bool closing) const {
    const std::string tag = std::string(closing ? "</" : "<") + name + ">";
    const int at = find(m_text, tag, from);
    if (at < 0 || at >= limit) return -1;
    return closing ? at : at + static_cast<int>(tag.size());
}

bool ReaderModel::scan(const char* name, const char* format, void* out) {
    if (!setNode(name)) return false;
    const auto d = static_cast<std::size_t>(m_depth);
    const std::string value = m_text.substr(static_cast<std::size_t>(m_start[d]),
                                            static_cast<std::size_t>(m_end[d] - m_start[d]));
    const std::string characterLocale = std::setlocale(LC_CTYPE, nullptr);
    std::setlocale(LC_NUMERIC, "C");
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    std::sscanf(value.c_str(), format, out);
#pragma GCC diagnostic pop
    std::setlocale(LC_NUMERIC, characterLocale.c_str());
    return resetNode();
}

bool ReaderModel::getInt(const char* name, int* out) { return scan(name, "%i", out); }

bool ReaderModel::getUnsignedShort(const char* name, unsigned short* out) {
    return scan(name, "%hu", out);
}

bool ReaderModel::getLong(const char* name, long* out) { return scan(name, "%ld", out); }

bool ReaderModel::getFloat(const char* name, float* out) { return scan(name, "%f", out); }

bool ReaderModel::getBool(const char* name, bool* out) {
    int number = 0;
    if (!scan(name, "%i", &number)) return false;
    *out = number > 0;
    return true;
}

bool ReaderModel::getString(const char* name, char** out) {
    *out = nullptr;
    if (!setNode(name)) return false;
    const auto d = static_cast<std::size_t>(m_depth);
    *out = handOut(m_text.substr(static_cast<std::size_t>(m_start[d]),
                                 static_cast<std::size_t>(m_end[d] - m_start[d])));
    return resetNode();
}

std::vector<ReaderModel::LogLine> ReaderModel::takeLog() {
    std::vector<LogLine> taken;
    taken.swap(m_log);
    return taken;
}

}  // namespace thermika_test

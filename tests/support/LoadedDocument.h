// Documents for tests of the XML reader: written to a folder of their own, opened, and read with
// the caller's part of the memory rules kept.
#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "sdk/SimpleXML.h"
#include "support/TestFiles.h"

namespace thermika_test {

/// The text that the call hands out; nothing when it answers false.
template <typename Call>
std::optional<std::string> handedOut(Call call) {
    char* text = nullptr;
    if (!call(&text)) return std::nullopt;
    std::string copy(text);
    delete[] text;
    return copy;
}

template <typename Reader>
std::optional<std::string> nodeText(Reader& reader) {
    return handedOut([&](char** out) { return reader.getNode(out); });
}

template <typename Reader>
std::optional<std::string> stringOf(Reader& reader, const char* name) {
    return handedOut([&](char** out) { return reader.getString(name, out); });
}

/// A reader that stands on the whole of a document with the root "R".
class LoadedDocument {
public:
    /// `content` stands between the root's two lines, a line of its own.
    explicit LoadedDocument(std::string_view content) {
        const std::string file = m_dir / "document.xml";
        writeFile(file, std::string("<R>\n").append(content).append("\n</R>\n"));
        if (!m_reader.open(file.c_str(), "R")) throw std::runtime_error("cannot open " + file);
        m_reader.setNode();
    }

    dax::SimpleXML* operator->() { return &m_reader; }
    dax::SimpleXML& operator*() { return m_reader; }

private:
    TempDir m_dir;
    dax::SimpleXML m_reader;
};

}  // namespace thermika_test

// Makes the index of a text's tags.
#include "sdk/xml/TagIndex.h"

namespace dax {

namespace {

constexpr std::size_t kUsualTagDistance = 16;  // as much indentation as values

}  // namespace

TagIndex::TagIndex(std::string_view text) : m_text(text) {
    using namespace tag_fingerprint;
    // Room that is not needed is never touched.
    m_offsets.reserve(text.size() / kUsualTagDistance);
    m_fingerprints.reserve(text.size() / kUsualTagDistance + kScanStep);
    visitBytes(text, '<', [&](std::size_t at) {
        m_offsets.push_back(static_cast<std::uint32_t>(at));
        const std::string_view behind(text.data() + at + 1, text.size() - at - 1);
        m_fingerprints.push_back(
            ofWord(behind.size() >= sizeof(Word) ? wordAt(behind.data()) : shortWord(behind)));
        return true;
    });
    m_fingerprints.resize(m_offsets.size() + kScanStep);
}

}  // namespace dax

// A fingerprint covers the first bytes behind a tag's "<", up to its ">". Tags that share one are
// told apart by their text.
#include "sdk/xml/TagIndex.h"

#include "sdk/xml/ByteScan.h"

namespace dax {

namespace {

constexpr std::size_t kUsualTagDistance = 16;  // as much indentation as values

}  // namespace

void TagIndex::build(std::string_view text) {
    // Nothing of an attempt for which memory did not suffice.
    m_offsets.clear();
    m_prints.clear();
    // Room that is not needed is never touched.
    m_offsets.reserve(text.size() / kUsualTagDistance);
    m_prints.reserve(text.size() / kUsualTagDistance + kScanStep);
    visitBytes<'<'>(text, [&](std::size_t at) {
        m_offsets.push_back(static_cast<std::uint32_t>(at));
        const char* const behind = text.data() + at + 1;
        const std::size_t left = text.size() - at - 1;
        m_prints.push_back(
            fingerprint(left >= sizeof(Word) ? wordAt(behind) : shortWord({behind, left})));
        return true;
    });
    m_prints.resize(m_offsets.size() + kScanStep);
    m_isBuilt = true;
}

void TagIndex::clear() { *this = TagIndex(); }

}  // namespace dax

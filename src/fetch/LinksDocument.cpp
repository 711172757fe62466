// The document is kept in memory, so no other user of the machine can put another in its place.
#include "fetch/LinksDocument.h"

#include <memory>
#include <optional>
#include <utility>

#include "fetch/Address.h"
#include "sdk/base/FileRead.h"
#include "sdk/camera/DownloadLinks.h"
#include "sdk/xml/DocumentText.h"

namespace thermika::fetch {

namespace {

constexpr std::size_t kMaxBytes = 65536;

class MemoryBody : public Body {
public:
    explicit MemoryBody(std::string& bytes) : m_bytes(bytes) {}
    void discard() override { m_bytes.clear(); }
    void announce(std::uint64_t /*bytes*/) override {}
    bool append(std::string_view bytes) override {
        if (bytes.size() > kMaxBytes - m_bytes.size()) return false;
        m_bytes.append(bytes);
        return true;
    }
    std::string problem() const override {
        return "it is larger than " + std::to_string(kMaxBytes) + " bytes";
    }

private:
    std::string& m_bytes;
};

class OneQuestion : public HttpClient {
public:
    explicit OneQuestion(Asked& asked) : m_asked(asked) {}
    std::optional<HttpItem> next() override {
        if (std::exchange(m_isAsked, true)) return std::nullopt;
        return HttpItem{m_asked.address, kMaxBytes, std::make_unique<MemoryBody>(m_asked.bytes)};
    }
    void end(std::size_t /*number*/, HttpItem& /*item*/, const Answer& answer,
             unsigned /*tries*/) override {
        m_asked.answer = answer;
    }
    void tick() override {}

private:
    Asked& m_asked;
    bool m_isAsked = false;
};

dax::DocumentText textOf(std::string_view document) {
    auto bytes = std::make_unique<char[]>(document.size() + 1);
    document.copy(bytes.get(), document.size());
    return dax::documentText({std::move(bytes), document.size()}, dax::kLinksRoot);
}

}  // namespace

Asked ask(const std::string& address, HttpQueue& queue) {
    Asked asked;
    asked.address = checkedAddress(address, asked.problem);
    if (asked.address.empty()) return asked;
    OneQuestion question(asked);
    queue.run(question);
    if (asked.answer.verdict != Answer::Verdict::kGood)
        asked.problem = "cannot get " + asked.address + ": " + asked.answer.reason;
    return asked;
}

std::string baseAddressIn(std::string_view document, std::string& problem) {
    if (document.empty()) {
        problem = "it is empty";
        return "";
    }
    const dax::DocumentText text = textOf(document);
    if (!text.commentsPairUp) {
        problem = "its comments do not pair up";
        return "";
    }
    const dax::DownloadLinks links = dax::downloadLinksIn({text.text.get(), text.size});
    if (!links.base) {
        problem = "it names no address (is it a links document?)";
        return "";
    }
    return checkedAddress(*links.base, problem);
}

}  // namespace thermika::fetch

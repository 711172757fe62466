// See the header.
#include "support/ReaderComparison.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstddef>
#include <cstring>
#include <filesystem>
#include <sstream>
#include <stdexcept>

#include <gtest/gtest.h>

#include "sdk/Logger.h"
#include "support/LogText.h"

namespace thermika_test {

namespace {

constexpr std::size_t kShownBytes = 2000;  // of a document, when a test fails

std::string show(const ReaderCall& call) {
    constexpr const char* kWords[] = {"setNode()",        "setNode",      "setNode at", "resetNode",
                                      "getNode",          "getNodeCount", "getKey",     "getInt",
                                      "getUnsignedShort", "getBool",      "getLong",    "getFloat",
                                      "getString"};
    std::ostringstream text;
    text << "  " << kWords[call.kind] << ' ' << testing::PrintToString(call.name);
    if (call.kind == ReaderCall::kAt) text << ' ' << call.index;
    if (call.kind == ReaderCall::kKey)
        text << " from " << call.from << " to " << call.limit << (call.closing ? " closing" : "");
    text << "\n";
    return text.str();
}

/// The bytes of a getter's output, those before the call included.
template <typename T, typename Reader>
std::string value(Reader& reader, const char* name, bool (Reader::*get)(const char*, T*),
                  T before) {
    T out = before;
    const bool isThere = (reader.*get)(name, &out);
    return (isThere ? "+" : "-") + std::string(reinterpret_cast<const char*>(&out), sizeof out);
}

std::string taken(bool isThere, char* text) {
    std::string outcome = isThere ? "+" : "-";
    if (text != nullptr) outcome += text;
    delete[] text;
    return outcome;
}

/// What a caller sees of one call.
template <typename Reader>
std::string outcome(Reader& reader, const ReaderCall& call) {
    const char* const name = call.name.c_str();
    char* text = nullptr;
    bool isThere = false;
    switch (call.kind) {
        case ReaderCall::kTop:
            return std::to_string(reader.setNode());
        case ReaderCall::kFirst:
            return std::to_string(reader.setNode(name));
        case ReaderCall::kAt:
            return std::to_string(reader.setNode(name, call.index));
        case ReaderCall::kUp:
            return std::to_string(reader.resetNode());
        case ReaderCall::kText:
            isThere = reader.getNode(&text);
            return taken(isThere, text);
        case ReaderCall::kCount:
            return std::to_string(reader.getNodeCount(name));
        case ReaderCall::kKey:
            return std::to_string(reader.getKey(name, call.from, call.limit, call.closing));
        case ReaderCall::kInt:
            return value<int>(reader, name, &Reader::getInt, -77);
        case ReaderCall::kShort:
            return value<unsigned short>(reader, name, &Reader::getUnsignedShort, 777);
        case ReaderCall::kBool:
            return value<bool>(reader, name, &Reader::getBool, true);
        case ReaderCall::kLong:
            return value<long>(reader, name, &Reader::getLong, -7777);
        case ReaderCall::kFloat:
            return value<float>(reader, name, &Reader::getFloat, -7.75F);
        case ReaderCall::kString:
            isThere = reader.getString(name, &text);
            return taken(isThere, text);
        case ReaderCall::kKinds:
            break;
    }
    throw std::logic_error("no such call");
}

/// The sink adds the time to a log file's name.
std::FILE* openLogIn(const std::string& folder) {
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        if (entry.path().extension() == ".log") return std::fopen(entry.path().c_str(), "rb");
    return nullptr;
}

}  // namespace

ReaderComparison::ReaderComparison()
    : m_file(m_dir / "document.xml"),
      m_fileDescriptor(::open(m_file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600)) {
    if (m_fileDescriptor < 0) throw std::runtime_error("cannot create " + m_file);
    kelvra::Logger::releaseInstance();
    kelvra::Logger::getInstance()->configure(m_dir / "all", kelvra::Logger::LOGGER_FILE, 3, 0);
    m_log = openLogIn(m_dir.path());
    if (m_log == nullptr) throw std::runtime_error("there is no log file");
}

ReaderComparison::~ReaderComparison() {
    std::fclose(m_log);
    close(m_fileDescriptor);
    kelvra::Logger::releaseInstance();
}

bool ReaderComparison::open(const std::string& bytes, const std::string& root) {
    rewrite(bytes);
    m_document = bytes.substr(0, kShownBytes);
    return openFile(m_file, root);
}

bool ReaderComparison::openMissing() { return openFile(m_dir / "missing.xml", "R"); }

bool ReaderComparison::both(const ReaderCall& call) {
    m_calls.push_back(call);
    const std::string told = outcome(m_reader, call);
    const std::string expected = outcome(m_model, call);
    return told == expected || differ("outcome", told, expected);
}

// In place: some file systems write a file to disk at once when it is emptied and written anew,
// which takes a hundred times as long.
void ReaderComparison::rewrite(const std::string& bytes) const {
    const auto size = static_cast<ssize_t>(bytes.size());
    if (pwrite(m_fileDescriptor, bytes.data(), bytes.size(), 0) != size ||
        ftruncate(m_fileDescriptor, size) != 0)
        throw std::runtime_error("cannot write " + m_file);
}

bool ReaderComparison::openFile(const std::string& file, const std::string& root) {
    m_calls.clear();
    const bool told = m_reader.open(file.c_str(), root.c_str());
    const bool expected = m_model.open(file.c_str(), root.c_str());
    if (told != expected)
        return differ("open", told ? "true" : "false", expected ? "true" : "false");
    const std::string toldLog = readersLog();
    const std::string expectedLog = modelsLog();
    return toldLog == expectedLog || differ("log", toldLog, expectedLog);
}

std::string ReaderComparison::readersLog() {
    std::string text;
    char part[4096];
    std::clearerr(m_log);
    while (const std::size_t got = std::fread(part, 1, sizeof part, m_log)) text.append(part, got);
    return withoutLineAndTime(text);
}

std::string ReaderComparison::modelsLog() {
    std::string text;
    for (const ReaderModel::LogLine& line : m_model.takeLog())
        text.append(line.severity == 0 ? "ERROR " : "DEBUG ")
            .append("[SimpleXML] ")
            .append(line.message)
            .append("\n");
    return withoutLineAndTime(text);
}

bool ReaderComparison::differ(const char* what, const std::string& told,
                              const std::string& expected) const {
    std::string calls;
    for (const ReaderCall& call : m_calls) calls += show(call);
    ADD_FAILURE() << m_title << ": " << what << " is " << testing::PrintToString(told)
                  << " instead of " << testing::PrintToString(expected) << "\n"
                  << "document " << testing::PrintToString(m_document) << "\n"
                  << calls;
    return false;
}

}  // namespace thermika_test

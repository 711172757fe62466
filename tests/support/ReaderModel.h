// A second reader of the same documents, for tests that compare the two: one small step after the
// other, every search from the beginning, nothing remembered. Slow, and meant to be.
#pragma once

#include <array>
#include <string>
#include <vector>

namespace thermika_test {

/// The same operations with the same answers as dax::SimpleXML. Log lines are collected, not
/// written. What is handed out is freed with delete[].
class ReaderModel {
public:
    struct LogLine {
        unsigned int severity;
        std::string message;
    };

    bool open(const char* file, const char* rootName);
    bool setNode();
    bool setNode(const char* name);
    bool setNode(const char* name, int index);
    bool resetNode();
    bool getNode(char** out);
    int getNodeCount(const char* name);
    int getKey(const char* name, int from, int limit, bool closing) const;
    bool getInt(const char* name, int* out);
    bool getUnsignedShort(const char* name, unsigned short* out);
    bool getBool(const char* name, bool* out);
    bool getLong(const char* name, long* out);
    bool getFloat(const char* name, float* out);
    bool getString(const char* name, char** out);

    /// The lines since the last call of takeLog().
    std::vector<LogLine> takeLog();

private:
    int m_size = 0;
    std::array<int, 256> m_start{};
    std::array<int, 256> m_end{};
    int m_depth = 0;
    std::string m_text;
    std::vector<LogLine> m_log;

    void load(const std::string& bytes, const std::string& rootName);
    bool removeComments();
    bool scan(const char* name, const char* format, void* out);
};

}  // namespace thermika_test

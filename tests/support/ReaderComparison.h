// A reader and its model side by side: both get the same files and calls, and whatever one of them
// does differently fails the test with all that is needed to repeat it.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "sdk/SimpleXML.h"
#include "support/ReaderModel.h"
#include "support/TestFiles.h"

namespace thermika_test {

/// One operation on a reader; `index` is for kAt, what follows it for kKey.
struct ReaderCall {
    enum Kind {
        kTop,
        kFirst,
        kAt,
        kUp,
        kText,
        kCount,
        kKey,
        kInt,
        kShort,
        kBool,
        kLong,
        kFloat,
        kString,
        kKinds
    };
    Kind kind = kTop;
    std::string name;
    int index = 0;
    int from = 0;
    int limit = 0;
    bool closing = false;
};

/// Takes the process's logger for as long as it lives.
class ReaderComparison {
public:
    ReaderComparison();
    ~ReaderComparison();
    ReaderComparison(const ReaderComparison&) = delete;
    ReaderComparison& operator=(const ReaderComparison&) = delete;

    /// What a failure shows first: the seed, or the place in a sample.
    void name(const std::string& title) { m_title = title; }

    /// Each false when the two differ, which fails the test.
    bool open(const std::string& bytes, const std::string& root);
    bool openMissing();
    bool both(const ReaderCall& call);

private:
    TempDir m_dir;
    std::string m_file;
    int m_fileDescriptor;
    std::FILE* m_log;
    dax::SimpleXML m_reader;
    ReaderModel m_model;
    std::string m_title;
    std::string m_document;
    std::vector<ReaderCall> m_calls;

    void rewrite(const std::string& bytes) const;
    bool openFile(const std::string& file, const std::string& root);
    std::string readersLog();
    std::string modelsLog();
    bool differ(const char* what, const std::string& told, const std::string& expected) const;
};

}  // namespace thermika_test

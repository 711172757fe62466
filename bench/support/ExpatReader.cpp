// Reading a description with expat, which hands out elements and text as it comes across them.
#include <expat.h>
#include <fcntl.h>
#include <unistd.h>

#include <memory>

#include "support/Characters.h"
#include "support/Readers.h"

namespace bench {

namespace {

constexpr int kChunkBytes = 64 * 1024;

struct ParserRelease {
    void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};
using Parser = std::unique_ptr<XML_ParserStruct, ParserRelease>;

bool parseFile(const char* path, XML_Parser parser) {
    const int file = ::open(path, O_RDONLY | O_CLOEXEC);
    if (file < 0) return false;
    bool isGood = true;
    for (bool isLast = false; isGood && !isLast;) {
        void* const chunk = XML_GetBuffer(parser, kChunkBytes);
        const ssize_t got = chunk == nullptr ? -1 : ::read(file, chunk, kChunkBytes);
        isLast = got == 0;
        isGood = got >= 0 &&
                 XML_ParseBuffer(parser, static_cast<int>(got), isLast ? 1 : 0) == XML_STATUS_OK;
    }
    close(file);
    return isGood;
}

/// Fills a camera while the parser walks the file.
class Filler {
public:
    explicit Filler(Camera& camera) : m_camera(camera) {}

    void attachTo(XML_Parser parser) {
        XML_SetUserData(parser, this);
        XML_SetElementHandler(
            parser,
            [](void* self, const XML_Char* name, const XML_Char**) {
                static_cast<Filler*>(self)->begin(name);
            },
            [](void* self, const XML_Char* name) { static_cast<Filler*>(self)->end(name); });
        XML_SetCharacterDataHandler(parser, [](void* self, const XML_Char* text, int length) {
            static_cast<Filler*>(self)->m_text.append(text, static_cast<std::size_t>(length));
        });
    }

private:
    enum class Place { kElsewhere, kMain, kOptics, kRange, kFrameRate, kParams };

    void begin(std::string_view name) {
        m_text.clear();
        if (name == "Main") m_place = Place::kMain;
        if (name == "OpticsDef") {
            m_camera.optics.emplace_back();
            m_place = Place::kOptics;
        }
        if (name == "TemperatureRange") {
            m_camera.optics.back().ranges.emplace_back();
            m_place = Place::kRange;
        }
        if (name == "Framerate") {
            m_camera.optics.back().ranges.back().frameRates.emplace_back();
            m_place = Place::kFrameRate;
        }
        if (name == "TableParams") m_place = Place::kParams;
    }

    void end(std::string_view name) {
        switch (m_place) {
            case Place::kMain:
                if (name == "Main")
                    m_place = Place::kElsewhere;
                else
                    store(name, m_camera.main);
                break;
            case Place::kOptics:
                if (name == "OpticsDef")
                    m_place = Place::kElsewhere;
                else
                    store(name, m_camera.optics.back());
                break;
            case Place::kRange:
                if (name == "TemperatureRange")
                    m_place = Place::kOptics;
                else
                    store(name, m_camera.optics.back().ranges.back());
                break;
            case Place::kFrameRate:
                if (name == "Framerate")
                    m_place = Place::kRange;
                else if (name == "FR")
                    assign(m_text, m_camera.optics.back().ranges.back().frameRates.back());
                break;
            case Place::kParams:
                if (name == "TableParams")
                    m_place = Place::kRange;
                else
                    store(name, m_camera.optics.back().ranges.back().tableParams);
                break;
            case Place::kElsewhere:
                break;
        }
    }

    template <typename Record>
    void store(std::string_view name, Record& record) {
        visitFields(record, [&](std::string_view fieldName, auto&& field) {
            if (name == fieldName) assign(m_text, field);
        });
    }

    Camera& m_camera;
    std::string m_text;
    Place m_place = Place::kElsewhere;
};

bool read(const char* file, Camera& camera) {
    const Parser parser(XML_ParserCreate(nullptr));
    Filler filler(camera);
    filler.attachTo(parser.get());
    return parseFile(file, parser.get());
}

}  // namespace

const Reader kExpat{"expat", read};

}  // namespace bench

// See the header.
#include "support/Camera.h"

#include <cstring>
#include <type_traits>

namespace bench {

namespace {

/// All values of a description in one text, so that two can be compared whatever their shape.
class Flattened {
public:
    explicit Flattened(Camera camera) {
        visitFields(camera.main, *this);
        for (OpticsDef& optics : camera.optics) {
            add("optics");
            visitFields(optics, *this);
            for (TemperatureRange& range : optics.ranges) {
                add("range");
                visitFields(range, *this);
                visitFields(range.tableParams, *this);
                for (const std::uint16_t rate : range.frameRates) (*this)("FR", rate);
            }
        }
    }

    template <typename T>
    void operator()(const char* name, const T& value) {
        add(name);
        if constexpr (std::is_same_v<T, std::string>)
            add(value);
        else if constexpr (std::is_same_v<T, Word>)
            add(value.isTrue ? "true" : "false");
        else
            add(std::to_string(value));
    }

    const std::string& text() const { return m_text; }

private:
    void add(std::string_view part) { m_text.append(part).append("\n"); }

    std::string m_text;
};

}  // namespace

bool operator==(const Camera& a, const Camera& b) {
    return Flattened(a).text() == Flattened(b).text();
}

}  // namespace bench

// A plain model of the calibration data: reads a description and answers every question in the
// slowest and simplest way, with nothing of the product's but the names of the fields. And
// descriptions made at random to compare the two on.
#pragma once

#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace thermika_test {

struct RangeModel {
    int fid = 0;
    int skim = 0;
    int skimRatio = 0;
    float low = 0.0F;
    float high = 0.0F;
    float lowExt = -100.0F;
    float highExt = -100.0F;
    std::optional<std::vector<int>> rates;
    int decimal = 1;
    double t1 = 0.0;
    double t3 = 0.0;
    int e1 = 0;
    int e3 = 0;
    double lambda = 0.0;
    bool isNormalized = false;
};

struct OpticsModel {
    int fov = 0;
    int serNo = 0;
    std::optional<std::string> text;
    bool isSamplePoint = false;
    std::vector<RangeModel> ranges;
};

/// One description: as a document, and as the reader sees it (lines joined, comments gone).
struct DescriptionText {
    std::string document;
    std::string content;
};

/// A description by the grammar of calibration files, with every liberty that the reader allows:
/// elements left out, repeated, empty, nested, in the wrong order or without their closing tag.
DescriptionText randomDescription(std::mt19937& random);

/// What random descriptions are made of, and so what is worth asking for.
const std::vector<std::string>& randomTexts();
const std::vector<std::string>& randomBounds();

class CaliModel {
public:
    explicit CaliModel(std::string content);

    std::vector<OpticsModel> optics;

    int strictIndex(int fov, const std::string& text) const;
    int lenientIndex(int fov, const std::string& text) const;
    const OpticsModel* find(int fov, const std::string& text) const;
    int rangeIndex(int fov, const std::string& text, float min, float max) const;
    const RangeModel* findRange(int fov, const std::string& text, float min, float max) const;
    static std::pair<float, float> span(const std::vector<OpticsModel>& all);
    int rateIndex(int fov, const std::string& text, float min, float max, int rate) const;
    int decimal(int fov, const std::string& text, float min, float max) const;

private:
    /// A part of the content.
    struct Part {
        std::size_t from;
        std::size_t to;
    };

    std::string m_content;

    std::optional<Part> first(Part in, const std::string& name) const;
    std::vector<Part> all(Part in, const std::string& name) const;
    Part firstOr(Part in, const std::string& name) const;
    void scanInt(Part in, const std::string& name, int& value) const;
    void scanFloat(Part in, const std::string& name, float& value) const;
    OpticsModel readOptics(Part in) const;
    RangeModel readRange(Part in) const;
};

}  // namespace thermika_test

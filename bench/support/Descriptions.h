// Makes calibration descriptions of any size for the benchmarks, always the same text for the same
// request. Reads nothing and knows nothing of how they are read.
#pragma once

#include <cstddef>
#include <string>

namespace bench {

constexpr std::size_t kSmallBytes = 11'000;  // three optics, as in the examples
constexpr std::size_t kMediumBytes = 100'000;
constexpr std::size_t kLargeBytes = 1'000'000;
constexpr std::size_t kHugeBytes = 16'000'000;

enum class Content {
    kPlain,     ///< every element, and a comment before each optics
    kComments,  ///< every element, and a comment before nearly each
    kSparse,    ///< the main section and the ranges lack most of what is optional
};

/// A description of at least three optics with four ranges of two frame rates each, with as many
/// optics as `bytes` takes.
std::string makeDescription(std::size_t bytes, Content content);

/// A document with the root "CaliData" and `count` elements "Item", one a line, each holding its
/// number.
std::string makeSiblings(std::size_t count);

}  // namespace bench

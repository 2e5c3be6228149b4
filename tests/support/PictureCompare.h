/// @file PictureCompare.h
/// Comparison of pictures with a stated tolerance.
#pragma once

#include "tests/support/Picture.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace test_support
{
/// How far two pictures may differ.
struct Tolerance
{
    std::uint32_t level = 0;    ///< largest difference of a channel that counts as equal
    std::uint64_t outliers = 0; ///< pixels that may differ by more
};

/// Success when the sizes are equal and all but the permitted outliers are within the tolerance. Otherwise the message
/// says how many pixels differ, by how much at most and where, and three files tell the rest:
/// @p name with -actual.png, -expected.png and -difference.png in ComparisonFolder().
testing::AssertionResult PicturesMatch(const Picture& actual, const Picture& expected, const Tolerance& tolerance,
                                       const std::string& name);

/// Where failing comparisons leave their pictures: the environment's QMX_TEST_OUTPUT, else a folder qmx-test-pictures
/// beside the temporary files. Made when needed.
std::filesystem::path ComparisonFolder();
} // namespace test_support

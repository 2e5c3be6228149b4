#include "tests/support/PictureCompare.h"

#include <algorithm>
#include <cstdlib>

namespace test_support
{
namespace
{
/// Characters that a file name cannot hold become dashes.
std::string FileNameOf(std::string name)
{
    std::replace_if(
        name.begin(), name.end(), [](char c) { return c == '/' || c == '\\' || c == ' ' || c == ':'; }, '-');
    return name;
}

std::uint32_t PixelDifference(const std::uint8_t* a, const std::uint8_t* b)
{
    std::uint32_t largest = 0;
    for (int channel = 0; channel < 4; ++channel)
        largest = std::max(largest, static_cast<std::uint32_t>(std::abs(a[channel] - b[channel])));
    return largest;
}

/// Differences stand out: each channel's is multiplied by 8, alpha's lightens all three.
Picture DifferenceOf(const Picture& actual, const Picture& expected)
{
    Picture difference{actual.width, actual.height, std::vector<std::uint8_t>(actual.bgra.size(), 255)};
    for (std::size_t i = 0; i < actual.bgra.size(); i += 4)
    {
        const int alpha = std::abs(actual.bgra[i + 3] - expected.bgra[i + 3]);
        for (std::size_t channel = 0; channel < 3; ++channel)
        {
            const int colour = std::abs(actual.bgra[i + channel] - expected.bgra[i + channel]);
            difference.bgra[i + channel] = static_cast<std::uint8_t>(std::min(255, 8 * (colour + alpha)));
        }
    }
    return difference;
}
} // namespace

std::filesystem::path ComparisonFolder()
{
    const char* const chosen = std::getenv("QMX_TEST_OUTPUT");
    const std::filesystem::path folder =
        chosen && *chosen ? chosen : std::filesystem::temp_directory_path() / "qmx-test-pictures";
    std::filesystem::create_directories(folder);
    return folder;
}

testing::AssertionResult PicturesMatch(const Picture& actual, const Picture& expected, const Tolerance& tolerance,
                                       const std::string& name)
{
    const std::filesystem::path base = ComparisonFolder() / FileNameOf(name);
    const auto keep = [&base](const char* suffix, const Picture& picture)
    { WritePng(std::filesystem::path(base).concat(suffix), picture); };
    if (actual.width != expected.width || actual.height != expected.height || actual.IsEmpty())
    {
        keep("-actual.png", actual);
        keep("-expected.png", expected);
        return testing::AssertionFailure() << name << ": the picture is " << actual.width << " x " << actual.height
                                           << ", expected " << expected.width << " x " << expected.height;
    }

    std::uint64_t outliers = 0;
    std::uint32_t largest = 0;
    std::size_t worst = 0;
    for (std::size_t i = 0; i < actual.bgra.size(); i += 4)
    {
        const std::uint32_t difference = PixelDifference(&actual.bgra[i], &expected.bgra[i]);
        outliers += difference > tolerance.level ? 1 : 0;
        if (difference > largest)
        {
            largest = difference;
            worst = i;
        }
    }
    if (outliers <= tolerance.outliers)
        return testing::AssertionSuccess();

    keep("-actual.png", actual);
    keep("-expected.png", expected);
    keep("-difference.png", DifferenceOf(actual, expected));
    const auto pixel = [worst](const Picture& picture)
    {
        std::string text;
        for (std::size_t channel = 0; channel < 4; ++channel)
            text += (channel ? " " : "") + std::to_string(picture.bgra[worst + channel]);
        return text;
    };
    return testing::AssertionFailure() << name << ": " << outliers << " of " << actual.bgra.size() / 4
                                       << " pixels differ by more than " << tolerance.level << ", the most by "
                                       << largest << " at " << worst / 4 % actual.width << ", "
                                       << worst / 4 / actual.width << " (BGRA " << pixel(actual) << ", expected "
                                       << pixel(expected) << "); pictures: " << base.string() << "-*.png";
}
} // namespace test_support

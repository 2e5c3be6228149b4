/// @file TextFrames.h
/// What the tests of title and keystroke decoders have in common.
#pragma once

#include "engine/decoders/IDecoder.h"
#include "tests/decoders/still/FakeTextServices.h"
#include "tests/support/FontReference.h"
#include "tests/support/InkBox.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

namespace text_test
{
inline constexpr const wchar_t* kFamily = L"DejaVu Sans";

/// What the font says about a line of text, on a frame of @p height rows.
inline test_support::MeasuredText Measure(const std::string& utf8, double fontSize, std::uint32_t height,
                                          int weight = 400)
{
    return test_support::MeasureText(test_support::FindFontFile("DejaVu Sans", weight), utf8, fontSize * height / 288);
}

inline tagDecProp Record(std::uint32_t width, std::uint32_t height, std::uint32_t type)
{
    tagDecProp prop(std::wstring(), 0);
    prop.decoderType = type;
    prop.width = width;
    prop.height = height;
    return prop;
}

/// A frame's pixels.
struct Frame
{
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t flag = 0;
    std::vector<std::uint8_t> bgra;

    bool IsTransparent() const
    {
        return std::all_of(bgra.begin(), bgra.end(), [](std::uint8_t byte) { return byte == 0; });
    }
    test_support::InkBox Ink(const test_support::PixelTest& counts = test_support::IsHalfThere) const
    {
        return test_support::FindInk(bgra.data(), std::size_t{width} * 4, static_cast<int>(width),
                                     static_cast<int>(height), counts);
    }
    const std::uint8_t* At(int x, int y) const
    {
        return bgra.data() + (static_cast<std::size_t>(y) * width + static_cast<std::size_t>(x)) * 4;
    }
};

/// Takes the reference of @p pBuffer.
inline Frame Take(ISampleBuffer* pBuffer)
{
    Frame frame;
    const SampleBufferPtr owned = SampleBufferPtr::Adopt(pBuffer);
    std::uint8_t* pPixels = nullptr;
    std::uint32_t cb = 0;
    if (!owned || !owned->GetBuffer(&pPixels, &cb))
        return frame;
    frame.width = owned->GetWidth();
    frame.height = owned->GetHeight();
    frame.flag = owned->GetFlag();
    frame.bgra.assign(pPixels, pPixels + cb);
    return frame;
}

class TextTest : public testing::Test
{
protected:
    TextTest() { FakeTextServices::Get() = {}; }
    void SetUp() override
    {
        if (test_support::FindFontFile("DejaVu Sans").empty())
            GTEST_SKIP() << "DejaVu Sans is not installed";
    }
    FakeTextServices& services = FakeTextServices::Get();
};
} // namespace text_test

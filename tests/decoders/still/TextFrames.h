/// @file TextFrames.h
/// What the tests of title and keystroke decoders have in common.
#pragma once

#include "engine/clips/IQMXBaseClip.h"
#include "engine/decoders/IDecoder.h"
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
    return test_support::MeasureText({"DejaVu Sans", weight}, utf8, fontSize * height / 288);
}

inline tagDecProp Record(std::uint32_t width, std::uint32_t height, std::uint32_t type)
{
    tagDecProp prop(std::wstring(), 0);
    prop.decoderType = type;
    prop.width = width;
    prop.height = height;
    return prop;
}

inline tagRenderProp Request(std::uint64_t flags = 0, std::uint32_t width = 320)
{
    tagRenderProp request;
    request.flags = flags;
    request.width = width;
    request.height = 144;
    return request;
}

constexpr std::uint64_t Seconds(double seconds)
{
    return static_cast<std::uint64_t>(seconds * static_cast<double>(kTimePerSecond));
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

/// What a clip of texts gives at @p time, whose flag is false.
inline Frame FrameOf(IQMXBaseClip& clip, std::uint64_t time)
{
    FrameResult result;
    EXPECT_TRUE(clip.GetVideoFrame(time, &result));
    EXPECT_FALSE(result.flag);
    return Take(result.frame);
}

class TextTest : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!test_support::HasFont({"DejaVu Sans"}))
            GTEST_SKIP() << "DejaVu Sans is not installed";
    }
};
} // namespace text_test

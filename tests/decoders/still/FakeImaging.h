/// @file FakeImaging.h
/// A scripted Imaging Component, which stands in for the platform's in the programs that link it.
#pragma once

#include <propidl.h>
#include <wincodec.h>

#include <cstdint>
#include <map>
#include <string>
#include <variant>
#include <vector>

struct CFakeWord // NOLINT: plain values with names
{
    USHORT value;
};
struct CFakeByte
{
    BYTE value;
};
struct CFakeLong // a type that nobody expects
{
    LONG value;
};
/// A metadata value of a fake file.
using FakeValue = std::variant<CFakeWord, CFakeByte, CFakeLong, bool, std::vector<BYTE>>;
using FakeMetadata = std::map<std::wstring, FakeValue>;

/// A frame of a fake file: one colour.
struct FakeImageFrame
{
    UINT width = 0;
    UINT height = 0;
    std::uint32_t color = 0xFF000000U; ///< bytes B, G, R, A
    GUID format = GUID_WICPixelFormat32bppBGRA;
    FakeMetadata metadata;
    bool hasReader = true;
    bool canBeGot = true;
    bool canBeCopied = true;
};

/// A fake file.
struct FakeImage
{
    std::vector<FakeImageFrame> frames;
    FakeMetadata metadata;
    std::vector<WICColor> palette;
    bool hasReader = true;
};

/// The service itself. Counters and switches hold for the whole process; Reset() between tests.
class CFakeImaging
{
public:
    /// Opening @p path finds @p pImage from now on, which is borrowed; null ends it. Nothing else can be opened while a
    /// fake file is installed.
    static void Install(const std::wstring& path, const FakeImage* pImage);
    static void Reset(); ///< counters to 0, switches to "works", no files

    static int& FilesOpened();
    static int& Converted();                  ///< calls of WICConvertBitmapSource
    static int& LiveObjects();                ///< objects that have not been released
    static std::vector<UINT>& FramesCopied(); ///< index of the frame, for each CopyPixels
    static std::vector<WICRect>& Rects();     ///< what was asked for there
    static std::vector<UINT>& Rotations();    ///< options that flip-rotators were initialised with
    static bool& FactoryFails();
    static bool& ConversionFails();
    static int& RotatorFails(); ///< number of the flip-rotator, counted from 1, that cannot be initialised; 0: none
};

/// @file FakeMedia.h
/// A scripted stand-in for the platform's source reader. The program that links FakeMedia.cpp opens no files: its
/// readers play what a test has written down, and count what is asked of them.
#pragma once

#include <d3d11.h>
#include <mfapi.h>
#include <mfidl.h>
#include <mfreadwrite.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

/// One picture as the reader delivers it. Memory ends with the last pixel, so that a byte too many is noticed.
struct FakePicture
{
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    bool is2D = true;       ///< offers IMF2DBuffer
    std::int32_t pitch = 0; ///< 2D only: 0 = width * 4; below zero = stored bottom-up
    bool truncated = false; ///< the buffer ends four bytes early
    std::function<std::uint32_t(std::uint32_t x, std::uint32_t y)> pixel; ///< 0xAARRGGBB
};

/// A type of sound; what is absent is missing in the media type.
struct FakeSoundType
{
    std::optional<std::uint32_t> rate{48'000};
    std::optional<std::uint32_t> channels{2};
    std::optional<std::uint32_t> bits{16};
    std::optional<std::uint32_t> bytesPerSecond;
    std::optional<std::uint32_t> blockAlignment;
    std::optional<std::uint32_t> mask;
};

/// What one ReadSample() answers.
struct FakeRead
{
    LONGLONG time = 0;
    DWORD flags = 0;
    HRESULT hr = S_OK;
    std::optional<FakePicture> picture;                             ///< none: no sample
    bool emptySample = false;                                       ///< a sample without a buffer
    std::optional<std::pair<std::uint32_t, std::uint32_t>> newSize; ///< the current media type changes before it
    bool newTypeWithoutSize = false;
    std::optional<std::vector<std::uint8_t>> sound; ///< a block of sound instead of a picture
    std::optional<FakeSoundType> newSound;          ///< the current media type changes before it
};

/// A file: its stream, its samples, and what was asked of it.
struct FakeMedia // NOLINT(clang-analyzer-optin.performance.Padding): read in the order of a story
{
    // ---- script ----
    std::optional<std::pair<std::uint32_t, std::uint32_t>> size{{64, 36}};
    std::optional<std::uint32_t> rotation;
    std::optional<std::pair<std::uint32_t, std::uint32_t>> pixelAspect;
    std::optional<std::pair<std::uint32_t, std::uint32_t>> frameRate{{30, 1}};
    std::optional<LONGLONG> duration;
    GUID majorType = MFMediaType_Video;
    FakeSoundType sound; ///< native type of the audio stream, whose samples are MP3
    std::vector<FakeRead> reads;
    /// Index of the read that follows a seek to a time. Default: the last one that is not later.
    std::function<std::size_t(LONGLONG)> seek;
    std::optional<std::uint64_t> recorded; ///< 100 ns since 1601: PKEY_Media_DateEncoded
    bool recordedIsNumber = false;         ///< it is kept as VT_UI8, which is no time
    std::function<void()> onResolve;       ///< runs while the source resolver opens the file
    bool endless = false;                  ///< after the last read it comes again and again; otherwise the stream ends
    std::set<std::string> failing;         ///< operations that answer E_FAIL

    // ---- what happened ----
    mutable std::mutex lock; ///< held by every operation of a reader
    int nReads = 0;
    int nFlushes = 0;
    int flushedAt = 0; ///< place of the last flush among those of all files
    std::vector<LONGLONG> seeks;
    std::vector<DWORD> streams; ///< every stream index named, save for the selection of all streams
    std::vector<std::pair<DWORD, BOOL>> selections;
    std::optional<GUID> outputSubtype;
    std::pair<std::uint32_t, std::uint32_t> outputSize{0, 0};
    std::pair<std::uint32_t, std::uint32_t> outputAspect{0, 0};
    std::uint32_t outputInterlace = 0;
    std::uint32_t outputIndependent = 0;
    std::uint32_t advancedProcessing = 0;
    std::uint32_t convertersDisabled = 1;
    std::uint32_t lowLatency = 0;
    bool hasDeviceManager = false;
    std::optional<FakeSoundType> outputSound;
    int nSources = 0;   ///< media sources made
    int nShutdowns = 0; ///< of media sources

    /// Adds @p count samples of the nominal size, @p step apart; sample n is painted with FakeColor(n).
    void AddFrames(int count, LONGLONG step, LONGLONG first = 0);
    /// Adds @p count blocks of @p cb bytes of 48 kHz stereo, one after the other; byte i of all is FakeByte(i).
    void AddBlocks(int count, std::uint32_t cb);
};

/// Colour of sample n: opaque, different for every n below 2^24.
std::uint32_t FakeColor(std::uint32_t n);

/// Byte @p index of a fake stream of sound: never 0, and neighbours differ.
constexpr std::uint8_t FakeByte(std::size_t index)
{
    return static_cast<std::uint8_t>(index % 251 + 1);
}

/// The files of this program, and its objects alive.
class CFakeSystem
{
public:
    static void Install(const std::wstring& path, FakeMedia* media); ///< borrowed; null takes the file away
    static FakeMedia*
    Find(const wchar_t* path); ///< takes no memory of a caller that may fail; null when there is no such file
    static bool Fails(const char* function); ///< named in FailingFunctions()
    static std::atomic<int>& LiveReaders();
    static std::atomic<int>& LiveBuffers(); ///< a sample keeps its buffer alive
    static std::atomic<int>& LiveDevices();
    static std::atomic<int>& LiveSources(); ///< resolvers, media sources and property stores
    static std::atomic<int>& ReadersMade();
    static std::atomic<int>& OpenLocks();  ///< buffers locked and not yet unlocked
    static std::atomic<bool>& HasDevice(); ///< whether a hardware device can be made
    static std::atomic<bool>& DeviceProtected();
    static std::set<std::string>& FailingFunctions(); ///< creation functions that answer E_FAIL
};

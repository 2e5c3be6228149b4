/// @file ReferenceFilm.h
/// An independent source of expected pictures: the file decoded from its first packet to its last, in order, without
/// seeking, and converted with the textbook formula. Shares no code with the engine.
#pragma once

#include "tests/support/Picture.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

struct AVFrame;

namespace test_support
{
/// Luma weights of a colour matrix: Y = kr R + (1 - kr - kb) G + kb B.
struct MatrixWeights
{
    double kr = 0, kb = 0;
};
inline constexpr MatrixWeights kBt601{0.299, 0.114};
inline constexpr MatrixWeights kBt709{0.2126, 0.0722};
inline constexpr MatrixWeights kBt2020{0.2627, 0.0593};

/// Y', Cb, Cr as R', G', B' of 8 bits, not rounded, clipped to 0..255: ITU-R BT.601, BT.709 and BT.2020 (constant
/// luminance not among them), quantised as in clause "quantization" of each.
/// @param bits       depth of the samples
/// @param fullRange  samples fill their range; otherwise luma is 16..235 and chroma 16..240 at 8 bits
struct RgbLevels
{
    double r = 0, g = 0, b = 0;
};
RgbLevels LevelsOfYuv(std::uint32_t y, std::uint32_t u, std::uint32_t v, std::uint32_t bits,
                      const MatrixWeights& matrix, bool fullRange);

/// One picture as the decoder gave it.
struct ReferencePicture
{
    double time = 0;                 ///< seconds from the container's start
    const AVFrame* pFrame = nullptr; ///< valid during the callback
};

/// The video stream of a file, attached pictures aside.
class ReferenceFilm
{
public:
    explicit ReferenceFilm(const std::filesystem::path& path);
    ~ReferenceFilm();
    ReferenceFilm(const ReferenceFilm&) = delete;
    ReferenceFilm& operator=(const ReferenceFilm&) = delete;

    bool IsOpen() const;
    /// Decodes the whole film, once. @p onPicture is called for every picture in the order of presentation; it returns
    /// false to stop.
    void ForEach(const std::function<bool(const ReferencePicture&)>& onPicture);

    double TimeUnit() const; ///< seconds: what the stream's time stamps count
    double
    StreamLength() const; ///< seconds from the container's start to the end of the stream, 0 when it is not known
    std::uint32_t Width() const; ///< as stored
    std::uint32_t Height() const;
    std::uint32_t Rotation() const; ///< clockwise degrees that make the stored pictures upright: 0, 90, 180 or 270

private:
    struct State;
    std::unique_ptr<State> m_pState;
};

/// Number in the strip of a reference picture of any pixel format.
/// @param rotation  clockwise degrees that make it upright
std::optional<std::uint32_t> ReadFrameStrip(const AVFrame& frame, std::uint32_t rotation);

/// One sample of a component, at the component's own resolution. Component 3 is alpha where there is one.
std::uint32_t SampleOf(const AVFrame& frame, int component, int x, int y);

/// When each picture of a numbered film shows, and which one it is.
struct NumberedPicture
{
    double time = 0;          ///< seconds from the container's start
    std::uint32_t number = 0; ///< read from its strip
};
struct NumberedFilm
{
    std::vector<NumberedPicture> pictures; ///< in the order of presentation
    double timeUnit = 0;                   ///< seconds
    double streamLength = 0;               ///< seconds, 0 when it is not known
    std::string fault;                     ///< what is wrong with the film itself; empty when it is as it should be
};
/// Decodes the whole film; anything but a film of numbered pictures has a fault.
NumberedFilm ReadNumberedFilm(const std::filesystem::path& path);
} // namespace test_support

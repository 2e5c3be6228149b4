/// @file RenderProp.h
/// The render request and the result of a clip.
#pragma once

#include "engine/decoders/DecoderProp.h"

#include <cstddef>
#include <cstdint>

class ISampleBuffer;

/// What OpenAudio() is asked for.
struct tagAudioParams
{
    std::uint64_t sampleRate = 0; ///< samples per second
    std::uint64_t startTime = 0;  ///< 100 ns: timeline time at which reading starts
};

/// One render request: what the host wants of a clip. The layout is part of the exported interface.
struct tagRenderProp
{
    std::uint64_t flags = 0;     ///< kRequest… bits
    std::uint32_t width = 0;     ///< pixels: width of the frame wanted
    std::uint32_t height = 0;    ///< rows: height of the frame wanted
    std::uint64_t time = 0;      ///< 100 ns: timeline time of the frame wanted; written by GetFrame()
    double auxValue = 0;         ///< stored by Open()
    tagAudioParams audioParams;  ///< stored by OpenAudio()
    std::uint32_t boxWidth = 0;  ///< pixels: letter-box area of transitions; 0 x 0 is the whole picture
    std::uint32_t boxHeight = 0; ///< rows, likewise
    double factorX = 1.0;        ///< a transition's working width is width * factorX
    double factorY = 1.0;        ///< its working height is height * factorY
};
static_assert(sizeof(tagRenderProp) == 72 && offsetof(tagRenderProp, time) == 16 &&
                  offsetof(tagRenderProp, audioParams) == 32 && offsetof(tagRenderProp, boxWidth) == 48 &&
                  offsetof(tagRenderProp, factorX) == 56,
              "fixed by the exported interface");

/// What GetVideoFrame() fills.
struct FrameResult
{
    ISampleBuffer* frame = nullptr; ///< one reference for the receiver; null when there is no picture
    bool flag = false;              ///< as the decoder reported it: past the end of the source
};

/// @file TextDecoder.h
/// What the decoders of titles and of keystrokes have in common.
#pragma once

#include "engine/decoders/Decoder.h"
#include "engine/decoders/still/TextCanvas.h"

#include <cstdint>

/// Has a canvas of the property record's size. What is drawn on it, and the list that it comes from, is the derived
/// class's. It adds no virtual operation: the slots after CDecoder's are the derived classes'.
class QMX_API CTextDecoder : public CDecoder
{
public:
    CTextDecoder();
    /// Copies pointers as plain values, without references: never copy a decoder that is open.
    CTextDecoder(const CTextDecoder& other);
    CTextDecoder& operator=(const CTextDecoder& other); ///< likewise

    /// Makes what frames of the record's size are drawn with. @return true, always: a decoder that lacks a device or a
    /// service gives transparent frames.
    bool Initialize(const tagDecProp& prop) override;
    /// A record of another size calls the derived class's Initialize(), which forgets what is drawn.
    void SetDecoderProperty(const tagDecProp& prop) override;

protected:
    ~CTextDecoder() override;

    std::uint32_t m_nWidth = 0;     ///< pixels
    std::uint32_t m_nHeight = 0;    ///< pixels
    std::uint64_t m_nStartTime = 0; ///< of the clip; kept, nothing reads it
    CTextCanvas m_canvas;           ///< of that size
};

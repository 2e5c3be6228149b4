/// @file dwrite_3.h
/// The later DirectWrite factory, of which only what the first one has is used.
#pragma once

#include <dwrite.h>

struct IDWriteFactory4 : public IDWriteFactory
{
protected:
    ~IDWriteFactory4() = default;
};
PAL_DECLARE_IID(IDWriteFactory4, IID_IDWriteFactory4, 0x4B0B5BD3U, 0x0797, 0x4549, 0x8A, 0xC5, 0xFE, 0x91, 0x5C, 0xC5,
                0x38, 0x56);

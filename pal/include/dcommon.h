/// @file dcommon.h
/// Types that Direct2D and DirectWrite share.
#pragma once

#include <dxgi.h>

enum DWRITE_MEASURING_MODE : int
{
    DWRITE_MEASURING_MODE_NATURAL = 0
};

enum D2D1_ALPHA_MODE : int
{
    D2D1_ALPHA_MODE_UNKNOWN = 0,
    D2D1_ALPHA_MODE_PREMULTIPLIED = 1,
    D2D1_ALPHA_MODE_STRAIGHT = 2,
    D2D1_ALPHA_MODE_IGNORE = 3
};

struct D2D1_PIXEL_FORMAT
{
    DXGI_FORMAT format;
    D2D1_ALPHA_MODE alphaMode;
};

struct D2D_POINT_2F
{
    FLOAT x;
    FLOAT y;
};

struct D2D_RECT_F
{
    FLOAT left;
    FLOAT top;
    FLOAT right;
    FLOAT bottom;
};

struct D2D_COLOR_F
{
    FLOAT r; ///< 0..1, not multiplied by the alpha
    FLOAT g;
    FLOAT b;
    FLOAT a;
};

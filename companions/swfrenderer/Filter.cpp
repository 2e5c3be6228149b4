#include "companions/swfrenderer/Filter.h"

#include "companions/swfrenderer/Limits.h"

namespace swf
{
namespace
{
constexpr double kMaxBlur = 255, kMaxDistance = 8'192;

void ReadBlur(CByteReader& reader, Filter& f)
{
    f.blurX = std::clamp(reader.Fixed16(), 0.0, kMaxBlur);
    f.blurY = std::clamp(reader.Fixed16(), 0.0, kMaxBlur);
}
void ReadDirection(CByteReader& reader, Filter& f)
{
    f.angle = reader.Fixed16();
    f.distance = std::clamp(reader.Fixed16(), -kMaxDistance, kMaxDistance);
}
void ReadFlags(CByteReader& reader, Filter& f, bool hasOnTop)
{
    f.strength = std::max(0.0, reader.Fixed8());
    const std::uint8_t flags = reader.U8();
    f.inner = (flags & 0x80) != 0;
    f.knockout = (flags & 0x40) != 0;
    f.hideObject = (flags & 0x20) == 0;
    f.onTop = hasOnTop && (flags & 0x10) != 0;
    f.passes = flags & (hasOnTop ? 15U : 31U);
}

void ReadGradient(CByteReader& reader, Filter& f)
{
    const std::size_t count = reader.U8();
    for (std::size_t i = 0; i < count && !reader.Failed(); ++i)
        f.stops.push_back({0, reader.RgbaColour()});
    for (GradientStop& stop : f.stops)
        stop.ratio = reader.U8();
    ReadBlur(reader, f);
    ReadDirection(reader, f);
    ReadFlags(reader, f, true);
}

void ReadConvolution(CByteReader& reader, Filter& f)
{
    f.columns = reader.U8();
    f.rows = reader.U8();
    f.divisor = reader.F32();
    f.bias = reader.F32();
    for (std::size_t i = std::size_t{f.columns} * f.rows; i > 0 && !reader.Failed(); --i)
        f.kernel.push_back(reader.F32());
    f.colour = reader.RgbaColour();
    const std::uint8_t flags = reader.U8();
    f.clamp = (flags & 2) != 0;
    f.preserveAlpha = (flags & 1) != 0;
}

Filter ReadFilter(CByteReader& reader)
{
    Filter f;
    switch (reader.U8())
    {
    case 0:
        f.kind = Filter::Kind::Shadow;
        f.colour = reader.RgbaColour();
        ReadBlur(reader, f);
        ReadDirection(reader, f);
        ReadFlags(reader, f, false);
        break;
    case 1:
        ReadBlur(reader, f);
        f.passes = reader.U8() >> 3;
        break;
    case 2:
        f.kind = Filter::Kind::Shadow;
        f.colour = reader.RgbaColour();
        ReadBlur(reader, f);
        ReadFlags(reader, f, false);
        f.hideObject = false;
        break;
    case 3:
        f.kind = Filter::Kind::Bevel;
        f.colour = reader.RgbaColour();
        f.highlight = reader.RgbaColour();
        ReadBlur(reader, f);
        ReadDirection(reader, f);
        ReadFlags(reader, f, true);
        break;
    case 4:
        f.kind = Filter::Kind::GradientGlow;
        ReadGradient(reader, f);
        break;
    case 5:
        f.kind = Filter::Kind::Convolution;
        ReadConvolution(reader, f);
        break;
    case 6:
        f.kind = Filter::Kind::ColourMatrix;
        for (float& v : f.matrix)
            v = reader.F32();
        break;
    case 7:
        f.kind = Filter::Kind::GradientBevel;
        ReadGradient(reader, f);
        break;
    default:
        reader.Fail();
    }
    return f;
}
} // namespace

std::vector<Filter> ReadFilters(CByteReader& reader)
{
    std::vector<Filter> filters;
    for (std::uint32_t n = reader.U8(); n > 0 && !reader.Failed(); --n)
    {
        Filter filter = ReadFilter(reader);
        if (!reader.Failed() && filters.size() < kMaxFilters)
            filters.push_back(std::move(filter));
    }
    return filters;
}
} // namespace swf

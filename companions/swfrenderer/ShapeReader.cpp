#include "companions/swfrenderer/ShapeReader.h"

#include "companions/swfrenderer/Limits.h"

#include <tuple>
#include <utility>

namespace swf
{
namespace
{
constexpr double kMinRadialFocus = -0.999;
constexpr double kMaxRadialFocus = 0.999;

Rgba ReadColour(CByteReader& reader, bool alpha)
{
    return alpha ? reader.RgbaColour() : reader.Rgb();
}

FillKind GradientKind(std::uint8_t type)
{
    return type == 0x10 ? FillKind::Linear : FillKind::Radial;
}

void SetGradientFlags(FillStyle& fill, std::uint8_t flags)
{
    fill.spread = flags >> 6 == 1 ? Spread::Reflect : flags >> 6 == 2 ? Spread::Repeat : Spread::Pad;
    fill.linearRgb = ((flags >> 4) & 3) == 1;
}

void SetBitmapFlags(FillStyle& fill, std::uint8_t type)
{
    fill.kind = FillKind::Bitmap;
    fill.repeat = type == 0x40 || type == 0x42;
    fill.smooth = type == 0x40 || type == 0x41;
}

FillStyle ReadFill(CByteReader& reader, int version)
{
    FillStyle fill;
    const std::uint8_t type = reader.U8();
    if (type == 0)
        fill.colour = ReadColour(reader, version >= 3);
    else if (type == 0x10 || type == 0x12 || type == 0x13)
    {
        fill.kind = GradientKind(type);
        fill.matrix = reader.ReadMatrix();
        const std::uint8_t flags = reader.U8();
        SetGradientFlags(fill, flags);
        for (int i = flags & 15; i > 0 && !reader.Failed(); --i)
        {
            GradientStop stop;
            stop.ratio = reader.U8();
            stop.colour = ReadColour(reader, version >= 3);
            fill.stops.push_back(stop);
        }
        if (type == 0x13)
            fill.focus = std::clamp(reader.Fixed8(), kMinRadialFocus, kMaxRadialFocus);
    }
    else if (type >= 0x40 && type <= 0x43)
    {
        SetBitmapFlags(fill, type);
        fill.bitmap = reader.U16();
        fill.matrix = reader.ReadMatrix();
    }
    else
        reader.Fail();
    return fill;
}

void ReadLineFlags(CByteReader& reader, LineStyle& line, bool& hasFill)
{
    reader.Align();
    const auto cap = [](std::uint32_t v) { return v == 1 ? Cap::None : v == 2 ? Cap::Square : Cap::Round; };
    line.startCap = cap(reader.UB(2));
    const std::uint32_t join = reader.UB(2);
    line.join = join == 1 ? Join::Bevel : join == 2 ? Join::Miter : Join::Round;
    hasFill = reader.Bit();
    line.keepX = reader.Bit();
    line.keepY = reader.Bit();
    line.hinted = reader.Bit();
    (void)reader.UB(5);
    line.noClose = reader.Bit();
    line.endCap = cap(reader.UB(2));
    if (line.join == Join::Miter)
        line.miterLimit = std::max(1.0, reader.U16() / 256.0);
}

LineStyle ReadLine(CByteReader& reader, int version)
{
    LineStyle line;
    line.width = reader.U16();
    if (version < 4)
    {
        line.fill.colour = ReadColour(reader, version >= 3);
        return line;
    }
    bool hasFill = false;
    ReadLineFlags(reader, line, hasFill);
    if (hasFill)
        line.fill = ReadFill(reader, version);
    else
        line.fill.colour = reader.RgbaColour();
    return line;
}

std::size_t ReadStyleCount(CByteReader& reader, bool extended)
{
    const std::size_t count = reader.U8();
    return count == 0xFF && extended ? reader.U16() : count;
}

std::size_t StopBytes(const FillStyle& fill)
{
    return fill.stops.size() * sizeof(GradientStop);
}

/// The reader fails when @p cb bytes are not left.
void Pay(CByteReader& reader, ReadBudget& budget, std::size_t cb)
{
    if (!budget.Take(cb))
        reader.Fail();
}

StyleSet ReadStyles(CByteReader& reader, int version, ReadBudget& budget)
{
    StyleSet set;
    for (std::size_t n = ReadStyleCount(reader, version >= 2); n > 0 && !reader.Failed(); --n)
    {
        set.fills.push_back(ReadFill(reader, version));
        Pay(reader, budget, sizeof(FillStyle) + StopBytes(set.fills.back()));
    }
    for (std::size_t n = ReadStyleCount(reader, version >= 2); n > 0 && !reader.Failed(); --n)
    {
        set.lines.push_back(ReadLine(reader, version));
        Pay(reader, budget, sizeof(LineStyle) + StopBytes(set.lines.back().fill));
    }
    set.fills.shrink_to_fit();
    set.lines.shrink_to_fit();
    return set;
}

struct RecordContext
{
    int version; ///< of the shape; 0: new styles are not allowed
    std::uint32_t fillBits, lineBits;
    Point position;
};

/// Takes a shape's records while they are read.
class CShapeSink
{
public:
    static constexpr std::size_t kPathBytes = sizeof(Path), kEdgeBytes = sizeof(Edge);
    CShapeBuilder builder;
    bool any = false;

    bool NewStyles(StyleSet&& styles)
    {
        builder.AddStyles(std::move(styles));
        return true;
    }
    void Add(const ShapeRecord& record)
    {
        builder.Add(record);
        any = true;
    }
};

/// Keeps the records of one end of a morph. Other styles on the way are not allowed.
class CRecordSink
{
public:
    static constexpr std::size_t kPathBytes = sizeof(ShapeRecord) + sizeof(Path),
                                 kEdgeBytes = sizeof(ShapeRecord) + sizeof(Edge); // and those of the shape between
    std::vector<ShapeRecord> records;

    static bool NewStyles(StyleSet&&) { return false; }
    void Add(const ShapeRecord& record) { records.push_back(record); }
};

/// @return false at the end of the records.
template <class Sink> bool ReadStyleChange(CByteReader& reader, RecordContext& context, ReadBudget& budget, Sink& out)
{
    ShapeRecord record;
    const bool newStyles = reader.Bit();
    record.hasLine = reader.Bit();
    record.hasFill1 = reader.Bit();
    record.hasFill0 = reader.Bit();
    record.hasMove = reader.Bit();
    if (!newStyles && !record.hasLine && !record.hasFill1 && !record.hasFill0 && !record.hasMove)
        return false;
    if (record.hasMove)
    {
        const std::uint32_t bits = reader.UB(5);
        context.position.x = reader.SB(bits);
        context.position.y = reader.SB(bits);
        record.to = context.position;
    }
    if (record.hasFill0)
        record.fill0 = reader.UB(context.fillBits);
    if (record.hasFill1)
        record.fill1 = reader.UB(context.fillBits);
    if (record.hasLine)
        record.line = reader.UB(context.lineBits);
    if (newStyles)
    {
        // Glyphs and morphs have the styles they begin with.
        if (context.version == 0 || !budget.Take(sizeof(ShapeLayer)) ||
            !out.NewStyles(ReadStyles(reader, context.version, budget)))
        {
            reader.Fail();
            return false;
        }
        context.fillBits = reader.UB(4);
        context.lineBits = reader.UB(4);
    }
    if (reader.Failed() || !budget.Take(Sink::kPathBytes))
        return false;
    out.Add(record);
    return true;
}

ShapeRecord ReadEdge(CByteReader& reader, RecordContext& context)
{
    ShapeRecord record;
    const bool straight = reader.Bit();
    const std::uint32_t bits = reader.UB(4) + 2;
    Point p = context.position;
    if (straight)
    {
        record.kind = ShapeRecord::Kind::Line;
        const bool general = reader.Bit();
        const bool vertical = !general && reader.Bit();
        if (general || !vertical)
            p.x += reader.SB(bits);
        if (general || vertical)
            p.y += reader.SB(bits);
    }
    else
    {
        record.kind = ShapeRecord::Kind::Curve;
        p.x += reader.SB(bits);
        p.y += reader.SB(bits);
        record.control = p;
        p.x += reader.SB(bits);
        p.y += reader.SB(bits);
    }
    record.to = p;
    context.position = p;
    return record;
}

/// What stands behind the styles: the widths of the style numbers, then records up to an end record. Stops where the
/// budget does.
template <class Sink> void ReadRecords(CByteReader& reader, int version, ReadBudget& budget, Sink& out)
{
    reader.Align();
    RecordContext context{version, 0, 0, {}};
    context.fillBits = reader.UB(4);
    context.lineBits = reader.UB(4);
    std::size_t edges = 0;
    while (!reader.Failed())
    {
        if (!reader.Bit())
        {
            if (!ReadStyleChange(reader, context, budget, out))
                break;
            continue;
        }
        const ShapeRecord record = ReadEdge(reader, context);
        if (reader.Failed())
            break;
        if (edges == kMaxShapeEdges || !budget.Take(Sink::kEdgeBytes))
        {
            reader.Fail();
            break;
        }
        ++edges;
        out.Add(record);
    }
    reader.Align();
}

std::pair<FillStyle, FillStyle> ReadMorphFill(CByteReader& reader)
{
    FillStyle start, end;
    const std::uint8_t type = reader.U8();
    if (type == 0)
    {
        start.colour = reader.RgbaColour();
        end.colour = reader.RgbaColour();
    }
    else if (type == 0x10 || type == 0x12 || type == 0x13)
    {
        start.kind = end.kind = GradientKind(type);
        start.matrix = reader.ReadMatrix();
        end.matrix = reader.ReadMatrix();
        const std::uint8_t flags = reader.U8();
        SetGradientFlags(start, flags);
        SetGradientFlags(end, flags);
        for (int i = flags & 15; i > 0 && !reader.Failed(); --i)
        {
            GradientStop a, b;
            a.ratio = reader.U8();
            a.colour = reader.RgbaColour();
            b.ratio = reader.U8();
            b.colour = reader.RgbaColour();
            start.stops.push_back(a);
            end.stops.push_back(b);
        }
        if (type == 0x13)
        {
            start.focus = std::clamp(reader.Fixed8(), kMinRadialFocus, kMaxRadialFocus);
            end.focus = std::clamp(reader.Fixed8(), kMinRadialFocus, kMaxRadialFocus);
        }
    }
    else if (type >= 0x40 && type <= 0x43)
    {
        SetBitmapFlags(start, type);
        SetBitmapFlags(end, type);
        start.bitmap = end.bitmap = reader.U16();
        start.matrix = reader.ReadMatrix();
        end.matrix = reader.ReadMatrix();
    }
    else
        reader.Fail();
    return {start, end};
}

void ReadMorphLine(CByteReader& reader, int version, StyleSet& start, StyleSet& end)
{
    LineStyle line;
    line.width = reader.U16();
    const double endWidth = reader.U16();
    bool hasFill = false;
    if (version == 2)
        ReadLineFlags(reader, line, hasFill);
    LineStyle other = line;
    other.width = endWidth;
    if (hasFill)
        std::tie(line.fill, other.fill) = ReadMorphFill(reader);
    else
    {
        line.fill.colour = reader.RgbaColour();
        other.fill.colour = reader.RgbaColour();
    }
    start.lines.push_back(std::move(line));
    end.lines.push_back(std::move(other));
}
} // namespace

bool ReadShape(CByteReader& reader, int version, ReadBudget& budget, Shape& shape)
{
    const Rect bounds = reader.ReadRect();
    bool nonZero = false;
    if (version == 4)
    {
        (void)reader.ReadRect(); // bounds without lines
        nonZero = (reader.U8() & 4) != 0;
    }
    CShapeSink sink;
    sink.builder.AddStyles(ReadStyles(reader, version, budget));
    ReadRecords(reader, version, budget, sink);
    shape = sink.builder.Finish(bounds, nonZero);
    return sink.any;
}

bool ReadGlyph(CByteReader& reader, ReadBudget& budget, Shape& shape)
{
    if (!budget.Take(sizeof(ShapeLayer) + sizeof(FillStyle)))
        return false;
    CShapeSink sink;
    sink.builder.AddStyles({std::vector<FillStyle>(1), {}});
    ReadRecords(reader, 0, budget, sink);
    shape = sink.builder.Finish({}, false);
    for (const ShapeLayer& layer : shape.layers)
        for (const Path& path : layer.paths)
        {
            shape.bounds.Include(Point{path.startX, path.startY});
            for (std::uint32_t i = 0; i < path.edgeCount; ++i)
            {
                const Edge& edge = layer.edges[path.firstEdge + i];
                shape.bounds.Include(Point{edge.cx, edge.cy});
                shape.bounds.Include(Point{edge.x, edge.y});
            }
        }
    return !reader.Failed();
}

bool ReadMorphShape(CByteReader& reader, int version, ReadBudget& budget, MorphShape& morph)
{
    morph.startBounds = reader.ReadRect();
    morph.endBounds = reader.ReadRect();
    if (version == 2)
    {
        (void)reader.ReadRect();
        (void)reader.ReadRect();
        (void)reader.U8();
    }
    const std::size_t offset = reader.U32();
    const std::size_t base = reader.Position();
    CByteReader ends = reader;
    ends.Skip(offset);
    StyleSet& start = morph.startStyles;
    // Three sets of styles: of both ends and of the shape between.
    for (std::size_t n = ReadStyleCount(reader, true); n > 0 && !reader.Failed(); --n)
    {
        auto fills = ReadMorphFill(reader);
        Pay(reader, budget, 3 * (sizeof(FillStyle) + StopBytes(fills.first)));
        start.fills.push_back(std::move(fills.first));
        morph.endStyles.fills.push_back(std::move(fills.second));
    }
    for (std::size_t n = ReadStyleCount(reader, true); n > 0 && !reader.Failed(); --n)
    {
        ReadMorphLine(reader, version, start, morph.endStyles);
        Pay(reader, budget, 3 * (sizeof(LineStyle) + StopBytes(start.lines.back().fill)));
    }
    CRecordSink starts;
    ReadRecords(reader, 0, budget, starts);
    if (offset == 0 || ends.Failed() || ends.Position() < base)
        ends = reader;
    CRecordSink endRecords;
    ReadRecords(ends, 0, budget, endRecords);
    morph.start = std::move(starts.records);
    morph.end = std::move(endRecords.records);
    morph.start.shrink_to_fit();
    morph.end.shrink_to_fit();
    return !morph.start.empty();
}
} // namespace swf

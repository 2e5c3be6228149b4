#include "companions/swfrenderer/SceneRenderer.h"

#include "companions/swfrenderer/Blend.h"
#include "companions/swfrenderer/Bounds.h"
#include "companions/swfrenderer/EditTextLayout.h"
#include "companions/swfrenderer/Limits.h"

#include <cmath>

namespace swf
{
namespace
{
constexpr double kTwipsPerPixel = 20;
constexpr std::uint16_t kMaxFills = 65'535;

/// Objects stand on twentieths of a pixel of the picture, as the format has their places.
Matrix OnTwips(Matrix m)
{
    const auto nearest = [](double v) { return std::floor(v * kTwipsPerPixel + 0.5) / kTwipsPerPixel; };
    m.tx = nearest(m.tx);
    m.ty = nearest(m.ty);
    return m;
}

Area AreaOf(const Rect& r)
{
    if (r.IsEmpty())
        return {};
    const auto bound = [](double v) { return static_cast<int>(std::clamp(v, -1e6, 1e6)); };
    return {bound(std::floor(r.xMin)), bound(std::floor(r.yMin)), bound(std::ceil(r.xMax)) + 1,
            bound(std::ceil(r.yMax)) + 1};
}

// What things cost of the frame's work, in pixels painted.
constexpr std::uint64_t kCostOfObject = 64, kCostOfGlyph = 32, kCostOfGradient = 32'768, kCostOfLayer = 6;
constexpr std::uint64_t kCostOfLight = 8;       ///< times as much of gradients that are mixed in linear light
constexpr std::size_t kGradientsAtOnce = 1'024; ///< of one layer of a shape; further ones show their last colour
constexpr std::uint64_t kScratchOfFilters = 7;  ///< bytes beside a picture for every pixel

std::uint64_t CostOf(const FillStyle& fill)
{
    return fill.stops.empty() ? 0 : kCostOfGradient * (fill.linearRgb ? kCostOfLight : 1);
}
} // namespace

void CSceneRenderer::Render(const CStage& stage, Coverage coverage, Surface& canvas)
{
    m_coverage = coverage;
    constexpr std::uint64_t kCanvasesPainted = 256, kCanvasesBeside = 8;
    m_workLeft = std::max(m_budget.frameWork, kCanvasesPainted * canvas.area.Pixels());
    m_edgesLeft = m_budget.frameEdges;
    m_cellsLeft = m_budget.frameCells;
    m_videos.BeginFrame(m_budget.videoWork);
    m_layers.SetLimit(std::max(m_budget.layerPixels, kCanvasesBeside * canvas.area.Pixels()) * sizeof(std::uint32_t));
    const Rect& box = m_movie.file.stage;
    const double perTwipX = canvas.area.Width() / box.Width(), perTwipY = canvas.area.Height() / box.Height();
    m_scaleX = perTwipX * kTwipsPerPixel;
    m_scaleY = perTwipY * kTwipsPerPixel;
    const Matrix toDevice{perTwipX, 0, 0, perTwipY, -box.xMin * perTwipX, -box.yMin * perTwipY};
    std::fill(canvas.pixels.begin(), canvas.pixels.end(), Premultiplied(stage.Background()));
    Target target;
    target.pSurface = &canvas;
    target.clip = canvas.area;
    DrawInstance(stage.Root(), toDevice, {}, target);
}

/// @return false when the frame has had its share of work.
bool CSceneRenderer::Spend(std::uint64_t pixels)
{
    if (pixels > m_workLeft)
        m_workLeft = 0; // nothing comes behind what was left out
    else
        m_workLeft -= pixels;
    return m_workLeft > 0;
}

/// @return false when the frame has had its share of edges.
bool CSceneRenderer::SpendEdges(std::uint64_t edges)
{
    if (edges > m_edgesLeft)
        m_edgesLeft = 0;
    else
        m_edgesLeft -= edges;
    return m_edgesLeft > 0;
}

void CSceneRenderer::DrawList(const List& list, std::size_t first, std::size_t end, const Matrix& matrix,
                              const ColourTransform& colours, const Target& target)
{
    for (std::size_t i = first; i < end; ++i)
    {
        const Instance& object = *list[i];
        if (object.clipDepth == 0)
        {
            DrawInstance(object, matrix, colours, target);
            continue;
        }
        std::size_t clipped = i + 1;
        while (clipped < end && list[clipped]->depth <= object.clipDepth)
            ++clipped;
        DrawClipped(list, i, clipped, matrix, colours, target);
        i = clipped - 1;
    }
}

/// Objects of @p list behind @p clipper show where it covers.
void CSceneRenderer::DrawClipped(const List& list, std::size_t clipper, std::size_t end, const Matrix& matrix,
                                 const ColourTransform& colours, const Target& target)
{
    if (clipper + 1 >= end)
        return;
    const Instance& object = *list[clipper];
    const Area clip = AreaOf(BoundsOf(m_movie, object, Then(object.matrix, matrix))).Meet(target.clip);
    if (clip.IsEmpty() || !Spend(clip.Pixels()))
        return;
    const CLayerPool::CLease<Mask> shape(m_layers, clip, 0);
    if (!shape)
        return;
    Target covered;
    covered.pCovered = &*shape;
    covered.clip = clip;
    DrawInstance(object, matrix, {}, covered);
    if (target.pMask)
        for (int y = clip.top; y < clip.bottom; ++y)
        {
            std::uint8_t* const pLevel = shape->At(clip.left, y);
            const std::uint8_t* const pOuter = target.pMask->At(clip.left, y);
            for (int x = 0; x < clip.Width(); ++x)
                pLevel[x] = static_cast<std::uint8_t>((pLevel[x] * pOuter[x] + 127) / 255);
        }
    Target inside = target;
    inside.clip = clip;
    if (target.pSurface)
    {
        inside.pMask = &*shape;
        return DrawList(list, clipper + 1, end, matrix, colours, inside);
    }
    // A mask inside a mask: what is covered by both.
    const CLayerPool::CLease<Mask> content(m_layers, clip, 0);
    if (!content || !Spend(clip.Pixels()))
        return;
    inside.pCovered = &*content;
    DrawList(list, clipper + 1, end, matrix, colours, inside);
    for (int y = clip.top; y < clip.bottom; ++y)
        for (int x = clip.left; x < clip.right; ++x)
        {
            const std::uint32_t level = (std::uint32_t{*shape->At(x, y)} * *content->At(x, y) + 127) / 255;
            std::uint8_t& to = *target.pCovered->At(x, y);
            to = static_cast<std::uint8_t>(level + (to * (255 - level) + 127) / 255);
        }
}

void CSceneRenderer::DrawInstance(const Instance& object, const Matrix& parent, const ColourTransform& colours,
                                  const Target& target)
{
    if (!object.visible || !Spend(kCostOfObject))
        return;
    const Matrix matrix = OnTwips(Then(object.matrix, parent));
    const ColourTransform inner = Inside(colours, object.colours);
    if (target.pSurface && inner.IsInvisible())
        return;
    const bool isLayer = object.blend != BlendMode::Normal || (object.pFilters && !object.pFilters->empty());
    if (target.pSurface && isLayer)
        DrawLayer(object, matrix, inner, target);
    else
        DrawContent(object, matrix, inner, target);
}

void CSceneRenderer::DrawLayer(const Instance& object, const Matrix& matrix, const ColourTransform& colours,
                               const Target& target)
{
    if ((object.blend == BlendMode::Alpha || object.blend == BlendMode::Erase) && !target.inLayer)
        return; // nothing to take away from but the stage
    Area margins;
    const bool hasFilters = object.pFilters && !object.pFilters->empty();
    if (hasFilters)
        for (const Filter& filter : *object.pFilters)
        {
            const Area m = FilterMargins(filter, m_scaleX, m_scaleY);
            margins = {margins.left + m.left, margins.top + m.top, margins.right + m.right, margins.bottom + m.bottom};
        }
    const auto grown = [&margins](const Area& a) {
        return Area{a.left - margins.left, a.top - margins.top, a.right + margins.right, a.bottom + margins.bottom};
    };
    const Rect bounds = BoundsOf(m_movie, object, matrix);
    Area area = AreaOf(bounds);
    if (area.IsEmpty())
        return;
    Matrix place = matrix;
    if (hasFilters)
    {
        // A filtered object is a picture of its own, which lies on whole pixels.
        place.tx += std::floor(bounds.xMin + 0.5) - bounds.xMin;
        place.ty += std::floor(bounds.yMin + 0.5) - bounds.yMin;
    }
    area = grown(area).Meet(grown(target.clip));
    std::uint64_t passes = kCostOfLayer; // over all pixels of the layer
    if (hasFilters)
        for (const Filter& filter : *object.pFilters)
            passes += FilterCost(filter);
    if (area.IsEmpty())
        return;
    const CLayerPool::CLease<Surface> layer(m_layers, area,
                                            passes > kCostOfLayer ? area.Pixels() * kScratchOfFilters : 0);
    if (!layer || !Spend(area.Pixels() * passes))
        return;
    Target inside;
    inside.pSurface = &*layer;
    inside.clip = area;
    inside.inLayer = true;
    inside.pGrid = target.pGrid;
    inside.fromGrid = target.fromGrid;
    DrawContent(object, place, colours, inside);
    if (hasFilters)
        for (const Filter& filter : *object.pFilters)
            m_filters.Apply(filter, m_scaleX, m_scaleY, *layer);
    BlendPicture(object.blend, *layer, target.pMask, area.Meet(target.clip), *target.pSurface);
}

void CSceneRenderer::DrawContent(const Instance& object, const Matrix& matrix, const ColourTransform& colours,
                                 const Target& target)
{
    if (object.pTimeline)
        return DrawChildren(object, matrix, colours, target);
    const Character* const pCharacter = m_movie.Find(object.character);
    if (!pCharacter)
        return;
    if (const Shape* const pShape = std::get_if<Shape>(pCharacter))
        DrawShapeOf(object, *pShape, matrix, colours, target);
    else if (const MorphShape* const pMorph = std::get_if<MorphShape>(pCharacter))
    {
        if (SpendEdges(pMorph->start.size()))
            DrawShapeOf(object, MorphAt(object.character, *pMorph, object.ratio), matrix, colours, target);
    }
    else if (const Text* const pText = std::get_if<Text>(pCharacter))
        DrawText(*pText, matrix, colours, target);
    else if (const EditText* const pEdit = std::get_if<EditText>(pCharacter))
        DrawEditText(object, *pEdit, matrix, colours, target);
    else if (const VideoStream* const pVideo = std::get_if<VideoStream>(pCharacter))
        DrawVideo(object, *pVideo, matrix, colours, target);
    else if (std::get_if<PackedBitmap>(pCharacter))
        if (const Bitmap* const pBitmap = FindBitmap(object.character))
            DrawBitmapBox(*pBitmap, true, matrix, colours, target);
}

/// An object that is scaled along its axes in nine parts has its own shapes drawn so; sprites inside it grow as ever.
void CSceneRenderer::DrawChildren(const Instance& object, const Matrix& matrix, const ColourTransform& colours,
                                  const Target& target)
{
    Target inside = target;
    inside.pGrid = nullptr;
    const Matrix& m = object.matrix;
    const auto found = m_movie.scaleGrids.find(object.character);
    const bool isScaled = m.b == 0 && m.c == 0 && m.a > 0 && m.d > 0 && (m.a != 1 || m.d != 1);
    const Rect box = found != m_movie.scaleGrids.end() && isScaled ? BoundsOf(m_movie, object, {}) : Rect{};
    if (box.IsEmpty())
        return DrawList(object.children, 0, object.children.size(), matrix, colours, inside);
    const CScaleGrid grid(box, found->second, m.a, m.d);
    inside.pGrid = &grid;
    inside.fromGrid = Then(grid.Unscaled(), matrix);
    DrawList(object.children, 0, object.children.size(), matrix, colours, inside);
}

void CSceneRenderer::DrawShapeOf(const Instance& object, const Shape& shape, const Matrix& matrix,
                                 const ColourTransform& colours, const Target& target)
{
    if (!target.pGrid)
        return DrawShape(shape, std::holds_alternative<Shape>(*m_movie.Find(object.character)), matrix, colours,
                         target);
    std::uint64_t edges = 0;
    for (const ShapeLayer& layer : shape.layers)
        edges += layer.edges.size();
    if (SpendEdges(edges))
        DrawShape(target.pGrid->Map(shape, object.matrix), false, target.fromGrid, colours, target);
}

CPaint& CSceneRenderer::PaintAt(std::size_t index)
{
    if (m_paints.size() <= index)
        m_paints.resize(index + 1);
    return m_paints[index];
}

/// The edges in m_edges, whose fills are in m_paints.
void CSceneRenderer::DrawEdges(std::uint16_t fills, bool nonZero, const Target& target)
{
    if (m_edges.empty() || m_edges.size() >= kMaxOutlineEdges || !SpendEdges(m_edges.size()))
        return; // an outline that breaks off is not drawn
    float xMin = 1e9F, yMin = 1e9F, xMax = -1e9F, yMax = -1e9F;
    for (const FlatEdge& edge : m_edges)
    {
        xMin = std::min({xMin, edge.x0, edge.x1});
        xMax = std::max({xMax, edge.x0, edge.x1});
        yMin = std::min({yMin, edge.y0, edge.y1});
        yMax = std::max({yMax, edge.y0, edge.y1});
    }
    std::uint64_t cost = 1; // of a pixel
    for (std::size_t i = 0; i < std::min<std::size_t>(fills, m_paints.size()) && !target.pCovered; ++i)
        cost = std::max(cost, m_paints[i].Cost());
    const Area area = AreaOf({xMin, yMin, xMax, yMax}).Meet(target.clip);
    if (area.IsEmpty() || !Spend(area.Pixels() * cost))
        return;
    const std::uint64_t cells = CRasterizer::CellsOf(m_edges, area);
    if (cells > m_cellsLeft)
        return;
    m_cellsLeft -= cells;
    if (target.pCovered)
    {
        CMaskPainter painter(*target.pCovered);
        // Masks are cut a twip beside the pixels of what they show as often as not: that is no fringe on the grid.
        m_rasterizer.Fill(m_edges, fills, nonZero, m_coverage == Coverage::Exact ? Coverage::Grid : m_coverage, area,
                          cells, painter);
    }
    else
    {
        CPainter painter(*target.pSurface, m_paints, target.pMask);
        m_rasterizer.Fill(m_edges, fills, nonZero, m_coverage, area, cells, painter);
    }
}

void CSceneRenderer::SetPaints(const ShapeLayer& layer, std::size_t fills, const Matrix& matrix,
                               const ColourTransform& colours)
{
    std::size_t gradients = 0;
    for (std::size_t i = 0; i < fills; ++i)
    {
        const FillStyle& fill = layer.fills[i];
        if (!fill.stops.empty() && (++gradients > kGradientsAtOnce || !Spend(CostOf(fill))))
            PaintAt(i).SetSolid(colours.Apply(fill.stops.back().colour));
        else
            PaintAt(i).SetFill(fill, matrix, colours, fill.kind == FillKind::Bitmap ? FindBitmap(fill.bitmap) : nullptr,
                               m_gradients);
    }
}

/// @param kept  the shape is one of the movie's: its outline is worth keeping
void CSceneRenderer::DrawShape(const Shape& shape, bool kept, const Matrix& matrix, const ColourTransform& colours,
                               const Target& target)
{
    for (const ShapeLayer& layer : shape.layers)
    {
        m_edges.clear();
        const auto fills = static_cast<std::uint16_t>(std::min<std::size_t>(layer.fills.size(), kMaxFills));
        if (!SpendEdges(layer.edges.size()))
            return;
        if (fills > 0 && kept)
            m_outlines.Flatten(layer, matrix, kMaxOutlineEdges, m_edges);
        else if (fills > 0)
            FlattenFills(layer, matrix, kMaxOutlineEdges, m_edges);
        if (!m_edges.empty())
        {
            if (target.pSurface)
                SetPaints(layer, fills, matrix, colours);
            DrawEdges(fills, shape.nonZero, target);
            m_paints.resize(std::min(m_paints.size(), kGradientsAtOnce)); // their tables take memory
        }
        if (!layer.lines.empty())
            DrawStrokes(layer, matrix, colours, target);
    }
}

void CSceneRenderer::DrawStrokes(const ShapeLayer& layer, const Matrix& matrix, const ColourTransform& colours,
                                 const Target& target)
{
    if (target.pCovered)
        return; // lines do not clip
    for (std::uint32_t number = 1; number <= layer.lines.size(); ++number)
    {
        m_edges.clear();
        if (!SpendEdges(layer.paths.size()))
            return;
        m_stroker.Outline(layer, number, matrix, std::sqrt(m_scaleX * m_scaleY), kMaxOutlineEdges, m_edges);
        if (m_edges.empty())
            continue;
        const FillStyle& fill = layer.lines[number - 1].fill;
        if (!Spend(CostOf(fill)))
            return;
        PaintAt(0).SetFill(fill, matrix, colours, fill.kind == FillKind::Bitmap ? FindBitmap(fill.bitmap) : nullptr,
                           m_gradients);
        DrawEdges(1, true, target);
    }
}

void CSceneRenderer::DrawText(const Text& text, const Matrix& matrix, const ColourTransform& colours,
                              const Target& target)
{
    const Matrix toDevice = OnTwips(Then(text.matrix, matrix));
    for (const PlacedGlyph& glyph : text.glyphs)
    {
        if (!Spend(kCostOfGlyph))
            return;
        const Font* const pFont = m_movie.FindAs<Font>(glyph.font);
        if (!pFont || glyph.glyph >= pFont->glyphs.size())
            continue;
        const double scale = glyph.height / pFont->unitsPerEm;
        const Matrix glyphMatrix = OnTwips(Then({scale, 0, 0, scale, glyph.x, glyph.y}, toDevice));
        m_edges.clear();
        for (const ShapeLayer& layer : pFont->glyphs[glyph.glyph].layers)
            m_outlines.Flatten(layer, glyphMatrix, kMaxOutlineEdges, m_edges);
        if (m_edges.empty())
            continue;
        PaintAt(0).SetSolid(colours.Apply(glyph.colour));
        DrawEdges(1, pFont->glyphs[glyph.glyph].nonZero, target);
    }
    for (const TextBar& bar : text.bars)
    {
        m_edges.clear();
        const Rect& b = bar.box;
        const Point corners[] = {{b.xMin, b.yMin}, {b.xMax, b.yMin}, {b.xMax, b.yMax}, {b.xMin, b.yMax}};
        for (std::size_t i = 0; i < 4; ++i)
            AddFlatEdge(toDevice.Map(corners[i]), toDevice.Map(corners[(i + 1) % 4]), 0, 1, m_edges);
        PaintAt(0).SetSolid(colours.Apply(bar.colour));
        DrawEdges(1, false, target);
    }
}

void CSceneRenderer::DrawEditText(const Instance& object, const EditText& edit, const Matrix& matrix,
                                  const ColourTransform& colours, const Target& target)
{
    auto found = m_editTexts.find(object.character);
    if (found == m_editTexts.end())
        found = m_editTexts.emplace(object.character, LayOut(edit, m_movie)).first;
    if (edit.border)
    {
        StyleSet styles;
        styles.fills.resize(1);
        styles.fills[0].colour = {255, 255, 255, 255};
        LineStyle line;
        line.width = kTwipsPerPixel;
        line.fill.colour = {0, 0, 0, 255};
        styles.lines.push_back(line);
        CShapeBuilder builder;
        builder.AddStyles(std::move(styles));
        const Rect& b = edit.bounds;
        ShapeRecord start;
        start.hasMove = start.hasFill1 = start.hasLine = true;
        start.fill1 = start.line = 1;
        start.to = {b.xMin, b.yMin};
        builder.Add(start);
        for (const Point p :
             {Point{b.xMax, b.yMin}, Point{b.xMax, b.yMax}, Point{b.xMin, b.yMax}, Point{b.xMin, b.yMin}})
        {
            ShapeRecord side;
            side.kind = ShapeRecord::Kind::Line;
            side.to = p;
            builder.Add(side);
        }
        DrawShape(builder.Finish(b, false), false, matrix, colours, target);
    }
    DrawText(found->second, matrix, colours, target);
}

void CSceneRenderer::DrawVideo(const Instance& object, const VideoStream& stream, const Matrix& matrix,
                               const ColourTransform& colours, const Target& target)
{
    if (const Bitmap* const pBitmap = m_videos.PictureAt(object.character, stream, object.ratio))
        DrawBitmapBox(*pBitmap, stream.smooth, matrix, colours, target);
}

void CSceneRenderer::DrawBitmapBox(const Bitmap& bitmap, bool smooth, const Matrix& matrix,
                                   const ColourTransform& colours, const Target& target)
{
    FillStyle fill;
    fill.kind = FillKind::Bitmap;
    fill.smooth = smooth;
    fill.matrix = {kTwipsPerPixel, 0, 0, kTwipsPerPixel, 0, 0};
    PaintAt(0).SetFill(fill, matrix, colours, &bitmap, m_gradients);
    const double right = bitmap.width * kTwipsPerPixel, bottom = bitmap.height * kTwipsPerPixel;
    const Point corners[] = {{0, 0}, {right, 0}, {right, bottom}, {0, bottom}};
    m_edges.clear();
    for (std::size_t i = 0; i < 4; ++i)
        AddFlatEdge(matrix.Map(corners[i]), matrix.Map(corners[(i + 1) % 4]), 0, 1, m_edges);
    DrawEdges(1, false, target);
}

const Bitmap* CSceneRenderer::FindBitmap(std::uint16_t id)
{
    if (const auto found = m_bitmaps.find(id); found != m_bitmaps.end())
        return &found->second;
    const PackedBitmap* const pPacked = m_movie.FindAs<PackedBitmap>(id);
    return pPacked ? &m_bitmaps.emplace(id, Unpack(*pPacked)).first->second : nullptr;
}

const Shape& CSceneRenderer::MorphAt(std::uint16_t id, const MorphShape& morph, std::uint16_t ratio)
{
    const auto [at, isNew] = m_morphs.try_emplace(id);
    if (isNew || at->second.ratio != ratio)
    {
        at->second.ratio = ratio;
        at->second.shape = ShapeAt(morph, ratio);
    }
    return at->second.shape;
}
} // namespace swf

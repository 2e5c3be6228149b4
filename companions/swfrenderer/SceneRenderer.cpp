#include "companions/swfrenderer/SceneRenderer.h"

#include "companions/swfrenderer/Blend.h"
#include "companions/swfrenderer/EditTextLayout.h"
#include "companions/swfrenderer/Limits.h"

#include <cmath>

namespace swf
{
namespace
{
constexpr double kTwipsPerPixel = 20;
constexpr std::uint16_t kMaxFills = 65'535;

Area AreaOf(const Rect& r)
{
    if (r.IsEmpty())
        return {};
    const auto bound = [](double v) { return static_cast<int>(std::clamp(v, -1e6, 1e6)); };
    return {bound(std::floor(r.xMin)), bound(std::floor(r.yMin)), bound(std::ceil(r.xMax)) + 1,
            bound(std::ceil(r.yMax)) + 1};
}

/// Borrowed from a list of spare ones, given back at the end of the scope.
template <class T> class CSpare
{
public:
    CSpare(std::vector<std::unique_ptr<T>>& spares, std::uint32_t& used) : m_spares(spares), m_used(used)
    {
        if (!spares.empty())
        {
            m_p = std::move(spares.back());
            spares.pop_back();
        }
        else
            m_p = std::make_unique<T>();
        ++m_used;
    }
    ~CSpare()
    {
        --m_used;
        m_spares.push_back(std::move(m_p)); // the list has had room for it
    }
    CSpare(const CSpare&) = delete;
    CSpare& operator=(const CSpare&) = delete;
    T& operator*() const { return *m_p; }
    T* operator->() const { return m_p.get(); }

private:
    std::vector<std::unique_ptr<T>>& m_spares;
    std::uint32_t& m_used;
    std::unique_ptr<T> m_p;
};
} // namespace

void CSceneRenderer::Render(const CStage& stage, Coverage coverage, Surface& canvas)
{
    m_coverage = coverage;
    m_work = m_edgeWork = m_cells = 0;
    m_spareSurfaces.reserve(kMaxLayers + 1);
    m_spareMasks.reserve(kMaxLayers + 1);
    const Rect& box = m_movie.file.stage;
    const double perTwipX = canvas.area.Width() / box.Width(), perTwipY = canvas.area.Height() / box.Height();
    m_scaleX = perTwipX * kTwipsPerPixel;
    m_scaleY = perTwipY * kTwipsPerPixel;
    const Matrix toDevice{perTwipX, 0, 0, perTwipY, -box.xMin * perTwipX, -box.yMin * perTwipY};
    std::fill(canvas.pixels.begin(), canvas.pixels.end(), Premultiplied(stage.Background()));
    Target target;
    target.pSurface = &canvas;
    target.clip = canvas.area;
    const List& list = stage.Root().children;
    DrawList(list, 0, list.size(), toDevice, {}, target);
}

/// @return false when the frame has had its share of work.
bool CSceneRenderer::Spend(std::uint64_t pixels)
{
    m_work += pixels;
    return m_work <= kMaxFrameWork;
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
    if (clipper + 1 >= end || m_layers >= kMaxLayers)
        return;
    const Instance& object = *list[clipper];
    const Area clip = AreaOf(BoundsOf(object, Then(object.matrix, matrix))).Meet(target.clip);
    if (clip.IsEmpty() || !Spend(clip.Pixels()))
        return;
    CSpare<Mask> shape(m_spareMasks, m_layers);
    shape->Reset(clip);
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
    if (m_layers >= kMaxLayers || !Spend(clip.Pixels()))
        return;
    CSpare<Mask> content(m_spareMasks, m_layers);
    content->Reset(clip);
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
    if (!object.visible || m_work > kMaxFrameWork)
        return;
    const Matrix matrix = Then(object.matrix, parent);
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
    if (object.pFilters)
        for (const Filter& filter : *object.pFilters)
        {
            const Area m = FilterMargins(filter, m_scaleX, m_scaleY);
            margins = {margins.left + m.left, margins.top + m.top, margins.right + m.right, margins.bottom + m.bottom};
        }
    const auto grown = [&margins](const Area& a) {
        return Area{a.left - margins.left, a.top - margins.top, a.right + margins.right, a.bottom + margins.bottom};
    };
    Area area = AreaOf(BoundsOf(object, matrix));
    if (area.IsEmpty())
        return;
    area = grown(area).Meet(grown(target.clip));
    std::uint64_t passes = 1; // over all pixels of the layer
    if (object.pFilters)
        for (const Filter& filter : *object.pFilters)
            passes += FilterCost(filter);
    if (area.IsEmpty() || m_layers >= kMaxLayers || !Spend(area.Pixels() * passes))
        return;
    CSpare<Surface> layer(m_spareSurfaces, m_layers);
    layer->Reset(area, 0);
    Target inside;
    inside.pSurface = &*layer;
    inside.clip = area;
    inside.inLayer = true;
    DrawContent(object, matrix, colours, inside);
    if (object.pFilters)
        for (const Filter& filter : *object.pFilters)
            m_filters.Apply(filter, m_scaleX, m_scaleY, *layer);
    BlendPicture(object.blend, *layer, target.pMask, area.Meet(target.clip), *target.pSurface);
}

void CSceneRenderer::DrawContent(const Instance& object, const Matrix& matrix, const ColourTransform& colours,
                                 const Target& target)
{
    if (object.pTimeline)
        return DrawList(object.children, 0, object.children.size(), matrix, colours, target);
    const Character* const pCharacter = m_movie.Find(object.character);
    if (!pCharacter)
        return;
    if (const Shape* const pShape = std::get_if<Shape>(pCharacter))
        DrawShape(*pShape, matrix, colours, target);
    else if (const MorphShape* const pMorph = std::get_if<MorphShape>(pCharacter))
        DrawShape(MorphAt(object.character, *pMorph, object.ratio), matrix, colours, target);
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

CPaint& CSceneRenderer::PaintAt(std::size_t index)
{
    if (m_paints.size() <= index)
        m_paints.resize(index + 1);
    return m_paints[index];
}

/// @return false when the edges in m_edges pass through more pixels of @p area than an outline or a frame may have.
bool CSceneRenderer::SpendCells(const Area& area)
{
    const auto span = [](float a, float b, int low, int high)
    {
        const double from = std::max<double>(std::min(a, b), low), to = std::min<double>(std::max(a, b), high);
        return to > from ? static_cast<std::uint64_t>(to - from) + 1 : 0;
    };
    std::uint64_t cells = 0;
    for (const FlatEdge& edge : m_edges)
        if (const std::uint64_t rows = span(edge.y0, edge.y1, area.top, area.bottom))
            cells += rows + span(edge.x0, edge.x1, area.left, area.right);
    m_cells += cells;
    return cells <= kMaxOutlineCells && m_cells <= kMaxFrameCells;
}

/// The edges in m_edges, whose fills are in m_paints.
void CSceneRenderer::DrawEdges(std::uint16_t fills, bool nonZero, const Target& target)
{
    m_edgeWork += m_edges.size();
    if (m_edges.empty() || m_edgeWork > kMaxFrameEdges)
        return;
    float xMin = 1e9F, yMin = 1e9F, xMax = -1e9F, yMax = -1e9F;
    for (const FlatEdge& edge : m_edges)
    {
        xMin = std::min({xMin, edge.x0, edge.x1});
        xMax = std::max({xMax, edge.x0, edge.x1});
        yMin = std::min({yMin, edge.y0, edge.y1});
        yMax = std::max({yMax, edge.y0, edge.y1});
    }
    const Area area = AreaOf({xMin, yMin, xMax, yMax}).Meet(target.clip);
    if (area.IsEmpty() || !Spend(area.Pixels()) || !SpendCells(area))
        return;
    if (target.pCovered)
    {
        CMaskPainter painter(*target.pCovered);
        m_rasterizer.Fill(m_edges, fills, nonZero, m_coverage, area, painter);
    }
    else
    {
        CPainter painter(*target.pSurface, m_paints, target.pMask);
        m_rasterizer.Fill(m_edges, fills, nonZero, m_coverage, area, painter);
    }
}

void CSceneRenderer::DrawShape(const Shape& shape, const Matrix& matrix, const ColourTransform& colours,
                               const Target& target)
{
    for (const ShapeLayer& layer : shape.layers)
    {
        m_edges.clear();
        const auto fills = static_cast<std::uint16_t>(std::min<std::size_t>(layer.fills.size(), kMaxFills));
        if (fills > 0)
            FlattenFills(layer, matrix, static_cast<std::size_t>(kMaxFrameEdges), m_edges);
        if (!m_edges.empty())
        {
            for (std::size_t i = 0; i < fills && target.pSurface; ++i)
            {
                const FillStyle& fill = layer.fills[i];
                PaintAt(i).SetFill(fill, matrix, colours,
                                   fill.kind == FillKind::Bitmap ? FindBitmap(fill.bitmap) : nullptr);
            }
            DrawEdges(fills, shape.nonZero, target);
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
        m_stroker.Outline(layer, number, matrix, std::sqrt(m_scaleX * m_scaleY),
                          static_cast<std::size_t>(kMaxFrameEdges), m_edges);
        if (m_edges.empty())
            continue;
        const FillStyle& fill = layer.lines[number - 1].fill;
        PaintAt(0).SetFill(fill, matrix, colours, fill.kind == FillKind::Bitmap ? FindBitmap(fill.bitmap) : nullptr);
        DrawEdges(1, true, target);
    }
}

void CSceneRenderer::DrawText(const Text& text, const Matrix& matrix, const ColourTransform& colours,
                              const Target& target)
{
    const Matrix toDevice = Then(text.matrix, matrix);
    for (const PlacedGlyph& glyph : text.glyphs)
    {
        const Font* const pFont = m_movie.FindAs<Font>(glyph.font);
        if (!pFont || glyph.glyph >= pFont->glyphs.size())
            continue;
        const double scale = glyph.height / pFont->unitsPerEm;
        const Matrix glyphMatrix = Then({scale, 0, 0, scale, glyph.x, glyph.y}, toDevice);
        m_edges.clear();
        for (const ShapeLayer& layer : pFont->glyphs[glyph.glyph].layers)
            FlattenFills(layer, glyphMatrix, static_cast<std::size_t>(kMaxFrameEdges), m_edges);
        if (m_edges.empty())
            continue;
        PaintAt(0).SetSolid(colours.Apply(glyph.colour));
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
        ShapeRecords records;
        records.styles.resize(1);
        records.styles[0].fills.resize(1);
        records.styles[0].fills[0].colour = {255, 255, 255, 255};
        LineStyle line;
        line.width = kTwipsPerPixel;
        line.fill.colour = {0, 0, 0, 255};
        records.styles[0].lines.push_back(line);
        const Rect& b = edit.bounds;
        ShapeRecord start;
        start.hasMove = start.hasFill1 = start.hasLine = true;
        start.fill1 = start.line = 1;
        start.to = {b.xMin, b.yMin};
        records.records.push_back(start);
        for (const Point p :
             {Point{b.xMax, b.yMin}, Point{b.xMax, b.yMax}, Point{b.xMin, b.yMax}, Point{b.xMin, b.yMin}})
        {
            ShapeRecord side;
            side.kind = ShapeRecord::Kind::Line;
            side.to = p;
            records.records.push_back(side);
        }
        DrawShape(BuildShape(records, b, false), matrix, colours, target);
    }
    DrawText(found->second, matrix, colours, target);
}

void CSceneRenderer::DrawVideo(const Instance& object, const VideoStream& stream, const Matrix& matrix,
                               const ColourTransform& colours, const Target& target)
{
    std::unique_ptr<CVideoDecoder>& pDecoder = m_videos[object.character];
    if (!pDecoder)
        pDecoder = std::make_unique<CVideoDecoder>(stream);
    if (const Bitmap* const pBitmap = pDecoder->FrameAt(object.ratio))
        DrawBitmapBox(*pBitmap, stream.smooth, matrix, colours, target);
}

void CSceneRenderer::DrawBitmapBox(const Bitmap& bitmap, bool smooth, const Matrix& matrix,
                                   const ColourTransform& colours, const Target& target)
{
    FillStyle fill;
    fill.kind = FillKind::Bitmap;
    fill.smooth = smooth;
    fill.matrix = {kTwipsPerPixel, 0, 0, kTwipsPerPixel, 0, 0};
    PaintAt(0).SetFill(fill, matrix, colours, &bitmap);
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

Rect CSceneRenderer::BoundsOf(const Instance& object, const Matrix& matrix) const
{
    Rect bounds;
    for (const std::unique_ptr<Instance>& child : object.children)
        bounds.Include(BoundsOf(*child, Then(child->matrix, matrix)));
    const Character* const pCharacter = m_movie.Find(object.character);
    if (object.pTimeline || !pCharacter)
        return bounds;
    if (const Shape* const pShape = std::get_if<Shape>(pCharacter))
        return matrix.Map(pShape->bounds);
    if (const MorphShape* const pMorph = std::get_if<MorphShape>(pCharacter))
    {
        Rect both = pMorph->startBounds;
        both.Include(pMorph->endBounds);
        return matrix.Map(both);
    }
    if (const Text* const pText = std::get_if<Text>(pCharacter))
        return Then(pText->matrix, matrix).Map(pText->bounds);
    if (const EditText* const pEdit = std::get_if<EditText>(pCharacter))
        return matrix.Map(pEdit->bounds);
    if (const VideoStream* const pVideo = std::get_if<VideoStream>(pCharacter))
        return matrix.Map(Rect{0, 0, pVideo->width * kTwipsPerPixel, pVideo->height * kTwipsPerPixel});
    if (const PackedBitmap* const pPacked = std::get_if<PackedBitmap>(pCharacter))
        return matrix.Map(Rect{0, 0, pPacked->width * kTwipsPerPixel, pPacked->height * kTwipsPerPixel});
    return bounds;
}
} // namespace swf

/// @file SceneRenderer.h
/// Draws what is on the stage.
#pragma once

#include "companions/swfrenderer/FilterPass.h"
#include "companions/swfrenderer/LayerPool.h"
#include "companions/swfrenderer/Limits.h"
#include "companions/swfrenderer/Painter.h"
#include "companions/swfrenderer/ScaleGrid.h"
#include "companions/swfrenderer/Stage.h"
#include "companions/swfrenderer/Stroker.h"
#include "companions/swfrenderer/VideoPool.h"

#include <memory>
#include <unordered_map>
#include <vector>

namespace swf
{
/// Keeps unpacked bitmaps, morphs and all working memory from frame to frame. One thread at a time.
class CSceneRenderer
{
public:
    CSceneRenderer(const Movie& movie, const Budget& budget) : m_movie(movie), m_budget(budget) {}
    /// Draws over @p canvas, whose area starts at 0, 0 and shows the whole stage. Throws std::bad_alloc.
    void Render(const CStage& stage, Coverage coverage, Surface& canvas);

private:
    /// Where drawing goes: a picture, or how much of every pixel is covered.
    struct Target
    {
        Surface* pSurface = nullptr;
        Mask* pCovered = nullptr;
        const Mask* pMask = nullptr; ///< of a picture; may be null
        Area clip;
        bool inLayer = false;              ///< the picture belongs to an object of its own
        const CScaleGrid* pGrid = nullptr; ///< of the object whose shapes are drawn; may be null
        Matrix fromGrid;                   ///< from what pGrid has scaled to device pixels
    };
    using List = std::vector<std::unique_ptr<Instance>>;

    void DrawList(const List& list, std::size_t first, std::size_t end, const Matrix& matrix,
                  const ColourTransform& colours, const Target& target);
    void DrawClipped(const List& list, std::size_t clipper, std::size_t end, const Matrix& matrix,
                     const ColourTransform& colours, const Target& target);
    void DrawInstance(const Instance& object, const Matrix& parent, const ColourTransform& colours,
                      const Target& target);
    void DrawLayer(const Instance& object, const Matrix& matrix, const ColourTransform& colours, const Target& target);
    void DrawContent(const Instance& object, const Matrix& matrix, const ColourTransform& colours,
                     const Target& target);
    void DrawChildren(const Instance& object, const Matrix& matrix, const ColourTransform& colours,
                      const Target& target);
    void DrawShapeOf(const Instance& object, const Shape& shape, const Matrix& matrix, const ColourTransform& colours,
                     const Target& target);
    void DrawShape(const Shape& shape, bool kept, const Matrix& matrix, const ColourTransform& colours,
                   const Target& target);
    void SetPaints(const ShapeLayer& layer, std::size_t fills, const Matrix& matrix, const ColourTransform& colours);
    void DrawStrokes(const ShapeLayer& layer, const Matrix& matrix, const ColourTransform& colours,
                     const Target& target);
    void DrawText(const Text& text, const Matrix& matrix, const ColourTransform& colours, const Target& target);
    void DrawEditText(const Instance& object, const EditText& edit, const Matrix& matrix,
                      const ColourTransform& colours, const Target& target);
    void DrawVideo(const Instance& object, const VideoStream& stream, const Matrix& matrix,
                   const ColourTransform& colours, const Target& target);
    void DrawBitmapBox(const Bitmap& bitmap, bool smooth, const Matrix& matrix, const ColourTransform& colours,
                       const Target& target);
    void DrawEdges(std::uint16_t fills, bool nonZero, const Target& target);
    CPaint& PaintAt(std::size_t index);
    const Bitmap* FindBitmap(std::uint16_t id);
    const Shape& MorphAt(std::uint16_t id, const MorphShape& morph, std::uint16_t ratio);
    bool Spend(std::uint64_t pixels);
    bool SpendEdges(std::uint64_t edges);

    struct Morphed
    {
        std::uint16_t ratio = 0;
        Shape shape;
    };

    const Movie& m_movie;
    const Budget m_budget;
    Coverage m_coverage = Coverage::Exact;
    double m_scaleX = 1, m_scaleY = 1;                              ///< device pixels per pixel of the stage
    std::uint64_t m_workLeft = 0, m_edgesLeft = 0, m_cellsLeft = 0; ///< of this frame
    CRasterizer m_rasterizer;
    CStroker m_stroker;
    CFilterPass m_filters;
    std::vector<CPaint> m_paints;
    CGradientTables m_gradients;
    COutlineCache m_outlines;
    std::vector<FlatEdge> m_edges;
    std::unordered_map<std::uint16_t, Bitmap> m_bitmaps;
    std::unordered_map<std::uint16_t, Morphed> m_morphs;
    std::unordered_map<std::uint16_t, Text> m_editTexts;
    CVideoPool m_videos;
    CLayerPool m_layers;
};
} // namespace swf

#include "companions/swfrenderer/Bounds.h"

namespace swf
{
namespace
{
constexpr double kTwipsPerPixel = 20;
}

Rect BoundsOf(const Movie& movie, const Instance& object, const Matrix& matrix)
{
    Rect bounds;
    for (const std::unique_ptr<Instance>& child : object.children)
        bounds.Include(BoundsOf(movie, *child, Then(child->matrix, matrix)));
    const Character* const pCharacter = movie.Find(object.character);
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

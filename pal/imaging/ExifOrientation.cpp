#include "pal/imaging/ExifOrientation.h"

#include "pal/imaging/ImageLimits.h"

#include <libexif/exif-data.h>

#include <algorithm>
#include <memory>
#include <vector>

namespace pal
{
namespace
{
constexpr char kMark[] = {'E', 'x', 'i', 'f', 0, 0};

struct ExifDataDeleter
{
    void operator()(ExifData* p) const { exif_data_unref(p); }
};
} // namespace

USHORT ExifOrientation(const ImageBytes& block)
{
    const ImageBytes body = block.StartsWith(kMark, sizeof kMark) ? block.Part(sizeof kMark, block.Size()) : block;
    if (body.Size() == 0)
        return 0;
    std::vector<BYTE> marked(std::begin(kMark), std::end(kMark)); // the library wants the mark
    marked.insert(marked.end(), body.Data(), body.Data() + std::min(body.Size(), kMaxExifBytes));
    const std::unique_ptr<ExifData, ExifDataDeleter> pData(
        exif_data_new_from_data(marked.data(), static_cast<unsigned>(marked.size())));
    if (!pData)
        return 0;
    const ExifEntry* const pEntry = exif_content_get_entry(pData->ifd[EXIF_IFD_0], EXIF_TAG_ORIENTATION);
    if (!pEntry || pEntry->format != EXIF_FORMAT_SHORT || pEntry->components < 1 || pEntry->size < 2)
        return 0;
    return CheckedOrientation(exif_get_short(pEntry->data, exif_data_get_byte_order(pData.get())));
}
} // namespace pal

#include "tests/companions/swfrenderer/CorpusMovies.h"

const std::vector<CorpusMovie>& CorpusMovies()
{
    static const std::vector<CorpusMovie> kMovies = {
        {"blend_modes_multiply", "blend_modes_multiply", 1, false, {{0, 2}}},
        {"blend_modes_layer_alpha", "blend_modes_layer_alpha", 1, false, {{0, 2}}},
        {"color_transform_issue_9698", "color_transform_issue_9698", 1, false, {{0, 0}}},
        {"simple_shapes_heavy_tesselation", "simple_shapes_heavy_tesselation", 1, false, {{3, 0}}},
        {"simple_shapes_gradients_repeat", "simple_shapes_gradients_repeat", 1, false, {{0, 1}}},
        {"simple_shapes_gradients_gradients", "simple_shapes_gradients_gradients", 1, false, {{0, 1}}},
        {"simple_shapes_gradients_focal_radial", "simple_shapes_gradients_focal_radial", 1, false, {{0, 13}}},
        {"simple_shapes_masks", "simple_shapes_masks", 1, false, {{0, 0}}},
        {"simple_shapes_overlaps", "simple_shapes_overlaps", 1, false, {{0, 0}}},
        {"simple_shapes_winding_rule", "simple_shapes_winding_rule", 1, false, {{0, 0}}},
        {"filters_drop_shadow_angles", "filters_drop_shadow_angles", 1, false, {{0, 2}}},
        {"filters_color_matrix", "filters_color_matrix", 1, false, {{0, 0}}},
        {"cache_as_bitmap_morph", "cache_as_bitmap_morph", 4, false, {{0, 0}}},
        {"video_colorconversion_h263", "video_colorconversion_h263", 1, false, {{0, 0}}},
        {"acid_acid-blend", "acid_acid-blend", 30, false, {{348, 11}}},
        {"acid_acid-clip-2", "acid_acid-clip-2", 1, true, {{3000, 0}, {1300, 32}, {300, 64}, {0, 110}}},
        {"acid_acid-text-6", "acid_acid-text-6.tick20", 20, false, {{0, 0}}},
        {"acid_acid-text-6", "acid_acid-text-6.tick1", 1, false, {{0, 0}}},
        {"acid_acid-child", "acid_acid-child.tick10", 10, false, {{0, 0}}},
        {"acid_acid-child", "acid_acid-child.tick5", 5, false, {{0, 0}}},
        {"acid_acid-chars", "acid_acid-chars", 1, false, {{0, 0}}},
        {"acid_acid-text", "acid_acid-text", 1, false, {{0, 0}}},
        {"acid_acid-bitmap-fill-2", "acid_acid-bitmap-fill-2", 1, true, {{9000, 3}, {0, 32}}},
        {"acid_acid-scale", "acid_acid-scale", 1, false, {{0, 0}}},
        {"acid_acid-large", "acid_acid-large", 500, false, {{0, 11}}},
        {"clipping", "clipping", 1, true, {{0, 2}}},
        {"sd_clip-transparent", "sd_clip-transparent", 1, true, {{1800, 3}}},
        {"sd_definebits-palette-7", "sd_definebits-palette-7", 1, true, {{1800, 3}}},
        {"sd_image-jpeg-alpha", "sd_image-jpeg-alpha", 1, true, {{15, 3}}},
        {"sd_image-lossless-alpha", "sd_image-lossless-alpha", 1, true, {{15, 3}}},
        {"sd_mask-and-clip-1-8", "sd_mask-and-clip-1-8", 1, true, {{1800, 3}}},
        {"sd_morph-end-7", "sd_morph-end-7", 1, true, {{1800, 3}}},
    };
    return kMovies;
}

#include "tests/companions/swfrenderer/GeneratedMovie.h"

#include "tests/companions/swfrenderer/PackedMovie.h"

#include <random>
#include <string>

namespace
{
constexpr int kWidth = 320, kHeight = 240;
constexpr std::uint32_t kFrames = 12;

class CGenerator
{
public:
    explicit CGenerator(std::uint64_t seed) : m_engine(seed) {}

    Bytes Make(int objects)
    {
        m_movie.Background(Colour());
        for (int i = 0; i < 2; ++i)
            Bitmap();
        for (int i = 0; i < 6; ++i)
            Shape();
        for (int i = 0; i < 2; ++i)
            Morph();
        Text();
        for (int i = 0; i < 4; ++i)
            Sprite();
        MovieBuilder root;
        for (int i = 0; i < objects; ++i)
            Place(root, static_cast<std::uint32_t>(1 + 3 * i));
        Timeline(root, static_cast<std::uint32_t>(objects) * 3, false);
        m_movie.tags.Raw(root.tags.bytes);
        return m_movie.File(kWidth, kHeight);
    }

private:
    int Between(int least, int most)
    {
        // Not a distribution of the library: those differ from system to system.
        return least + static_cast<int>(m_engine() % static_cast<std::uint64_t>(most - least + 1));
    }
    std::uint32_t Number(int least, int most) { return static_cast<std::uint32_t>(Between(least, most)); }
    bool OneIn(int n) { return Between(1, n) == 1; }
    std::uint32_t Colour() { return Number(0, 0xFFFFFF); }
    std::uint32_t NextId() { return ++m_id; }
    std::uint32_t AnyOf(const std::vector<std::uint32_t>& ids)
    {
        return ids[static_cast<std::size_t>(Between(0, static_cast<int>(ids.size()) - 1))];
    }
    void Rgba(ByteWriter& w) { w.U8(Number(0, 255)).U8(Number(0, 255)).U8(Number(0, 255)).U8(Number(60, 255)); }

    void Bitmap()
    {
        const int width = Between(4, 40), height = Between(4, 40);
        Bytes pixels;
        for (int i = 0; i < width * height; ++i)
        {
            const auto alpha = static_cast<std::uint8_t>(Between(0, 255));
            pixels.push_back(alpha);
            for (int c = 0; c < 3; ++c)
                pixels.push_back(static_cast<std::uint8_t>(Between(0, alpha)));
        }
        const std::uint32_t id = NextId();
        ByteWriter w;
        w.U16(id).U8(5).U16(static_cast<std::uint32_t>(width)).U16(static_cast<std::uint32_t>(height));
        m_movie.Tag(36, w.Raw(Zlib(pixels)).bytes);
        m_bitmaps.push_back(id);
    }
    /// Turned, sheared and scaled; @p unit is the scale that fits.
    void Map(ByteWriter& w, double unit, int x, int y)
    {
        const auto fixed = [&](int least, int most) { return std::int64_t(Between(least, most) * unit * 655.36); };
        w.Align().Bits(1, 1).Bits(26, 5).Bits(fixed(30, 150), 26).Bits(fixed(30, 150), 26);
        w.Bits(1, 1).Bits(26, 5).Bits(fixed(-60, 60), 26).Bits(fixed(-60, 60), 26);
        w.Bits(20, 5).Bits(x * 20, 20).Bits(y * 20, 20).Align();
    }
    void Fill(ByteWriter& w)
    {
        const int kind = Between(0, 5);
        if (kind <= 1)
        {
            w.U8(0);
            return Rgba(w);
        }
        if (kind == 2)
        {
            w.U8(Number(0x40, 0x43)).U16(AnyOf(m_bitmaps));
            return Map(w, 20, Between(0, 60), Between(0, 60));
        }
        const std::uint32_t type = kind == 3 ? 0x10U : kind == 4 ? 0x12U : 0x13U;
        w.U8(type);
        Map(w, 0.08, Between(0, 100), Between(0, 100));
        const int stops = Between(2, 5);
        w.U8(Number(0, 2) << 6 | Number(0, 1) << 4 | static_cast<std::uint32_t>(stops));
        for (int i = 0; i < stops; ++i)
        {
            w.U8(static_cast<std::uint32_t>(i * 255 / (stops - 1)));
            Rgba(w);
        }
        if (type == 0x13)
            w.U16(Number(0, 240));
    }
    void Line(ByteWriter& w)
    {
        w.U16(Number(0, 200)).Bits(Between(0, 2), 2);
        const int join = Between(0, 2);
        w.Bits(join, 2).Bits(0, 1).Bits(Between(0, 3), 2).Bits(0, 6).Bits(Between(0, 1), 1).Bits(Between(0, 2), 2);
        w.Align();
        if (join == 2)
            w.U16(Number(256, 1'024));
        Rgba(w);
    }
    void Curve(ByteWriter& w, int cx, int cy, int dx, int dy)
    {
        w.Bits(2, 2).Bits(15, 4).Bits(cx, 17).Bits(cy, 17).Bits(dx, 17).Bits(dy, 17);
    }
    /// A closed outline of straight edges and curves from where the pen is.
    void Outline(ByteWriter& w, int edges)
    {
        int x = 0, y = 0;
        for (int i = 0; i < edges; ++i)
        {
            const int dx = Between(-700, 700), dy = Between(-700, 700);
            x += dx;
            y += dy;
            if (OneIn(2))
                w.Line(dx, dy);
            else
                Curve(w, dx / 2 + 100, dy / 2 - 100, dx - dx / 2 - 100, dy - dy / 2 + 100);
        }
        w.Line(-x, -y);
    }
    void Shape()
    {
        const std::uint32_t id = NextId();
        const int fills = Between(1, 3), lines = Between(0, 2);
        ByteWriter w;
        w.U16(id).Rect(-4'000, 6'000, -4'000, 6'000).Rect(-4'000, 6'000, -4'000, 6'000).U8(OneIn(2) ? 4U : 0U);
        w.U8(static_cast<std::uint32_t>(fills));
        for (int i = 0; i < fills; ++i)
            Fill(w);
        w.U8(static_cast<std::uint32_t>(lines));
        for (int i = 0; i < lines; ++i)
            Line(w);
        w.Bits(2, 4).Bits(2, 4);
        for (int i = Between(1, 4); i > 0; --i)
        {
            w.Bits(0b001111, 6).Bits(20, 5).Bits(Between(0, 2'000), 20).Bits(Between(0, 2'000), 20);
            w.Bits(Between(0, fills), 2).Bits(Between(0, fills), 2).Bits(Between(0, lines), 2);
            Outline(w, Between(2, 12));
        }
        m_movie.Tag(83, w.Bits(0, 6).Align().bytes);
        m_shapes.push_back(id);
    }
    void Morph()
    {
        const std::uint32_t id = NextId();
        ByteWriter start, end;
        start.U8(1).U8(0);
        Rgba(start);
        Rgba(start);
        start.U8(0).Bits(1, 4).Bits(0, 4).Bits(0b000010, 6).Bits(1, 1);
        end.Bits(0, 8);
        const int edges = Between(3, 9);
        Outline(start, edges);
        Outline(end, edges);
        start.Bits(0, 6).Align();
        end.Bits(0, 6).Align();
        ByteWriter w;
        w.U16(id).Rect(-4'000, 4'000, -4'000, 4'000).Rect(-4'000, 4'000, -4'000, 4'000);
        w.U32(static_cast<std::uint32_t>(start.bytes.size())).Raw(start.bytes).Raw(end.bytes);
        m_movie.Tag(46, w.bytes);
        m_morphs.push_back(id);
    }
    /// A font of three glyphs, a text and a field set in it.
    void Text()
    {
        const std::uint32_t font = NextId(), text = NextId(), field = NextId();
        ByteWriter table, glyphs;
        for (int i = 0; i < 3; ++i)
        {
            table.U16(8 + static_cast<std::uint32_t>(glyphs.bytes.size()));
            ByteWriter glyph;
            glyph.Bits(1, 4).Bits(0, 4).Bits(0b000011, 6).Bits(15, 5).Bits(100 + 60 * i, 15).Bits(0, 15).Bits(1, 1);
            glyph.Line(400, 0);
            Curve(glyph, 100, -Between(100, 400), -200, -Between(100, 300));
            glyph.Line(-300, Between(200, 700)).Bits(0, 6).Align();
            glyphs.Raw(glyph.bytes);
        }
        table.U16(8 + static_cast<std::uint32_t>(glyphs.bytes.size()));
        ByteWriter w;
        w.U16(font).U8(0).U8(0).U8(1).U8('f').U16(3).Raw(table.bytes).Raw(glyphs.bytes).U8('a').U8('b').U8('c');
        m_movie.Tag(48, w.bytes);
        ByteWriter set;
        set.U16(text).Rect(0, 4'000, -600, 400).Translation(0, 400).U8(2).U8(12).U8(0x8C).U16(font);
        set.U8(Number(0, 255)).U8(Number(0, 255)).U8(Number(0, 255)).U16(Number(200, 900)).U8(8);
        for (int i = 0; i < 8; ++i)
            set.Bits(Between(0, 2), 2).Bits(Between(200, 600), 12);
        m_movie.Tag(11, set.Align().U8(0).bytes);
        ByteWriter edit;
        edit.U16(field).Rect(0, 3'000, 0, 1'600).U8(0xE5).U8(0x2A).U16(font).U16(Number(200, 500));
        Rgba(edit);
        edit.U8(Number(0, 3)).U16(40).U16(40).U16(20).U16(30).U8(0);
        const std::string words =
            "<p>abc cab <b>aabbcc</b> bca</p><p><font size='14' color='#3060C0'>ccc abab</font></p>";
        m_movie.Tag(37, edit.Raw(Bytes(words.begin(), words.end())).U8(0).bytes);
        m_shapes.push_back(text);
        m_shapes.push_back(field);
    }
    Bytes Filters()
    {
        ByteWriter w;
        w.U8(1);
        const auto blur = [&] { w.U32(Number(0, 14) << 16 | 0x4000).U32(Number(0, 14) << 16); };
        const auto aside = [&] { w.U32(Number(0, 6) << 16).U32(Number(0, 12) << 16).U16(Number(100, 400)); };
        switch (Between(0, 4))
        {
        case 0:
            w.U8(0);
            Rgba(w);
            blur();
            aside();
            w.U8(Number(0, 7) << 5 | Number(1, 3));
            break;
        case 1:
            w.U8(1);
            blur();
            w.U8(Number(1, 3) << 3);
            break;
        case 2:
            w.U8(3);
            Rgba(w);
            Rgba(w);
            blur();
            aside();
            w.U8(Number(4, 7) << 5 | Number(1, 3));
            break;
        case 3:
            w.U8(5).U8(3).U8(3).U32(0x40800000).U32(0);
            for (int i = 0; i < 9; ++i)
                w.U32(0x3F000000);
            w.U32(0).U8(3);
            break;
        default:
            w.U8(6);
            for (int i = 0; i < 20; ++i)
                w.U32(i % 6 == 0 ? 0x3F400000 : i % 5 == 4 ? 0x41200000 : 0x3E000000);
        }
        return w.bytes;
    }
    void Colours(ByteWriter& w)
    {
        w.Align().Bits(3, 2).Bits(10, 4);
        for (int i = 0; i < 4; ++i)
            w.Bits(Between(100, 256), 10);
        for (int i = 0; i < 4; ++i)
            w.Bits(i == 3 ? 0 : Between(-60, 60), 10);
        w.Align();
    }
    std::uint32_t Character()
    {
        if (OneIn(6))
            return AnyOf(m_morphs);
        return OneIn(3) && !m_sprites.empty() ? AnyOf(m_sprites) : AnyOf(m_shapes);
    }
    void Place(MovieBuilder& m, std::uint32_t depth)
    {
        const std::uint32_t id = Character();
        const bool styled = OneIn(3), filtered = styled && OneIn(2), clips = !styled && OneIn(6);
        ByteWriter w;
        w.U8(2 | 4 | 8 | 16 | (clips ? 64U : 0U)).U8((filtered ? 1U : 0U) | (styled ? 2U : 0U)).U16(depth).U16(id);
        Map(w, 0.8, Between(-20, kWidth - 60), Between(-20, kHeight - 60));
        Colours(w);
        w.U16(Number(0, 65'535));
        if (clips)
            w.U16(depth + 5);
        if (filtered)
            w.Raw(Filters());
        if (styled)
            w.U8(Number(1, 14));
        m.Tag(70, w.bytes);
    }
    /// Frames that move, change, add and remove what stands on depths up to @p depths.
    void Timeline(MovieBuilder& m, std::uint32_t depths, bool withActions)
    {
        for (std::uint32_t frame = 0; frame < kFrames; ++frame)
        {
            for (int i = Between(0, 3); i > 0; --i)
            {
                const std::uint32_t depth = Number(1, static_cast<int>(depths));
                ByteWriter w;
                if (OneIn(4))
                    m.Tag(28, w.U16(depth).bytes);
                else if (OneIn(3))
                    Place(m, depth);
                else
                {
                    w.U8(1 | 4 | 16).U16(depth);
                    Map(w, 1, Between(-20, kWidth - 60), Between(-20, kHeight - 60));
                    m.Tag(26, w.U16(Number(0, 65'535)).bytes);
                }
            }
            if (withActions && OneIn(5))
                m.Tag(12, ByteWriter().U8(0x81).U16(2).U16(Number(0, kFrames - 1)).U8(OneIn(3) ? 7U : 6U).U8(0).bytes);
            m.ShowFrame();
        }
    }
    void Sprite()
    {
        const std::uint32_t id = NextId();
        MovieBuilder inner;
        for (std::uint32_t depth = 1; depth < 4; ++depth)
            Place(inner, depth);
        Timeline(inner, 6, true);
        m_movie.Sprite(id, kFrames, inner.tags.bytes);
        m_sprites.push_back(id);
    }

    std::mt19937_64 m_engine;
    MovieBuilder m_movie;
    std::uint32_t m_id = 0;
    std::vector<std::uint32_t> m_bitmaps, m_shapes, m_morphs, m_sprites;
};
} // namespace

Bytes GeneratedMovie(std::uint64_t seed, int objects)
{
    return CGenerator(seed).Make(objects);
}

// Prints where frames of titles and of keystrokes show something, a line for each: NAME LEFT TOP RIGHT BOTTOM. The
// Windows build's edges are compared with the native build's. Both have the same font files.
#include "engine/qmx.h"
#include "tests/support/InkBox.h"

#include <cstdio>
#include <initializer_list>
#include <string>
#include <vector>

namespace
{
constexpr std::uint64_t Seconds(double seconds)
{
    return static_cast<std::uint64_t>(seconds * static_cast<double>(kTimePerSecond));
}

tagDecProp Record(std::uint32_t width, std::uint32_t height)
{
    tagDecProp prop(std::wstring(), 0);
    prop.width = width;
    prop.height = height;
    return prop;
}

/// Takes the reference of @p pBuffer.
void Print(const std::string& name, ISampleBuffer* pBuffer,
           const test_support::PixelTest& counts = test_support::IsHalfThere)
{
    const SampleBufferPtr frame = SampleBufferPtr::Adopt(pBuffer);
    std::uint8_t* pPixels = nullptr;
    std::uint32_t cb = 0;
    test_support::InkBox box;
    if (frame && frame->GetBuffer(&pPixels, &cb))
    {
        box = test_support::FindInk(pPixels, std::size_t{frame->GetWidth()} * 4, static_cast<int>(frame->GetWidth()),
                                    static_cast<int>(frame->GetHeight()), counts);
    }
    std::printf("%-32s %5d %5d %5d %5d\n", name.c_str(), box.left, box.top, box.right, box.bottom);
}

// ---- titles ------------------------------------------------------------------------------------------------------

tagQMXTitleTextInfo Text(const std::wstring& text, float fontSize = 24)
{
    tagQMXTitleTextInfo item;
    item.text = text;
    item.textLength = static_cast<std::uint32_t>(text.size());
    item.fontName = L"DejaVu Sans";
    item.fontSize = fontSize;
    return item;
}

class Titles
{
public:
    Titles(std::uint32_t width, std::uint32_t height) { m_pDecoder->Initialize(Record(width, height)); }
    void Print(const std::string& name, tagQMXTitleTextInfo item, double seconds = 0)
    {
        m_pDecoder->InitializeTitleText({&item}, 0);
        bool flag = false;
        ::Print(name, m_pDecoder->GetClipVideoFrame(Seconds(seconds), flag));
    }

private:
    RefPtr<CTitleDecoder> m_pDecoder = RefPtr<CTitleDecoder>::Adopt(new CTitleDecoder);
};

void PrintSizes()
{
    for (const std::uint32_t height : {144U, 288U, 720U, 1080U})
    {
        Titles titles(height * 16 / 9, height);
        for (const int size : {9, 12, 24, 48, 72})
            titles.Print("size-" + std::to_string(size) + "-of-" + std::to_string(height),
                         Text(L"Hillside, 0123", static_cast<float>(size)));
    }
}

void PrintMovements()
{
    Titles titles(1920, 1080);
    for (std::uint32_t animation = 0; animation < 5; ++animation)
    {
        for (const double seconds : {0.0, 4.0, 7.5, 8.5, 15.0, 30.0})
        {
            tagQMXTitleTextInfo item = Text(L"Moving");
            item.animation = animation;
            item.x = 0.4;
            item.y = 0.3;
            const std::string at = "-at-" + std::to_string(static_cast<int>(seconds * 10)) + "-tenths";
            titles.Print("animation-" + std::to_string(animation) + at, item, seconds);
            // Far outside, so that the beginning of a pass and the time after it come into sight.
            const double sign = animation < 3 ? -1 : 1;
            const double away = sign * 2 * (seconds / 15 - 0.5);
            (animation % 2 == 1 ? item.x : item.y) += animation == 0 ? 0 : away;
            titles.Print("followed-" + std::to_string(animation) + at, item, seconds);
        }
    }
    for (const std::uint32_t speed : {1U, 7U, 8U, 9U})
    {
        for (const double seconds : {0.25, 0.5, 0.75})
        {
            tagQMXTitleTextInfo item = Text(L"Moving");
            item.animation = QMXTitleAnimation_LeftToRight;
            item.speed = speed;
            item.x = speed == 8 ? 2 : 1;
            titles.Print("speed-" + std::to_string(speed) + "-at-" + std::to_string(static_cast<int>(seconds * 100)),
                         item, seconds);
        }
    }
}

void PrintLooks()
{
    Titles titles(1280, 720);
    const auto changed = [&titles](const std::string& name, const auto& change)
    {
        tagQMXTitleTextInfo item = Text(L"Hillside");
        item.x = 0.1;
        item.y = 0.1;
        change(item);
        item.textLength = static_cast<std::uint32_t>(item.text.size());
        titles.Print(name, item);
    };
    changed("bold", [](auto& item) { item.fontWeight = 700; });
    changed("italic", [](auto& item) { item.italic = true; });
    changed("bold-italic", [](auto& item) { item.fontWeight = 700, item.italic = true; });
    changed("underlined", [](auto& item) { item.underline = true; });
    changed("opacity-60", [](auto& item) { item.opacity = 0.6F; });
    changed("ligatures", [](auto& item) { item.text = L"Affluent office"; });
    changed("kerned", [](auto& item) { item.text = L"Kerning AVATAR To"; });
    changed("accents", [](auto& item) { item.text = L"Grüße, élan"; });
    changed("greek-and-cyrillic", [](auto& item) { item.text = L"αβγ ж"; });
    changed("tabulator", [](auto& item) { item.text = L"a\tb"; });
    changed("spaces-at-the-end", [](auto& item) { item.text = L"Hill   \nside  "; });
    changed("serif", [](auto& item) { item.fontName = L"DejaVu Serif"; });
    changed("monospaced", [](auto& item) { item.fontName = L"DejaVu Sans Mono"; });
    changed("chinese", [](auto& item) { item.text = L"标题文字", item.fontName = L"WenQuanYi Micro Hei"; });
    changed("arabic", [](auto& item) { item.text = L"مرحبا"; });
    changed("hebrew", [](auto& item) { item.text = L"שלום"; });
    changed("emoji", [](auto& item) { item.text = L"\U0001F600", item.fontName = L"Noto Color Emoji"; });
    changed("no-such-family", [](auto& item) { item.fontName = L"No such family"; });
    changed("chinese-that-the-font-lacks", [](auto& item) { item.text = L"Hill 标题"; });
    changed("emoji-that-the-font-lacks", [](auto& item) { item.text = L"Hill \U0001F986"; });
    changed("between-pixels", [](auto& item) { item.x = 0.1004, item.y = 0.1007; });
    changed("half-outside", [](auto& item) { item.x = -0.05, item.y = -0.02; });
}

void PrintLines()
{
    Titles titles(640, 360);
    const std::wstring words =
        L"one line of plain words that is so wide that no frame is wide enough to hold all of it "
        L"and neither is one that is twice as wide";
    for (std::uint32_t alignment = 0; alignment < 6; ++alignment)
    {
        const std::string suffix = "-alignment-" + std::to_string(alignment);
        tagQMXTitleTextInfo item = Text(L"Hillside\nHill\nHills", 20);
        item.alignment = alignment;
        item.x = 0.2;
        titles.Print("lines" + suffix, item);
        item = Text(words, 20);
        item.alignment = alignment;
        titles.Print("wrapped" + suffix, item);
        item.x = -1.2; // the far ends of the lines
        titles.Print("wrapped-end" + suffix, item);
    }
    tagQMXTitleTextInfo item = Text(words, 20);
    item.underline = true;
    titles.Print("wrapped-underlined", item);
    item = Text(L"Hillside\nHill", 20);
    item.underline = true;
    titles.Print("lines-underlined", item);
}

// ---- keystrokes --------------------------------------------------------------------------------------------------

class Keystrokes
{
public:
    Keystrokes(std::uint32_t width, std::uint32_t height, float left, float top, float length)
    {
        m_pDecoder->Initialize(Record(width, height));
        m_pDecoder->InitializeLeftAndTopAndWidth(left, top, length);
    }
    /// One line for everything, one for the box of each label that is shown and one for the texts.
    void Print(const std::string& name, std::vector<tagQMXKeystrokeInfo> keys, double seconds)
    {
        std::vector<tagQMXKeystrokeInfo*> items;
        for (std::size_t i = 0; i < keys.size(); ++i)
        {
            keys[i].backColor = ColorOf(i);
            keys[i].fontName = L"DejaVu Sans";
            items.push_back(&keys[i]);
        }
        m_pDecoder->InitializeKeystrokeText(items, 0);
        bool flag = false;
        const auto frame = [&] { return m_pDecoder->GetClipVideoFrame(Seconds(seconds), flag); };
        ::Print(name, frame());
        for (std::size_t i = 0; i < keys.size(); ++i)
        {
            ::Print(name + "-box-" + std::to_string(i), frame(),
                    [color = ColorOf(i)](const std::uint8_t* pPixel)
                    { return pPixel[3] > 250 && pPixel[0] == (color & 0xFF) && pPixel[1] == (color >> 8 & 0xFF); });
        }
        ::Print(name + "-texts", frame(),
                [](const std::uint8_t* pPixel) { return pPixel[0] > 160 && pPixel[1] > 160 && pPixel[2] > 160; });
    }

private:
    static std::uint32_t ColorOf(std::size_t label)
    {
        const auto n = static_cast<std::uint32_t>(label);
        return (0x10 + 16 * n) << 8 | (0x80 - 16 * n); // no red, so that nothing of it is taken for text
    }
    RefPtr<CKeystrokeDecoder> m_pDecoder = RefPtr<CKeystrokeDecoder>::Adopt(new CKeystrokeDecoder);
};

tagQMXKeystrokeInfo Key(double start, const std::wstring& text, double end = 0, float fontSize = 20)
{
    tagQMXKeystrokeInfo key;
    key.startTime = Seconds(start);
    key.endTime = Seconds(end);
    key.text = text;
    key.fontSize = fontSize;
    return key;
}

void PrintKeystrokes()
{
    const std::vector<tagQMXKeystrokeInfo> group = {Key(0, L"A"), Key(1, L"Shift"), Key(5, L"Ctrl"), Key(6, L"Enter"),
                                                    Key(6.5, L"Esc", 8)};
    for (const std::uint32_t height : {288U, 300U, 720U, 1080U})
    {
        Keystrokes strip(height * 16 / 9, height, 0.1F, 0.25F, 0.9F);
        const std::string suffix = "-of-" + std::to_string(height);
        strip.Print("group-at-0" + suffix, group, 0);
        strip.Print("group-at-4.9" + suffix, group, 4.9);
        strip.Print("group-at-7" + suffix, group, 7);
        strip.Print("group-at-9" + suffix, group, 9); // the last label has ended
        Keystrokes narrow(height * 16 / 9, height, 0.25F, 0.5F, 0.35F);
        const std::vector<tagQMXKeystrokeInfo> full = {Key(0, L"Shift"), Key(0.5, L"Ctrl"), Key(1, L"Delete"),
                                                       Key(1.5, L"Z")};
        for (int n = 0; n < 4; ++n)
            narrow.Print("full-at-" + std::to_string(n) + suffix, full, 0.5 * n);
    }
    Keystrokes strip(1920, 1080, 0, 0, 1);
    strip.Print("empty-labels", std::vector<tagQMXKeystrokeInfo>(5, Key(0, L"")), 1);
    strip.Print("label-sizes", {Key(0, L"Hill", 0, 9), Key(0, L"Hill", 0, 30), Key(0, L"Hill", 0, 14.5F)}, 1);
}
} // namespace

int main()
{
    PrintSizes();
    PrintMovements();
    PrintLooks();
    PrintLines();
    PrintKeystrokes();
    return 0;
}

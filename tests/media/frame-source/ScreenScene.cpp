#include "tests/media/frame-source/Scenes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <numbers>
#include <string>

namespace
{
constexpr std::array<std::string_view, 17> kCode{
    "// counts the words of a text",
    "std::map<std::string, int> Count(std::istream& in)",
    "{",
    "    std::map<std::string, int> words;",
    "    std::string word;",
    "    while (in >> word)",
    "        ++words[word];",
    "    return words;",
    "}",
    "",
    "int main()",
    "{",
    "    const auto words = Count(std::cin);",
    "    for (const auto& [word, n] : words)",
    "        std::cout << n << ' ' << word << '\\n';",
    "    return words.empty() ? 1 : 0;",
    "}",
};

/// Of a pausing desktop's every three seconds, the seconds in which something moves.
constexpr double kActive = 1.0, kCycle = 3.0;

Colour CodeColour(std::string_view line)
{
    if (line.find("//") != std::string_view::npos)
        return Rgb(0x6A9955);
    if (line.find("return") != std::string_view::npos || line.find("while") != std::string_view::npos ||
        line.find("for (") != std::string_view::npos)
        return Rgb(0xD9A0E8);
    return Rgb(0xC8D6E8);
}
} // namespace

ScreenScene::ScreenScene(int width, int height, double framesPerSecond, bool pausing)
    : m_unit(width / 1000.0), m_framesPerSecond(framesPerSecond), m_pausing(pausing), m_background(width, height),
      m_canvas(width, height)
{
    DrawBackground();
}

void ScreenScene::DrawBackground()
{
    const double u = m_unit, w = m_background.Width(), h = m_background.Height();
    m_background.FillGradient(Rgb(0x24476B), Rgb(0x6B3A63));
    m_background.FillCircle(0.82 * w, 0.18 * h, 190 * u, Rgb(0xF2B25C, 0.20));
    m_background.FillCircle(0.12 * w, 0.95 * h, 260 * u, Rgb(0x54C6EB, 0.14));
    m_background.FillRect(0, 0, w, 18 * u, Rgb(0x11161C, 0.85));
    m_background.Text(12 * u, 5 * u, 7.5 * u, "Desktop    File    Edit    View    Window    Help", Rgb(0xDDE4EC));
    // The editor and the chart's window, without what moves in them.
    m_background.FillRoundRect(46 * u, 48 * u, 540 * u, 430 * u, 9 * u, Rgb(0x000000, 0.30));
    m_background.FillRoundRect(40 * u, 40 * u, 540 * u, 430 * u, 9 * u, Rgb(0x1B222B));
    m_background.FillRoundRect(40 * u, 40 * u, 540 * u, 26 * u, 9 * u, Rgb(0x2C3642));
    m_background.Text(250 * u, 49 * u, 8 * u, "words.cpp", Rgb(0xDDE4EC));
    m_background.FillRoundRect(636 * u, 108 * u, 320 * u, 250 * u, 9 * u, Rgb(0x000000, 0.30));
    m_background.FillRoundRect(630 * u, 100 * u, 320 * u, 250 * u, 9 * u, Rgb(0xF4F6F8));
    m_background.FillRoundRect(630 * u, 100 * u, 320 * u, 26 * u, 9 * u, Rgb(0xDCE2E8));
    m_background.Text(752 * u, 109 * u, 8 * u, "Processor load", Rgb(0x333A42));
    for (int window = 0; window < 2; ++window)
        for (int light = 0; light < 3; ++light)
            m_background.FillCircle((window == 0 ? 55 : 645) * u + light * 15 * u, (window == 0 ? 53 : 113) * u,
                                    4.6 * u,
                                    Rgb(light == 0   ? 0xEE6A5F
                                        : light == 1 ? 0xF5BD4F
                                                     : 0x61C454));
    for (int line = 0; line <= 4; ++line)
        m_background.Line(650 * u, (146 + line * 44) * u, 932 * u, (146 + line * 44) * u, u, Rgb(0xD2D8DE));
}

void ScreenScene::DrawEditor(double t)
{
    const double u = m_unit, size = 9.2 * u, lineHeight = 23 * u;
    auto left = static_cast<std::size_t>(t * 42); // characters typed so far
    double caretX = 84 * u, caretY = 82 * u;
    for (std::size_t line = 0; line < kCode.size(); ++line)
    {
        const double y = 82 * u + static_cast<double>(line) * lineHeight;
        char number[8];
        std::snprintf(number, sizeof number, "%2zu", line + 1);
        m_canvas.Text(54 * u, y, size, number, Rgb(0x5A6877));
        const std::size_t count = std::min(left, kCode[line].size());
        caretX = m_canvas.Text(84 * u, y, size, kCode[line].substr(0, count), CodeColour(kCode[line]));
        caretY = y;
        if (left <= kCode[line].size())
            break;
        left -= kCode[line].size() + 1;
    }
    if (std::fmod(t, 1.0) < 0.6)
        m_canvas.FillRect(caretX, caretY - 3 * u, 1.8 * u, size + 6 * u, Rgb(0xFFD479));
}

void ScreenScene::DrawChart(double t)
{
    const double u = m_unit;
    const auto load = [](double s)
    { return 0.5 + 0.24 * std::sin(1.7 * s) + 0.14 * std::sin(4.3 * s + 1) + 0.08 * std::sin(11.1 * s); };
    double x0 = 650 * u, y0 = 0;
    for (int i = 0; i <= 94; ++i)
    {
        const double x = (650 + 3 * i) * u, y = (322 - 176 * load(t - 0.05 * (94 - i))) * u;
        if (i > 0)
            m_canvas.Line(x0, y0, x, y, 2.4 * u, Rgb(0x2F7DD1));
        x0 = x;
        y0 = y;
    }
    m_canvas.FillCircle(x0, y0, 4 * u, Rgb(0xE5533D));
    // A task bar of a long-running job below.
    m_canvas.FillRoundRect(630 * u, 400 * u, 320 * u, 62 * u, 9 * u, Rgb(0xF4F6F8));
    m_canvas.Text(646 * u, 411 * u, 8 * u, "Copying 1240 files", Rgb(0x333A42));
    m_canvas.FillRoundRect(646 * u, 434 * u, 288 * u, 10 * u, 5 * u, Rgb(0xCDD5DC));
    m_canvas.FillRoundRect(646 * u, 434 * u, (10 + 278 * std::min(1.0, t / 10)) * u, 10 * u, 5 * u, Rgb(0x3FA66A));
}

void ScreenScene::DrawPointer(double t)
{
    const double u = m_unit, turn = 2 * std::numbers::pi * t;
    const double x = (560 + 330 * std::sin(turn / 7)) * u, y = (290 + 170 * std::sin(turn / 4.1 + 0.6)) * u;
    for (int pass = 0; pass < 2; ++pass)
    {
        const Colour colour = pass == 0 ? Rgb(0x111111) : Rgb(0xFFFFFF);
        const double thick = (pass == 0 ? 4.2 : 2.2) * u;
        for (int i = 0; i <= 10; ++i) // the arrow's body, as a fan of lines from its tip
            m_canvas.Line(x, y, x + (2 + 0.9 * i) * u, y + (17 - 0.7 * i) * u, thick, colour);
        m_canvas.Line(x + 5 * u, y + 12 * u, x + 9 * u, y + 21 * u, thick, colour);
    }
}

void ScreenScene::DrawCounter(double t, int number)
{
    const double u = m_unit, left = 700 * u, top = 500 * u;
    char text[48];
    m_canvas.FillRoundRect(left, top, 270 * u, 40 * u, 8 * u, Rgb(0x0B0F14, 0.80));
    std::snprintf(text, sizeof text, "%02d:%06.3f", static_cast<int>(t / 60), std::fmod(t, 60));
    m_canvas.Text(left + 14 * u, top + 12 * u, 16 * u, text, Rgb(0xFFFFFF));
    std::snprintf(text, sizeof text, "#%04d", number);
    m_canvas.Text(left + 190 * u, top + 12 * u, 16 * u, text, Rgb(0x8FD3FF));
}

const Canvas& ScreenScene::Draw(int number)
{
    double t = number / m_framesPerSecond;
    if (m_pausing && std::fmod(t, kCycle) >= kActive)
    {
        number = static_cast<int>((std::floor(t / kCycle) * kCycle + kActive) * m_framesPerSecond) - 1;
        t = number / m_framesPerSecond;
    }
    if (number != m_lastNumber)
    {
        m_canvas = m_background;
        DrawEditor(t);
        DrawChart(t);
        DrawCounter(t, number);
        DrawPointer(t);
        m_lastNumber = number;
    }
    return m_canvas;
}

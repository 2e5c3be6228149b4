#include "tests/media/frame-source/Scenes.h"

#include <cmath>
#include <cstdio>
#include <numbers>

PhoneScene::PhoneScene(int width, int height, double framesPerSecond)
    : m_framesPerSecond(framesPerSecond), m_sky(width, height), m_canvas(width, height)
{
    m_sky.FillGradient(Rgb(0x3F8FD8), Rgb(0xF3D9B1));
}

const Canvas& PhoneScene::Draw(int number)
{
    const double t = number / m_framesPerSecond, w = m_canvas.Width(), h = m_canvas.Height(), u = w / 1000;
    // The hand that holds the phone is never still; the horizon leans and sways with it.
    const double swayX = 14 * u * std::sin(1.9 * t) + 5 * u * std::sin(5.3 * t), swayY = 9 * u * std::sin(2.6 * t + 1);
    const double lean = 0.02 * std::sin(1.3 * t);

    m_canvas = m_sky;
    m_canvas.FillCircle(745 * u + swayX, 690 * u + swayY, 120 * u, Rgb(0xFFF1B8));
    for (int cloud = 0; cloud < 3; ++cloud)
        for (int puff = 0; puff < 4; ++puff)
            m_canvas.FillCircle((90 + 330 * cloud + 62 * puff + 26 * t) * u + swayX,
                                (470 + 110 * (cloud % 2) - 22 * (puff % 2)) * u + swayY, (52 - 4 * puff) * u,
                                Rgb(0xFFFFFF, 0.75));
    std::vector<double> tops(static_cast<std::size_t>(m_canvas.Width()));
    for (int ridge = 0; ridge < 3; ++ridge)
    {
        for (int x = 0; x < m_canvas.Width(); ++x)
        {
            const double s = (x - swayX * (1 + ridge)) / u;
            tops[static_cast<std::size_t>(x)] = h * (0.56 + 0.12 * ridge) + swayY * (1 + ridge) + lean * (x - w / 2) +
                                                (60 - 12 * ridge) * u * std::sin(s / (150 + 60 * ridge) + 2 * ridge) +
                                                16 * u * std::sin(s / 37 + ridge);
        }
        m_canvas.FillBelow(tops, Rgb(ridge == 0 ? 0x7A93A8 : ridge == 1 ? 0x5B8A5A : 0x3C6B3A));
    }

    // Which side is up.
    m_canvas.Line(500 * u, 260 * u, 500 * u, 90 * u, 26 * u, Rgb(0xD8352A));
    m_canvas.Line(500 * u, 84 * u, 430 * u, 160 * u, 26 * u, Rgb(0xD8352A));
    m_canvas.Line(500 * u, 84 * u, 570 * u, 160 * u, 26 * u, Rgb(0xD8352A));
    const double size = 46 * u;
    m_canvas.Text(500 * u - Canvas::TextWidth(size, "THIS SIDE UP") / 2, 290 * u, size, "THIS SIDE UP", Rgb(0xFFFFFF));

    // A ball that falls and rises once a second.
    const double fall = std::abs(std::sin(std::numbers::pi * t));
    m_canvas.FillCircle((250 + 100 * t) * u, h * 0.90 - 520 * u * fall, 60 * u, Rgb(0xF2762E));

    char text[48];
    m_canvas.FillRoundRect(60 * u, h - 150 * u, 880 * u, 110 * u, 26 * u, Rgb(0x0B0F14, 0.75));
    std::snprintf(text, sizeof text, "%02d:%06.3f  #%03d", static_cast<int>(t / 60), std::fmod(t, 60), number);
    m_canvas.Text(500 * u - Canvas::TextWidth(52 * u, text) / 2, h - 122 * u, 52 * u, text, Rgb(0xFFFFFF));
    return m_canvas;
}

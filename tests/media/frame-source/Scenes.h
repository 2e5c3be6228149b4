/// @file Scenes.h
/// The films of the demonstration, drawn with a Canvas. Each film is a function of the frame's number alone, so that
/// every run gives the same pixels.
#pragma once

#include "tests/media/frame-source/Canvas.h"

/// A desktop with an editor in which code is typed, a window with a chart, a pointer, and a time and frame counter.
class ScreenScene
{
public:
    /// @param framesPerSecond  for the time on the counter; > 0
    /// @param pausing          the desktop stands perfectly still for seconds at a time, as when its user reads
    ScreenScene(int width, int height, double framesPerSecond, bool pausing);
    /// Draws frame @p number, counted from 0.
    const Canvas& Draw(int number);

private:
    void DrawBackground();
    void DrawEditor(double t);
    void DrawChart(double t);
    void DrawPointer(double t);
    void DrawCounter(double t, int number);

    double m_unit; ///< pixels per thousandth of the width
    double m_framesPerSecond;
    bool m_pausing;
    int m_lastNumber = -1; ///< frame that was drawn last, when pausing
    Canvas m_background, m_canvas;
};

/// A landscape filmed by hand, upright, with an arrow that says which side is up, a bouncing ball and a counter.
class PhoneScene
{
public:
    PhoneScene(int width, int height, double framesPerSecond);
    const Canvas& Draw(int number);

private:
    double m_framesPerSecond;
    Canvas m_sky, m_canvas;
};

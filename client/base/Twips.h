#pragma once

class QWidget;

// Layout lengths are kept in twips (1440 to the inch) and turned into pixels at the widget's
// logical resolution, so a layout keeps its proportions on any screen.
namespace Twips {

inline constexpr int kPerInch = 1440;

int ToPixelsX(int twips, const QWidget* widget);
int ToPixelsY(int twips, const QWidget* widget);
int FromPixelsX(int pixels, const QWidget* widget);
int FromPixelsY(int pixels, const QWidget* widget);

} // namespace Twips

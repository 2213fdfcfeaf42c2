#include "base/Twips.h"

#include <QWidget>
#include <cmath>

namespace Twips {
namespace {

int scale(int value, int numerator, int denominator) {
    return int(std::lround(double(value) * numerator / denominator));
}

} // namespace

int ToPixelsX(int twips, const QWidget* widget) {
    return scale(twips, widget->logicalDpiX(), kPerInch);
}

int ToPixelsY(int twips, const QWidget* widget) {
    return scale(twips, widget->logicalDpiY(), kPerInch);
}

int FromPixelsX(int pixels, const QWidget* widget) {
    return scale(pixels, kPerInch, widget->logicalDpiX());
}

int FromPixelsY(int pixels, const QWidget* widget) {
    return scale(pixels, kPerInch, widget->logicalDpiY());
}

} // namespace Twips

#pragma once

// How well a text colour stands out against its background, as the WCAG 2 measures it.

#include <QColor>

#include <algorithm>
#include <cmath>

namespace Contrast {

/// WCAG 2 relative luminance of an sRGB colour, 0 (black) to 1 (white).
inline double luminance(const QColor &color)
{
    auto channel = [](double c) { return c <= 0.03928 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4); };
    return 0.2126 * channel(color.redF()) + 0.7152 * channel(color.greenF()) + 0.0722 * channel(color.blueF());
}

/// WCAG 2 contrast ratio, 1 to 21; text wants at least 4.5.
inline double ratio(const QColor &a, const QColor &b)
{
    const double la = luminance(a);
    const double lb = luminance(b);
    return (std::max(la, lb) + 0.05) / (std::min(la, lb) + 0.05);
}

} // namespace Contrast

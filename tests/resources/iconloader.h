#pragma once

#include <QImage>
#include <QString>

// Loads a resource icon through QIcon, as the item views and actions do, and returns its 16 x 16
// pixmap as an image in QImage::Format_ARGB32 (a null image if the icon cannot be loaded).
QImage loadIcon16(const QString &path);

#include "iconloader.h"

#include <QIcon>
#include <QPixmap>

QImage loadIcon16(const QString &path)
{
    const QIcon icon(path);
    if (icon.isNull())
        return QImage();
    return icon.pixmap(QSize(16, 16)).toImage().convertToFormat(QImage::Format_ARGB32);
}

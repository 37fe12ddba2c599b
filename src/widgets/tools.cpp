#include "tools.h"

#include <QDataStream>
#include <QDir>
#include <QGuiApplication>
#include <QIODevice>
#include <QPoint>
#include <QRect>
#include <QScreen>
#include <QSize>
#include <QWidget>
#include <QtDebug>

#include <cerrno>
#include <cstring>

namespace {

// Restore problems are rare and only matter to whoever wonders why a window came up elsewhere;
// red makes them stand out in a terminal full of other output.
void restoreDebug(QString const &line)
{
    qDebug("\033[31m%s\033[0m", qPrintable(line));
}

// The part of a screen a restored window may occupy: the available area with 16 pixels of slack
// at the left and right (window frames often stick out a little there) and 50 pixels less at the
// bottom, so that the window's top edge cannot end up below reach.
QRect adjustedArea(QScreen const *screen)
{
    return screen->availableGeometry().adjusted(-16, 0, 16, -50);
}

} // namespace

namespace Tools {

QByteArray saveWidgetGeometry(QWidget *widget)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    QRect const geometry = widget->geometry();
    stream << widget->pos() << QSize(geometry.width(), geometry.height()) << widget->isMaximized();
    return bytes;
}

bool restoreWidgetGeometry(QWidget *widget, QByteArray const &geometry)
{
    if (geometry.isEmpty())
        return false;

    QDataStream stream(geometry);
    QPoint pos;
    QSize size;
    bool maximized = false;
    stream >> pos >> size >> maximized;
    // Anything but exactly one record, such as bytes another program left in the settings, is
    // not a saved geometry.
    if (stream.status() != QDataStream::Ok || !stream.atEnd() || !size.isValid())
        return false;

    int const width = size.width();
    int const height = size.height();
    QString const saved = QString::asprintf("Restore %ux%d%+d%+d", unsigned(width), height, pos.x(), pos.y());

    QScreen *screen = QGuiApplication::screenAt(pos);
    if (!screen) {
        // Just beside a screen, within the slack the adjusted area allows, still belongs to it.
        QList<QScreen *> const screens = QGuiApplication::screens();
        for (QScreen *candidate : screens) {
            if (adjustedArea(candidate).contains(pos)) {
                screen = candidate;
                break;
            }
        }
    }
    bool usePos = true;
    if (!screen) {
        // Typically saved on a second monitor that is no longer attached.
        restoreDebug(saved + QLatin1String(": Not on any screen"));
        usePos = false;
        screen = QGuiApplication::primaryScreen();
    }
    if (!screen)
        return false;

    QRect const area = adjustedArea(screen);

    bool useSize = true;
    if (!maximized && !(area.right() - area.left() > 48 && area.bottom() - area.top() > 48)) {
        restoreDebug(saved + QLatin1String(": Too small"));
        useSize = false;
    }

    bool moved = false;
    if (usePos) {
        if (area.contains(pos)) {
            widget->move(pos);
            moved = true;
        } else {
            restoreDebug(saved
                         + QString::asprintf(": Does not fit %ux%d%+d%+d, trying centered",
                                             unsigned(area.width()),
                                             area.height(),
                                             area.left(),
                                             area.top()));
            QPoint const centered(area.left() + (area.width() - width) / 2, area.top() + (area.height() - height) / 2);
            if (area.contains(centered)) {
                widget->move(centered);
                moved = true;
            } else {
                restoreDebug(saved
                             + QString::asprintf(maximized ? ": Does not fit %ux%d%+d%+d, maximizing anyway"
                                                           : ": Does not fit %ux%d%+d%+d",
                                                 unsigned(area.width()),
                                                 area.height(),
                                                 centered.x(),
                                                 centered.y()));
            }
        }
    }

    if (maximized) {
        widget->setWindowState(widget->windowState() | Qt::WindowMaximized);
        return true;
    }
    if (useSize) {
        // Never larger than the screen the window is on now: a size saved on a bigger monitor, or
        // damaged in the settings, would otherwise be taken as it is, and 30000 x 30000 needs
        // gigabytes for the window's pixels. The debug lines above keep naming the saved size.
        QScreen const *placed = moved ? screen : widget->screen();
        if (!placed)
            placed = screen;
        widget->resize(size.boundedTo(placed->availableGeometry().size()));
    }
    return moved || useSize;
}

QString documentsPath()
{
    return ensureDirectorySeparator(QDir::homePath()) + QLatin1String("Documents");
}

QString appDataPath()
{
    return QDir::homePath();
}

QString ensureDirectorySeparator(QString const &path)
{
    if (path.isEmpty() || path.endsWith(QLatin1Char('/')))
        return path;
    return path + QLatin1Char('/');
}

QString allFilesFilter()
{
    return QStringLiteral("All Files") + QLatin1String(" (*)");
}

QString systemErrorString(int errorNumber)
{
    return QString::fromLocal8Bit(std::strerror(errorNumber));
}

QString systemErrorString()
{
    return systemErrorString(errno);
}

} // namespace Tools

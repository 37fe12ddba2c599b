#include "windowlayout.h"

#include "editorsettings.h"
#include "tools.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDataStream>
#include <QHeaderView>
#include <QIODevice>
#include <QMainWindow>
#include <QSettings>
#include <QtDebug>

namespace ZAT16 {

namespace {

// Raised whenever what the check covers changes, so that older checks stop holding.
const int checkVersion = 1;

// The name of the child object that lives from a window's restoring to its first showing.
const QString pendingName = QStringLiteral("zat16-layout-pending");

// Windows of this program that have restored their layout but not yet been shown. While there
// are any, a marker found set is this program's own and not the trace of a start that ended.
int pendingWindows = 0;

QString checkOf(const QByteArray &state, const QByteArray &geometry, const QByteArray &header)
{
    // Each part with its length in front, so that bytes moved from one value to the next change
    // the check too. A state saved by another Qt is not handed to this one's restore functions.
    QByteArray input;
    QDataStream stream(&input, QIODevice::WriteOnly);
    stream.setByteOrder(QDataStream::BigEndian);
    for (const QByteArray &part : { QByteArray(qVersion()), state, geometry, header }) {
        stream << quint32(part.size());
        stream.writeRawData(part.constData(), int(part.size()));
    }
    stream << qint32(checkVersion);
    return QString::number(checkVersion) + QLatin1Char(':')
        + QString::fromLatin1(QCryptographicHash::hash(input, QCryptographicHash::Sha256).toHex());
}

void clearMarker()
{
    QSettings settings;
    settings.remove(EditorSettings::key(EditorSettings::Restoring));
    settings.sync();
}

void windowSettled()
{
    if (pendingWindows > 0 && --pendingWindows == 0)
        clearMarker();
}

// A program that ends normally while a window it never showed still exists has not crashed in
// restoring either.
void clearMarkerOnExit()
{
    if (pendingWindows > 0) {
        pendingWindows = 0;
        clearMarker();
    }
}

} // namespace

bool WindowLayout::restore(QMainWindow *window, QHeaderView *header)
{
    QSettings settings;
    if (pendingWindows == 0 && settings.contains(EditorSettings::key(EditorSettings::Restoring))) {
        // The start before this one ended between restoring and showing its window, most likely
        // in Qt's restore functions. Skipped once only: the marker is also left by a start that
        // was killed or crashed for another reason, and that should not cost the layout for good.
        qDebug("Window layout not restored: the last start ended before showing its window");
        settings.remove(EditorSettings::key(EditorSettings::Restoring));
        settings.sync();
        return false;
    }

    const QByteArray state = EditorSettings::bytes(settings, EditorSettings::State);
    const QByteArray geometry = EditorSettings::bytes(settings, EditorSettings::Geometry);
    const QByteArray headerState = EditorSettings::bytes(settings, EditorSettings::TreeHeader);
    const QVariant check = settings.value(EditorSettings::key(EditorSettings::LayoutCheck));
    if (state.isEmpty() && geometry.isEmpty() && headerState.isEmpty() && !check.isValid())
        return false;
    if (check.typeId() != QMetaType::QString || check.toString() != checkOf(state, geometry, headerState)) {
        qDebug("Window layout not restored: its check is missing or does not match");
        return false;
    }

    // Written out before anything is applied, so that it is on disk if Qt crashes on the bytes.
    settings.setValue(EditorSettings::key(EditorSettings::Restoring), true);
    settings.sync();
    static bool exitHookAdded = false;
    if (!exitHookAdded) {
        qAddPostRoutine(clearMarkerOnExit);
        exitHookAdded = true;
    }
    ++pendingWindows;
    // Destroyed by windowShown() or with the window, whichever comes first: a window that is
    // never shown (tests, tools) but destroyed normally did not crash in restoring.
    auto *pending = new QObject(window);
    pending->setObjectName(pendingName);
    QObject::connect(pending, &QObject::destroyed, &windowSettled);

    if (!state.isEmpty())
        window->restoreState(state, 0);
    Tools::restoreWidgetGeometry(window, geometry);
    if (!headerState.isEmpty())
        header->restoreState(headerState);
    return true;
}

void WindowLayout::store(QMainWindow *window, QHeaderView *header)
{
    const QByteArray geometry = Tools::saveWidgetGeometry(window);
    const QByteArray state = window->saveState(0);
    const QByteArray headerState = header->saveState();
    QSettings settings;
    settings.setValue(EditorSettings::key(EditorSettings::Geometry), geometry);
    settings.setValue(EditorSettings::key(EditorSettings::State), state);
    settings.setValue(EditorSettings::key(EditorSettings::TreeHeader), headerState);
    settings.setValue(EditorSettings::key(EditorSettings::LayoutCheck), checkOf(state, geometry, headerState));
}

void WindowLayout::windowShown(QMainWindow *window)
{
    const QList<QObject *> pending = window->findChildren<QObject *>(pendingName, Qt::FindDirectChildrenOnly);
    qDeleteAll(pending);
}

} // namespace ZAT16

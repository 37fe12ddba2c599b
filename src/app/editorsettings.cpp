#include "editorsettings.h"

#include <QFont>
#include <QSettings>
#include <QVariant>

#include <iterator>
#include <utility>

namespace ZAT16 {

namespace {

// In the order of EditorSettings::Key.
const char *const keyNames[] = {
    "ZAT16Editor/State",
    "ZAT16Editor/Geometry",
    "ZAT16Editor/TreeHeader",
    "ZAT16Editor/LayoutCheck",
    "ZAT16Editor/Restoring",
    "ZAT16Editor/FixedFont",
    "ZAT16Editor/CommentFont",
    "ZAT16Editor/LastOpenPath",
    "ZAT16Editor/LastSaveAsPath",
    "ZAT16Editor/LastViewerSavePath",
    "ZAT16Editor/UserSizedColumns",
    "ZAT16Editor/RecentFiles",
};
static_assert(std::size(keyNames) == EditorSettings::RecentFiles + 1, "one name for each key");

bool isPlainText(const QString &text)
{
    for (QChar c : text) {
        if (c.unicode() < 0x20 || c.category() == QChar::Other_Control)
            return false;
    }
    return true;
}

} // namespace

QString EditorSettings::key(Key key)
{
    return QLatin1String(keyNames[key]);
}

QString EditorSettings::text(const QSettings &settings, Key key)
{
    const QVariant value = settings.value(EditorSettings::key(key));
    if (value.typeId() != QMetaType::QString)
        return QString();
    const QString text = value.toString();
    return isPlainText(text) ? text : QString();
}

QString EditorSettings::text(Key key)
{
    return text(QSettings(), key);
}

QStringList EditorSettings::texts(Key key)
{
    const QVariant value = QSettings().value(EditorSettings::key(key));
    QStringList texts;
    // The settings file gives a list of one back as a plain text.
    if (value.typeId() == QMetaType::QStringList)
        texts = value.toStringList();
    else if (value.typeId() == QMetaType::QString)
        texts = QStringList(value.toString());
    else
        return QStringList();
    for (const QString &text : std::as_const(texts)) {
        if (!isPlainText(text))
            return QStringList();
    }
    return texts;
}

void EditorSettings::writeTexts(Key key, const QStringList &texts)
{
    QSettings settings;
    if (texts.isEmpty())
        settings.remove(EditorSettings::key(key));
    else
        settings.setValue(EditorSettings::key(key), texts);
    settings.sync();
}

QByteArray EditorSettings::bytes(const QSettings &settings, Key key)
{
    const QVariant value = settings.value(EditorSettings::key(key));
    if (value.typeId() == QMetaType::QByteArray || value.typeId() == QMetaType::QString)
        return value.toByteArray();
    return QByteArray();
}

bool EditorSettings::readFont(Key key, QFont *font)
{
    const QString description = text(key);
    return !description.isEmpty() && font->fromString(description);
}

void EditorSettings::writeFont(Key key, const QFont &font)
{
    QSettings().setValue(EditorSettings::key(key), font.toString());
}

void EditorSettings::writePath(Key key, const QString &path)
{
    QSettings settings;
    settings.setValue(EditorSettings::key(key), path);
    settings.sync();
}

} // namespace ZAT16

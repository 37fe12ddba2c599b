#include "editorsettings.h"

#include "tools.h"

#include <QFont>
#include <QSettings>
#include <QVariant>

#include <iterator>

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
};
static_assert(std::size(keyNames) == EditorSettings::UserSizedColumns + 1, "one name for each key");

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
    for (QChar c : text) {
        if (c.unicode() < 0x20 || c.category() == QChar::Other_Control)
            return QString();
    }
    return text;
}

QString EditorSettings::text(Key key)
{
    return text(QSettings(), key);
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

QString EditorSettings::startPath(Key key)
{
    const QString path = text(key);
    return path.isEmpty() ? Tools::documentsPath() : path;
}

void EditorSettings::writePath(Key key, const QString &path)
{
    QSettings settings;
    settings.setValue(EditorSettings::key(key), path);
    settings.sync();
}

} // namespace ZAT16

#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

class QFont;
class QSettings;

namespace ZAT16 {

/// The editor's settings, kept with QSettings under keys beginning "ZAT16Editor/": each key is
/// spelled here and nowhere else. The readers take a value of the wrong kind (left by another
/// program or by a damaged settings file) as missing, so that the caller keeps its default.
class EditorSettings
{
public:
    enum Key {
        State, ///< the main window's dock state (WindowLayout)
        Geometry, ///< the main window's geometry (WindowLayout)
        TreeHeader, ///< the tree header's state (WindowLayout)
        LayoutCheck, ///< the check over the three layout values (WindowLayout)
        Restoring, ///< set while a start restores the layout (WindowLayout)
        FixedFont, ///< the code font, QFont::toString()
        CommentFont, ///< the comment font, QFont::toString()
        LastOpenPath, ///< the file last opened, reopened at start
        LastSaveAsPath, ///< the file last chosen in the Save As dialog
        LastViewerSavePath, ///< the file a viewer's text was last saved to
        UserSizedColumns, ///< the tree columns the user has resized by hand, a bit each (ColumnFitter)
        RecentFiles, ///< the "file:" URLs of the files last opened or saved, newest first (RecentFiles)
    };

    /// The full name of `key` in the settings.
    static QString key(Key key);

    /// A value that must be a text without control characters (a font, a path); anything else
    /// reads as empty.
    static QString text(const QSettings &settings, Key key);
    static QString text(Key key);
    /// A value that must be a list of texts without control characters (the settings file may give
    /// a list of one as a plain text); anything else reads as empty.
    static QStringList texts(Key key);
    /// Stores `texts` (an empty list removes the value), written out at once.
    static void writeTexts(Key key, const QStringList &texts);
    /// A value that must be bytes; a text is accepted too, as Qt may store bytes so.
    static QByteArray bytes(const QSettings &settings, Key key);

    /// Reads the font stored under `key` into `font`; false when there is none or it does not
    /// read as a font.
    static bool readFont(Key key, QFont *font);
    static void writeFont(Key key, const QFont &font);

    /// Stores the path a file dialog gave, written out at once.
    static void writePath(Key key, const QString &path);
};

} // namespace ZAT16

#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

class QAction;
class QMenu;
class QUrl;
class QWidget;

namespace ZAT16 {

/// The files last opened or saved, most recent first, kept in the settings so that they outlast
/// the program, and the submenu "Open Recent" that offers them: one numbered entry per file
/// (disabled while the file is missing), then "Clear List". The dialogs start in the folder of
/// the newest file.
class RecentFiles : public QObject
{
    Q_OBJECT

public:
    /// The number of files kept.
    static constexpr int maxCount = 10;

    /// The submenu is a child of `parent` (the window that shows it).
    explicit RecentFiles(QWidget *parent);

    QMenu *menu() const { return m_menu; }
    /// The files as the settings hold them, most recent first: absolute paths, no repeats, at most
    /// maxCount.
    static QStringList files();
    /// Where the Open and Save As dialogs start: the folder of the file last opened or saved, or
    /// the home folder when that folder is gone or no file was opened yet.
    static QString startFolder();

    /// `path` made absolute against the working folder, and cleaned of "." and "..": as strings,
    /// so that a name that is not UTF-8 (see LocalFile) keeps its bytes.
    static QString absolutePath(const QString &path);
    /// The local file that `url` names, its name taken as the bytes it is (see LocalFile); empty
    /// when `url` names no local file.
    static QString localPath(const QUrl &url);
    /// The "file:" URL of the absolute `path`, the bytes of its name percent-encoded: the
    /// settings file keeps texts as UTF-8, in which a name that is not would change.
    static QString fileUrl(const QString &path);

    /// Puts `path` (made absolute) at the top of the list; an earlier entry of the same path goes,
    /// and so does the oldest file when there are more than maxCount.
    void add(const QString &path);
    /// Empties the list.
    void clear();
    /// Builds the entries anew from the settings, looking again whether each file exists.
    void refresh();

signals:
    /// The entry of `path` was chosen.
    void chosen(const QString &path);

private:
    void store(const QStringList &files);

    QMenu *m_menu;
    QAction *m_act_clear;
};

} // namespace ZAT16

#pragma once

#include "filestamp.h"

#include <QObject>
#include <QString>

class FileChangedWidget;
class QDateTime;
class QUndoStack;
class RowTreeView;

namespace ZAT16 {

class EditorModel;
class EditorWindow;
class Item;
class Recovery;
class SaveSequence;

/// The life cycle of the window's document: opening its file (at start with the offer of unsaved
/// changes, from the Open dialog, a recent file or a drop), saving with one backup after asking
/// before anything another program wrote or the editor did not read is lost, the question before
/// unsaved changes go, and reloading. It remembers what the file held when it was read or saved
/// here, so that a change by another program is noticed, and it reports how a save ended.
class EditorDocument : public QObject
{
    Q_OBJECT

public:
    /// Created by `window` once its model, undo stack, recovery and form exist.
    explicit EditorDocument(EditorWindow *window);

    /// Full path of the document's file; empty when it has none.
    QString fileName() const { return m_fileName; }
    /// What the title shows for the file.
    QString displayName() const { return m_displayName; }
    /// The filter of the file dialogs: definitions files, then all files.
    QString fileFilter() const;

    /// Opens `path`, or the file last opened when `path` is empty, and offers
    /// unsaved changes that a program before this one left. The title shows `displayName`, or the
    /// file's name when that is empty.
    void initialize(const QString &path, const QString &displayName);
    /// Parses one file and reports problems; the caller owns the returned root (null on failure).
    Item *loadDefinitionFile(const QString &path);
    /// Asks for a file and opens it, once unsaved changes may be dropped.
    void open();
    /// Opens `path` as open() opens the file chosen in its dialog, once unsaved changes may be
    /// dropped: a recent file, a dropped file. True when it was opened.
    bool openFile(const QString &path);
    /// Stores the file last opened as the one that the next start opens; called when the window
    /// closes. A file chosen in the Open dialog is stored at once as well.
    void storeLastOpened();
    /// Saves to the document's file; a document without one asks where to go.
    bool save();
    /// Asks where to save, and saves there.
    bool saveAs();
    /// Saves with the file change watcher paused.
    bool save(const QString &path);
    /// The save sequence proper: temporary file, one backup generation, rename into place.
    bool dosave(const QString &path);
    /// Asks before unsaved changes are lost; true when they may be dropped.
    bool canDiscard();
    /// Reloads the file the banner watches; the banner shows again when that fails.
    void reloadWatched();

    /// Reports a save to `path` that succeeded, with a note near the focus.
    void reportSaved(const QString &path);
    /// Reports a save that failed, with EditorWindow::error().
    void reportFailure(const SaveSequence &sequence);

signals:
    void saved(ZAT16::Item *root, const QString &path);
    void opened(ZAT16::Item *root, const QString &path);
    /// A document was put in the window: at start, by opening or by reloading; `path` is its
    /// file (empty when it has none).
    void shown(const QString &path);

private:
    bool reload(const QString &path);
    bool load(const QString &path);
    void remember(const QString &path);
    void takeLoadedFile();
    bool mayOverwrite(const QString &path);
    bool isDocumentFile(const QString &path) const;
    bool offerRecovery(const QString &document, const QDateTime &notBefore);

    EditorWindow *m_window;
    EditorModel *m_model;
    QUndoStack *m_undoStack;
    Recovery *m_recovery;
    FileChangedWidget *m_banner;
    RowTreeView *m_view;
    QString m_fileName;
    QString m_displayName;
    FileStamp m_fileStamp; ///< the file as it was read or last saved, to notice other programs' changes
    int m_fileStoppedAt = 0; ///< the line at which reading the file stopped early; 0 when it was read whole
    FileStamp m_loadedStamp; ///< of the file that loadDefinitionFile() read last
    int m_loadedStoppedAt = 0; ///< where loadDefinitionFile() stopped reading early
    bool m_overwriteConfirmed = false; ///< the user chose to overwrite what another program wrote
    bool m_changeFoundBySave = false; ///< the last dosave() found the file changed at its last look
    QString m_lastOpened; ///< the file last opened in any way, which the next start opens
};

} // namespace ZAT16

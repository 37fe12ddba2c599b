#pragma once

#include <QDateTime>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <functional>
#include <memory>

class QUndoStack;

namespace ZAT16 {

class EditorModel;
class Item;

/// Keeps the unsaved changes of one window in a recovery file, so that a crash, a kill or the end
/// of the session costs at most the changes of the last interval.
///
/// While the undo stack is not clean, the whole tree (the WriterXml text) is written one interval
/// after a change, with the changes of that interval, to a file in folder(): for a document with
/// a file "<16 hex digits of the SHA-256 of its absolute path>-<its file name>.recovery", for a
/// document without one "unnamed-<process id>-<UTC time>.recovery". It starts with a header:
///
///     zatedit recovery 1
///     document: <absolute path, percent-encoded; empty for a document without a file>
///     written: <UTC time, ISO 8601 with milliseconds>
///     <empty line>
///
/// followed by the definitions text. A running editor holds a lock ("<recovery file>.lock") on
/// the file it writes, which the system drops when the editor ends in any way; a file whose lock
/// is held belongs to a running editor and is not offered, and a second editor of the same
/// document writes beside it under another name ("<name>.1.recovery").
///
/// The file goes when the stack becomes clean (a save, or undoing back to it) and on discard();
/// the owner of the window calls discard() when the user drops the changes or closes the window.
/// Failures never interrupt the user: the first one is reported once by problem().
class Recovery : public QObject
{
    Q_OBJECT

public:
    static constexpr int defaultInterval = 30000;

    /// A recovery file taken by take().
    struct Found {
        QString path; ///< the recovery file
        QString document; ///< absolute path of the document; empty for a document without a file
        QDateTime written; ///< when it was written (UTC)
        std::unique_ptr<Item> root; ///< the tree it holds
        QString warnings; ///< what the reader warned about, each followed by "\n"
    };

    Recovery(EditorModel *model, QUndoStack *stack, QObject *parent = nullptr);
    ~Recovery() override;

    /// The application's data folder with "/recovery" appended.
    static QString folder();

    /// How often unsaved changes are written, in milliseconds.
    void setInterval(int msec);
    int interval() const { return m_timer.interval(); }

    /// The document the changes belong to (made absolute); empty for one without a file. A
    /// recovery file written for another document goes; the changes are written under the new
    /// name at the next interval.
    void setDocument(const QString &path);
    QString document() const { return m_document; }
    /// The recovery file this window holds; empty when it holds none.
    QString filePath() const { return m_path; }

    /// Writes the changes that the recovery file does not hold yet; true when it holds all
    /// unsaved changes now. A clean document writes nothing.
    bool write();
    /// Removes the recovery file: the changes were saved or the user dropped them. They are
    /// written again after the next change.
    void discard();

    /// The recovery files of `document` (empty: of documents without a file) written at or
    /// after `notBefore` (when valid), newest first.
    static QStringList find(const QString &document, const QDateTime &notBefore);
    /// Takes the recovery file at `path` unless a running editor holds it or its text does not
    /// read as definitions (reported by problem()). It becomes this window's recovery file, of
    /// the document it names: keep it by adopting its tree, or discard() it.
    bool take(const QString &path, Found *found);

    /// Has `handler` called from the event loop when the process receives SIGTERM. The signal
    /// handler only writes a byte to a pipe that a socket notifier watches, as little as a
    /// signal handler may do. Called once per process; false when the pipe or the handler could
    /// not be installed.
    static bool onTermination(QObject *context, const std::function<void()> &handler);

signals:
    /// A failure to keep the changes (reported once), or a recovery file that cannot be read.
    void problem(const QString &text);

private:
    void onStackChanged(bool clean);
    void onTimeout();
    bool own();
    void release();
    void fail(const QString &reason);

    EditorModel *m_model;
    QUndoStack *m_stack;
    QTimer m_timer;
    QString m_document;
    QString m_path; ///< the recovery file held, while m_lock is open
    int m_lock = -1; ///< descriptor of the locked "<m_path>.lock"
    bool m_pending = false; ///< changes made since the last write
    bool m_failureReported = false;
};

} // namespace ZAT16

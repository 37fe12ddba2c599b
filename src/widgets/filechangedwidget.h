#pragma once

#include <QFrame>
#include <QString>

class QFileSystemWatcher;
class QTimer;

namespace Ui {
class FileChangedWidget;
}

/// A slim information bar that watches one file and tells the user when another program changes
/// or removes it. It only reports; reloading is up to whoever listens to reloadClicked().
///
/// A file that disappears is polled once a second, because many programs save by removing the
/// old file and writing a new one: a file that is back within three seconds is reported as
/// changed, one that stays away as removed.
class FileChangedWidget : public QFrame
{
    Q_OBJECT

public:
    explicit FileChangedWidget(QWidget *parent = nullptr);
    ~FileChangedWidget() override;

    /// The watched path; empty when nothing is watched.
    QString const &fileName() const { return m_fileName; }

    /// Watches \a path instead of the current file. The same path again changes nothing (a
    /// running poll for a missing file goes on); an empty path stops all watching.
    void watchFile(QString const &path);

    /// Shows the banner with the "changed outside" notice and the Reload and Ignore buttons.
    /// \a name is the file name without directory.
    void fileChanged(QString const &name);
    /// Shows the banner with the "removed" notice and the Close button.
    void fileDisappeared(QString const &name);
    /// Shows \a text with the Close button, which only hides it: watching goes on. A change
    /// of the file replaces the notice.
    void showNotice(QString const &text);
    /// Hides the banner if it shows a notice; a change report stays.
    void hideNotice();

signals:
    void ignoreClicked();
    void reloadClicked();
    void closeClicked();

private slots:
    void onReloadClicked();
    void onIgnoreClicked();
    void onCloseClicked();
    void onFileChanged();
    void onPoll();

private:
    Ui::FileChangedWidget *m_ui;
    QFileSystemWatcher *m_watcher = nullptr;
    QString m_fileName;
    QTimer *m_pollTimer = nullptr;
    int m_pollCount = 0;
    bool m_notice = false; ///< the banner shows a notice, not a change
};

#pragma once

#include <QObject>
#include <QString>

class QLabel;
class QStatusBar;
class QTimer;

namespace ZAT16 {

class EditorModel;
class ProblemsDock;

/// The window's status bar: the open file's path, the counts of tags and problems, and quiet
/// notes such as "Saved to ..." that need no answer. The counts follow the model's changes a
/// moment after a burst of them has ended, so that typing does not wait for them.
class StatusLine : public QObject
{
    Q_OBJECT

public:
    StatusLine(QStatusBar *bar, EditorModel *model, ProblemsDock *problems, QObject *parent = nullptr);

    /// Shows `path` (native separators), or that the document has no file yet.
    void setPath(const QString &path);
    /// Shows `text` for a while at the left of the bar.
    void showNote(const QString &text);

    QString pathText() const;
    QString tagsText() const;
    QString problemsText() const;

    /// How long after the last change the counts are taken.
    static const int countDelay = 250;

public slots:
    /// Takes the counts now.
    void count();

private slots:
    void scheduleCount();

private:
    QStatusBar *m_bar;
    EditorModel *m_model;
    ProblemsDock *m_problems;
    QLabel *m_path;
    QLabel *m_tags;
    QLabel *m_problemCount;
    QTimer *m_timer;
};

} // namespace ZAT16

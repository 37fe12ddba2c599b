#pragma once

#include <QObject>
#include <QString>
#include <QTimer>

#include <climits>

class QTextEdit;

/// Puts a text into a text edit a slice of lines at a time, so that a viewer shows its first
/// screen at once however long the text is: the first slice goes in with setPlainText() right
/// away, the others are appended at the end from the event loop, one slice per turn. A
/// highlighter attached to the document colours each slice as it arrives, top to bottom, so that
/// every block ends up with the formats it would have had if the whole text had been set at once.
/// The loader is a child of the text edit: closing the viewer stops it.
///
/// The text edit's document layout does not get past a height of INT_MAX / 256 pixels: an append
/// that makes the document taller than that does not return, and the layout of a text set at
/// once stalls there. Loading stops once the document is as tall as a limit below that height,
/// and truncated() says how much of the text is shown.
/// A hidden text edit lays nothing out: the viewer is shown before the first slice is appended.
class TextSliceLoader : public QObject
{
    Q_OBJECT

public:
    static constexpr int DefaultLinesPerSlice = 1000;
    /// Half of the height the layout can handle: a narrower window wraps more lines and makes
    /// the document taller after loading has stopped.
    static constexpr qreal DefaultHeightLimit = INT_MAX / 256 / 2;

    /// Sets the first `linesPerSlice` lines of `text` into `edit` and appends the rest later.
    TextSliceLoader(QTextEdit *edit,
                    const QString &text,
                    int linesPerSlice = DefaultLinesPerSlice,
                    qreal heightLimit = DefaultHeightLimit);

    /// True when the whole text is in the document or loading stopped at the height limit.
    bool isFinished() const { return !m_timer.isActive(); }
    /// Characters of the text in the document so far; each slice ends after a line feed.
    qsizetype loadedLength() const { return m_loaded; }
    /// Lines of the text in the document so far.
    int loadedLines() const { return m_loadedLines; }

signals:
    /// The whole text is in the document; not emitted when the first slice held it all.
    void finished();
    /// Loading stopped at the height limit with `shownLines` of the text's `totalLines` lines
    /// in the document.
    void truncated(int shownLines, int totalLines);

private:
    void appendSlice();
    /// The end of the slice that starts at `from` (after its last line feed, or the text's end),
    /// its lines counted as loaded.
    qsizetype nextSlice(qsizetype from);

    QTextEdit *m_edit;
    const QString m_text;
    const int m_linesPerSlice;
    const qreal m_heightLimit;
    qsizetype m_loaded = 0;
    int m_loadedLines = 0;
    QTimer m_timer;
};

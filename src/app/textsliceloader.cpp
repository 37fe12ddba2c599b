#include "textsliceloader.h"

#include <QAbstractTextDocumentLayout>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextEdit>

TextSliceLoader::TextSliceLoader(QTextEdit *edit, const QString &text, int linesPerSlice, qreal heightLimit)
    : QObject(edit)
    , m_edit(edit)
    , m_text(text)
    , m_linesPerSlice(qMax(1, linesPerSlice))
    , m_heightLimit(heightLimit)
{
    // The text is only ever appended to; an undo stack would keep a second copy of it.
    edit->setUndoRedoEnabled(false);
    m_loaded = nextSlice(0);
    edit->setPlainText(m_loaded == m_text.size() ? m_text : m_text.left(m_loaded));
    if (m_loaded == m_text.size())
        return;
    // A zero interval: one slice whenever the event loop has nothing else to do, so that input
    // and painting go first.
    m_timer.setInterval(0);
    connect(&m_timer, &QTimer::timeout, this, &TextSliceLoader::appendSlice);
    m_timer.start();
}

void TextSliceLoader::appendSlice()
{
    QTextDocument *document = m_edit->document();
    // Appending lays out the appended blocks at once, so asking for the height starts no
    // layout pass.
    if (document->documentLayout()->documentSize().height() >= m_heightLimit) {
        m_timer.stop();
        const qsizetype feeds = m_text.count(QLatin1Char('\n'));
        const int totalLines = int(m_text.endsWith(QLatin1Char('\n')) ? feeds : feeds + 1);
        emit truncated(m_loadedLines, totalLines);
        return;
    }
    const qsizetype from = m_loaded;
    m_loaded = nextSlice(from);
    // Each slice but the last ends after a line feed, so the document ends in an empty block
    // that the next slice's first line fills: the blocks come out as setPlainText() splits the
    // whole text, and the highlighter colours them as they come, each after the one above it.
    QTextCursor cursor(document);
    cursor.movePosition(QTextCursor::End);
    cursor.insertText(m_text.mid(from, m_loaded - from));
    if (m_loaded == m_text.size()) {
        m_timer.stop();
        emit finished();
    }
}

qsizetype TextSliceLoader::nextSlice(qsizetype from)
{
    qsizetype end = from;
    for (int line = 0; line < m_linesPerSlice && end < m_text.size(); ++line) {
        const qsizetype feed = m_text.indexOf(QLatin1Char('\n'), end);
        end = feed < 0 ? m_text.size() : feed + 1;
        ++m_loadedLines;
    }
    return end;
}

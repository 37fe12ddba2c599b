#pragma once

#include "outputs.h"

#include <QObject>
#include <QString>

class QDialog;
class QSyntaxHighlighter;

namespace ZAT16 {

class EditorDocument;
class EditorWindow;

/// The window's read-only viewers of generated text: the output of a generator for the tree as it
/// is now, and the compatibility report between an older version and the document. Each viewer
/// is a dialog of the window that does not block it and does not follow later edits, with the
/// buttons "Save as..." (writes exactly the text, UTF-8) and "Copy all".
class CodeViewer : public QObject
{
    Q_OBJECT

public:
    CodeViewer(EditorWindow *window, EditorDocument *document);

    /// Opens a viewer of `text` titled `title`; the viewer takes `highlighter` when one is given.
    /// A long text comes in a slice at a time after the viewer is shown (TextSliceLoader).
    QDialog *createViewer(const QString &title, QSyntaxHighlighter *highlighter, const QString &text);
    /// Writes `text` UTF-8 encoded to `path` through a temporary file and a rename; failures
    /// are reported with EditorWindow::error(). True on success.
    bool saveText(const QString &path, const QString &text);
    /// Opens a viewer of the output `kind` of the definitions as they are now.
    QDialog *showOutput(Outputs::Kind kind);
    /// Asks for an older version of the definitions and shows the report of the comparison.
    void compare();
    /// Compares the file at `oldPath` (the older version) with the open document and shows the
    /// report in a viewer; null when the file cannot be read (the error has been shown).
    QDialog *showCompareReport(const QString &oldPath);

private:
    EditorWindow *m_window;
    EditorDocument *m_document;
};

} // namespace ZAT16

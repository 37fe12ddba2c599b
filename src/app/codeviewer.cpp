#include "codeviewer.h"

#include "codewriter.h"
#include "compatibility.h"
#include "editordocument.h"
#include "editormodel.h"
#include "editorsettings.h"
#include "editorwindow.h"
#include "highlighterc.h"
#include "highlighterlua.h"
#include "recentfiles.h"
#include "savesequence.h"
#include "textsliceloader.h"

#include <QClipboard>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSyntaxHighlighter>
#include <QTextEdit>
#include <QUndoStack>
#include <QVBoxLayout>

#include <memory>

namespace ZAT16 {

// The texts are the window's, and are translated in its context.

CodeViewer::CodeViewer(EditorWindow *window, EditorDocument *document)
    : QObject(window)
    , m_window(window)
    , m_document(document)
{
}

QDialog *CodeViewer::createViewer(const QString &title, QSyntaxHighlighter *highlighter, const QString &text)
{
    auto *dialog = new QDialog(m_window);
    dialog->setWindowTitle(title);
    auto *outer = new QVBoxLayout(dialog);
    auto *layout = new QHBoxLayout;
    layout->setContentsMargins(0, 0, 0, 0);
    outer->addLayout(layout);
    auto *edit = new QTextEdit(dialog);
    layout->addWidget(edit);
    edit->setFont(m_window->model()->fixedFont());
    if (highlighter) {
        highlighter->setDocument(edit->document());
        highlighter->setParent(edit);
    }
    // A long text goes in a slice at a time, so that the first screen shows at once.
    auto *loader = new TextSliceLoader(edit, text);
    edit->setReadOnly(true);

    // Below the text: saving and copying the text exactly as it was generated (the text edit
    // would hand back its own idea of the text, with line separators and blanks normalised).
    auto *buttons = new QDialogButtonBox(dialog);
    buttons->setObjectName(QStringLiteral("viewerButtons"));
    QPushButton *saveAs = buttons->addButton(EditorWindow::tr("Save as..."), QDialogButtonBox::ActionRole);
    saveAs->setObjectName(QStringLiteral("saveAsButton"));
    QPushButton *copyAll = buttons->addButton(EditorWindow::tr("Copy all"), QDialogButtonBox::ActionRole);
    copyAll->setObjectName(QStringLiteral("copyAllButton"));
    for (QPushButton *button : { saveAs, copyAll }) {
        // Return in the text must not press a button.
        button->setAutoDefault(false);
        button->setDefault(false);
    }
    outer->addWidget(buttons);
    connect(loader, &TextSliceLoader::truncated, dialog, [dialog, outer](int shownLines, int totalLines) {
        auto *note = new QLabel(EditorWindow::tr("The text is too long to be shown whole: these are its first %L1 of "
                                                 "%L2 lines. Save as... and Copy all take the whole text.")
                                    .arg(shownLines)
                                    .arg(totalLines),
                                dialog);
        note->setObjectName(QStringLiteral("truncatedNote"));
        note->setWordWrap(true);
        outer->insertWidget(1, note);
    });
    connect(saveAs, &QPushButton::clicked, dialog, [this, dialog, text]() {
        // The text's last place, else the folder of the file last opened or saved.
        QString start = EditorSettings::text(EditorSettings::LastViewerSavePath);
        if (start.isEmpty() || !QFileInfo(start).absoluteDir().exists())
            start = RecentFiles::startFolder();
        const QString path = QFileDialog::getSaveFileName(dialog, EditorWindow::tr("Save generated text"), start);
        if (path.isEmpty())
            return;
        EditorSettings::writePath(EditorSettings::LastViewerSavePath, path);
        saveText(path, text);
    });
    connect(copyAll, &QPushButton::clicked, dialog, [text]() { QGuiApplication::clipboard()->setText(text); });
    const QFontMetrics metrics(edit->font());
    dialog->resize(80 * metrics.horizontalAdvance(QLatin1Char('M')) + 64, 25 * metrics.lineSpacing() + 16);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->show();
    return dialog;
}

bool CodeViewer::saveText(const QString &path, const QString &text)
{
    SaveSequence sequence(path);
    if (!sequence.replaceWith(text.toUtf8())) {
        m_document->reportFailure(sequence);
        return false;
    }
    m_document->reportSaved(path);
    return true;
}

QDialog *CodeViewer::showOutput(Outputs::Kind kind)
{
    const Outputs::Output &output = Outputs::output(kind);
    QSyntaxHighlighter *highlighter = nullptr;
    if (output.highlighting == Outputs::CHighlighting)
        highlighter = new HighlighterC(nullptr);
    else if (output.highlighting == Outputs::LuaHighlighting)
        highlighter = new HighlighterLua(nullptr);
    const std::unique_ptr<CodeWriter> writer = output.createWriter();
    return createViewer(EditorWindow::tr(output.title),
                        highlighter,
                        QString::fromUtf8(writer->encode(m_window->model()->root())));
}

void CodeViewer::compare()
{
    const QString fileName = m_document->fileName();
    // The document's folder, else the folder of the file last opened or saved.
    QString start = fileName.isEmpty() ? QString() : QFileInfo(fileName).absolutePath();
    if (start.isEmpty() || !QFileInfo(start).isDir())
        start = RecentFiles::startFolder();
    const QString path = QFileDialog::getOpenFileName(m_window,
                                                      EditorWindow::tr("Compare with an older version"),
                                                      start,
                                                      m_document->fileFilter());
    if (path.isEmpty())
        return;
    showCompareReport(path);
}

QDialog *CodeViewer::showCompareReport(const QString &oldPath)
{
    const std::unique_ptr<Item> old(m_document->loadDefinitionFile(oldPath));
    if (!old)
        return nullptr;
    const QString fileName = m_document->fileName();
    const CompatibilityReport report(old.get(), m_window->model()->root());
    QString current = fileName.isEmpty() ? EditorWindow::tr("(not saved yet)") : QDir::toNativeSeparators(fileName);
    if (!fileName.isEmpty() && !m_window->undoStack()->isClean())
        current += EditorWindow::tr(" (with unsaved changes)");
    return createViewer(EditorWindow::tr("ZAT16 compatibility with %1").arg(QFileInfo(oldPath).fileName()),
                        nullptr,
                        report.text(QDir::toNativeSeparators(oldPath), current));
}

} // namespace ZAT16

#include "editordocument.h"

#include "editormodel.h"
#include "editorsettings.h"
#include "editorwindow.h"
#include "filechangedwidget.h"
#include "localfile.h"
#include "parser.h"
#include "recentfiles.h"
#include "recovery.h"
#include "rowtreeview.h"
#include "savesequence.h"
#include "tools.h"
#include "ui_editorwindow.h"

#include <QDateTime>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QLocale>
#include <QMessageBox>
#include <QPushButton>
#include <QUndoStack>

#include <sys/stat.h>

namespace ZAT16 {

// The texts are the window's, and are translated in its context.

EditorDocument::EditorDocument(EditorWindow *window)
    : QObject(window)
    , m_window(window)
    , m_model(window->model())
    , m_undoStack(window->undoStack())
    , m_recovery(window->recovery())
    , m_banner(window->ui()->m_wdg_file_changed)
    , m_view(window->ui()->m_view)
{
    // Open names the document after the undo stack was cleared, which removed the recovery file
    // of the one before. A reload keeps the document's name, whichever file it read.
    connect(this, &EditorDocument::opened, this, [this]() { m_recovery->setDocument(m_fileName); });
}

void EditorDocument::initialize(const QString &path, const QString &displayName)
{
    QString p = path;
    if (p.isEmpty())
        p = EditorSettings::text(EditorSettings::LastOpenPath);
    m_displayName = !displayName.isEmpty() ? displayName : (p.isEmpty() ? QString() : QFileInfo(p).fileName());
    if (!p.isEmpty()) {
        // Unsaved changes are offered also for a file that is gone (instead of the error that
        // reading it would give) or that no longer reads (after the error): saving puts it back.
        const auto recovered = [this, &p](const QDateTime &notBefore) {
            if (!offerRecovery(p, notBefore))
                return false;
            m_fileName = p;
            m_fileStamp = FileStamp::ofFile(p);
            m_fileStoppedAt = 0;
            if (QFileInfo::exists(p))
                m_banner->watchFile(p);
            return true;
        };
        const bool missing = !QFileInfo::exists(p);
        if (!(missing && recovered(QDateTime()))) {
            if (Item *root = loadDefinitionFile(p)) {
                m_model->setTags(root);
                m_fileName = p;
                takeLoadedFile();
                m_banner->watchFile(p);
                // Changes written before the file was last modified may be older than what it holds.
                offerRecovery(p, QFileInfo(p).lastModified());
            } else if (!missing) {
                recovered(QFileInfo(p).lastModified());
            }
        }
    }
    // Only a start without a file can take up a document that never had one.
    if (m_fileName.isEmpty())
        offerRecovery(QString(), QDateTime());
    else
        remember(m_fileName);
    m_recovery->setDocument(m_fileName);
    m_window->updateCleanState();
    emit shown(m_fileName);
}

// Offers the newest unsaved changes to `document` (empty: to a document without a file) that
// were written at or after `notBefore`; true when they replaced the tree. The file version stays
// one undo away; undoing back to it drops the recovery file like any return to the saved state.
bool EditorDocument::offerRecovery(const QString &document, const QDateTime &notBefore)
{
    for (const QString &path : Recovery::find(document, notBefore)) {
        Recovery::Found found;
        if (!m_recovery->take(path, &found))
            continue;
        const QString time = QLocale().toString(found.written.toLocalTime(), QLocale::ShortFormat);
        const QString question = document.isEmpty()
            ? EditorWindow::tr("Recover unsaved changes to a document without a name from %1?").arg(time)
            : EditorWindow::tr("Recover unsaved changes to %1 from %2?").arg(QDir::toNativeSeparators(document), time);
        if (QMessageBox::question(
                m_window, m_window->windowTitle(), question, QMessageBox::Yes | QMessageBox::No, QMessageBox::Yes)
            == QMessageBox::Yes) {
            if (!found.warnings.isEmpty())
                m_window->message(found.warnings);
            m_model->undoableSetTags(found.root.release(), m_view->currentIndex());
            return true;
        }
        m_recovery->discard();
    }
    return false;
}

QString EditorDocument::fileFilter() const
{
    return EditorWindow::tr("ZAT16 Definition Files") + QLatin1String(" (*.zatdef);;") + Tools::allFilesFilter();
}

Item *EditorDocument::loadDefinitionFile(const QString &path)
{
    Parser parser;
    const bool ok = parser.parse(path, &m_loadedStamp);
    m_loadedStoppedAt = parser.stoppedAtLine;
    if (!parser.warnings.isEmpty())
        m_window->message(parser.warnings);
    Item *root = ok ? parser.takeRoot() : nullptr;
    if (!root) {
        QMessageBox box(
            QMessageBox::Critical, m_window->windowTitle(), parser.formatError(), QMessageBox::Close, m_window);
        box.exec();
        return nullptr;
    }
    return root;
}

void EditorDocument::open()
{
    if (!canDiscard())
        return;
    const QString path = QFileDialog::getOpenFileName(m_window,
                                                      EditorWindow::tr("Open ZAT16 definitions"),
                                                      RecentFiles::startFolder(),
                                                      fileFilter());
    if (path.isEmpty())
        return;
    // Stored before loading, so that a file that fails to load is still offered next time.
    EditorSettings::writePath(EditorSettings::LastOpenPath, path);
    m_lastOpened = path;
    load(path);
}

bool EditorDocument::openFile(const QString &path)
{
    return canDiscard() && load(path);
}

bool EditorDocument::load(const QString &path)
{
    Item *root = loadDefinitionFile(path);
    if (!root)
        return false;
    m_model->setTags(root);
    m_fileName = path;
    m_displayName = QFileInfo(path).fileName();
    takeLoadedFile();
    m_window->updateCleanState();
    m_banner->watchFile(path);
    remember(path);
    emit opened(root, path);
    emit shown(path);
    return true;
}

// `path` is now the document's file, opened in whatever way: it goes to the top of the recent
// files, and becomes the file that the next start opens.
void EditorDocument::remember(const QString &path)
{
    m_lastOpened = RecentFiles::absolutePath(path);
    m_window->recentFiles()->add(path);
}

// The Open dialog's choice is stored at once, before loading, so that a file that fails to load
// is still offered next time. The other ways of opening wait until the window closes, so that an
// editor started meanwhile without a file does not open the file that this one has open.
void EditorDocument::storeLastOpened()
{
    // The settings file keeps texts as UTF-8: a name that is not (see LocalFile) would come back
    // as the name of another file, which the next start could not open.
    if (!m_lastOpened.isEmpty() && m_lastOpened.isValidUtf16())
        EditorSettings::writePath(EditorSettings::LastOpenPath, m_lastOpened);
}

// The file that loadDefinitionFile() read last is now the document's: what it was, and whether
// all of it was read.
void EditorDocument::takeLoadedFile()
{
    m_fileStamp = m_loadedStamp;
    m_fileStoppedAt = m_loadedStoppedAt;
    if (m_fileStoppedAt != 0)
        m_banner->showNotice(EditorWindow::tr("Only lines 1 to %1 were read: the rest of the file is not in the editor")
                                 .arg(m_fileStoppedAt));
    else
        m_banner->hideNotice();
}

bool EditorDocument::save()
{
    // A document without a file asks where to go, instead of writing anywhere.
    if (m_fileName.isEmpty())
        return saveAs();
    return save(m_fileName);
}

bool EditorDocument::saveAs()
{
    const QString path = QFileDialog::getSaveFileName(m_window,
                                                      EditorWindow::tr("Save ZAT16 definitions"),
                                                      RecentFiles::startFolder(),
                                                      fileFilter());
    if (path.isEmpty())
        return false;
    EditorSettings::writePath(EditorSettings::LastSaveAsPath, path);
    if (!save(path))
        return false;
    m_displayName = QFileInfo(path).fileName();
    m_window->updateCleanState();
    return true;
}

bool EditorDocument::save(const QString &path)
{
    m_overwriteConfirmed = false;
    if (!mayOverwrite(path))
        return false;
    // The save's own renames must not show up as an outside change. The watch that was active
    // before is restored, whatever dosave() watched; after a Save As to a new name the banner
    // therefore stays on the previous file. After Ignore, when nothing was watched, the saved
    // file is watched again, so that the next change by another program is heard.
    const QString watched = m_banner->fileName();
    m_banner->watchFile(QString());
    bool result = dosave(path);
    // Another program may change the file between the question and the save's last look at it.
    while (!result && m_changeFoundBySave && mayOverwrite(path))
        result = dosave(path);
    if (result && (watched.isEmpty() || watched == path))
        m_banner->hide();
    m_banner->watchFile(watched.isEmpty() ? m_fileName : watched);
    return result;
}

// Whether `path` names the document's own file, however it is spelled.
bool EditorDocument::isDocumentFile(const QString &path) const
{
    if (path.isEmpty() || m_fileName.isEmpty())
        return false;
    if (path == m_fileName)
        return true;
    struct stat a;
    struct stat b;
    return ::stat(LocalFile::encodeName(path).constData(), &a) == 0
        && ::stat(LocalFile::encodeName(m_fileName).constData(), &b) == 0 && a.st_dev == b.st_dev
        && a.st_ino == b.st_ino;
}

// Asks before a save over the document's own file would lose something: the part of the file
// that was not read, or what another program wrote since the file was read or saved here.
bool EditorDocument::mayOverwrite(const QString &path)
{
    if (!isDocumentFile(path))
        return true;
    const QString shown = QDir::toNativeSeparators(path);
    if (m_fileStoppedAt != 0 && !m_changeFoundBySave
        && QMessageBox::question(
               m_window,
               m_window->windowTitle(),
               EditorWindow::tr("Saving will drop everything after line %1 of %2").arg(m_fileStoppedAt).arg(shown),
               QMessageBox::Yes | QMessageBox::No,
               QMessageBox::No)
            != QMessageBox::Yes)
        return false;

    const FileStamp now = FileStamp::ofFile(path);
    // A file that is gone has nothing to lose; the save puts it back.
    if (m_fileStamp.sameContent(now) || (now.known && !now.exists))
        return true;
    QMessageBox box(QMessageBox::Warning,
                    m_window->windowTitle(),
                    EditorWindow::tr("%1 was changed by another program since it was opened").arg(shown),
                    QMessageBox::NoButton,
                    m_window);
    QPushButton *overwrite = box.addButton(EditorWindow::tr("Overwrite"), QMessageBox::AcceptRole);
    QPushButton *reloadButton = box.addButton(EditorWindow::tr("Reload"), QMessageBox::ResetRole);
    QPushButton *cancel = box.addButton(QMessageBox::Cancel);
    box.setDefaultButton(cancel);
    box.setEscapeButton(cancel);
    box.exec();
    if (box.clickedButton() == reloadButton) {
        // The edits stay one undo away; the document stays unsaved, so that they are not lost
        // without a question when the window is closed.
        const bool unsaved = !m_undoStack->isClean();
        if (reload(path) && unsaved)
            m_undoStack->resetClean();
    }
    m_overwriteConfirmed = box.clickedButton() == overwrite;
    return m_overwriteConfirmed;
}

bool EditorDocument::dosave(const QString &path)
{
    SaveSequence sequence(path);
    // What the file held when it was read or last saved is compared once more at the last moment,
    // unless the user chose to overwrite whatever is there.
    if (!m_overwriteConfirmed && isDocumentFile(path))
        sequence.expectedContent = m_fileStamp;
    m_changeFoundBySave = false;
    if (!sequence.run(m_model->root())) {
        if (sequence.failed == SaveSequence::Changed)
            m_changeFoundBySave = true;
        else
            reportFailure(sequence);
        return false;
    }
    // Clean again: the recovery file is gone.
    m_undoStack->setClean();
    m_fileName = path;
    m_window->recentFiles()->add(path);
    m_recovery->setDocument(path);
    m_fileStamp = sequence.stamp;
    m_fileStoppedAt = 0;
    m_banner->hideNotice();
    reportSaved(path);
    m_banner->watchFile(path);
    emit saved(m_model->root(), path);
    return true;
}

bool EditorDocument::canDiscard()
{
    if (m_undoStack->isClean())
        return true;
    const QMessageBox::StandardButton answer
        = QMessageBox::question(m_window,
                                m_window->windowTitle(),
                                EditorWindow::tr("There are unsaved changes. What do you want to do?"),
                                QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel,
                                QMessageBox::Cancel);
    if (answer == QMessageBox::Discard) {
        m_recovery->discard();
        return true;
    }
    if (answer == QMessageBox::Save)
        return save();
    return false;
}

void EditorDocument::reloadWatched()
{
    if (!reload(m_banner->fileName()))
        m_banner->show();
}

bool EditorDocument::reload(const QString &path)
{
    Item *root = loadDefinitionFile(path);
    if (!root)
        return false;
    // Undoable, so that the user can go back to the state before the reload.
    m_model->undoableSetTags(root, m_view->currentIndex());
    m_undoStack->setClean();
    if (path == m_fileName)
        takeLoadedFile();
    emit opened(root, path);
    emit shown(m_fileName);
    return true;
}

void EditorDocument::reportSaved(const QString &path)
{
    const QString note = EditorWindow::tr("Saved to %1").arg(QDir::toNativeSeparators(path));
    m_window->popupMessage(note);
    m_window->showNote(note);
}

void EditorDocument::reportFailure(const SaveSequence &sequence)
{
    m_window->error(sequence.errorMessage());
}

} // namespace ZAT16

#include "editorwindow.h"

#include "ui_editorwindow.h"

#include "editordelegate.h"
#include "editoritemeditdialog.h"
#include "compatibility.h"
#include "editormodel.h"
#include "findbar.h"
#include "highlighterc.h"
#include "highlighterlua.h"
#include "parser.h"
#include "problemsdock.h"
#include "localfile.h"
#include "recovery.h"
#include "savesequence.h"
#include "tools.h"
#include "windowlayout.h"
#include "editorsettings.h"
#include "codewriter.h"

#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDir>
#include <QDockWidget>
#include <QFileDialog>
#include <QFileInfo>
#include <QFontDialog>
#include <QFontMetrics>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLocale>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QSyntaxHighlighter>
#include <QTextCursor>
#include <QTextEdit>
#include <QToolTip>
#include <QUndoStack>
#include <QUndoView>
#include <QVBoxLayout>

#include <memory>
#include <utility>

#include <sys/stat.h>

namespace ZAT16 {

EditorWindow::EditorWindow(QWidget *parent)
    : QMainWindow(parent)
    , m_ui(new Ui_ZAT16EditorWindow)
{
    m_ui->setupUi(this);
    m_model = new EditorModel(this);
    m_undoStack = new QUndoStack(this);
    m_undoStack->setUndoLimit(1000);
    connect(m_undoStack, &QUndoStack::indexChanged, this, &EditorWindow::onUndoHistoryChanged);
    connect(m_undoStack, &QUndoStack::cleanChanged, this, &EditorWindow::updateCleanState);
    m_model->setUndoStack(m_undoStack);
    connect(m_model, &EditorModel::undone, this, &EditorWindow::setCurrentItem);
    // Until a file is opened the window shows an empty document, to which the first tag can be
    // added.
    auto *empty = new Item;
    empty->type = Root;
    m_model->setTags(empty);

    RowTreeView *view = m_ui->m_view;
    view->setModel(m_model);
    view->setItemDelegate(new EditorDelegate(view));
    connect(view, &QTreeView::expanded, this, &EditorWindow::onExpanded);
    connect(view, &QAbstractItemView::doubleClicked, this, &EditorWindow::onDoubleClicked);
    connect(view, &RowTreeView::currentIndexChanged, this, &EditorWindow::updateActions);
    connect(view, qOverload<const QModelIndex &>(&RowTreeView::selectionChanged), this, &EditorWindow::updateActions);

    setWindowIcon(QIcon(QStringLiteral(":/icons/i16_table_edit.png")));
    resize(800, 500);
    view->header()->resizeSection(0, 250);
    view->header()->resizeSection(1, 60);

    m_ui->m_wdg_file_changed->hide();
    connect(m_ui->m_wdg_file_changed, &FileChangedWidget::reloadClicked, this, &EditorWindow::onReloadClicked);

    m_undoDock = new QDockWidget(tr("Undo History"), this);
    m_undoDock->setObjectName(QStringLiteral("UndoDock"));
    m_undoView = new QUndoView(m_undoStack, m_undoDock);
    m_undoDock->setWidget(m_undoView);
    addDockWidget(Qt::RightDockWidgetArea, m_undoDock);
    m_undoDock->setFloating(true);
    m_undoDock->hide();

    m_messageDock = new QDockWidget(tr("Messages"), this);
    m_messageDock->setObjectName(QStringLiteral("MessageDock"));
    m_messages = new QTextEdit(m_messageDock);
    m_messages->setReadOnly(true);
    m_messages->document()->setMaximumBlockCount(1000);
    // An empty paragraph without margins, so that the first message starts at the top.
    m_messages->append(QStringLiteral("<span style=\"margin: 0;\"/>"));
    m_messageDock->setWidget(m_messages);
    addDockWidget(Qt::BottomDockWidgetArea, m_messageDock);
    m_messageDock->setFloating(false);
    m_messageDock->hide();

    // Beside the messages, below the tree.
    m_problemsDock = new ProblemsDock(m_model, this);
    addDockWidget(Qt::BottomDockWidgetArea, m_problemsDock);
    m_problemsDock->setFloating(false);
    m_problemsDock->hide();
    connect(m_problemsDock, &ProblemsDock::itemChosen, this, &EditorWindow::showItem);

    m_recovery = new Recovery(m_model, m_undoStack, this);
    connect(m_recovery, &Recovery::problem, this, &EditorWindow::message);
    // Open names the document after the undo stack was cleared, which removed the recovery file
    // of the one before. A reload keeps the document's name, whichever file it read.
    connect(this, &EditorWindow::opened, this, [this]() { m_recovery->setDocument(m_fileName); });

    FindBar *find = m_ui->m_wdg_find;
    find->hide();
    find->attach(m_model, view);
    connect(find, &FindBar::found, this, &EditorWindow::showItem);
    connect(find, &FindBar::closed, view, qOverload<>(&QWidget::setFocus));

    QAction *undo = m_undoStack->createUndoAction(m_ui->m_menu_edit, QString());
    undo->setShortcut(QKeySequence(QStringLiteral("Ctrl+Z")));
    undo->setIcon(QIcon(QStringLiteral(":/icons/i16_undo.png")));
    QAction *redo = m_undoStack->createRedoAction(m_ui->m_menu_edit, QString());
    redo->setShortcut(QKeySequence(QStringLiteral("Ctrl+Y")));
    redo->setIcon(QIcon(QStringLiteral(":/icons/i16_redo.png")));
    m_ui->m_menu_edit->insertAction(m_ui->m_act_insert_before, undo);
    m_ui->m_menu_edit->insertAction(m_ui->m_act_insert_before, redo);
    m_ui->m_menu_edit->insertSeparator(m_ui->m_act_insert_before);
    QAction *history = m_undoDock->toggleViewAction();
    history->setIcon(QIcon(QStringLiteral(":/icons/i16_undo_history.png")));
    m_ui->m_menu_view->insertAction(m_ui->m_act_fixed_font, history);
    m_ui->m_menu_view->insertSeparator(m_ui->m_act_fixed_font);
    m_ui->m_menu_view->insertAction(m_ui->m_act_next_problem, m_problemsDock->toggleViewAction());

    connect(m_ui->m_act_open, &QAction::triggered, this, &EditorWindow::onOpen);
    connect(m_ui->m_act_save, &QAction::triggered, this, &EditorWindow::onSave);
    connect(m_ui->m_act_save_as, &QAction::triggered, this, &EditorWindow::onSaveAs);
    connect(m_ui->m_act_close, &QAction::triggered, this, &QWidget::close);
    connect(m_ui->m_act_insert_before, &QAction::triggered, this, &EditorWindow::onInsertBefore);
    connect(m_ui->m_act_insert_after, &QAction::triggered, this, &EditorWindow::onInsertAfter);
    connect(m_ui->m_act_add_bits, &QAction::triggered, this, &EditorWindow::onAddBits);
    connect(m_ui->m_act_add_enums, &QAction::triggered, this, &EditorWindow::onAddEnums);
    connect(m_ui->m_act_cut, &QAction::triggered, this, &EditorWindow::onCut);
    connect(m_ui->m_act_copy, &QAction::triggered, this, &EditorWindow::onCopy);
    connect(m_ui->m_act_paste, &QAction::triggered, this, &EditorWindow::onPaste);
    connect(m_ui->m_act_delete, &QAction::triggered, this, &EditorWindow::onDelete);
    connect(m_ui->m_act_new, &QAction::triggered, this, &EditorWindow::onNew);
    connect(m_ui->m_act_view_header, &QAction::triggered, this, &EditorWindow::onViewHeader);
    connect(m_ui->m_act_view_lua, &QAction::triggered, this, &EditorWindow::onViewLua);
    connect(m_ui->m_act_view_cpp, &QAction::triggered, this, &EditorWindow::onViewCpp);
    connect(m_ui->m_act_view_cpp_lut, &QAction::triggered, this, &EditorWindow::onViewCppLut);
    connect(m_ui->m_act_view_cs, &QAction::triggered, this, &EditorWindow::onViewCs);
    connect(m_ui->m_act_fixed_font, &QAction::triggered, this, &EditorWindow::onFixedFont);
    connect(m_ui->m_act_comment_font, &QAction::triggered, this, &EditorWindow::onCommentFont);
    connect(m_ui->m_act_find, &QAction::triggered, this, &EditorWindow::onFind);
    connect(m_ui->m_act_find_next, &QAction::triggered, this, &EditorWindow::onFindNext);
    connect(m_ui->m_act_find_previous, &QAction::triggered, this, &EditorWindow::onFindPrevious);
    connect(m_ui->m_act_next_problem, &QAction::triggered, this, &EditorWindow::onNextProblem);
    connect(m_ui->m_act_previous_problem, &QAction::triggered, this, &EditorWindow::onPreviousProblem);
    connect(m_ui->m_act_compare, &QAction::triggered, this, &EditorWindow::onCompare);

    // Settings that are missing or unreadable leave the defaults. The layout comes back only
    // with its check intact, as Qt's restore functions crash on some damaged bytes.
    WindowLayout::restore(this, view->header());
    QFont font;
    if (EditorSettings::readFont(EditorSettings::FixedFont, &font))
        m_model->setFixedFont(font);
    if (EditorSettings::readFont(EditorSettings::CommentFont, &font))
        m_model->setCommentFont(font);

    // The form's placeholder title never shows, not even on a box that opening a file at start
    // brings up before the title is first set for the file.
    updateCleanState();
}

EditorWindow::~EditorWindow()
{
    // The undo stack clears itself when it goes, which the recovery would take for a save; its
    // file is for the next start.
    delete m_recovery;
    // The children signal while they go (the undo stack clears itself, views drop their
    // selection); nothing of this half-destroyed window may answer them.
    for (QObject *child : findChildren<QObject *>())
        child->disconnect(this);
    delete m_ui;
}

void EditorWindow::initialize(const QString &path, const QString &displayName)
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
                m_ui->m_wdg_file_changed->watchFile(p);
            return true;
        };
        const bool missing = !QFileInfo::exists(p);
        if (!(missing && recovered(QDateTime()))) {
            if (Item *root = loadDefinitionFile(p)) {
                m_model->setTags(root);
                m_fileName = p;
                takeLoadedFile();
                m_ui->m_wdg_file_changed->watchFile(p);
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
    m_recovery->setDocument(m_fileName);
    updateCleanState();
}

// Offers the newest unsaved changes to `document` (empty: to a document without a file) that
// were written at or after `notBefore`; true when they replaced the tree. The file version stays
// one undo away; undoing back to it drops the recovery file like any return to the saved state.
bool EditorWindow::offerRecovery(const QString &document, const QDateTime &notBefore)
{
    for (const QString &path : Recovery::find(document, notBefore)) {
        Recovery::Found found;
        if (!m_recovery->take(path, &found))
            continue;
        const QString time = QLocale().toString(found.written.toLocalTime(), QLocale::ShortFormat);
        const QString question = document.isEmpty()
            ? tr("Recover unsaved changes to a document without a name from %1?").arg(time)
            : tr("Recover unsaved changes to %1 from %2?").arg(QDir::toNativeSeparators(document), time);
        if (QMessageBox::question(this, windowTitle(), question, QMessageBox::Yes | QMessageBox::No, QMessageBox::Yes)
            == QMessageBox::Yes) {
            if (!found.warnings.isEmpty())
                message(found.warnings);
            m_model->undoableSetTags(found.root.release(), m_ui->m_view->currentIndex());
            return true;
        }
        m_recovery->discard();
    }
    return false;
}

// Messages and notes

void EditorWindow::popupMessage(const QString &text)
{
    QWidget *anchor = QApplication::focusWidget();
    if (!anchor)
        anchor = m_ui->m_view;
    QToolTip::showText(QPoint(), QString());
    if (text.isEmpty())
        return;
    const QPoint at = anchor->mapToGlobal(QPoint(0, anchor->height() - 16));
    QToolTip::showText(at, text, anchor, anchor->rect().adjusted(-16, -16, 16, 16));
}

void EditorWindow::message(const QString &text)
{
    m_messageDock->setVisible(true);
    m_messageDock->showNormal();
    // Plain text: messages quote element names such as <tag>.
    QTextCursor cursor(m_messages->document());
    cursor.movePosition(QTextCursor::End);
    cursor.insertBlock();
    cursor.insertText(text);
    m_messages->ensureCursorVisible();
}

void EditorWindow::error(const QString &text)
{
    message(text);
    QMessageBox::warning(this, windowTitle(), text, QMessageBox::Ok);
}

// State of the actions and the title

void EditorWindow::updateActions()
{
    const bool valid = m_ui->m_view->currentIndex().isValid();
    for (QAction *action : {m_ui->m_act_delete,
                            m_ui->m_act_cut,
                            m_ui->m_act_copy,
                            m_ui->m_act_paste,
                            m_ui->m_act_add_bits,
                            m_ui->m_act_add_enums})
        action->setEnabled(valid);
    const Item *root = m_model->root();
    const bool empty = !root || root->children.isEmpty();
    m_ui->m_act_insert_before->setEnabled(valid || empty);
    m_ui->m_act_insert_after->setEnabled(valid || empty);
}

void EditorWindow::updateCleanState()
{
    QString title;
    if (!m_displayName.isEmpty())
        title = m_displayName + QLatin1Char(' ');
    if (!m_undoStack->isClean())
        title += QLatin1String("* ");
    title += QLatin1Char('[') + tr("ZAT16 tag editor") + QLatin1Char(']');
    setWindowTitle(title);
}

void EditorWindow::setCurrentItem(const QModelIndex &index)
{
    m_ui->m_view->selectionModel()->setCurrentIndex(index,
                                                    QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

// Editing

void EditorWindow::onNew()
{
    m_model->undoableClear(m_ui->m_view->currentIndex());
}

void EditorWindow::onInsertAfter()
{
    QModelIndex at = m_ui->m_view->selectedItem();
    if (!at.isValid()) {
        const int count = m_model->rowCount();
        at = m_model->index(count > 0 ? count - 1 : 0, 0);
    }
    const Item *item = m_model->index2item(at);
    if (at.isValid() && item && (item->type == Enums || item->type == Bits)) {
        const QModelIndex list = at.siblingAtColumn(0);
        const int rows = int(item->children.size());
        if (m_model->insertRow(rows, list))
            setCurrentItem(m_model->index(rows, 0, list));
        return;
    }
    const QModelIndex parent = at.parent();
    const int row = at.isValid() ? at.row() + 1 : 0;
    if (m_model->insertRow(row, parent))
        setCurrentItem(m_model->index(row, 0, parent));
}

void EditorWindow::onInsertBefore()
{
    const Item *root = m_model->root();
    if (!root || root->children.isEmpty()) {
        onInsertAfter();
        return;
    }
    QModelIndex at = m_ui->m_view->selectedItem();
    if (!at.isValid())
        at = m_model->index(0, 0);
    const Item *item = m_model->index2item(at);
    if (item && (item->type == Enums || item->type == Bits)) {
        const QModelIndex list = at.siblingAtColumn(0);
        if (m_model->insertRow(0, list))
            setCurrentItem(m_model->index(0, 0, list));
        return;
    }
    const QModelIndex parent = at.parent();
    const int row = at.row();
    if (m_model->insertRow(row, parent))
        setCurrentItem(m_model->index(row, 0, parent));
}

void EditorWindow::onAddEnums()
{
    addList(Enums);
}

void EditorWindow::onAddBits()
{
    addList(Bits);
}

void EditorWindow::addList(ItemType type)
{
    const QModelIndex selected = m_ui->m_view->selectedItem();
    if (!selected.isValid())
        return;
    const QModelIndex list = m_model->insertList(selected, type);
    if (list.isValid())
        setCurrentItem(list);
}

void EditorWindow::onCut()
{
    if (QMimeData *data = m_model->cut(m_ui->m_view->selectedItem()))
        QGuiApplication::clipboard()->setMimeData(data, QClipboard::Clipboard);
    updateActions();
}

void EditorWindow::onCopy()
{
    if (QMimeData *data = m_model->copy(m_ui->m_view->selectedItem()))
        QGuiApplication::clipboard()->setMimeData(data, QClipboard::Clipboard);
}

void EditorWindow::onPaste()
{
    const QModelIndex selected = m_ui->m_view->selectedItem();
    const QMimeData *data = QGuiApplication::clipboard()->mimeData(QClipboard::Clipboard);
    if (!selected.isValid() || !data)
        return;
    const QModelIndex pasted = m_model->paste(selected, data);
    if (!pasted.isValid())
        return;
    setCurrentItem(pasted);
    const QModelIndex parent = pasted.parent();
    const Item *parentItem = m_model->index2item(parent);
    if (parent.isValid() && parentItem && parentItem->type == Tag)
        m_ui->m_view->expand(parent);
}

void EditorWindow::onDelete()
{
    const QModelIndex selected = m_ui->m_view->selectedItem();
    if (!selected.isValid())
        return;
    const int row = selected.row();
    const QModelIndex parent = selected.parent();
    if (m_model->removeRow(row, parent))
        setCurrentItem(m_model->index(row, 0, parent));
    updateActions();
}

void EditorWindow::onDoubleClicked(const QModelIndex &index)
{
    const Item *item = m_model->index2item(index);
    if (!index.isValid() || !item || !(item->type == Tag || item->type == Enum || item->type == Bit))
        return;
    // Comment lines and blank lines have the type of their neighbours but nothing to edit.
    if (item->isComment() || item->isNewline())
        return;
    EditorItemEditDialog dialog(this);
    dialog.setData(item);
    connect(&dialog, &EditorItemEditDialog::apply, this, &EditorWindow::onApplyItem);
    dialog.exec();
}

void EditorWindow::onApplyItem(const Item *item, const ItemData &data)
{
    m_model->setItemData(m_model->item2index(item), data);
}

void EditorWindow::onExpanded(const QModelIndex &index)
{
    if (index.parent().isValid())
        return;
    const int rows = m_model->rowCount(index);
    for (int row = 0; row < rows; ++row)
        m_ui->m_view->expand(m_model->index(row, 0, index));
}

void EditorWindow::onUndoHistoryChanged()
{
}

// Fonts

void EditorWindow::onFixedFont()
{
    bool ok = false;
    const QFont font = QFontDialog::getFont(&ok, m_model->fixedFont(), this, tr("Chose font for code"));
    if (!ok)
        return;
    m_model->setFixedFont(font);
    EditorSettings::writeFont(EditorSettings::FixedFont, font);
}

void EditorWindow::onCommentFont()
{
    bool ok = false;
    // The same title as the code font's dialog.
    const QFont font = QFontDialog::getFont(&ok, m_model->commentFont(), this, tr("Chose font for code"));
    if (!ok)
        return;
    m_model->setCommentFont(font);
    EditorSettings::writeFont(EditorSettings::CommentFont, font);
}

// Generated-code viewers

QDialog *EditorWindow::createViewer(const QString &title, QSyntaxHighlighter *highlighter, const QString &text)
{
    auto *dialog = new QDialog(this);
    dialog->setWindowTitle(title);
    auto *outer = new QVBoxLayout(dialog);
    auto *layout = new QHBoxLayout;
    layout->setContentsMargins(0, 0, 0, 0);
    outer->addLayout(layout);
    auto *edit = new QTextEdit(dialog);
    layout->addWidget(edit);
    edit->setFont(m_model->fixedFont());
    if (highlighter) {
        highlighter->setDocument(edit->document());
        highlighter->setParent(edit);
    }
    edit->setPlainText(text);
    edit->setReadOnly(true);

    // Below the text: saving and copying the text exactly as it was generated (the text edit
    // would hand back its own idea of the text, with line separators and blanks normalised).
    auto *buttons = new QDialogButtonBox(dialog);
    buttons->setObjectName(QStringLiteral("viewerButtons"));
    QPushButton *saveAs = buttons->addButton(tr("Save as..."), QDialogButtonBox::ActionRole);
    saveAs->setObjectName(QStringLiteral("saveAsButton"));
    QPushButton *copyAll = buttons->addButton(tr("Copy all"), QDialogButtonBox::ActionRole);
    copyAll->setObjectName(QStringLiteral("copyAllButton"));
    for (QPushButton *button : {saveAs, copyAll}) {
        // Return in the text must not press a button.
        button->setAutoDefault(false);
        button->setDefault(false);
    }
    outer->addWidget(buttons);
    connect(saveAs, &QPushButton::clicked, dialog, [this, dialog, text]() {
        const QString path = QFileDialog::getSaveFileName(
            dialog, tr("Save generated text"), EditorSettings::startPath(EditorSettings::LastViewerSavePath));
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

bool EditorWindow::saveText(const QString &path, const QString &text)
{
    SaveSequence sequence(path);
    if (!sequence.replaceWith(text.toUtf8())) {
        error(sequence.errorMessage());
        return false;
    }
    popupMessage(tr("Saved to %1").arg(QDir::toNativeSeparators(path)));
    return true;
}

void EditorWindow::onViewHeader()
{
    onViewOutput(Outputs::Header);
}

void EditorWindow::onViewLua()
{
    onViewOutput(Outputs::Lua);
}

void EditorWindow::onViewCpp()
{
    onViewOutput(Outputs::Cpp);
}

void EditorWindow::onViewCppLut()
{
    onViewOutput(Outputs::CppLut);
}

void EditorWindow::onViewCs()
{
    onViewOutput(Outputs::Cs);
}

void EditorWindow::onViewOutput(Outputs::Kind kind)
{
    const Outputs::Output &output = Outputs::output(kind);
    QSyntaxHighlighter *highlighter = nullptr;
    if (output.highlighting == Outputs::CHighlighting)
        highlighter = new HighlighterC(nullptr);
    else if (output.highlighting == Outputs::LuaHighlighting)
        highlighter = new HighlighterLua(nullptr);
    const std::unique_ptr<CodeWriter> writer = output.createWriter();
    createViewer(tr(output.title), highlighter, QString::fromUtf8(writer->encode(m_model->root())));
}

// Opening, saving and reloading

QString EditorWindow::fileFilter() const
{
    return tr("ZAT16 Definition Files") + QLatin1String(" (*.zatdef);;") + Tools::allFilesFilter();
}

Item *EditorWindow::loadDefinitionFile(const QString &path)
{
    Parser parser;
    const bool ok = parser.parse(path, &m_loadedStamp);
    m_loadedStoppedAt = parser.stoppedAtLine;
    if (!parser.warnings.isEmpty())
        message(parser.warnings);
    Item *root = ok ? parser.takeRoot() : nullptr;
    if (!root) {
        QMessageBox box(QMessageBox::Critical, windowTitle(), parser.formatError(), QMessageBox::Close, this);
        box.exec();
        return nullptr;
    }
    return root;
}

void EditorWindow::onOpen()
{
    if (!canDiscard())
        return;
    const QString path = QFileDialog::getOpenFileName(
        this, tr("Open ZAT16 definitions"), EditorSettings::startPath(EditorSettings::LastOpenPath), fileFilter());
    if (path.isEmpty())
        return;
    // Stored before loading, so that a file that fails to load is still offered next time.
    EditorSettings::writePath(EditorSettings::LastOpenPath, path);
    Item *root = loadDefinitionFile(path);
    if (!root)
        return;
    m_model->setTags(root);
    m_fileName = path;
    m_displayName = QFileInfo(path).fileName();
    takeLoadedFile();
    updateCleanState();
    m_ui->m_wdg_file_changed->watchFile(path);
    emit opened(root, path);
}

// The file that loadDefinitionFile() read last is now the document's: what it was, and whether
// all of it was read.
void EditorWindow::takeLoadedFile()
{
    m_fileStamp = m_loadedStamp;
    m_fileStoppedAt = m_loadedStoppedAt;
    if (m_fileStoppedAt != 0)
        m_ui->m_wdg_file_changed->showNotice(
            tr("Only lines 1 to %1 were read: the rest of the file is not in the editor").arg(m_fileStoppedAt));
    else
        m_ui->m_wdg_file_changed->hideNotice();
}

bool EditorWindow::onSave()
{
    // A document without a file asks where to go, instead of writing anywhere.
    if (m_fileName.isEmpty())
        return saveAs();
    return save(m_fileName);
}

void EditorWindow::onSaveAs()
{
    saveAs();
}

bool EditorWindow::saveAs()
{
    const QString path = QFileDialog::getSaveFileName(
        this, tr("Save ZAT16 definitions"), EditorSettings::startPath(EditorSettings::LastSaveAsPath), fileFilter());
    if (path.isEmpty())
        return false;
    EditorSettings::writePath(EditorSettings::LastSaveAsPath, path);
    if (!save(path))
        return false;
    m_displayName = QFileInfo(path).fileName();
    updateCleanState();
    return true;
}

bool EditorWindow::save(const QString &path)
{
    m_overwriteConfirmed = false;
    if (!mayOverwrite(path))
        return false;
    // The save's own renames must not show up as an outside change. The watch that was active
    // before is restored, whatever dosave() watched; after a Save As to a new name the banner
    // therefore stays on the previous file. After Ignore, when nothing was watched, the saved
    // file is watched again, so that the next change by another program is heard.
    const QString watched = m_ui->m_wdg_file_changed->fileName();
    m_ui->m_wdg_file_changed->watchFile(QString());
    bool result = dosave(path);
    // Another program may change the file between the question and the save's last look at it.
    while (!result && m_changeFoundBySave && mayOverwrite(path))
        result = dosave(path);
    if (result && (watched.isEmpty() || watched == path))
        m_ui->m_wdg_file_changed->hide();
    m_ui->m_wdg_file_changed->watchFile(watched.isEmpty() ? m_fileName : watched);
    return result;
}

// Whether `path` names the document's own file, however it is spelled.
bool EditorWindow::isDocumentFile(const QString &path) const
{
    if (path.isEmpty() || m_fileName.isEmpty())
        return false;
    if (path == m_fileName)
        return true;
    struct stat a;
    struct stat b;
    return ::stat(LocalFile::encodeName(path).constData(), &a) == 0
        && ::stat(LocalFile::encodeName(m_fileName).constData(), &b) == 0 && a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

// Asks before a save over the document's own file would lose something: the part of the file
// that was not read, or what another program wrote since the file was read or saved here.
bool EditorWindow::mayOverwrite(const QString &path)
{
    if (!isDocumentFile(path))
        return true;
    const QString shown = QDir::toNativeSeparators(path);
    if (m_fileStoppedAt != 0 && !m_changeFoundBySave
        && QMessageBox::question(this,
                                 windowTitle(),
                                 tr("Saving will drop everything after line %1 of %2").arg(m_fileStoppedAt).arg(shown),
                                 QMessageBox::Yes | QMessageBox::No,
                                 QMessageBox::No)
            != QMessageBox::Yes)
        return false;

    const FileStamp now = FileStamp::ofFile(path);
    // A file that is gone has nothing to lose; the save puts it back.
    if (m_fileStamp.sameContent(now) || (now.known && !now.exists))
        return true;
    QMessageBox box(QMessageBox::Warning,
                    windowTitle(),
                    tr("%1 was changed by another program since it was opened").arg(shown),
                    QMessageBox::NoButton,
                    this);
    QPushButton *overwrite = box.addButton(tr("Overwrite"), QMessageBox::AcceptRole);
    QPushButton *reloadButton = box.addButton(tr("Reload"), QMessageBox::ResetRole);
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

bool EditorWindow::dosave(const QString &path)
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
            error(sequence.errorMessage());
        return false;
    }
    // Clean again: the recovery file is gone.
    m_undoStack->setClean();
    m_fileName = path;
    m_recovery->setDocument(path);
    m_fileStamp = sequence.stamp;
    m_fileStoppedAt = 0;
    m_ui->m_wdg_file_changed->hideNotice();
    popupMessage(tr("Saved to %1").arg(QDir::toNativeSeparators(path)));
    m_ui->m_wdg_file_changed->watchFile(path);
    emit saved(m_model->root(), path);
    return true;
}

bool EditorWindow::canDiscard()
{
    if (m_undoStack->isClean())
        return true;
    const QMessageBox::StandardButton answer
        = QMessageBox::question(this,
                                windowTitle(),
                                tr("There are unsaved changes. What do you want to do?"),
                                QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel,
                                QMessageBox::Cancel);
    if (answer == QMessageBox::Discard) {
        m_recovery->discard();
        return true;
    }
    if (answer == QMessageBox::Save)
        return onSave();
    return false;
}

void EditorWindow::closeEvent(QCloseEvent *event)
{
    WindowLayout::store(this, m_ui->m_view->header());
    if (!canDiscard()) {
        event->ignore();
        return;
    }
    // Closed normally, whatever the answer: nothing is left for the next start.
    m_recovery->discard();
    QMainWindow::closeEvent(event);
}

void EditorWindow::terminate()
{
    m_recovery->write();
    // Not quit(): that closes the windows, and this one would ask about the unsaved changes.
    QCoreApplication::exit(0);
}

void EditorWindow::onReloadClicked()
{
    if (!reload(m_ui->m_wdg_file_changed->fileName()))
        m_ui->m_wdg_file_changed->show();
}

bool EditorWindow::reload(const QString &path)
{
    Item *root = loadDefinitionFile(path);
    if (!root)
        return false;
    // Undoable, so that the user can go back to the state before the reload.
    m_model->undoableSetTags(root, m_ui->m_view->currentIndex());
    m_undoStack->setClean();
    if (path == m_fileName)
        takeLoadedFile();
    emit opened(root, path);
    return true;
}

// Floating docks follow the main window: hidden with it, they come back when it is shown again.

void EditorWindow::hideEvent(QHideEvent *event)
{
    docksFollowWindow(false);
    QMainWindow::hideEvent(event);
}

void EditorWindow::showEvent(QShowEvent *event)
{
    QMainWindow::showEvent(event);
    docksFollowWindow(true);
    // Restoring the layout did not crash this start.
    WindowLayout::windowShown(this);
}

void EditorWindow::docksFollowWindow(bool shown)
{
    const std::pair<QDockWidget *, bool *> docks[] = {
        {m_undoDock, &m_undoDockWasVisible},
        {m_messageDock, &m_messageDockWasVisible},
        {m_problemsDock, &m_problemsDockWasVisible},
    };
    for (const auto &[dock, wasVisible] : docks) {
        if (shown && *wasVisible) {
            dock->showNormal();
            *wasVisible = false;
        } else if (!shown && dock->isFloating() && dock->isVisible()) {
            dock->hide();
            *wasVisible = true;
        }
    }
}

// Find, problems and the comparison with another version

FindBar *EditorWindow::findBar() const
{
    return m_ui->m_wdg_find;
}

void EditorWindow::showItem(const QModelIndex &index)
{
    if (!index.isValid())
        return;
    RowTreeView *view = m_ui->m_view;
    QModelIndexList parents;
    for (QModelIndex up = index.parent(); up.isValid(); up = up.parent())
        parents.prepend(up);
    for (const QModelIndex &parent : std::as_const(parents))
        view->expand(parent);
    setCurrentItem(index.siblingAtColumn(0));
    view->scrollTo(index.siblingAtColumn(0));
}

void EditorWindow::showFindBar(const QString &text)
{
    m_ui->m_wdg_find->openWith(text);
}

void EditorWindow::onFind()
{
    m_ui->m_wdg_find->open();
}

void EditorWindow::onFindNext()
{
    m_ui->m_wdg_find->show();
    m_ui->m_wdg_find->findNext();
}

void EditorWindow::onFindPrevious()
{
    m_ui->m_wdg_find->show();
    m_ui->m_wdg_find->findPrevious();
}

void EditorWindow::showProblems()
{
    m_problemsDock->refresh();
    m_problemsDock->show();
    m_problemsDock->raise();
}

void EditorWindow::onNextProblem()
{
    m_problemsDock->show();
    showItem(m_problemsDock->step(m_ui->m_view->currentIndex(), true));
}

void EditorWindow::onPreviousProblem()
{
    m_problemsDock->show();
    showItem(m_problemsDock->step(m_ui->m_view->currentIndex(), false));
}

void EditorWindow::onCompare()
{
    QString start = m_fileName.isEmpty() ? EditorSettings::text(EditorSettings::LastOpenPath) : m_fileName;
    start = start.isEmpty() ? Tools::documentsPath() : QFileInfo(start).absolutePath();
    const QString path
        = QFileDialog::getOpenFileName(this, tr("Compare with an older version"), start, fileFilter());
    if (path.isEmpty())
        return;
    showCompareReport(path);
}

QDialog *EditorWindow::showCompareReport(const QString &oldPath)
{
    const std::unique_ptr<Item> old(loadDefinitionFile(oldPath));
    if (!old)
        return nullptr;
    const CompatibilityReport report(old.get(), m_model->root());
    QString current = m_fileName.isEmpty() ? tr("(not saved yet)") : QDir::toNativeSeparators(m_fileName);
    if (!m_fileName.isEmpty() && !m_undoStack->isClean())
        current += tr(" (with unsaved changes)");
    return createViewer(tr("ZAT16 compatibility with %1").arg(QFileInfo(oldPath).fileName()),
                        nullptr,
                        report.text(QDir::toNativeSeparators(oldPath), current));
}

} // namespace ZAT16

// Takes the screenshots of the documentation: run under a real X server (scripts/screenshots uses
// xvfb-run), so that popups such as menus and combo box lists are on the screen.
//
// zatshots OUTDIR EXAMPLE WARNINGSFILE          the pictures of the guide
// zatshots OUTDIR EXAMPLE WARNINGSFILE scaled   only the window at a scale factor of 2 (run with
//                                               QT_SCALE_FACTOR=2)

#include "editoritemeditdialog.h"
#include "editormodel.h"
#include "editortagedit.h"
#include "editorwindow.h"
#include "item.h"
#include "rowtreeview.h"
#include "statusline.h"
#include "ui_editorwindow.h"

#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QDockWidget>
#include <QElapsedTimer>
#include <QHeaderView>
#include <QMenu>
#include <QMenuBar>
#include <QPalette>
#include <QScreen>
#include <QStandardPaths>
#include <QStyleFactory>
#include <QTextEdit>
#include <QThread>
#include <QTreeView>
#include <QUndoStack>

#include <cstdio>

using namespace ZAT16;

namespace {

QString outDir;

void settle(int ms = 300)
{
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < ms) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QThread::msleep(10);
    }
}

// The screen's pixels in `area`, popups included.
void grabScreen(const QRect &area, const QString &name)
{
    settle();
    const QPixmap pixmap
        = QGuiApplication::primaryScreen()->grabWindow(0, area.x(), area.y(), area.width(), area.height());
    const QString path = QDir(outDir).filePath(name);
    if (!pixmap.save(path))
        std::fprintf(stderr, "zatshots: could not save %s\n", qPrintable(path));
    else
        std::printf("%s\n", qPrintable(path));
}

void grabWidget(QWidget *widget, const QString &name, int margin = 0)
{
    settle();
    grabScreen(widget->frameGeometry().adjusted(-margin, -margin, margin, margin), name);
}

QModelIndex findTag(EditorModel *model, const QString &name)
{
    for (int row = 0; row < model->rowCount(); ++row) {
        const QModelIndex index = model->index(row, 0);
        if (model->index2item(index)->name == name)
            return index;
    }
    return QModelIndex();
}

QDialog *newestViewer(QWidget *window, const QList<QDialog *> &before)
{
    for (QDialog *dialog : window->findChildren<QDialog *>()) {
        if (!before.contains(dialog) && dialog->isVisible())
            return dialog;
    }
    return nullptr;
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QApplication app(argc, argv);
    QStandardPaths::setTestModeEnabled(true);
    QApplication::setApplicationName(QStringLiteral("zatedit"));
    QApplication::setOrganizationName(QStringLiteral("zatedit-screenshots"));
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/i16_message.png")));
    if (argc != 4 && !(argc == 5 && QByteArray(argv[4]) == "scaled")) {
        std::fprintf(stderr, "usage: zatshots OUTDIR EXAMPLE WARNINGSFILE [scaled]\n");
        return 2;
    }
    outDir = QString::fromLocal8Bit(argv[1]);
    const QString example = QString::fromLocal8Bit(argv[2]);
    const QString warnings = QString::fromLocal8Bit(argv[3]);

    // The window as a first start shows it: two thirds of the screen, columns fitted to the file.
    {
        auto *first = new EditorWindow;
        first->initialize(example, QString());
        first->show();
        first->ui()->m_view->expandWholeTree();
        first->showProblems();
        settle(500);
        grabWidget(first, argc == 5 ? QStringLiteral("scale-2.png") : QStringLiteral("first-start.png"));
        if (argc == 5) {
            delete first;
            return 0;
        }

        // The tree's context menu on a tag with lists.
        const QModelIndex row = findTag(first->model(), QStringLiteral("WindDirection"));
        first->ui()->m_view->scrollTo(row, QAbstractItemView::PositionAtTop);
        first->setCurrentItem(row);
        settle();
        QMenu *menu = first->treeContextMenu(row);
        const QRect cell = first->ui()->m_view->visualRect(row);
        menu->popup(first->ui()->m_view->viewport()->mapToGlobal(cell.center()));
        settle();
        grabScreen(first->frameGeometry().united(menu->frameGeometry()), QStringLiteral("context-menu.png"));
        menu->hide();
        delete menu;

        // The toolbar and the status bar after a save.
        first->statusLine()->showNote(EditorWindow::tr("Saved to %1").arg(QDir::toNativeSeparators(example)));
        settle();
        grabWidget(first, QStringLiteral("toolbar-status-bar.png"));

        // The same window under a dark palette.
        const QPalette light = QApplication::palette();
        QPalette dark;
        dark.setColor(QPalette::Window, QColor(0x2b, 0x2b, 0x2b));
        dark.setColor(QPalette::WindowText, QColor(0xe6, 0xe6, 0xe6));
        dark.setColor(QPalette::Base, QColor(0x1e, 0x1e, 0x1e));
        dark.setColor(QPalette::AlternateBase, QColor(0x26, 0x26, 0x26));
        dark.setColor(QPalette::Text, QColor(0xe6, 0xe6, 0xe6));
        dark.setColor(QPalette::Button, QColor(0x35, 0x35, 0x35));
        dark.setColor(QPalette::ButtonText, QColor(0xe6, 0xe6, 0xe6));
        dark.setColor(QPalette::Highlight, QColor(0x2f, 0x6e, 0xd3));
        dark.setColor(QPalette::HighlightedText, QColor(0xff, 0xff, 0xff));
        dark.setColor(QPalette::ToolTipBase, QColor(0x35, 0x35, 0x35));
        dark.setColor(QPalette::ToolTipText, QColor(0xe6, 0xe6, 0xe6));
        QApplication::setPalette(dark);
        settle(500);
        grabWidget(first, QStringLiteral("dark-palette.png"));
        QApplication::setPalette(light);
        first->undoStack()->setClean();
        delete first;
    }

    // The main window with an expanded tree, after a few edits that collide.
    auto *window = new EditorWindow;
    window->initialize(example, QString());
    window->move(40, 30);
    window->resize(1000, 720);
    window->show();
    // Wide enough for the padded codes of enumeration values, as a user would drag it.
    window->ui()->m_view->header()->resizeSection(1, 110);
    settle(500);
    EditorModel *model = window->model();
    const QModelIndex humidity = findTag(model, QStringLiteral("Humidity"));
    model->setData(humidity.siblingAtColumn(1), QStringLiteral("0x1001"), Qt::EditRole); // Temperature's code
    const QModelIndex pressure = findTag(model, QStringLiteral("Pressure"));
    model->setData(pressure, QStringLiteral("RainRate"), Qt::EditRole); // a name taken twice
    const int newRow = pressure.row() + 1;
    model->insertRow(newRow, QModelIndex());
    model->setData(model->index(newRow, 0), QStringLiteral("WindGust"), Qt::EditRole); // no code yet
    model->setData(model->index(newRow, 2), QStringLiteral("Strongest gust of the last minute"), Qt::EditRole);
    window->ui()->m_view->expandAll();
    window->setCurrentItem(findTag(model, QStringLiteral("WindDirection")));
    window->ui()->m_view->scrollTo(model->index(10, 0), QAbstractItemView::PositionAtTop);
    grabWidget(window, QStringLiteral("main-window.png"));

    // Each menu open.
    const QList<QAction *> menus = window->ui()->m_menubar->actions();
    for (QAction *action : menus) {
        QMenu *menu = action->menu();
        const QRect at = window->ui()->m_menubar->actionGeometry(action);
        menu->popup(window->ui()->m_menubar->mapToGlobal(at.bottomLeft()));
        settle();
        const QRect area = window->frameGeometry().united(menu->frameGeometry());
        grabScreen(QRect(window->frameGeometry().topLeft(),
                         QSize(area.width(), menu->frameGeometry().bottom() - window->frameGeometry().top() + 8)),
                   QStringLiteral("menu-%1.png").arg(action->text().remove(QLatin1Char('&')).toLower()));
        menu->hide();
    }

    // The edit dialog for a tag and for a bit.
    for (const auto &[name, path] :
         { std::pair<QString, QString>(QStringLiteral("dialog-tag.png"), QStringLiteral("WindDirection")),
           std::pair<QString, QString>(QStringLiteral("dialog-bit.png"), QStringLiteral("SensorFlags")) }) {
        QModelIndex index = findTag(model, path);
        const Item *item = model->index2item(index);
        if (item->type == Tag && !item->children.isEmpty() && item->name == QLatin1String("SensorFlags"))
            item = item->children.first()->children.at(3);
        EditorItemEditDialog dialog(window);
        dialog.setData(item);
        dialog.move(window->geometry().center() - QPoint(220, 90));
        dialog.show();
        grabWidget(&dialog, name);
        dialog.hide();
    }

    // The in-place editor of a tag code with its type list open.
    const QModelIndex code = findTag(model, QStringLiteral("Pressure")).siblingAtColumn(1);
    const QModelIndex codeCell
        = code.isValid() ? code : findTag(model, QStringLiteral("Temperature")).siblingAtColumn(1);
    window->ui()->m_view->scrollTo(codeCell, QAbstractItemView::PositionAtCenter);
    window->setCurrentItem(codeCell);
    window->ui()->m_view->edit(codeCell);
    settle();
    if (auto *edit = window->ui()->m_view->findChild<EditorTagEdit *>()) {
        edit->showPopup();
        settle();
        QRect area = window->frameGeometry();
        grabScreen(area, QStringLiteral("tag-code-editor.png"));
        edit->hidePopup();
    } else {
        std::fprintf(stderr, "zatshots: no tag code editor\n");
    }
    window->ui()->m_view->closePersistentEditor(codeCell);
    window->setCurrentItem(findTag(model, QStringLiteral("WindDirection")));
    settle();

    // The C header and Lua viewers.
    QList<QDialog *> before = window->findChildren<QDialog *>();
    window->onViewHeader();
    if (QDialog *viewer = newestViewer(window, before)) {
        viewer->move(80, 60);
        grabWidget(viewer, QStringLiteral("viewer-header.png"));
        viewer->close();
    }
    settle();
    before = window->findChildren<QDialog *>();
    window->onViewLua();
    if (QDialog *viewer = newestViewer(window, before)) {
        viewer->move(80, 60);
        grabWidget(viewer, QStringLiteral("viewer-lua.png"));
        viewer->close();
    }
    settle();

    // The find bar, the Problems dock and a compatibility report, on the edited document.
    window->showFindBar(QStringLiteral("wind"));
    settle();
    grabWidget(window, QStringLiteral("find-bar.png"));
    window->showProblems();
    settle();
    grabWidget(window, QStringLiteral("problems.png"));
    if (QDialog *report = window->showCompareReport(example)) {
        report->move(80, 60);
        grabWidget(report, QStringLiteral("compare-report.png"));
        report->close();
    }
    settle();

    // The Messages dock after opening a file with warnings.
    window->undoStack()->setClean();
    delete window;
    auto *second = new EditorWindow;
    second->move(40, 30);
    second->resize(1000, 720);
    second->initialize(warnings, QString());
    second->show();
    second->ui()->m_view->expandAll();
    grabWidget(second, QStringLiteral("messages.png"));
    delete second;
    return 0;
}

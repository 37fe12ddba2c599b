// The tree under a dark palette (Fusion style, dark window and base, light text): every text stays
// readable on the colours the model gives, and the selection covers coloured cells as any other.

#include "contrast.h"
#include "editordelegate.h"
#include "editormodel.h"
#include "item.h"
#include "makeitem.h"
#include "rowtreeview.h"

#include <QApplication>
#include <QHeaderView>
#include <QImage>
#include <QProxyStyle>
#include <QStyleFactory>
#include <QTest>
#include <QUndoStack>

#include <cmath>
#include <memory>

using namespace ZAT16;
using TestItems::makeItem;

namespace {

const QColor darkWindow(45, 45, 48);
const QColor darkBase(30, 30, 30);
const QColor lightText(230, 230, 230);
const QColor highlight(42, 130, 218);
const QColor commentGreen(222, 255, 222);
const QColor markRed(192, 0, 0);

// The palette of a dark desktop theme, the same in every colour group.
QPalette darkPalette()
{
    QPalette palette;
    palette.setColor(QPalette::Window, darkWindow);
    palette.setColor(QPalette::WindowText, lightText);
    palette.setColor(QPalette::Base, darkBase);
    palette.setColor(QPalette::AlternateBase, QColor(40, 40, 44));
    palette.setColor(QPalette::Text, lightText);
    palette.setColor(QPalette::Button, darkWindow);
    palette.setColor(QPalette::ButtonText, lightText);
    palette.setColor(QPalette::Highlight, highlight);
    palette.setColor(QPalette::HighlightedText, Qt::white);
    return palette;
}

// A style that highlights only a selected item's text, as some desktop styles do; the view then
// asks its delegate not to cover the whole cell with the selection.
class TextOnlySelectionStyle : public QProxyStyle
{
public:
    TextOnlySelectionStyle()
        : QProxyStyle(QStyleFactory::create(QStringLiteral("Fusion")))
    {
    }
    int styleHint(StyleHint hint,
                  const QStyleOption *option = nullptr,
                  const QWidget *widget = nullptr,
                  QStyleHintReturn *returnData = nullptr) const override
    {
        if (hint == QStyle::SH_ItemView_ShowDecorationSelected)
            return 0;
        return QProxyStyle::styleHint(hint, option, widget, returnData);
    }
};

} // namespace

class TestDarkPalette : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void paletteTextIsUnreadableOnTheColours();
    void commentRowHasDarkText();
    void markedCellsHaveReadableText_data();
    void markedCellsHaveReadableText();
    void commentTextIsDrawnDark();
    void selectionCoversColouredCells_data();
    void selectionCoversColouredCells();

private:
    QModelIndex row(int r, int column = 0) const { return m_model->index(r, column); }
    QRect cellRect(const QModelIndex &index) const;

    // declared before the view, which uses it until it is gone
    std::unique_ptr<QStyle> m_style;
    std::unique_ptr<QUndoStack> m_stack;
    std::unique_ptr<EditorModel> m_model;
    std::unique_ptr<RowTreeView> m_view;
};

// Rows of the tree: 0 a complete tag, 1 a comment line, 2 and 3 tags with the same name, 4 and 5
// tags with the same code.
enum Rows { Plain = 0, Comment = 1, NameTwin = 2, CodeTwin = 4 };

void TestDarkPalette::initTestCase()
{
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QApplication::setPalette(darkPalette());
}

void TestDarkPalette::init()
{
    auto *root = makeItem(Root);
    root->appendChild(makeItem(Tag, QStringLiteral("Power"), true, 0x2001, QStringLiteral("a complete tag")));
    root->appendChild(makeItem(Tag, QString(), false, 0, QStringLiteral("a comment line")));
    root->appendChild(makeItem(Tag, QStringLiteral("Mode"), true, 0x2002, QStringLiteral("first of the same name")));
    root->appendChild(makeItem(Tag, QStringLiteral("Mode"), true, 0x2003, QStringLiteral("second")));
    root->appendChild(makeItem(Tag, QStringLiteral("Speed"), true, 0x2004, QStringLiteral("first of the same code")));
    root->appendChild(makeItem(Tag, QStringLiteral("Level"), true, 0x2004, QStringLiteral("second")));
    m_stack = std::make_unique<QUndoStack>();
    m_model = std::make_unique<EditorModel>();
    m_model->setUndoStack(m_stack.get());
    m_model->setTags(root);

    // set up as the main window's form does
    m_view = std::make_unique<RowTreeView>();
    m_view->setModel(m_model.get());
    m_view->setItemDelegate(new EditorDelegate(m_view.get()));
    m_view->setAlternatingRowColors(true);
    m_view->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_view->setSelectionBehavior(QAbstractItemView::SelectItems);
    m_view->setIconSize(QSize(16, 16));
    m_view->setUniformRowHeights(true);
    m_view->resize(520, 200);
    m_view->header()->resizeSection(0, 200);
    m_view->header()->resizeSection(1, 80);
}

void TestDarkPalette::cleanup()
{
    m_view.reset();
    m_model.reset();
    m_stack.reset();
    m_style.reset();
}

QRect TestDarkPalette::cellRect(const QModelIndex &index) const
{
    return m_view->visualRect(index);
}

// Why the model gives text colours at all: the dark theme's light text cannot be read on them.
void TestDarkPalette::paletteTextIsUnreadableOnTheColours()
{
    QCOMPARE(QApplication::palette().color(QPalette::Text), lightText);
    QVERIFY(Contrast::ratio(lightText, commentGreen) < 1.5);
    QVERIFY(Contrast::ratio(darkBase, commentGreen) >= 4.5);
}

void TestDarkPalette::commentRowHasDarkText()
{
    for (int column = 0; column < 3; ++column) {
        const QModelIndex cell = row(Comment, column);
        QCOMPARE(cell.data(Qt::BackgroundRole).value<QColor>(), commentGreen);
        const QColor text = cell.data(Qt::ForegroundRole).value<QColor>();
        QVERIFY(text.isValid());
        QCOMPARE(text.alpha(), 255);
        QVERIFY2(Contrast::luminance(text) < 0.05, qPrintable(text.name()));
        QVERIFY2(Contrast::ratio(text, commentGreen) >= 4.5,
                 qPrintable(QString::number(Contrast::ratio(text, commentGreen))));
    }
}

void TestDarkPalette::markedCellsHaveReadableText_data()
{
    QTest::addColumn<int>("r");
    QTest::addColumn<int>("column");
    QTest::newRow("same name, first") << int(NameTwin) << 0;
    QTest::newRow("same name, second") << int(NameTwin + 1) << 0;
    QTest::newRow("same code, first") << int(CodeTwin) << 1;
    QTest::newRow("same code, second") << int(CodeTwin + 1) << 1;
}

// A marked cell keeps its red; its text, white, reads on it.
void TestDarkPalette::markedCellsHaveReadableText()
{
    QFETCH(int, r);
    QFETCH(int, column);
    const QModelIndex cell = row(r, column);
    QCOMPARE(cell.data(Qt::BackgroundRole).value<QColor>(), markRed);
    const QColor text = cell.data(Qt::ForegroundRole).value<QColor>();
    QVERIFY(text.isValid());
    QCOMPARE(text.alpha(), 255);
    const double ratio = Contrast::ratio(text, markRed);
    QVERIFY2(ratio >= 4.5, qPrintable(QString::number(ratio)));
    // the other cells of the row are not coloured
    QVERIFY(!row(r, 2).data(Qt::BackgroundRole).isValid());
}

// Drawn, the comment's letters are dark on the green: the darkest pixels of the cell are nearly
// black, none is as light as the theme's text.
void TestDarkPalette::commentTextIsDrawnDark()
{
    m_view->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
    m_view->clearSelection();
    const QImage image = m_view->viewport()->grab().toImage().convertToFormat(QImage::Format_RGB32);
    const QRect cell = cellRect(row(Comment, 2));
    QVERIFY(image.rect().contains(cell));
    double darkest = 1.0;
    int green = 0;
    for (int y = cell.top(); y <= cell.bottom(); ++y) {
        for (int x = cell.left(); x <= cell.right(); ++x) {
            const QColor pixel = image.pixelColor(x, y);
            darkest = std::min(darkest, Contrast::luminance(pixel));
            if (pixel == commentGreen)
                ++green;
        }
    }
    QVERIFY2(darkest < 0.05, qPrintable(QString::number(darkest)));
    QVERIFY(green > cell.width() * cell.height() / 2);
}

void TestDarkPalette::selectionCoversColouredCells_data()
{
    QTest::addColumn<bool>("textOnly");
    QTest::addColumn<int>("r");
    QTest::addColumn<int>("column");
    for (bool textOnly : { false, true }) {
        const QString style = textOnly ? QStringLiteral("text-only selection") : QStringLiteral("Fusion");
        for (int column = 0; column < 3; ++column) {
            QTest::addRow("%s, comment line, column %d", qPrintable(style), column)
                << textOnly << int(Comment) << column;
        }
        QTest::addRow("%s, name marked", qPrintable(style)) << textOnly << int(NameTwin) << 0;
        QTest::addRow("%s, code marked", qPrintable(style)) << textOnly << int(CodeTwin) << 1;
        QTest::addRow("%s, plain cell", qPrintable(style)) << textOnly << int(Plain) << 2;
    }
}

// A selected cell shows the highlight from its left to its right edge (after the icon in the name
// column), along its top and bottom lines, where no text reaches, whatever background the model
// gives it.
void TestDarkPalette::selectionCoversColouredCells()
{
    QFETCH(bool, textOnly);
    QFETCH(int, r);
    QFETCH(int, column);
    if (textOnly) {
        m_style = std::make_unique<TextOnlySelectionStyle>();
        m_view->setStyle(m_style.get());
    }
    m_view->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
    const QModelIndex cell = row(r, column);
    m_view->selectionModel()->select(cell, QItemSelectionModel::ClearAndSelect);
    const QImage image = m_view->viewport()->grab().toImage().convertToFormat(QImage::Format_RGB32);
    const QRect rect = cellRect(cell);
    QVERIFY(image.rect().contains(rect));
    QVERIFY(rect.width() > 40);
    // in the name column the type icon comes first, with a margin on either side
    const int left = column == 0 ? rect.left() + m_view->iconSize().width() + 8 : rect.left();
    for (int y : { rect.top(), rect.top() + 1, rect.bottom() - 1, rect.bottom() }) {
        for (int x = left; x <= rect.right(); ++x) {
            if (image.pixelColor(x, y) != highlight) {
                QFAIL(qPrintable(QStringLiteral("pixel %1,%2 of the cell %3,%4 %5x%6 is %7")
                                     .arg(x)
                                     .arg(y)
                                     .arg(rect.x())
                                     .arg(rect.y())
                                     .arg(rect.width())
                                     .arg(rect.height())
                                     .arg(image.pixelColor(x, y).name())));
            }
        }
    }
    // the row below keeps its own look
    const QModelIndex below = row(r + 1, column);
    const QRect belowRect = cellRect(below);
    QVERIFY(image.pixelColor(belowRect.right() - 1, belowRect.bottom() - 1) != highlight);
}

QTEST_MAIN(TestDarkPalette)
#include "tst_darkpalette.moc"

#include "editordelegate.h"
#include "editormodel.h"
#include "editortagedit.h"
#include "identifiervalidator.h"
#include "item.h"
#include "makeitem.h"
#include "numbervalidator.h"
#include "tagvalidator.h"

#include <QAbstractTableModel>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QImage>
#include <QLineEdit>
#include <QPainter>
#include <QRegularExpression>
#include <QTest>
#include <QTreeView>
#include <QUndoStack>

#include <climits>

using namespace ZAT16;
using TestItems::makeItem;

// One row showing one item, without fonts.
class PlainModel : public QAbstractTableModel
{
public:
    explicit PlainModel(Item *item)
        : m_item(item)
    {
    }
    int rowCount(const QModelIndex &parent = QModelIndex()) const override { return parent.isValid() ? 0 : 1; }
    int columnCount(const QModelIndex & = QModelIndex()) const override { return 3; }
    QModelIndex index(int row, int column, const QModelIndex & = QModelIndex()) const override
    {
        return createIndex(row, column, m_item);
    }
    QVariant data(const QModelIndex &, int role) const override
    {
        return role == Qt::DisplayRole ? QVariant(m_item->name) : QVariant();
    }

private:
    Item *m_item;
};

// A main window as far as the delegate cares: it has the popupMessage slot.
class MessageWindow : public QWidget
{
    Q_OBJECT

public:
    QStringList messages;

public slots:
    void popupMessage(const QString &text) { messages.append(text); }
};

// A window with a look-alike that is not the slot.
class OtherWindow : public QWidget
{
    Q_OBJECT

public:
    int calls = 0;

public slots:
    void popupMessage(int) { ++calls; }
};

class TestEditorDelegate : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void createEditor_data();
    void createEditor();
    void noEditorForInvalidIndex();
    void editorFonts();
    void defaultFontWithoutFontRole();
    void messagesReachTheWindow_data();
    void messagesReachTheWindow();
    void windowWithoutSlotGetsNoConnection();
    void tagEditorData();
    void tagEditorSetsModelData();
    void tagEditorEmptyTextRemovesCode();
    void tagEditorCodeOutOfRangeIsRefused();
    void numberEditorRoundTrip();
    void inPlaceNameStartingWithDigitCannotBeCommitted();
    void inPlaceNameIsCommitted();
    void inPlaceReservedNameCannotBeCommitted();
    void inPlaceTagCodeIsCommitted();
    void inPlaceTagCodeOutOfRangeIsRefused();
    void inPlaceBitNumberMinusOneIsRefused();
    void inPlaceNegativeValueIsStoredSigned();
    void codeEditorIsAsWideAsItsText();
    void paintFillsSelectedCell();
    void paintLeavesUnselectedCell();

private:
    // root { alpha 0x1001 { bits { b0 = 0, b1 = 1 }, enums { one = 1 } }, comment line,
    //        blank line, beta 0x1002 }
    EditorModel *m_model = nullptr;
    QUndoStack *m_stack = nullptr;
    MessageWindow *m_window = nullptr;
    QTreeView *m_view = nullptr;
    EditorDelegate *m_delegate = nullptr;
    Item *m_alpha = nullptr;
    Item *m_bits = nullptr;
    Item *m_b1 = nullptr;
    Item *m_enums = nullptr;
    Item *m_one = nullptr;
    Item *m_comment = nullptr;
    Item *m_blank = nullptr;

    QModelIndex indexOf(const Item *item, int column) const
    {
        const QModelIndex first = m_model->item2index(item);
        return first.sibling(first.row(), column);
    }
    const Item *itemNamed(const QString &which) const;
    QWidget *openEditor(const Item *item, int column);
};

void TestEditorDelegate::init()
{
    m_model = new EditorModel;
    m_stack = new QUndoStack;
    m_model->setUndoStack(m_stack);
    auto *root = makeItem(Root, QString(), false, 0);
    m_alpha = makeItem(Tag, "alpha", true, 0x1001);
    root->appendChild(m_alpha);
    m_bits = makeItem(Bits, QString(), false, 0);
    m_alpha->appendChild(m_bits);
    m_bits->appendChild(makeItem(Bit, "b0", true, 0));
    m_b1 = makeItem(Bit, "b1", true, 1, "second bit");
    m_bits->appendChild(m_b1);
    m_enums = makeItem(Enums, QString(), false, 0);
    m_alpha->appendChild(m_enums);
    m_one = makeItem(Enum, "one", true, 1);
    m_enums->appendChild(m_one);
    m_comment = makeItem(Tag, QString(), false, 0, " a comment line ");
    root->appendChild(m_comment);
    m_blank = makeItem(Tag, QString(), false, 0);
    root->appendChild(m_blank);
    root->appendChild(makeItem(Tag, "beta", true, 0x1002));
    m_model->setTags(root);

    m_window = new MessageWindow;
    auto *layout = new QHBoxLayout(m_window);
    m_view = new QTreeView;
    layout->addWidget(m_view);
    m_view->setModel(m_model);
    m_delegate = new EditorDelegate(m_view);
    m_view->setItemDelegate(m_delegate);
    m_view->expandAll();
    m_window->resize(600, 400);
}

void TestEditorDelegate::cleanup()
{
    delete m_window;
    delete m_model;
    delete m_stack;
}

const Item *TestEditorDelegate::itemNamed(const QString &which) const
{
    if (which == "tag")
        return m_alpha;
    if (which == "bits")
        return m_bits;
    if (which == "bit")
        return m_b1;
    if (which == "enums")
        return m_enums;
    if (which == "enum")
        return m_one;
    if (which == "comment")
        return m_comment;
    if (which == "blank")
        return m_blank;
    return nullptr;
}

QWidget *TestEditorDelegate::openEditor(const Item *item, int column)
{
    m_window->show();
    if (!QTest::qWaitForWindowActive(m_window))
        return nullptr;
    const QModelIndex index = indexOf(item, column);
    m_view->setCurrentIndex(index);
    m_view->edit(index);
    return m_view->indexWidget(index);
}

void TestEditorDelegate::createEditor_data()
{
    QTest::addColumn<QString>("item");
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("editorClass"); // empty: no editor
    QTest::addColumn<QString>("validatorClass"); // empty: none
    QTest::addColumn<int>("bottom");

    QTest::newRow("tag name") << "tag" << 0 << "QLineEdit"
                              << "ZAT16::IdentifierValidator" << 0;
    QTest::newRow("tag code") << "tag" << 1 << "ZAT16::EditorTagEdit"
                              << "ZAT16::TagValidator" << 0;
    QTest::newRow("tag comment") << "tag" << 2 << "QLineEdit"
                                 << "" << 0;
    QTest::newRow("tag column 3") << "tag" << 3 << ""
                                  << "" << 0;
    QTest::newRow("enum name") << "enum" << 0 << "QLineEdit"
                               << "ZAT16::IdentifierValidator" << 0;
    QTest::newRow("enum value") << "enum" << 1 << "QLineEdit"
                                << "ZAT16::NumberValidator" << INT_MIN;
    QTest::newRow("enum comment") << "enum" << 2 << "QLineEdit"
                                  << "" << 0;
    QTest::newRow("bit name") << "bit" << 0 << "QLineEdit"
                              << "ZAT16::IdentifierValidator" << 0;
    QTest::newRow("bit number") << "bit" << 1 << "QLineEdit"
                                << "ZAT16::NumberValidator" << 0;
    QTest::newRow("bit comment") << "bit" << 2 << "QLineEdit"
                                 << "" << 0;
    QTest::newRow("enum list name") << "enums" << 0 << ""
                                    << "" << 0;
    QTest::newRow("enum list column 1") << "enums" << 1 << ""
                                        << "" << 0;
    QTest::newRow("enum list comment") << "enums" << 2 << ""
                                       << "" << 0;
    QTest::newRow("bit list name") << "bits" << 0 << ""
                                   << "" << 0;
    QTest::newRow("bit list comment") << "bits" << 2 << ""
                                      << "" << 0;
    // Blank lines and comment lines are tags without name and code: they are filled in place.
    QTest::newRow("blank line name") << "blank" << 0 << "QLineEdit"
                                     << "ZAT16::IdentifierValidator" << 0;
    QTest::newRow("blank line code") << "blank" << 1 << "ZAT16::EditorTagEdit"
                                     << "ZAT16::TagValidator" << 0;
    QTest::newRow("comment line comment") << "comment" << 2 << "QLineEdit"
                                          << "" << 0;
}

void TestEditorDelegate::createEditor()
{
    QFETCH(QString, item);
    QFETCH(int, column);
    QFETCH(QString, editorClass);
    QFETCH(QString, validatorClass);
    QFETCH(int, bottom);

    const Item *it = itemNamed(item);
    const QModelIndex index = indexOf(it, column);
    QVERIFY(index.isValid());
    QStyleOptionViewItem option;
    QWidget *editor = m_delegate->createEditor(m_view->viewport(), option, index);
    if (editorClass.isEmpty()) {
        QVERIFY(!editor);
        return;
    }
    QVERIFY(editor);
    QCOMPARE(editor->parentWidget(), m_view->viewport());
    QCOMPARE(QString(editor->metaObject()->className()), editorClass);
    const QValidator *validator = nullptr;
    if (auto *tagEdit = qobject_cast<EditorTagEdit *>(editor)) {
        QVERIFY(!tagEdit->hasFrame());
        validator = tagEdit->validator();
        QCOMPARE(static_cast<const TagValidator *>(validator)->item(), it);
    } else {
        validator = static_cast<QLineEdit *>(editor)->validator();
    }
    if (validatorClass.isEmpty()) {
        QVERIFY(!validator);
    } else {
        QVERIFY(validator);
        QCOMPARE(QString(validator->metaObject()->className()), validatorClass);
        if (auto *identifiers = qobject_cast<const IdentifierValidator *>(validator))
            QCOMPARE(identifiers->item(), it);
        if (auto *numbers = qobject_cast<const NumberValidator *>(validator)) {
            QCOMPARE(numbers->item(), it);
            QCOMPARE(numbers->bottom(), bottom);
            QCOMPARE(numbers->top(), INT_MAX);
        }
    }
    delete editor;
}

void TestEditorDelegate::noEditorForInvalidIndex()
{
    QStyleOptionViewItem option;
    QVERIFY(!m_delegate->createEditor(m_view->viewport(), option, QModelIndex()));
}

void TestEditorDelegate::editorFonts()
{
    QFont fixed("Monospace", 17);
    QFont comment("Serif", 9);
    m_model->setFixedFont(fixed);
    m_model->setCommentFont(comment);
    QStyleOptionViewItem option;

    std::unique_ptr<QWidget> name(m_delegate->createEditor(m_view->viewport(), option, indexOf(m_alpha, 0)));
    QCOMPARE(name->font(), fixed);
    std::unique_ptr<QWidget> code(m_delegate->createEditor(m_view->viewport(), option, indexOf(m_alpha, 1)));
    QCOMPARE(static_cast<EditorTagEdit *>(code.get())->lineEdit()->font(), fixed);
    std::unique_ptr<QWidget> number(m_delegate->createEditor(m_view->viewport(), option, indexOf(m_b1, 1)));
    QCOMPARE(number->font(), fixed);
    std::unique_ptr<QWidget> remark(m_delegate->createEditor(m_view->viewport(), option, indexOf(m_b1, 2)));
    QCOMPARE(remark->font(), comment);
}

void TestEditorDelegate::defaultFontWithoutFontRole()
{
    PlainModel plain(m_alpha);
    QStyleOptionViewItem option;
    std::unique_ptr<QWidget> name(m_delegate->createEditor(m_view->viewport(), option, plain.index(0, 0)));
    QVERIFY(name);
    QCOMPARE(name->font(), QFont());
    std::unique_ptr<QWidget> code(m_delegate->createEditor(m_view->viewport(), option, plain.index(0, 1)));
    QVERIFY(code);
    QCOMPARE(static_cast<EditorTagEdit *>(code.get())->lineEdit()->font(), QFont());
}

void TestEditorDelegate::messagesReachTheWindow_data()
{
    QTest::addColumn<QString>("item");
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("fine");

    QTest::newRow("name") << "tag" << 0 << "1abc"
                          << "Identifier must not start with a digit"
                          << "x";
    QTest::newRow("tag code") << "tag" << 1 << "10000"
                              << "Tag code out of range"
                              << "5";
    QTest::newRow("bit number") << "bit" << 1 << "-1"
                                << "Number out of range"
                                << "5";
    QTest::newRow("enum value") << "enum" << 1 << "abc"
                                << "Non numeric input"
                                << "5";
}

void TestEditorDelegate::messagesReachTheWindow()
{
    QFETCH(QString, item);
    QFETCH(int, column);
    QFETCH(QString, typed);
    QFETCH(QString, message);
    QFETCH(QString, fine);

    QStyleOptionViewItem option;
    std::unique_ptr<QWidget> editor(
        m_delegate->createEditor(m_view->viewport(), option, indexOf(itemNamed(item), column)));
    QVERIFY(editor);
    auto *tagEdit = qobject_cast<EditorTagEdit *>(editor.get());
    QLineEdit *edit = tagEdit ? tagEdit->lineEdit() : static_cast<QLineEdit *>(editor.get());
    QTest::keyClicks(edit, typed);
    QVERIFY(!m_window->messages.isEmpty());
    QCOMPARE(m_window->messages.last(), message);
    // A fine input hides the tooltip again with an empty message.
    edit->clear();
    QTest::keyClicks(edit, fine);
    QCOMPARE(m_window->messages.last(), QString());
}

void TestEditorDelegate::windowWithoutSlotGetsNoConnection()
{
    QTest::failOnWarning(QRegularExpression(".*"));
    OtherWindow window;
    QTreeView view(&window);
    view.setModel(m_model);
    QStyleOptionViewItem option;
    std::unique_ptr<QWidget> name(m_delegate->createEditor(view.viewport(), option, indexOf(m_alpha, 0)));
    std::unique_ptr<QWidget> code(m_delegate->createEditor(view.viewport(), option, indexOf(m_alpha, 1)));
    QTest::keyClicks(static_cast<QLineEdit *>(name.get()), "1abc");
    QTest::keyClicks(static_cast<EditorTagEdit *>(code.get())->lineEdit(), "10000");
    QCOMPARE(window.calls, 0);

    // An editor without any window.
    std::unique_ptr<QWidget> alone(m_delegate->createEditor(nullptr, option, indexOf(m_alpha, 0)));
    QTest::keyClicks(static_cast<QLineEdit *>(alone.get()), "1abc");
    QVERIFY(m_window->messages.isEmpty());
}

void TestEditorDelegate::tagEditorData()
{
    QStyleOptionViewItem option;
    std::unique_ptr<QWidget> editor(m_delegate->createEditor(m_view->viewport(), option, indexOf(m_alpha, 1)));
    auto *tagEdit = static_cast<EditorTagEdit *>(editor.get());
    m_delegate->setEditorData(tagEdit, indexOf(m_alpha, 1));
    QCOMPARE(tagEdit->currentText(), QString("0x1001"));
    QCOMPARE(tagEdit->currentIndex(), 1);
    // A tag without code gives an empty field.
    m_delegate->setEditorData(tagEdit, indexOf(m_blank, 1));
    QCOMPARE(tagEdit->currentText(), QString());
}

void TestEditorDelegate::tagEditorSetsModelData()
{
    QStyleOptionViewItem option;
    std::unique_ptr<QWidget> editor(m_delegate->createEditor(m_view->viewport(), option, indexOf(m_alpha, 1)));
    auto *tagEdit = static_cast<EditorTagEdit *>(editor.get());
    m_delegate->setEditorData(tagEdit, indexOf(m_alpha, 1));
    tagEdit->setCurrentIndex(3); // String
    QCOMPARE(tagEdit->currentText(), QString("0x3001"));
    m_delegate->setModelData(tagEdit, m_model, indexOf(m_alpha, 1));
    QCOMPARE(m_alpha->id, quint64(0x3001));
    QCOMPARE(m_stack->count(), 1);
    QCOMPARE(m_stack->text(0), QString("Change tag code"));

    // Typed without 0x: the editor puts it in front.
    tagEdit->setTag("2abc");
    m_delegate->setModelData(tagEdit, m_model, indexOf(m_alpha, 1));
    QCOMPARE(m_alpha->id, quint64(0x2ABC));
}

void TestEditorDelegate::tagEditorEmptyTextRemovesCode()
{
    QStyleOptionViewItem option;
    std::unique_ptr<QWidget> editor(m_delegate->createEditor(m_view->viewport(), option, indexOf(m_alpha, 1)));
    auto *tagEdit = static_cast<EditorTagEdit *>(editor.get());
    tagEdit->setTag(QString());
    m_delegate->setModelData(tagEdit, m_model, indexOf(m_alpha, 1));
    QVERIFY(!m_alpha->hasId);
    QCOMPARE(m_stack->count(), 1);
    QCOMPARE(m_stack->text(0), QString("Remove tag code"));
}

void TestEditorDelegate::tagEditorCodeOutOfRangeIsRefused()
{
    QStyleOptionViewItem option;
    std::unique_ptr<QWidget> editor(m_delegate->createEditor(m_view->viewport(), option, indexOf(m_alpha, 1)));
    auto *tagEdit = static_cast<EditorTagEdit *>(editor.get());
    tagEdit->setTag("0x10000");
    m_delegate->setModelData(tagEdit, m_model, indexOf(m_alpha, 1));
    QCOMPARE(m_alpha->id, quint64(0x1001));
    QCOMPARE(m_stack->count(), 0);
    // "0x" alone is not a code yet (it would read as 0).
    tagEdit->setTag("0x");
    m_delegate->setModelData(tagEdit, m_model, indexOf(m_alpha, 1));
    QCOMPARE(m_alpha->id, quint64(0x1001));
    QCOMPARE(m_stack->count(), 0);
}

void TestEditorDelegate::numberEditorRoundTrip()
{
    QStyleOptionViewItem option;
    std::unique_ptr<QWidget> editor(m_delegate->createEditor(m_view->viewport(), option, indexOf(m_b1, 1)));
    auto *edit = static_cast<QLineEdit *>(editor.get());
    m_delegate->setEditorData(edit, indexOf(m_b1, 1));
    QCOMPARE(edit->text(), QString("1"));
    edit->setText("7");
    m_delegate->setModelData(edit, m_model, indexOf(m_b1, 1));
    QCOMPARE(m_b1->id, quint64(7));
    QCOMPARE(m_stack->text(0), QString("Change bit number"));
}

void TestEditorDelegate::inPlaceNameStartingWithDigitCannotBeCommitted()
{
    auto *edit = qobject_cast<QLineEdit *>(openEditor(m_alpha, 0));
    QVERIFY(edit);
    QCOMPARE(edit->text(), QString("alpha"));
    edit->selectAll();
    QTest::keyClicks(edit, "1abc");
    QCOMPARE(edit->text(), QString("1abc"));
    QCOMPARE(m_window->messages.last(), QString("Identifier must not start with a digit"));
    QTest::keyClick(edit, Qt::Key_Return);
    QCoreApplication::processEvents();
    QCOMPARE(m_alpha->name, QString("alpha"));
    QCOMPARE(m_stack->count(), 0);
    // Leaving the cell does not commit it either.
    m_view->setCurrentIndex(indexOf(m_b1, 0));
    QCoreApplication::processEvents();
    QCOMPARE(m_alpha->name, QString("alpha"));
    QCOMPARE(m_stack->count(), 0);
}

void TestEditorDelegate::inPlaceReservedNameCannotBeCommitted()
{
    auto *edit = qobject_cast<QLineEdit *>(openEditor(m_alpha, 0));
    QVERIFY(edit);
    edit->selectAll();
    QTest::keyClicks(edit, "Tag");
    QCOMPARE(m_window->messages.last(), QString("The name \"Tag\" is reserved."));
    QTest::keyClick(edit, Qt::Key_Return);
    QCoreApplication::processEvents();
    QCOMPARE(m_alpha->name, QString("alpha"));
    QCOMPARE(m_stack->count(), 0);
}

void TestEditorDelegate::inPlaceNameIsCommitted()
{
    auto *edit = qobject_cast<QLineEdit *>(openEditor(m_alpha, 0));
    QVERIFY(edit);
    edit->selectAll();
    QTest::keyClicks(edit, "gamma");
    QTest::keyClick(edit, Qt::Key_Return);
    QCoreApplication::processEvents();
    QCOMPARE(m_alpha->name, QString("gamma"));
    QCOMPARE(m_stack->count(), 1);
    QCOMPARE(m_stack->text(0), QString("Change name"));
}

void TestEditorDelegate::inPlaceTagCodeIsCommitted()
{
    auto *tagEdit = qobject_cast<EditorTagEdit *>(openEditor(m_alpha, 1));
    QVERIFY(tagEdit);
    QCOMPARE(tagEdit->currentText(), QString("0x1001"));
    tagEdit->lineEdit()->selectAll();
    QTest::keyClicks(tagEdit->lineEdit(), "8012");
    QCOMPARE(tagEdit->currentIndex(), 8);
    QTest::keyClick(tagEdit, Qt::Key_Return);
    QCoreApplication::processEvents();
    QCOMPARE(m_alpha->id, quint64(0x8012));
    QCOMPARE(m_stack->count(), 1);
}

void TestEditorDelegate::codeEditorIsAsWideAsItsText()
{
    m_view->header()->resizeSection(1, 30);
    auto *tagEdit = qobject_cast<EditorTagEdit *>(openEditor(m_alpha, 1));
    QVERIFY(tagEdit);
    const int tagText = tagEdit->lineEdit()->fontMetrics().horizontalAdvance(QStringLiteral("0x1001"));
    QVERIFY2(tagEdit->lineEdit()->width() >= tagText,
             qPrintable(QStringLiteral("%1 < %2").arg(tagEdit->lineEdit()->width()).arg(tagText)));
    m_view->closePersistentEditor(indexOf(m_alpha, 1));
    QTest::keyClick(tagEdit, Qt::Key_Escape);

    m_one->id = 123456789012ULL;
    auto *edit = qobject_cast<QLineEdit *>(openEditor(m_one, 1));
    QVERIFY(edit);
    QCOMPARE(edit->text(), QStringLiteral("123456789012"));
    QVERIFY(edit->width() > edit->fontMetrics().horizontalAdvance(edit->text()));
    // the other columns keep the cell's width
    QTest::keyClick(edit, Qt::Key_Escape);
    m_view->header()->resizeSection(0, 40);
    QWidget *name = openEditor(m_one, 0);
    QVERIFY(name);
    QVERIFY(name->width() <= 40);
}

void TestEditorDelegate::inPlaceTagCodeOutOfRangeIsRefused()
{
    auto *tagEdit = qobject_cast<EditorTagEdit *>(openEditor(m_alpha, 1));
    QVERIFY(tagEdit);
    tagEdit->lineEdit()->selectAll();
    QTest::keyClicks(tagEdit->lineEdit(), "0x10000");
    QCOMPARE(m_window->messages.last(), QString("Tag code out of range"));
    QTest::keyClick(tagEdit, Qt::Key_Return);
    QCoreApplication::processEvents();
    QCOMPARE(m_alpha->id, quint64(0x1001));
    QCOMPARE(m_stack->count(), 0);
}

void TestEditorDelegate::inPlaceBitNumberMinusOneIsRefused()
{
    auto *edit = qobject_cast<QLineEdit *>(openEditor(m_b1, 1));
    QVERIFY(edit);
    edit->selectAll();
    QTest::keyClicks(edit, "-1");
    QCOMPARE(m_window->messages.last(), QString("Number out of range"));
    QTest::keyClick(edit, Qt::Key_Return);
    QCoreApplication::processEvents();
    QCOMPARE(m_b1->id, quint64(1));
    QCOMPARE(m_stack->count(), 0);
}

void TestEditorDelegate::inPlaceNegativeValueIsStoredSigned()
{
    auto *edit = qobject_cast<QLineEdit *>(openEditor(m_one, 1));
    QVERIFY(edit);
    edit->selectAll();
    QTest::keyClicks(edit, "-20");
    QVERIFY(edit->hasAcceptableInput());
    QTest::keyClick(edit, Qt::Key_Return);
    QCoreApplication::processEvents();
    QCOMPARE(m_one->id, quint64(-20));
    QCOMPARE(indexOf(m_one, 1).data().toString(), QString("  -20"));
    QCOMPARE(m_stack->count(), 1);
    // The whole 64 bits come back on undo and redo.
    m_stack->undo();
    QCOMPARE(m_one->id, quint64(1));
    m_stack->redo();
    QCOMPARE(m_one->id, quint64(-20));
}

void TestEditorDelegate::paintFillsSelectedCell()
{
    // A cell with a short text and no background of its own, selected, in a view that only
    // highlights the text: the whole cell still shows the highlight colour.
    QStyleOptionViewItem option;
    option.rect = QRect(0, 0, 200, 20);
    option.state = QStyle::State_Selected | QStyle::State_Enabled | QStyle::State_Active;
    option.showDecorationSelected = false;
    option.palette.setColor(QPalette::Normal, QPalette::Highlight, QColor(10, 200, 30));
    option.palette.setColor(QPalette::Active, QPalette::Highlight, QColor(10, 200, 30));
    option.font = QFont();
    QImage image(200, 20, QImage::Format_ARGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    m_delegate->paint(&painter, option, indexOf(m_b1, 1));
    painter.end();
    QCOMPARE(image.pixelColor(0, 0), QColor(10, 200, 30));
    QCOMPARE(image.pixelColor(199, 19), QColor(10, 200, 30));
    QCOMPARE(image.pixelColor(199, 0), QColor(10, 200, 30));
}

void TestEditorDelegate::paintLeavesUnselectedCell()
{
    QStyleOptionViewItem option;
    option.rect = QRect(0, 0, 200, 20);
    option.state = QStyle::State_Enabled | QStyle::State_Active;
    option.palette.setColor(QPalette::Normal, QPalette::Highlight, QColor(10, 200, 30));
    QImage image(200, 20, QImage::Format_ARGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    m_delegate->paint(&painter, option, indexOf(m_b1, 1));
    painter.end();
    QCOMPARE(image.pixelColor(199, 19), QColor(Qt::white));
    // A comment line keeps its own light green background.
    image.fill(Qt::white);
    painter.begin(&image);
    m_delegate->paint(&painter, option, indexOf(m_comment, 1));
    painter.end();
    QCOMPARE(image.pixelColor(199, 19), QColor(222, 255, 222));
}

QTEST_MAIN(TestEditorDelegate)
#include "tst_editordelegate.moc"

// The find bar of the main window: which entries match (name, code with and without "0x",
// comment, any case), typing selecting the first match of the whole tree with its parents
// expanded, next and previous wrapping around, "No match", and Escape closing the bar.

#include "editormodel.h"
#include "editorwindow.h"
#include "findbar.h"
#include "item.h"
#include "modal.h"
#include "testfiles.h"
#include "ui_editorwindow.h"

#include <QLabel>
#include <QLineEdit>
#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QUndoStack>

#include <memory>

using namespace ZAT16;

namespace {

// Document order: Power, Mode, (enums), Off, Standby, comment line, Flags, (bits), Ready, Fault,
// Level.
const QByteArray defs = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                        "<zat16>\n"
                        "  <tag name=\"Power\" id=\"0x2001\" comment=\"Main switch\"/>\n"
                        "  <tag name=\"Mode\" id=\"0x1002\">\n"
                        "    <enums display=\"x\">\n"
                        "      <enum name=\"Off\" id=\"0x00\"/>\n"
                        "      <enum name=\"Standby\" id=\"0x1A\" comment=\"low power\"/>\n"
                        "    </enums>\n"
                        "  </tag>\n"
                        "  <!-- a comment line about POWER -->\n"
                        "  <tag name=\"Flags\" id=\"0x7001\">\n"
                        "    <bits>\n"
                        "      <bit name=\"Ready\" id=\"0\"/>\n"
                        "      <bit name=\"Fault\" id=\"12\" comment=\"see manual\"/>\n"
                        "    </bits>\n"
                        "  </tag>\n"
                        "  <tag name=\"Level\" id=\"0x1A03\"/>\n"
                        "</zat16>\n";

// Every entry in document order, as a list: what the search must go along.
QList<const Item *> flatten(const Item *item)
{
    QList<const Item *> items;
    for (const Item *child : item->children) {
        items.append(child);
        items.append(flatten(child));
    }
    return items;
}

// The search spelled out over that list: from just past `from` round once, ending with `from`.
const Item *searchList(const QList<const Item *> &items, const Item *from, const QString &text, bool forward)
{
    const qsizetype count = items.size();
    const qsizetype at = from ? items.indexOf(from) : -1;
    const qsizetype start = forward ? at + 1 : (at < 0 ? count - 1 : at - 1);
    for (qsizetype step = 0; step < count; ++step) {
        const qsizetype i = ((forward ? start + step : start - step) % count + count) % count;
        if (FindBar::matches(items.at(i), text))
            return items.at(i);
    }
    return nullptr;
}

} // namespace

class TestFindBar : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    EditorWindow *m_window = nullptr;

    EditorModel *model() const { return m_window->model(); }
    FindBar *bar() const { return m_window->findBar(); }
    RowTreeView *view() const { return m_window->ui()->m_view; }

    // What the current entry is: its name, or the comment of a comment line, or "(none)".
    QString current() const
    {
        const QModelIndex index = view()->currentIndex();
        if (!index.isValid())
            return QStringLiteral("(none)");
        const Item *item = model()->index2item(index);
        return item->name.isEmpty() ? item->comment.trimmed() : item->name;
    }

    QModelIndex indexOf(const QString &name) const
    {
        const QModelIndexList found
            = model()->match(model()->index(0, 0), Qt::EditRole, name, 1, Qt::MatchExactly | Qt::MatchRecursive);
        return found.isEmpty() ? QModelIndex() : found.first();
    }

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        QCoreApplication::setOrganizationName(QStringLiteral("zatedit-tests"));
        QCoreApplication::setApplicationName(QStringLiteral("tst_findbar"));
        QSettings().clear();
        QVERIFY(m_dir.isValid());
        QVERIFY(TestFiles::writeFile(m_dir.filePath(QStringLiteral("find.zatdef")), defs));
    }

    void init()
    {
        m_window = new EditorWindow;
        m_window->initialize(m_dir.filePath(QStringLiteral("find.zatdef")), QString());
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window));
        QCOMPARE(model()->rowCount(), 5);
    }

    void cleanup()
    {
        TestModal::cancelAll();
        m_window->undoStack()->setClean();
        delete m_window;
        m_window = nullptr;
    }

    void barIsUnderTheTreeAndHidden()
    {
        QVERIFY(bar()->isHidden());
        QCOMPARE(bar()->parentWidget(), m_window->ui()->centralwidget);
        m_window->ui()->m_act_find->trigger();
        QVERIFY(bar()->isVisible());
        QTRY_VERIFY(bar()->geometry().top() >= view()->geometry().bottom());
    }

    void matches_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("first");
        QTest::newRow("part of a name") << "stand"
                                        << "Standby";
        QTest::newRow("name in another case") << "FLAGS"
                                              << "Flags";
        QTest::newRow("part of a comment") << "manual"
                                           << "Fault";
        QTest::newRow("comment in another case") << "LOW POWER"
                                                 << "Standby";
        QTest::newRow("comment line") << "comment line"
                                      << "a comment line about POWER";
        QTest::newRow("code with 0x") << "0x1002"
                                      << "Mode";
        QTest::newRow("code without 0x") << "1002"
                                         << "Mode";
        QTest::newRow("code in lower case") << "0x1a03"
                                            << "Level";
        QTest::newRow("part of a code as shown") << "1a"
                                                 << "Standby";
        QTest::newRow("code with 0x on a value shown in hexadecimal") << "0x1A"
                                                                      << "Standby";
        QTest::newRow("code with 0x on a value shown in decimal") << "0xC"
                                                                  << "Fault";
        QTest::newRow("code in decimal as shown") << "12"
                                                  << "Fault";
        QTest::newRow("part of a tag code after 0x") << "0x7"
                                                     << "Flags";
        QTest::newRow("no match") << "nowhere"
                                  << "(none)";
    }

    // Typing in the field selects the first match of the whole tree.
    void matches()
    {
        QFETCH(QString, text);
        QFETCH(QString, first);
        const QString before = current();
        m_window->ui()->m_act_find->trigger();
        QVERIFY(bar()->isVisible());
        QVERIFY(bar()->lineEdit()->hasFocus());
        QTest::keyClicks(bar()->lineEdit(), text);
        QCOMPARE(bar()->text(), text);
        // Without a match the selection stays where it was.
        QCOMPARE(current(), first == QLatin1String("(none)") ? before : first);
        QCOMPARE(bar()->status(), first == QLatin1String("(none)") ? QStringLiteral("No match") : QString());
    }

    void matchRules_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("all");
        QTest::newRow("power") << "power" << QStringList { "Power", "Standby", "a comment line about POWER" };
        QTest::newRow("0x0") << "0x0" << QStringList { "Power", "Mode", "Off", "Flags", "Ready", "Level" };
        QTest::newRow("empty text") << "" << QStringList();
    }

    // Every entry that matches, through the static search going round the whole tree.
    void matchRules()
    {
        QFETCH(QString, text);
        QFETCH(QStringList, all);
        QStringList found;
        const Item *first = FindBar::search(model()->root(), nullptr, text, true);
        for (const Item *item = first; item && found.size() < 20;) {
            found << (item->name.isEmpty() ? item->comment.trimmed() : item->name);
            item = FindBar::search(model()->root(), item, text, true);
            if (item == first)
                break;
        }
        QCOMPARE(found, all);
        // Backwards from nowhere: the last match first.
        const Item *last = FindBar::search(model()->root(), nullptr, text, false);
        QCOMPARE(last ? (last->name.isEmpty() ? last->comment.trimmed() : last->name) : QString(),
                 all.isEmpty() ? QString() : all.last());
    }

    // The search walks the tree from the current entry without a list of all entries; it must
    // find what a walk along that list finds, from every entry, both ways, also after rows were
    // inserted and removed (rows the items remember must not lead it astray).
    void searchGoesInDocumentOrder_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("weather station") << QStringLiteral(ZAT16_EXAMPLES "/weather-station.zatdef");
        QTest::newRow("battery charger") << QStringLiteral(ZAT16_EXAMPLES "/battery-charger.zatdef");
    }

    void searchGoesInDocumentOrder()
    {
        QFETCH(QString, path);
        const std::unique_ptr<Item> root(m_window->loadDefinitionFile(path));
        QVERIFY(root);
        QVERIFY(root->children.size() > 4);
        // Rows change: one entry moves to the end of its list, another leaves the tree.
        Item *moved = root->takeChild(1);
        root->appendChild(moved);
        const std::unique_ptr<Item> taken(root->takeChild(2));
        const QList<const Item *> items = flatten(root.get());
        const QStringList texts = { QStringLiteral("e"),   QStringLiteral("0x1"),  QStringLiteral("1"),
                                    QStringLiteral("Tag"), QStringLiteral("zzzz"), QStringLiteral("0X00") };
        QList<const Item *> starts = items;
        starts << nullptr << root.get() << taken.get();
        int found = 0;
        for (const QString &text : texts) {
            for (const Item *from : std::as_const(starts)) {
                for (const bool forward : { true, false }) {
                    const Item *expected = searchList(items, from == root.get() ? nullptr : from, text, forward);
                    const Item *actual = FindBar::search(root.get(), from, text, forward);
                    QVERIFY2(actual == expected,
                             qPrintable(QStringLiteral("\"%1\" %2 from %3: %4, not %5")
                                            .arg(text, forward ? QStringLiteral("forward") : QStringLiteral("back"))
                                            .arg(items.indexOf(from))
                                            .arg(items.indexOf(actual))
                                            .arg(items.indexOf(expected))));
                    found += expected != nullptr;
                }
            }
        }
        QVERIFY(found > items.size());
    }

    // A name or comment matches when it contains the text ignoring case, whatever the text
    // starts with (the search for the first character first must not miss a match), also with
    // characters that fold to ASCII letters (the Kelvin sign, the long s, the dotted capital I).
    void matchIgnoresCaseAsContainsDoes()
    {
        const QStringList words
            = { QStringLiteral("Power"),     QStringLiteral("POWERpower"), QStringLiteral("\u212Aelvin"),
                QStringLiteral("Kelvin"),    QStringLiteral("Mo\u017Fe"),  QStringLiteral("MOSE"),
                QStringLiteral("\u0130nfo"), QStringLiteral("info"),       QStringLiteral("Stra\u00DFe"),
                QStringLiteral("0x1A-2"),    QStringLiteral("aaab"),       QStringLiteral("") };
        const QStringList texts
            = { QStringLiteral("power"), QStringLiteral("P"),       QStringLiteral("kel"),  QStringLiteral("KELVIN"),
                QStringLiteral("mose"),  QStringLiteral("S"),       QStringLiteral("info"), QStringLiteral("\u00DF"),
                QStringLiteral("a-2"),   QStringLiteral("aab"),     QStringLiteral("-"),    QStringLiteral("x1a"),
                QStringLiteral("wer"),   QStringLiteral("powerp"),  QStringLiteral("OSE"),  QStringLiteral("kelv"),
                QStringLiteral("sE"),    QStringLiteral("\u00DFe"), QStringLiteral("1a-") };
        int found = 0;
        for (const QString &word : words) {
            for (const QString &text : texts) {
                Item byName;
                byName.type = Tag;
                byName.name = word;
                Item byComment;
                byComment.type = Tag;
                byComment.comment = word;
                const bool expected = word.contains(text, Qt::CaseInsensitive);
                QVERIFY2(FindBar::matches(&byName, text) == expected, qPrintable(word + QLatin1Char('/') + text));
                QVERIFY2(FindBar::matches(&byComment, text) == expected, qPrintable(word + QLatin1Char('/') + text));
                found += expected;
            }
        }
        QVERIFY(found > 10);
    }

    void hiddenRowsAreFoundAndOpened()
    {
        QVERIFY(!view()->isExpanded(indexOf(QStringLiteral("Flags"))));
        m_window->showFindBar(QStringLiteral("fault"));
        QCOMPARE(current(), QStringLiteral("Fault"));
        const QModelIndex fault = view()->currentIndex();
        QVERIFY(view()->isExpanded(fault.parent()));
        QVERIFY(view()->isExpanded(fault.parent().parent()));
        QVERIFY(view()->selectionModel()->isRowSelected(fault.row(), fault.parent()));
        QVERIFY(!view()->visualRect(fault).isEmpty());
        // Entries elsewhere stay closed.
        QVERIFY(!view()->isExpanded(indexOf(QStringLiteral("Mode"))));
    }

    void nextWrapsAround()
    {
        m_window->showFindBar(QStringLiteral("power"));
        QCOMPARE(current(), QStringLiteral("Power"));
        QStringList seen;
        for (int i = 0; i < 4; ++i) {
            m_window->ui()->m_act_find_next->trigger();
            seen << current();
        }
        QCOMPARE(seen, QStringList({ "Standby", "a comment line about POWER", "Power", "Standby" }));
    }

    void previousWrapsAround()
    {
        m_window->showFindBar(QStringLiteral("power"));
        QCOMPARE(current(), QStringLiteral("Power"));
        QStringList seen;
        for (int i = 0; i < 4; ++i) {
            m_window->ui()->m_act_find_previous->trigger();
            seen << current();
        }
        QCOMPARE(seen, QStringList({ "a comment line about POWER", "Standby", "Power", "a comment line about POWER" }));
    }

    // F3 goes on from the entry the user selected, not from the last match.
    void nextStartsAtTheSelectedEntry()
    {
        m_window->showFindBar(QStringLiteral("power"));
        m_window->setCurrentItem(indexOf(QStringLiteral("Flags")));
        m_window->ui()->m_act_find_next->trigger();
        QCOMPARE(current(), QStringLiteral("Power"));
        m_window->setCurrentItem(indexOf(QStringLiteral("Off")));
        m_window->ui()->m_act_find_previous->trigger();
        QCOMPARE(current(), QStringLiteral("Power"));
    }

    void onlyMatchIsFoundAgain()
    {
        m_window->showFindBar(QStringLiteral("level"));
        QCOMPARE(current(), QStringLiteral("Level"));
        m_window->ui()->m_act_find_next->trigger();
        QCOMPARE(current(), QStringLiteral("Level"));
        m_window->ui()->m_act_find_previous->trigger();
        QCOMPARE(current(), QStringLiteral("Level"));
        QCOMPARE(bar()->status(), QString());
    }

    void returnKeysInTheField()
    {
        m_window->showFindBar(QStringLiteral("power"));
        QTest::keyClick(bar()->lineEdit(), Qt::Key_Return);
        QCOMPARE(current(), QStringLiteral("Standby"));
        QTest::keyClick(bar()->lineEdit(), Qt::Key_Return, Qt::ShiftModifier);
        QCOMPARE(current(), QStringLiteral("Power"));
    }

    void noMatchKeepsTheSelection()
    {
        m_window->setCurrentItem(indexOf(QStringLiteral("Mode")));
        m_window->showFindBar(QStringLiteral("nothing like this"));
        QCOMPARE(bar()->status(), QStringLiteral("No match"));
        QCOMPARE(current(), QStringLiteral("Mode"));
        m_window->ui()->m_act_find_next->trigger();
        QCOMPARE(current(), QStringLiteral("Mode"));
        QCOMPARE(bar()->findChild<QLabel *>(QStringLiteral("m_lbl_status"))->text(), QStringLiteral("No match"));
        // Clearing the field clears the note.
        bar()->lineEdit()->selectAll();
        QTest::keyClick(bar()->lineEdit(), Qt::Key_Backspace);
        QCOMPARE(bar()->status(), QString());
    }

    void nextWithoutTextOpensTheBar()
    {
        QVERIFY(bar()->isHidden());
        m_window->setCurrentItem(indexOf(QStringLiteral("Level")));
        m_window->ui()->m_act_find_next->trigger();
        QVERIFY(bar()->isVisible());
        QVERIFY(bar()->lineEdit()->hasFocus());
        QCOMPARE(current(), QStringLiteral("Level"));
    }

    void escapeClosesTheBar()
    {
        m_window->activateWindow();
        m_window->showFindBar(QStringLiteral("mode"));
        QVERIFY(bar()->isVisible());
        QTRY_VERIFY(bar()->lineEdit()->hasFocus());
        QTest::keyClick(bar()->lineEdit(), Qt::Key_Escape);
        QVERIFY(bar()->isHidden());
        QVERIFY(view()->hasFocus());
        // The selection made by the search stays.
        QCOMPARE(current(), QStringLiteral("Mode"));
    }

    void closeButtonClosesTheBar()
    {
        m_window->showFindBar(QStringLiteral("mode"));
        QTest::mouseClick(bar()->findChild<QWidget *>(QStringLiteral("m_pb_close")), Qt::LeftButton);
        QVERIFY(bar()->isHidden());
    }

    void findAgainSelectsTheText()
    {
        m_window->showFindBar(QStringLiteral("mode"));
        m_window->ui()->m_act_find->trigger();
        QCOMPARE(bar()->lineEdit()->selectedText(), QStringLiteral("mode"));
    }
};

QTEST_MAIN(TestFindBar)
#include "tst_findbar.moc"

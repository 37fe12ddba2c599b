// Tests of the marks: the reasons of each kind of marked entry, the columns each reason marks,
// the comment lines, and when the collision flags are asked for.

#include "item.h"
#include "marks.h"

#include <QtTest>

#include <memory>

using namespace ZAT16;

namespace {

Item *entry(Item *parent, ItemType type, const QString &name, quint64 id, bool hasId)
{
    auto *item = new Item;
    item->type = type;
    item->name = name;
    item->id = id;
    item->hasId = hasId;
    parent->appendChild(item);
    return item;
}

// The marked columns as text: "012" for all three, "-" for none, "c" for a comment mark.
QString columns(const Item *item)
{
    QString text;
    for (int column = 0; column < 3; ++column) {
        const Marks::CellMark mark = Marks::cellMark(item, column, [item] { return item->findCollision(); });
        if (mark == Marks::ProblemMark)
            text += QString::number(column);
        else if (mark == Marks::CommentMark)
            text += QLatin1Char('c');
    }
    return text.isEmpty() ? QStringLiteral("-") : text;
}

// The same for the columns whose cellReasons() are not empty, and which reasons each gives.
QString reasonColumns(const Item *item, QList<int> *reasons)
{
    QString text;
    for (int column = 0; column < 3; ++column) {
        QString invalid;
        const Marks::Reasons found = Marks::cellReasons(item, column, item->findCollision(), &invalid);
        reasons->append(int(found));
        if (found)
            text += QString::number(column);
    }
    return text.isEmpty() ? QStringLiteral("-") : text;
}

} // namespace

class TestMarks : public QObject
{
    Q_OBJECT

private slots:
    void entries_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("hasId");
        QTest::addColumn<QString>("comment");
        QTest::addColumn<bool>("withChild");
        QTest::addColumn<int>("reasons");
        QTest::addColumn<QString>("columns");

        QTest::newRow("complete tag") << int(Tag) << "A" << true << "" << false << 0 << "-";
        QTest::newRow("name without code")
            << int(Tag) << "A" << false << "" << false << int(Marks::NameWithoutCode) << "01";
        QTest::newRow("code without name")
            << int(Bit) << "" << true << "" << false << int(Marks::CodeWithoutName) << "01";
        QTest::newRow("nameless value with a comment") << int(Enum) << "" << true << "note" << false << 0 << "-";
        QTest::newRow("nameless bit with a comment")
            << int(Bit) << "" << true << "note" << false << int(Marks::CodeWithoutName) << "01";
        QTest::newRow("invalid name") << int(Tag) << "1st" << true << "" << false << int(Marks::InvalidName) << "0";
        QTest::newRow("invalid name without code")
            << int(Tag) << "Tag" << false << "" << false << int(Marks::NameWithoutCode | Marks::InvalidName) << "01";
        QTest::newRow("incomplete parent")
            << int(Enum) << "" << false << "" << true << int(Marks::IncompleteParent) << "012";
        QTest::newRow("nameless value with a comment and entries")
            << int(Enum) << "" << true << "note" << true << int(Marks::IncompleteParent) << "012";
        // The missing code says it already; the mark still covers every column.
        QTest::newRow("name without code with entries")
            << int(Tag) << "A" << false << "" << true << int(Marks::NameWithoutCode) << "012";
        QTest::newRow("blank line") << int(Tag) << "" << false << "" << false << 0 << "-";
        QTest::newRow("comment line") << int(Enum) << "" << false << "note" << false << 0 << "ccc";
        QTest::newRow("list") << int(Enums) << "" << false << "" << true << 0 << "-";
    }

    void entries()
    {
        QFETCH(int, type);
        QFETCH(QString, name);
        QFETCH(bool, hasId);
        QFETCH(QString, comment);
        QFETCH(bool, withChild);
        QFETCH(int, reasons);
        QFETCH(QString, columns);

        Item parent;
        parent.type = Enums;
        Item *item = entry(&parent, ItemType(type), name, 1, hasId);
        item->comment = comment;
        if (withChild)
            entry(item, Enum, QStringLiteral("X"), 1, true);
        QCOMPARE(int(Marks::reasons(item, item->findCollision())), reasons);
        QCOMPARE(::columns(item), columns);
        // The reasons a cell shows mark exactly the cells that are marked, and come from the
        // entry's reasons; a comment line shows none.
        QList<int> cellReasons;
        QCOMPARE(reasonColumns(item, &cellReasons), columns == QLatin1String("ccc") ? QStringLiteral("-") : columns);
        for (int found : std::as_const(cellReasons))
            QCOMPARE(found & ~reasons, 0);
    }

    // Each cell names only its own faults: the name column the refused name, the code column
    // not; a collision only in the column of the key that collides.
    void cellReasonsOfEachColumn()
    {
        Item root;
        root.type = Root;
        Item *reserved = entry(&root, Tag, QStringLiteral("Tag"), 0, false);
        QString invalid;
        QCOMPARE(int(Marks::cellReasons(reserved, 0, {}, &invalid)), int(Marks::NameWithoutCode | Marks::InvalidName));
        QCOMPARE(invalid, QStringLiteral("The name \"Tag\" is reserved."));
        QCOMPARE(int(Marks::cellReasons(reserved, 1, {}, &invalid)), int(Marks::NameWithoutCode));
        QCOMPARE(int(Marks::cellReasons(reserved, 2, {}, &invalid)), 0);
        Item *a = entry(&root, Tag, QStringLiteral("A"), 0x1001, true);
        entry(&root, Tag, QStringLiteral("A"), 0x1001, true);
        QCOMPARE(int(Marks::cellReasons(a, 0, a->findCollision(), &invalid)), int(Marks::NameCollision));
        QCOMPARE(int(Marks::cellReasons(a, 1, a->findCollision(), &invalid)), int(Marks::CodeCollision));
        QCOMPARE(int(Marks::cellReasons(a, 2, a->findCollision(), &invalid)), 0);
    }

    void collisions()
    {
        Item root;
        root.type = Root;
        Item *a = entry(&root, Tag, QStringLiteral("A"), 0x1001, true);
        Item *sameName = entry(&root, Tag, QStringLiteral("A"), 0x1002, true);
        Item *sameCode = entry(&root, Tag, QStringLiteral("B"), 0x1001, true);
        QCOMPARE(int(Marks::reasons(a, a->findCollision())), int(Marks::NameCollision | Marks::CodeCollision));
        QCOMPARE(columns(a), QStringLiteral("01"));
        QCOMPARE(int(Marks::reasons(sameName, sameName->findCollision())), int(Marks::NameCollision));
        QCOMPARE(columns(sameName), QStringLiteral("0"));
        QCOMPARE(int(Marks::reasons(sameCode, sameCode->findCollision())), int(Marks::CodeCollision));
        QCOMPARE(columns(sameCode), QStringLiteral("1"));
    }

    void invalidNameMessage()
    {
        Item root;
        Item *item = entry(&root, Tag, QStringLiteral("1st"), 1, true);
        QString message;
        QCOMPARE(int(Marks::reasons(item, {}, &message)), int(Marks::InvalidName));
        QCOMPARE(message, QStringLiteral("Name must not start with a digit."));
    }

    // The collision flags are asked for only when the entry's own faults in its name and code
    // leave the cell unmarked.
    void collisionsAskedLate()
    {
        Item root;
        Item *nameOnly = entry(&root, Tag, QStringLiteral("A"), 0, false);
        Item *invalid = entry(&root, Tag, QStringLiteral("1st"), 1, true);
        Item *complete = entry(&root, Tag, QStringLiteral("B"), 2, true);
        int asked = 0;
        auto lookup = [&asked] {
            ++asked;
            return Item::CollisionFlags();
        };
        QCOMPARE(int(Marks::cellMark(nameOnly, 0, lookup)), int(Marks::ProblemMark));
        QCOMPARE(int(Marks::cellMark(nameOnly, 1, lookup)), int(Marks::ProblemMark));
        QCOMPARE(asked, 0);
        QCOMPARE(int(Marks::cellMark(nameOnly, 2, lookup)), int(Marks::NoMark));
        QCOMPARE(asked, 1);
        QCOMPARE(int(Marks::cellMark(invalid, 0, lookup)), int(Marks::ProblemMark));
        QCOMPARE(asked, 1);
        QCOMPARE(int(Marks::cellMark(invalid, 1, lookup)), int(Marks::NoMark));
        QCOMPARE(asked, 2);
        QCOMPARE(int(Marks::cellMark(complete, 0, lookup)), int(Marks::NoMark));
        QCOMPARE(asked, 3);
    }
};

QTEST_GUILESS_MAIN(TestMarks)
#include "tst_marks.moc"

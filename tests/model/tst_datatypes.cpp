// Tests of the table of data types: one entry per DataType value and the nibble 8, the texts of
// each place side by side, and the rows of the tag selector.

#include "datatypes.h"
#include "tagcodes.h"

#include <QtTest>

using namespace ZAT16;

class TestDataTypes : public QObject
{
    Q_OBJECT

private slots:
    void entries_data();
    void entries();
    void noEntry_data();
    void noEntry();
    void escapeNibble();
    void selectorRows();
    void typeNameAllocatesNothing();
};

void TestDataTypes::entries_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("enumName");
    QTest::addColumn<QString>("typeName");
    QTest::addColumn<QString>("tooltip");
    QTest::addColumn<QString>("icon");
    QTest::addColumn<int>("row");
    QTest::addColumn<QString>("selectorText");

    auto row = [](DataType type,
                  const char *enumName,
                  const char *typeName,
                  const char *tooltip,
                  const char *icon,
                  int row,
                  const char *selectorText) {
        QTest::newRow(enumName) << int(type) << QString::fromLatin1(enumName) << QString::fromLatin1(typeName)
                                << QString::fromLatin1(tooltip) << QStringLiteral(":/icons/%1.png").arg(icon) << row
                                << QString::fromLatin1(selectorText);
    };
    row(Binary, "Binary", "Binary", "Binary", "i16_data", 0, "0 - Binary");
    row(Integer, "Integer", "Integer", "Integer", "i16_int", 1, "1 - Integer");
    row(Bool, "Bool", "Bool", "Bool", "i16_bool", 2, "2 - Bool");
    row(String, "String", "String", "String", "i16_string", 3, "3 - String");
    row(Date, "Date", "Date", "Date", "i16_date", 4, "4 - Date");
    row(Time, "Time", "Time", "Time", "i16_time", 5, "5 - Time");
    row(DateTime, "DateTime", "DateTime", "DateTime", "i16_datetime", 6, "6 - DateTime");
    row(BitArray, "BitArray", "BitArray", "BitArray", "i16_list_bullets", 7, "7 - BitArray");
    row(NetworkAddress, "NetworkAddress", "IPAddress", "Network-Address", "i16_network", 11, "9 - Network address");
    row(List, "List", "List", "List", "i16_list", 12, "C - List");
    row(Request, "Request", "Request", "Request", "i16_question", 13, "D - Request");
    row(Answer, "Answer", "Answer", "Answer", "i16_answer", 14, "E - Answer");
    row(Message, "Message", "Message", "Message", "i16_message", 15, "F - Message");
    // The extended types have no nibble of their own: their codes show as "Int64".
    row(ExtPoint, "ExtPoint", nullptr, "Point", "i16_point", 8, "80 - Point");
    row(ExtRect, "ExtRect", nullptr, "Rect", "i16_rect", 9, "81 - Rect");
    row(ExtSize, "ExtSize", nullptr, "Size", "i16_size", 10, "82 - Size");
}

void TestDataTypes::entries()
{
    QFETCH(int, type);
    QFETCH(QString, enumName);
    QFETCH(QString, typeName);
    QFETCH(QString, tooltip);
    QFETCH(QString, icon);
    QFETCH(int, row);
    QFETCH(QString, selectorText);

    const DataTypes::Entry *entry = DataTypes::find(type);
    QVERIFY(entry);
    QCOMPARE(entry->value, type);
    QCOMPARE(entry->enumName.toString(), enumName);
    QCOMPARE(DataTypes::enumName(type), enumName);
    QCOMPARE(entry->typeName.isNull(), typeName.isNull());
    QCOMPARE(entry->typeName.toString(), typeName);
    if (type < 16)
        QCOMPARE(DataTypes::typeName(type), typeName);
    QCOMPARE(QString::fromLatin1(DataTypes::tooltip(type)), tooltip);
    QCOMPARE(QString::fromLatin1(DataTypes::iconPath(type)), icon);
    QCOMPARE(entry->selectorRow, row);
    QCOMPARE(DataTypes::atSelectorRow(row), entry);
    QCOMPARE(QString::fromLatin1(entry->selectorPrefix) + QString::fromLatin1(entry->selectorName), selectorText);
}

void TestDataTypes::noEntry_data()
{
    QTest::addColumn<int>("type");
    QTest::newRow("-1") << -1;
    QTest::newRow("10") << 10;
    QTest::newRow("11") << 11;
    QTest::newRow("16") << 16;
    QTest::newRow("0x7F") << 0x7F;
    QTest::newRow("0x83") << 0x83;
    QTest::newRow("0x8F") << 0x8F;
}

void TestDataTypes::noEntry()
{
    QFETCH(int, type);
    QVERIFY(!DataTypes::find(type));
    QVERIFY(DataTypes::enumName(type).isNull());
    QVERIFY(DataTypes::typeName(type).isNull());
    QVERIFY(!DataTypes::tooltip(type));
    QVERIFY(!DataTypes::iconPath(type));
}

// 8 is no DataType, but the nibble of every extended code has a name.
void TestDataTypes::escapeNibble()
{
    const DataTypes::Entry *entry = DataTypes::find(8);
    QVERIFY(entry);
    QCOMPARE(DataTypes::typeName(8), QStringLiteral("Int64"));
    QVERIFY(DataTypes::enumName(8).isNull());
    QVERIFY(!DataTypes::tooltip(8));
    QVERIFY(!DataTypes::iconPath(8));
    QCOMPARE(entry->selectorRow, -1);
}

void TestDataTypes::selectorRows()
{
    for (int row = 0; row < 16; ++row) {
        const DataTypes::Entry *entry = DataTypes::atSelectorRow(row);
        QVERIFY(entry);
        QCOMPARE(entry->selectorRow, row);
    }
    QVERIFY(!DataTypes::atSelectorRow(-1));
    QVERIFY(!DataTypes::atSelectorRow(16));
}

// The generators ask for the name of every tag's type: the names are literals, not copies.
void TestDataTypes::typeNameAllocatesNothing()
{
    const QString first = DataTypes::typeName(1);
    const QString second = DataTypes::typeName(1);
    QCOMPARE(first, QStringLiteral("Integer"));
    QCOMPARE(first.constData(), second.constData());
}

QTEST_GUILESS_MAIN(TestDataTypes)

#include "tst_datatypes.moc"

// Every file the program saves opens again with the same values: random trees with every display
// mode and digit count, negative and 64-bit numbers, comments with markup characters, comment
// lines and blank lines are saved, loaded and compared item by item, then saved once more and
// compared byte by byte.

#include "item.h"
#include "parser.h"
#include "testfiles.h"
#include "treemaker.h"
#include "writerxml.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QSet>
#include <QtTest>

#include <memory>

using namespace ZAT16;

namespace {

QString describe(const Item *item)
{
    return QStringLiteral("type %1 name '%2' id %3/%4 display %5/%6 comment '%7' secure %8 children %9")
        .arg(item->type)
        .arg(item->name)
        .arg(item->id)
        .arg(item->hasId)
        .arg(item->display.mode)
        .arg(item->display.digits)
        .arg(item->comment)
        .arg(item->secure)
        .arg(item->children.size());
}

// The first difference between two trees, or an empty string.
QString difference(const Item *a, const Item *b, const QString &path)
{
    const QString da = describe(a);
    const QString db = describe(b);
    if (da != db)
        return path + QStringLiteral(":\n  saved  ") + da + QStringLiteral("\n  loaded ") + db;
    for (int i = 0; i < a->children.size(); ++i) {
        const QString d = difference(a->child(i), b->child(i), path + QLatin1Char('/') + QString::number(i));
        if (!d.isEmpty())
            return d;
    }
    return QString();
}

} // namespace

class TestRoundTripProperty : public QObject
{
    Q_OBJECT

private slots:
    void savedFilesOpenWithTheSameValues_data()
    {
        QTest::addColumn<quint32>("seed");
        for (quint32 seed = 1; seed <= 300; ++seed)
            QTest::newRow(qPrintable(QStringLiteral("seed %1").arg(seed))) << seed;
    }

    void savedFilesOpenWithTheSameValues()
    {
        QFETCH(quint32, seed);
        TreeMaker maker(seed);
        const std::unique_ptr<Item> original = maker.root();

        WriterXml writer;
        const QByteArray saved = writer.encode(original.get());
        QVERIFY(!saved.isEmpty());

        // On a failure the saved text is kept for a look.
        const QString keep = QDir::temp().filePath(QStringLiteral("zat16-roundtrip-seed-%1.zatdef").arg(seed));
        TestFiles::writeFile(keep, saved);

        Parser parser;
        QVERIFY2(parser.parse(saved), qPrintable(parser.formatError() + QStringLiteral("\nsaved: ") + keep));
        QCOMPARE(parser.warnings, QString());
        const std::unique_ptr<Item> loaded(parser.takeRoot());
        // The root's comment holds the document type declaration, which reading keeps as it was.
        QCOMPARE(loaded->comment, original->comment);
        loaded->comment = original->comment;
        const QString d = difference(original.get(), loaded.get(), QStringLiteral("root"));
        QVERIFY2(d.isEmpty(), qPrintable(d + QStringLiteral("\nsaved: ") + keep));

        WriterXml again;
        QCOMPARE(again.encode(loaded.get()), saved);
        QFile::remove(keep);
    }
};

QTEST_GUILESS_MAIN(TestRoundTripProperty)
#include "tst_roundtripproperty.moc"

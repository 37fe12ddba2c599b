// Every file the program saves opens again with the same values: random trees with every display
// mode and digit count, negative and 64-bit numbers, comments with markup characters, comment
// lines and blank lines are saved, loaded and compared item by item, then saved once more and
// compared byte by byte.

#include "item.h"
#include "parser.h"
#include "writerxml.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QSet>
#include <QtTest>

#include <memory>

using namespace ZAT16;

namespace {

class TreeMaker
{
public:
    explicit TreeMaker(quint32 seed)
        : m_rng(seed)
    {
    }

    std::unique_ptr<Item> root()
    {
        auto root = std::make_unique<Item>();
        root->type = Root;
        if (chance(10))
            root->comment = QStringLiteral("<!DOCTYPE zat16>");
        if (chance(20))
            root->display = display();
        const int tags = bounded(12);
        for (int i = 0; i < tags; ++i) {
            if (i > 0 && chance(15))
                addBlank(root.get(), Tag);
            if (chance(15))
                addComment(root.get(), Tag);
            root->appendChild(tag(i));
        }
        return root;
    }

private:
    bool chance(int percent) { return int(m_rng.bounded(100)) < percent; }
    int bounded(int n) { return int(m_rng.bounded(n)); }

    DisplayMode display()
    {
        DisplayMode d;
        d.mode = bounded(6);
        d.digits = chance(50) ? bounded(21) : 0;
        return d;
    }

    QString name()
    {
        static const char first[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ_";
        static const char rest[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ_0123456789";
        QString n(QLatin1Char(first[bounded(sizeof(first) - 1)]));
        const int length = bounded(12);
        for (int i = 0; i < length; ++i)
            n += QLatin1Char(rest[bounded(sizeof(rest) - 1)]);
        return n == QLatin1String("Tag") ? QStringLiteral("Tag_") : n;
    }

    // Free text as users type it, with the characters that need escaping in attributes.
    QString text(bool forComment)
    {
        static const QString pieces[] = {
            QStringLiteral("plain"), QStringLiteral(" "), QStringLiteral("\""), QStringLiteral("'"),
            QStringLiteral("&"), QStringLiteral("<"), QStringLiteral(">"), QStringLiteral("\t"),
            QStringLiteral("\n"), QStringLiteral("\r"), QStringLiteral("ünï"), QStringLiteral("日本"),
            QStringLiteral("😀"), QStringLiteral("&amp;"), QStringLiteral("]]>"), QStringLiteral("-"),
        };
        QString t;
        const int length = 1 + bounded(8);
        for (int i = 0; i < length; ++i) {
            const QString &piece = pieces[bounded(16)];
            // Comment lines are written raw: no carriage returns (they do not survive reading)
            // and no double dashes (XML does not allow them there).
            if (forComment && (piece == QLatin1String("\r") || piece == QLatin1String("-")))
                continue;
            t += piece;
        }
        if (forComment && t.trimmed().isEmpty())
            t = QStringLiteral("note");
        return t;
    }

    quint64 number()
    {
        switch (bounded(4)) {
        case 0:
            return m_rng.bounded(64);
        case 1:
            return quint64(-qint64(m_rng.bounded(1000)));
        case 2:
            return m_rng.generate64();
        default:
            return m_rng.bounded(100000);
        }
    }

    void addBlank(Item *parent, ItemType type)
    {
        auto *blank = new Item;
        blank->type = type;
        parent->appendChild(blank);
    }

    void addComment(Item *parent, ItemType type)
    {
        auto *comment = new Item;
        comment->type = type;
        comment->comment = text(true);
        parent->appendChild(comment);
    }

    Item *tag(int i)
    {
        auto *tag = new Item;
        tag->type = Tag;
        tag->name = name() + QString::number(i);
        // Codes, numbers and names are unique where reading warns about duplicates.
        tag->hasId = chance(90);
        do {
            tag->id = tag->hasId ? m_rng.bounded(0x10000) : 0;
        } while (tag->hasId && m_codes.contains(tag->id));
        m_codes.insert(tag->id);
        if (chance(40))
            tag->comment = text(false);
        tag->secure = chance(20);
        if (chance(30))
            tag->display = display();
        // Bit lists come before enumeration lists, as the reader sorts them.
        if (chance(40))
            tag->appendChild(list(Bits, Bit));
        const int enumLists = chance(50) ? (chance(10) ? 2 : 1) : 0;
        for (int j = 0; j < enumLists; ++j)
            tag->appendChild(list(Enums, Enum));
        return tag;
    }

    Item *list(ItemType listType, ItemType valueType)
    {
        auto *list = new Item;
        list->type = listType;
        if (chance(60))
            list->display = display();
        const int values = bounded(10);
        bool lastBlank = true;
        for (int i = 0; i < values; ++i) {
            if (!lastBlank && i + 1 < values && chance(15)) {
                addBlank(list, valueType);
                lastBlank = true;
                continue;
            }
            if (chance(10)) {
                addComment(list, valueType);
                lastBlank = false;
                continue;
            }
            auto *value = new Item;
            value->type = valueType;
            value->hasId = chance(95);
            do {
                value->id = value->hasId ? number() : 0;
            } while (value->hasId && list->findBut(unsigned(value->id), nullptr) >= 0);
            // Nameless values need a code to stay values (without one they read as comments).
            if (!value->hasId || chance(90))
                value->name = name() + QString::number(i);
            if (chance(30))
                value->comment = text(false);
            if (chance(40))
                value->display = display();
            value->secure = chance(5);
            list->appendChild(value);
            lastBlank = false;
        }
        // A blank line cannot end a list.
        while (!list->children.isEmpty() && list->children.last()->isNewline())
            list->removeChild(int(list->children.size()) - 1);
        // An empty list with a comment would read as a comment line.
        if (!list->children.isEmpty() && chance(20))
            list->comment = text(false);
        return list;
    }

    QRandomGenerator m_rng;
    QSet<quint64> m_codes;
};

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
        QFile file(keep);
        if (file.open(QIODevice::WriteOnly))
            file.write(saved);
        file.close();

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

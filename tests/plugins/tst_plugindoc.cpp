// The plugin zatgen-doc, run by name through the built zatgen: its HTML page is well-formed for
// xmllint --html, and its tables, read back with python3's HTML parser, hold exactly the file's
// tags (code, name, type, comment, secure, links to the lists), its requests beside their
// answers, and every value and bit of every list, for both examples and random files; every link
// leads to an anchor of the page. The Markdown file has the same tags.

#include "item.h"
#include "plugintest.h"
#include "problems.h"
#include "zatgenrun.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

using namespace ZAT16;
using TestFiles::readFile;
using TestFiles::writeFile;
using ZatgenRun::Run;

namespace {

const int randomFiles = 100;

QStringList texts(const QJsonValue &row)
{
    QStringList list;
    const QJsonArray cells = row.toArray();
    for (const QJsonValue &cell : cells)
        list << cell.toString();
    return list;
}

// The page against the tree, table by table.
void comparePage(const QJsonObject &page, const Item *root)
{
    const QJsonObject tables = page.value(QLatin1String("tables")).toObject();
    const QJsonObject links = page.value(QLatin1String("links")).toObject();
    QStringList ids;
    for (const QJsonValue &id : page.value(QLatin1String("ids")).toArray())
        ids << id.toString();
    for (const QJsonValue &href : page.value(QLatin1String("hrefs")).toArray()) {
        QVERIFY2(href.toString().startsWith(QLatin1Char('#')), qPrintable(href.toString()));
        QVERIFY2(ids.contains(href.toString().mid(1)), qPrintable(href.toString()));
    }
    QCOMPARE(QSet<QString>(ids.cbegin(), ids.cend()).size(), ids.size());

    const QJsonArray tagRows = tables.value(QLatin1String("table-tags")).toArray();
    const QJsonArray tagLinks = links.value(QLatin1String("table-tags")).toArray();
    QList<const Item *> tags;
    for (const Item *tag : root->children) {
        if (!tag->isComment() && !tag->isNewline())
            tags << tag;
    }
    QCOMPARE(tagRows.size(), tags.size());
    int listTables = 0;
    QList<QStringList> pairs;
    for (int i = 0; i < tags.size(); ++i) {
        const Item *tag = tags.at(i);
        const QString code = tag->hasId ? tag2hex(unsigned(tag->id)) : QString();
        QStringList kinds;
        for (const Item *list : tag->children)
            kinds << (list->type == Enums ? QStringLiteral("Enumeration") : QStringLiteral("Bits"));
        QCOMPARE(texts(tagRows.at(i)),
                 QStringList({ code,
                               tag->name,
                               tag->hasId ? typeName(unsigned(tag->id)) : QString(),
                               tag->comment,
                               tag->secure ? QStringLiteral("yes") : QString(),
                               kinds.join(QLatin1Char(' ')) }));
        // The lists column links to one table per list, holding the list's entries.
        const QJsonArray listLinks = tagLinks.at(i).toArray().at(5).toArray();
        QCOMPARE(listLinks.size(), tag->children.size());
        for (int l = 0; l < tag->children.size(); ++l) {
            const Item *list = tag->children.at(l);
            const QString table = QStringLiteral("table-") + listLinks.at(l).toString().mid(1);
            QVERIFY2(tables.contains(table), qPrintable(table));
            ++listTables;
            const QJsonArray rows = tables.value(table).toArray();
            int r = 0;
            for (const Item *entry : list->children) {
                if (entry->isComment() || entry->isNewline())
                    continue;
                QVERIFY(r < rows.size());
                QCOMPARE(texts(rows.at(r++)),
                         QStringList({ entry->hasId ? entry->formatId() : QString(), entry->name, entry->comment }));
            }
            QCOMPARE(r, rows.size());
        }
        if (tag->hasId && ((tag->id >> 12) & 0xF) == Request) {
            const quint64 answerCode = 0xE000 | (tag->id & 0xFFF);
            const Item *answer = nullptr;
            for (const Item *other : std::as_const(tags)) {
                if (other->hasId && other->id == answerCode) {
                    answer = other;
                    break;
                }
            }
            pairs << QStringList(
                { code, tag->name, tag2hex(unsigned(answerCode)), answer ? answer->name : QStringLiteral("(none)") });
        }
    }
    QCOMPARE(tables.size(), 2 + listTables);
    const QJsonArray pairRows = tables.value(QLatin1String("table-pairs")).toArray();
    QCOMPARE(pairRows.size(), pairs.size());
    for (int p = 0; p < pairs.size(); ++p)
        QCOMPARE(texts(pairRows.at(p)), pairs.at(p));
    QCOMPARE(page.value(QLatin1String("problems")).toInt(), int(Problems::find(root).size()));
}

bool lint(const QStringList &pages, QByteArray *output)
{
    const ProcessRun::Run run
        = PluginTest::runProgram(QStringLiteral("xmllint"),
                                 QStringList { QStringLiteral("--html"), QStringLiteral("--noout") } + pages);
    *output = run.out + run.err;
    return run.status == 0 && output->isEmpty();
}

// The tables of the pages, read by read_tables.py.
QJsonArray readPages(const QStringList &pages)
{
    const ProcessRun::Run run
        = PluginTest::runProgram(QStringLiteral("python3"),
                                 QStringList { QStringLiteral(ZAT16_PLUGIN_TESTS "/read_tables.py") } + pages);
    if (run.status != 0)
        qWarning("%s", run.err.constData());
    return QJsonDocument::fromJson(run.out).array();
}

Run generate(const QString &input, const QString &out, const QStringList &options = {})
{
    QStringList arguments
        = { QStringLiteral("--plugin"), QStringLiteral("zatgen-doc"), QStringLiteral("--plugin-out"), out };
    for (const QString &option : options)
        arguments << QStringLiteral("--plugin-opt") << option;
    return ZatgenRun::run(arguments << input);
}

} // namespace

class TestPluginDoc : public QObject
{
    Q_OBJECT

private slots:
    // The plugins are Python 3 scripts.
    void initTestCase()
    {
        if (QStandardPaths::findExecutable(QStringLiteral("python3")).isEmpty())
            QSKIP("python3 is not installed");
        if (QStandardPaths::findExecutable(QStringLiteral("xmllint")).isEmpty())
            QSKIP("xmllint is not installed");
    }

    void examples_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("battery charger") << QStringLiteral("battery-charger");
        QTest::newRow("weather station") << QStringLiteral("weather-station");
    }

    void examples()
    {
        QFETCH(QString, name);
        QTemporaryDir dir;
        const QString input = QStringLiteral(ZAT16_EXAMPLES "/%1.zatdef").arg(name);
        const Run run = generate(input, dir.path());
        QCOMPARE(run.err, QByteArray());
        QCOMPARE(run.status, 0);
        const QString page = dir.filePath(name + QStringLiteral(".html"));
        QByteArray complaints;
        QVERIFY2(lint({ page }, &complaints), complaints.constData());
        Parser parser;
        QVERIFY(parser.parse(input));
        const std::unique_ptr<Item> root(parser.takeRoot());
        comparePage(readPages({ page }).at(0).toObject(), root.get());
        if (QTest::currentTestFailed())
            return;
        // The Markdown file: a row per tag, with its code and its anchor.
        const QString markdown = QString::fromUtf8(readFile(dir.filePath(name + QStringLiteral(".md"))));
        for (const Item *tag : root->children) {
            if (!tag->isComment() && !tag->isNewline())
                QVERIFY2(markdown.contains(QStringLiteral("| `%1` | <a id=\"tag-%2\"></a>")
                                               .arg(tag2hex(unsigned(tag->id)), tag->name)),
                         qPrintable(tag->name));
        }
    }

    // The examples above go through zatgen; the random files go to the plugin in one python3
    // process, with the request zatgen would send.
    void randomFiles()
    {
        QTemporaryDir dir;
        QStringList pages;
        QStringList requests;
        QList<std::shared_ptr<Item>> roots;
        for (int seed = 1; seed <= ::randomFiles; ++seed) {
            const QString input = dir.filePath(QStringLiteral("random%1.zatdef").arg(seed));
            std::unique_ptr<Item> root = PluginTest::randomFile(quint32(seed), input, [](Item *) {});
            QVERIFY(root);
            requests << dir.filePath(QStringLiteral("random%1.request").arg(seed));
            QVERIFY(writeFile(
                requests.last(),
                PluginTest::request(root.get(), input, { { QStringLiteral("format"), QStringLiteral("html") } })));
            pages << dir.filePath(QStringLiteral("random%1.html").arg(seed));
            roots << std::shared_ptr<Item>(root.release());
        }
        QString report;
        QVERIFY2(PluginTest::runPluginBatch(
                     PluginTest::pluginPath(QStringLiteral("zatgen-doc")), dir.path(), requests, &report),
                 qPrintable(report));
        QVERIFY(!QFileInfo::exists(dir.filePath(QStringLiteral("random1.md"))));
        QByteArray complaints;
        QVERIFY2(lint(pages, &complaints), complaints.constData());
        const QJsonArray read = readPages(pages);
        QCOMPARE(read.size(), pages.size());
        for (int i = 0; i < pages.size(); ++i) {
            comparePage(read.at(i).toObject(), roots.at(i).get());
            if (QTest::currentTestFailed())
                QFAIL(qPrintable(QStringLiteral("seed %1").arg(i + 1)));
        }
    }

    void options()
    {
        QTemporaryDir dir;
        const QString input = QStringLiteral(ZAT16_EXAMPLES "/battery-charger.zatdef");
        Run run = generate(input,
                           dir.path(),
                           { QStringLiteral("name=charger"),
                             QStringLiteral("format=md"),
                             QStringLiteral("title=BC-4 tags") });
        QCOMPARE(run.status, 0);
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files), QStringList { QStringLiteral("charger.md") });
        QVERIFY(readFile(dir.filePath(QStringLiteral("charger.md"))).startsWith("# BC-4 tags\n"));
        run = generate(input, dir.path(), { QStringLiteral("format=pdf") });
        QCOMPARE(run.err, QByteArray("zatgen: plugin zatgen-doc: format=pdf: it is md, html or both\n"));
        QCOMPARE(run.status, 6);
    }
};

QTEST_GUILESS_MAIN(TestPluginDoc)
#include "tst_plugindoc.moc"

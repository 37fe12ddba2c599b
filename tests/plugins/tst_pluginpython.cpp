// The plugin zatgen-python, run by name through the built zatgen: python3 imports the module it
// makes from both examples and from 200 random files and checks that every tag code, enumeration
// value, bit mask and data type name equals the file's. Names Python cannot take and bit numbers
// of 64 and more are the plugin's errors.

#include "item.h"
#include "plugintest.h"
#include "zatgenrun.h"

#include <QDir>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

using namespace ZAT16;
using PluginTest::pythonString;
using TestFiles::writeFile;
using ZatgenRun::Run;

namespace {

const int randomFiles = 200;

// The numbers are written by the test from the tree: a value is signed unless the display in
// effect is unsigned, and a bit is the mask 1 << number.
QString expectedValue(const Item &entry)
{
    const int mode = entry.displayMode().mode;
    return mode >= 2 && mode <= 5 ? QString::number(entry.id) : QString::number(qint64(entry.id));
}

// Python statements that check the module `module` against the tree.
QString checks(const QString &module, const Item *root)
{
    QString tags, types, classes;
    for (const Item *tag : root->children) {
        if (tag->name.isEmpty() || !tag->hasId)
            continue;
        tags += QStringLiteral("%1: %2, ").arg(pythonString(tag->name)).arg(tag->id);
        const QString type = typeName(unsigned(tag->id));
        types
            += QStringLiteral("%1: %2, ").arg(tag->id).arg(type.isNull() ? QStringLiteral("None") : pythonString(type));
        for (ItemType kind : { Enums, Bits }) {
            const Item *list = tag->findInTagByItemType(kind);
            if (!list)
                continue;
            QString values;
            for (const Item *entry : list->children) {
                if (entry->name.isEmpty() || !entry->hasId)
                    continue;
                values += QStringLiteral("%1: %2, ")
                              .arg(pythonString(entry->name),
                                   kind == Enums ? expectedValue(*entry) : QStringLiteral("1 << %1").arg(entry->id));
            }
            classes += QStringLiteral("    %1: (%2, {%3}),\n")
                           .arg(pythonString(tag->name + (kind == Bits ? QStringLiteral("Bits") : QString())),
                                kind == Enums ? QStringLiteral("IntEnum") : QStringLiteral("IntFlag"),
                                values);
        }
    }
    return QStringLiteral("m = importlib.import_module(%1)\n"
                          "check(m, {%2}, {%3}, {\n%4})\n")
        .arg(pythonString(module), tags, types, classes);
}

const char preamble[] = "import enum, importlib, sys\n"
                        "from enum import IntEnum, IntFlag\n"
                        "sys.path.insert(0, sys.argv[1])\n"
                        "checked = 0\n"
                        "def members(cls):\n"
                        "    return {name: int(member) for name, member in cls.__members__.items()}\n"
                        "def check(m, tags, types, classes):\n"
                        "    global checked\n"
                        "    assert issubclass(m.Tag, IntEnum), m.__name__\n"
                        "    assert members(m.Tag) == tags, (m.__name__, members(m.Tag), tags)\n"
                        "    assert m.DATA_TYPES == types, (m.__name__, m.DATA_TYPES, types)\n"
                        "    found = {name for name, value in vars(m).items() if isinstance(value, type)\n"
                        "             and issubclass(value, enum.Enum) and value.__module__ == m.__name__}\n"
                        "    assert found == set(classes) | {'Tag'}, (m.__name__, found, set(classes))\n"
                        "    for name, (base, values) in classes.items():\n"
                        "        cls = getattr(m, name)\n"
                        "        assert issubclass(cls, base), (m.__name__, name)\n"
                        "        assert members(cls) == values, (m.__name__, name, members(cls), values)\n"
                        "        checked += len(values)\n"
                        "    checked += len(tags)\n";

// Runs the checks in one python3 process; the number of values checked, or -1.
int runChecks(const QString &dir, const QString &statements)
{
    const QString script = QDir(dir).filePath(QStringLiteral("check.py"));
    if (!writeFile(script, QByteArray(preamble) + statements.toUtf8() + "print(checked)\n"))
        return -1;
    const ProcessRun::Run run = PluginTest::runProgram(QStringLiteral("python3"), { script, dir });
    if (run.status != 0) {
        qWarning("%s", run.err.constData());
        return -1;
    }
    return run.out.trimmed().toInt();
}

Run generate(const QString &input, const QString &out, const QString &module)
{
    return ZatgenRun::run({ QStringLiteral("--plugin"),
                            QStringLiteral("zatgen-python"),
                            QStringLiteral("--plugin-out"),
                            out,
                            QStringLiteral("--plugin-opt"),
                            QStringLiteral("module=") + module,
                            input });
}

// Enumerations take no names with two leading underscores, and bits go up to 63: random trees
// are kept to what the plugin takes.
void adjust(Item *item)
{
    if (item->name.startsWith(QLatin1Char('_')))
        item->name.prepend(QLatin1Char('n'));
    if (item->type == Bit)
        item->id %= 64;
    for (Item *child : item->children)
        adjust(child);
}

} // namespace

class TestPluginPython : public QObject
{
    Q_OBJECT

private slots:
    // The plugins are Python 3 scripts.
    void initTestCase()
    {
        if (QStandardPaths::findExecutable(QStringLiteral("python3")).isEmpty())
            QSKIP("python3 is not installed");
    }

    void examples()
    {
        QTemporaryDir dir;
        QString statements;
        for (const char *example : { "battery-charger", "weather-station" }) {
            const QString input = QStringLiteral(ZAT16_EXAMPLES "/%1.zatdef").arg(QLatin1String(example));
            const QString module = QString::fromLatin1(example).replace(QLatin1Char('-'), QLatin1Char('_'));
            const Run run = generate(input, dir.path(), module);
            QCOMPARE(run.err, QByteArray());
            QCOMPARE(run.status, 0);
            Parser parser;
            QVERIFY(parser.parse(input));
            const std::unique_ptr<Item> root(parser.takeRoot());
            statements += checks(module, root.get());
        }
        // 24 tags, 14 values and 5 bits; 33 tags, 18 values and 13 bits.
        QCOMPARE(runChecks(dir.path(), statements), 24 + 14 + 5 + 33 + 18 + 13);
    }

    // The examples above go through zatgen; the random files go to the plugin in one python3
    // process, with the request zatgen would send.
    void randomFiles()
    {
        QTemporaryDir dir;
        QString statements;
        QStringList requests;
        int expected = 0;
        for (int seed = 1; seed <= ::randomFiles; ++seed) {
            const QString input = dir.filePath(QStringLiteral("random%1.zatdef").arg(seed));
            const std::unique_ptr<Item> root = PluginTest::randomFile(quint32(seed), input, adjust);
            QVERIFY(root);
            const QString module = QStringLiteral("random%1").arg(seed);
            requests << dir.filePath(module + QStringLiteral(".request"));
            QVERIFY(writeFile(requests.last(),
                              PluginTest::request(root.get(), input, { { QStringLiteral("module"), module } })));
            statements += checks(module, root.get());
            for (const Item *tag : root->children) {
                if (tag->name.isEmpty() || !tag->hasId)
                    continue;
                ++expected;
                for (ItemType kind : { Enums, Bits }) {
                    if (const Item *list = tag->findInTagByItemType(kind)) {
                        for (const Item *entry : list->children)
                            expected += !entry->name.isEmpty() && entry->hasId ? 1 : 0;
                    }
                }
            }
        }
        QString report;
        QVERIFY2(PluginTest::runPluginBatch(
                     PluginTest::pluginPath(QStringLiteral("zatgen-python")), dir.path(), requests, &report),
                 qPrintable(report));
        QVERIFY(expected > 1000);
        QCOMPARE(runChecks(dir.path(), statements), expected);
    }

    void errors_data()
    {
        QTest::addColumn<QByteArray>("tags");
        QTest::addColumn<QString>("message");
        QTest::newRow("bit 64") << QByteArray("<tag name=\"Flags\" id=\"0x7001\"><bits><bit name=\"Low\" id=\"0\"/>"
                                              "<bit name=\"High\" id=\"64\"/></bits></tag>")
                                << QStringLiteral("bit High (64) of tag Flags (0x7001) is outside 0 to 63");
        QTest::newRow("negative bit") << QByteArray(
            "<tag name=\"Flags\" id=\"0x7001\"><bits><bit name=\"Low\" id=\"-1\"/></bits></tag>")
                                      << QStringLiteral("bit Low (-1) of tag Flags (0x7001) is outside 0 to 63");
        QTest::newRow("tag name a keyword") << QByteArray("<tag name=\"class\" id=\"0x1001\"/>")
                                            << QStringLiteral("the name \"class\" of tag class (0x1001) is a Python "
                                                              "keyword");
        QTest::newRow("value name a keyword")
            << QByteArray("<tag name=\"Mode\" id=\"0x1002\"><enums><enum name=\"None\" id=\"0\"/></enums></tag>")
            << QStringLiteral("the name \"None\" of the enumeration list of tag Mode (0x1002) is a Python keyword");
        QTest::newRow("private name")
            << QByteArray("<tag name=\"Mode\" id=\"0x1002\"><enums><enum name=\"__x\" id=\"0\"/></enums></tag>")
            << QStringLiteral("the name \"__x\" of the enumeration list of tag Mode (0x1002) cannot be a member of a "
                              "Python enumeration");
        QTest::newRow("class name taken")
            << QByteArray("<tag name=\"IntEnum\" id=\"0x1002\"><enums><enum name=\"A\" id=\"0\"/></enums></tag>")
            << QStringLiteral("the class of the enumeration list of tag IntEnum (0x1002) would be named \"IntEnum\", "
                              "which is taken");
    }

    void errors()
    {
        QFETCH(QByteArray, tags);
        QFETCH(QString, message);
        QTemporaryDir dir;
        const QString input = dir.filePath(QStringLiteral("in.zatdef"));
        QVERIFY(writeFile(input, "<?xml version=\"1.0\"?>\n<zat16>\n" + tags + "\n</zat16>\n"));
        const QString out = dir.filePath(QStringLiteral("out"));
        const Run run = generate(input, out, QStringLiteral("tags"));
        QCOMPARE(QString::fromUtf8(run.err), QStringLiteral("zatgen: plugin zatgen-python: %1\n").arg(message));
        QCOMPARE(run.status, 6);
        QVERIFY(!QDir(out).exists());
    }
};

QTEST_GUILESS_MAIN(TestPluginPython)
#include "tst_pluginpython.moc"

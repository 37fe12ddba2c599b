// The JSON model of the definitions: its exact numbers and texts for chosen entries, every value
// read back and compared with the tree (both examples and random trees), and the documents
// validated against docs/zatdef-model.schema.json by a real JSON Schema validator (python3's
// jsonschema), which must also reject documents that break the schema.

#include "generatortest.h"
#include "item.h"
#include "treemaker.h"
#include "writerjson.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

using namespace ZAT16;
using GeneratorTest::generate;
using GeneratorTest::tree;
using GeneratorTest::treeFromFile;
using GeneratorTest::writeFile;

namespace {

const QString schema = QStringLiteral(ZAT16_MODEL_SCHEMA);
const int randomTrees = 100;

// QJsonDocument keeps integers beyond 2^53 only as doubles. The model puts every number at the
// end of a line after a key, where no string can be (line breaks in strings are escaped), so the
// numbers are turned into strings first and compared as text.
QJsonObject readModel(const QByteArray &json)
{
    static const QRegularExpression number(QStringLiteral("\": (-?[0-9]+)(,?)\n"));
    QString text = QString::fromUtf8(json);
    text.replace(number, QStringLiteral("\": \"\\1\"\\2\n"));
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8(), &error);
    if (error.error != QJsonParseError::NoError)
        qWarning("%s at %d", qPrintable(error.errorString()), error.offset);
    return document.object();
}

QString number(const QJsonValue &value)
{
    return value.isNull() ? QStringLiteral("null") : value.toString();
}

// The value as the model must give it, from the tree by the rule of the display in effect.
QString expectedValue(const Item &entry)
{
    if (!entry.hasId)
        return QStringLiteral("null");
    const int mode = entry.displayMode().mode;
    return mode >= 2 && mode <= 5 ? QString::number(entry.id) : QString::number(qint64(entry.id));
}

#define COMPARE_DISPLAY(json, item)                                                                                    \
    do {                                                                                                               \
        QCOMPARE(number((json).toObject().value(QLatin1String("mode"))), QString::number((item).display.mode));        \
        QCOMPARE(number((json).toObject().value(QLatin1String("digits"))), QString::number((item).display.digits));    \
    } while (false)

// Every tag, list and entry of the tree against the model, in order.
void compareWithTree(const QJsonObject &model, const Item *root)
{
    QCOMPARE(model.value(QLatin1String("format")).toString(), QStringLiteral("zatdef-model"));
    QCOMPARE(number(model.value(QLatin1String("version"))), QStringLiteral("1"));
    COMPARE_DISPLAY(model.value(QLatin1String("display")), *root);
    const QJsonArray tags = model.value(QLatin1String("tags")).toArray();
    int index = 0;
    for (const Item *tag : root->children) {
        if (tag->isComment() || tag->isNewline())
            continue;
        QVERIFY2(index < tags.size(), qPrintable(tag->name));
        const QJsonObject t = tags.at(index++).toObject();
        QCOMPARE(t.value(QLatin1String("name")).toString(), tag->name);
        QCOMPARE(number(t.value(QLatin1String("code"))),
                 tag->hasId ? QString::number(tag->id) : QStringLiteral("null"));
        QCOMPARE(t.value(QLatin1String("codeText")).toString(), tag->hasId ? tag2hex(unsigned(tag->id)) : QString());
        const unsigned nibble = unsigned(tag->id >> 12);
        const unsigned type = nibble == 8 ? unsigned(tag->id >> 8) : nibble;
        QCOMPARE(number(t.value(QLatin1String("type"))), tag->hasId ? QString::number(type) : QStringLiteral("null"));
        QCOMPARE(t.value(QLatin1String("typeName")).toString(), tag->hasId ? typeName(unsigned(tag->id)) : QString());
        QCOMPARE(number(t.value(QLatin1String("answerCode"))),
                 tag->hasId && nibble == 13 ? QString::number(0xE000 | (tag->id & 0xFFF)) : QStringLiteral("null"));
        QCOMPARE(t.value(QLatin1String("comment")).toString(), tag->comment);
        QCOMPARE(t.value(QLatin1String("secure")).toBool(), tag->secure);
        COMPARE_DISPLAY(t.value(QLatin1String("display")), *tag);
        const QJsonArray lists = t.value(QLatin1String("lists")).toArray();
        QCOMPARE(lists.size(), qsizetype(tag->children.size()));
        for (int l = 0; l < lists.size(); ++l) {
            const Item *list = tag->children.at(l);
            const QJsonObject m = lists.at(l).toObject();
            QCOMPARE(m.value(QLatin1String("kind")).toString(),
                     list->type == Enums ? QStringLiteral("enums") : QStringLiteral("bits"));
            COMPARE_DISPLAY(m.value(QLatin1String("display")), *list);
            QCOMPARE(number(m.value(QLatin1String("enumCount"))), QString::number(list->enumCount()));
            const QJsonArray entries = m.value(QLatin1String("entries")).toArray();
            int e = 0;
            for (const Item *entry : list->children) {
                if (entry->isComment() || entry->isNewline())
                    continue;
                QVERIFY(e < entries.size());
                const QJsonObject v = entries.at(e++).toObject();
                QCOMPARE(v.value(QLatin1String("name")).toString(), entry->name);
                QCOMPARE(number(v.value(QLatin1String("value"))), expectedValue(*entry));
                QCOMPARE(v.value(QLatin1String("valueText")).toString(), entry->hasId ? entry->formatId() : QString());
                QCOMPARE(v.value(QLatin1String("comment")).toString(), entry->comment);
                COMPARE_DISPLAY(v.value(QLatin1String("display")), *entry);
            }
            QCOMPARE(e, int(entries.size()));
        }
    }
    QCOMPARE(index, int(tags.size()));
}

struct Validation {
    int status = -1;
    QString output;
};

// python3 with jsonschema over the files; status 0 when every file validates, 1 when one does
// not, 2 when python3 has no jsonschema.
Validation validate(const QStringList &files)
{
    static const char script[] = "import json, sys\n"
                                 "try:\n"
                                 "    import jsonschema\n"
                                 "except ImportError:\n"
                                 "    sys.exit(2)\n"
                                 "schema = json.load(open(sys.argv[1], encoding='utf-8'))\n"
                                 "jsonschema.Draft7Validator.check_schema(schema)\n"
                                 "validator = jsonschema.Draft7Validator(schema)\n"
                                 "failed = 0\n"
                                 "for path in sys.argv[2:]:\n"
                                 "    for error in validator.iter_errors(json.load(open(path, encoding='utf-8'))):\n"
                                 "        print(path, list(error.absolute_path), error.message)\n"
                                 "        failed = 1\n"
                                 "sys.exit(failed)\n";
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QStringLiteral("python3"),
                  QStringList { QStringLiteral("-c"), QLatin1String(script), schema } + files);
    Validation result;
    if (!process.waitForFinished(120000) || process.exitStatus() != QProcess::NormalExit)
        return result;
    result.status = process.exitCode();
    result.output = QString::fromUtf8(process.readAll());
    return result;
}

const QByteArray small = "<tag name=\"Mode\" id=\"0x1002\" comment=\"a &quot;quoted&quot; line&#10;break\">\n"
                         "  <enums>\n"
                         "    <enum name=\"Minus\" id=\"-1\"/>\n"
                         "    <enum name=\"Big\" id=\"18446744073709551615\" display=\"u\"/>\n"
                         "    <enum name=\"Hex\" id=\"10\" display=\"4x\"/>\n"
                         "    <enum name=\"Top\" id=\"9007199254740993\"/>\n"
                         "  </enums>\n"
                         "</tag>\n"
                         "<tag name=\"Ask\" id=\"0xD305\" secure=\"true\"/>\n"
                         "<tag id=\"0xA001\"/>\n"
                         "<tag name=\"Ext\" id=\"0x8105\"/>\n";

} // namespace

class TestWriterJson : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;

private slots:
    // Numbers beyond 2^53 and negative ones stay exact; texts are escaped.
    void exactTexts_data()
    {
        QTest::addColumn<QString>("part");
        QTest::newRow("tag code") << QStringLiteral("\"code\": 4098,\n");
        QTest::newRow("tag code text") << QStringLiteral("\"codeText\": \"0x1002\",\n");
        QTest::newRow("escaped comment") << QStringLiteral("\"comment\": \"a \\\"quoted\\\" line\\nbreak\",\n");
        QTest::newRow("signed value") << QStringLiteral("\"value\": -1,\n");
        QTest::newRow("unsigned value") << QStringLiteral("\"value\": 18446744073709551615,\n");
        QTest::newRow("unsigned text") << QStringLiteral("\"valueText\": \"18446744073709551615\",\n");
        QTest::newRow("2^53 + 1") << QStringLiteral("\"value\": 9007199254740993,\n");
        QTest::newRow("hexadecimal text") << QStringLiteral("\"valueText\": \"0x000A\",\n");
        QTest::newRow("enumeration count") << QStringLiteral("\"enumCount\": 0,\n");
        QTest::newRow("request's answer") << QStringLiteral("\"answerCode\": 58117,\n");
        QTest::newRow("secure") << QStringLiteral("\"secure\": true,\n");
        QTest::newRow("unnamed type") << QStringLiteral("\"type\": 10,\n      \"typeName\": null,\n");
        QTest::newRow("extended type") << QStringLiteral("\"type\": 129,\n      \"typeName\": \"Int64\",\n");
        QTest::newRow("problem") << QStringLiteral(
            "\"kind\": \"code-without-name\",\n      \"warning\": false,\n      \"message\": \"Tag "
            "(0xA001): code without name\",\n      \"tag\": 2\n");
    }

    void exactTexts()
    {
        QFETCH(QString, part);
        const std::unique_ptr<Item> root = tree(small);
        QVERIFY(root);
        const QString json = QString::fromUtf8(generate<WriterJson>(root.get()));
        QVERIFY2(json.contains(part), qPrintable(json));
    }

    void startAndEnd()
    {
        const std::unique_ptr<Item> root = tree("");
        QCOMPARE(generate<WriterJson>(root.get()),
                 QByteArray(
                     "{\n  \"format\": \"zatdef-model\",\n  \"version\": 1,\n  \"display\": {\n    \"mode\": 0,\n"
                     "    \"digits\": 0\n  },\n  \"tags\": [],\n  \"problems\": []\n}\n"));
    }

    void readBackExamples_data()
    {
        QTest::addColumn<QString>("file");
        QTest::newRow("battery charger") << QStringLiteral(ZAT16_EXAMPLES "/battery-charger.zatdef");
        QTest::newRow("weather station") << QStringLiteral(ZAT16_EXAMPLES "/weather-station.zatdef");
    }

    void readBackExamples()
    {
        QFETCH(QString, file);
        const std::unique_ptr<Item> root = treeFromFile(file);
        QVERIFY(root);
        const QJsonObject model = readModel(generate<WriterJson>(root.get()));
        compareWithTree(model, root.get());
        if (QTest::currentTestFailed())
            return;
        QCOMPARE(model.value(QLatin1String("problems")).toArray().size(), 0);
    }

    void readBackRandomTrees()
    {
        for (int seed = 1; seed <= randomTrees; ++seed) {
            const std::unique_ptr<Item> root = TreeMaker(quint32(seed)).root();
            compareWithTree(readModel(generate<WriterJson>(root.get())), root.get());
            if (QTest::currentTestFailed())
                QFAIL(qPrintable(QStringLiteral("seed %1").arg(seed)));
        }
    }

    void schemaValidates()
    {
        QVERIFY(m_dir.isValid());
        QStringList files;
        for (const char *example : { "battery-charger", "weather-station" }) {
            const std::unique_ptr<Item> root = treeFromFile(QStringLiteral(ZAT16_EXAMPLES "/%1.zatdef").arg(example));
            QVERIFY(root);
            files << m_dir.filePath(QLatin1String(example) + QLatin1String(".json"));
            QVERIFY(writeFile(files.last(), generate<WriterJson>(root.get())));
        }
        for (int seed = 1; seed <= randomTrees; ++seed) {
            const std::unique_ptr<Item> root = TreeMaker(quint32(seed)).root();
            files << m_dir.filePath(QStringLiteral("random%1.json").arg(seed));
            QVERIFY(writeFile(files.last(), generate<WriterJson>(root.get())));
        }
        const std::unique_ptr<Item> root = tree(small);
        files << m_dir.filePath(QStringLiteral("small.json"));
        QVERIFY(writeFile(files.last(), generate<WriterJson>(root.get())));
        const Validation result = validate(files);
        if (result.status == 2)
            QSKIP("python3 has no jsonschema (Debian: python3-jsonschema)");
        QVERIFY2(result.status == 0, qPrintable(result.output));
    }

    // The validator is real: documents that break the schema fail.
    void schemaRejects_data()
    {
        QTest::addColumn<QByteArray>("from");
        QTest::addColumn<QByteArray>("to");
        QTest::newRow("code beyond 16 bits") << QByteArray("\"code\": 4098,") << QByteArray("\"code\": 65536,");
        QTest::newRow("value as text") << QByteArray("\"value\": -1,") << QByteArray("\"value\": \"-1\",");
        QTest::newRow("value beyond 64 bits")
            << QByteArray("\"value\": 18446744073709551615,") << QByteArray("\"value\": 18446744073709551616,");
        QTest::newRow("unknown list kind") << QByteArray("\"kind\": \"enums\"") << QByteArray("\"kind\": \"enum\"");
        QTest::newRow("missing version") << QByteArray("\"version\": 1,") << QByteArray();
        QTest::newRow("unknown member") << QByteArray("\"secure\": true,") << QByteArray("\"secret\": true,");
    }

    void schemaRejects()
    {
        QFETCH(QByteArray, from);
        QFETCH(QByteArray, to);
        const std::unique_ptr<Item> root = tree(small);
        QByteArray json = generate<WriterJson>(root.get());
        QVERIFY(json.contains(from));
        json.replace(from, to);
        const QString path = m_dir.filePath(QStringLiteral("broken.json"));
        QVERIFY(writeFile(path, json));
        const Validation result = validate({ path });
        if (result.status == 2)
            QSKIP("python3 has no jsonschema (Debian: python3-jsonschema)");
        QCOMPARE(result.status, 1);
    }
};

QTEST_GUILESS_MAIN(TestWriterJson)
#include "tst_writerjson.moc"

// docs/zatdef.xsd against the programs: xmllint accepts every example, every test file that the
// reader reads without warnings and every file the programs save (random trees with every
// display mode, padded and negative numbers and 64-bit values), every notation of "id" that the
// reader takes, and rejects misspelled elements and attributes, misplaced elements and values
// the reader refuses.

#include "item.h"
#include "parser.h"
#include "testfiles.h"
#include "treemaker.h"
#include "writerxml.h"

#include <QDir>
#include <QDirIterator>
#include <QProcess>
#include <QRandomGenerator>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using namespace ZAT16;

namespace {

using TestFiles::writeFile;

const QString schema = QStringLiteral(ZAT16_SCHEMA);

struct Lint {
    int status = -1;
    QString output;
};

// xmllint over the files; status 0 when every file validates.
Lint lint(const QStringList &files)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QStringLiteral("xmllint"),
                  QStringList { QStringLiteral("--noout"), QStringLiteral("--schema"), schema } + files);
    Lint result;
    if (!process.waitForFinished(120000) || process.exitStatus() != QProcess::NormalExit)
        return result;
    result.status = process.exitCode();
    result.output = QString::fromLocal8Bit(process.readAll());
    return result;
}

// Whether the reader takes the text, and whether it warns.
bool readerAccepts(const QByteArray &text, bool *warned = nullptr)
{
    Parser parser;
    const bool ok = parser.parse(text);
    if (warned)
        *warned = !parser.warnings.isEmpty();
    return ok;
}

} // namespace

class TestSchema : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    int m_files = 0;

    // Writes `text` to a fresh file and lints it.
    Lint lintText(const QByteArray &text)
    {
        const QString path = m_dir.filePath(QStringLiteral("case%1.zatdef").arg(++m_files));
        if (!writeFile(path, text))
            return Lint();
        return lint({ path });
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        QVERIFY(QFile::exists(schema));
        if (QStandardPaths::findExecutable(QStringLiteral("xmllint")).isEmpty())
            QSKIP("xmllint is not installed");
        // The schema is itself well-formed XML.
        QProcess process;
        process.start(QStringLiteral("xmllint"), { QStringLiteral("--noout"), schema });
        QVERIFY(process.waitForFinished());
        QCOMPARE(process.exitCode(), 0);
    }

    void examples()
    {
        const QDir dir(QStringLiteral(ZAT16_EXAMPLES));
        QStringList files;
        for (const QString &name : dir.entryList({ QStringLiteral("*.zatdef") }, QDir::Files, QDir::Name))
            files << dir.filePath(name);
        QVERIFY(files.size() >= 2);
        const Lint result = lint(files);
        QVERIFY2(result.status == 0, qPrintable(result.output));
    }

    // The test files that the reader reads without a warning; the others hold misplaced or
    // unknown elements on purpose, which the schema does not allow.
    void testFilesReadWithoutWarnings()
    {
        QStringList files;
        QDirIterator it(QStringLiteral(ZAT16_TEST_DATA),
                        { QStringLiteral("*.zatdef") },
                        QDir::Files,
                        QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString path = it.next();
            Parser parser;
            if (parser.parse(path) && parser.warnings.isEmpty())
                files << path;
        }
        QVERIFY2(files.size() >= 8, qPrintable(files.join(QLatin1Char('\n'))));
        const Lint result = lint(files);
        QVERIFY2(result.status == 0, qPrintable(result.output));
    }

    void savedFiles()
    {
        QStringList files;
        for (quint32 seed = 1; seed <= 200; ++seed) {
            TreeMaker maker(seed);
            const std::unique_ptr<Item> root = maker.root();
            WriterXml writer;
            const QByteArray saved = writer.encode(root.get());
            QVERIFY(!saved.isEmpty());
            QVERIFY2(readerAccepts(saved), qPrintable(QStringLiteral("seed %1").arg(seed)));
            const QString path = m_dir.filePath(QStringLiteral("saved-%1.zatdef").arg(seed));
            QVERIFY(writeFile(path, saved));
            files << path;
        }
        const Lint result = lint(files);
        QVERIFY2(result.status == 0, qPrintable(result.output));
        QCOMPARE(result.output.count(QStringLiteral(" validates")), 200);
    }

    // Every notation of a number that the reader takes; the reader is asked too, so that the
    // two cannot drift apart unnoticed.
    void acceptedNotations_data()
    {
        QTest::addColumn<QByteArray>("element");
        QTest::addColumn<QByteArray>("id");
        const QByteArray value("<tag name=\"T\" id=\"0x1001\"><enums><enum name=\"A\" id=\"%1\"/></enums></tag>");
        const QByteArray tag("<tag name=\"T\" id=\"%1\"/>");
        const char *const values[] = {
            "0",
            "00",
            "42",
            "+42",
            "-5",
            "00-5",
            "0-0x5",
            "-0",
            "017",
            "0x1F",
            "0X1f",
            "-0x5",
            "+0x5",
            "0o17",
            "0O17",
            "-0o7",
            "0y101",
            "0b101",
            "0B101",
            "-0B1",
            "00-0b1",
            " 5 ",
            "18446744073709551615",
            "-9223372036854775808",
            "0xFFFFFFFFFFFFFFFF",
            "0x00000000000000000001",
            "0o1777777777777777777777",
        };
        for (const char *id : values)
            QTest::newRow(qPrintable(QStringLiteral("value %1").arg(QLatin1String(id)))) << value << QByteArray(id);
        const char *const codes[] = {
            "0x0000",
            "0xFFFF",
            "0x00FFFF",
            "+0xFFFF",
            "65535",
            "0065535",
            "0177777",
            "0o177777",
            "0y1111111111111111",
            "0b1111111111111111",
            "0",
            "-0",
            "00-0",
            "4097",
        };
        for (const char *id : codes)
            QTest::newRow(qPrintable(QStringLiteral("tag %1").arg(QLatin1String(id)))) << tag << QByteArray(id);
    }

    void acceptedNotations()
    {
        QFETCH(QByteArray, element);
        QFETCH(QByteArray, id);
        const QByteArray text = "<zat16>" + QByteArray(element).replace("%1", id) + "</zat16>\n";
        bool warned = true;
        QVERIFY(readerAccepts(text, &warned));
        QVERIFY(!warned);
        const Lint result = lintText(text);
        QVERIFY2(result.status == 0, qPrintable(result.output));
    }

    void acceptedForms_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("empty root") << QByteArray("<zat16/>");
        QTest::newRow("every attribute on every element")
            << QByteArray("<zat16 name=\"Device\" id=\"1\" comment=\"c\" secure=\"false\" display=\"x\">"
                          "<tag name=\"T\" id=\"0x1001\" comment=\"a &lt;b&gt;\" secure=\"true\" display=\"4x\">"
                          "<bits name=\"B\" id=\"2\" comment=\"c\" secure=\"FALSE\" display=\"8y\">"
                          "<bit name=\"Ready\" id=\"0y1\" comment=\"c\" secure=\"TRUE\" display=\"b\"/></bits>"
                          "<enums name=\"E\" id=\"3\" comment=\"c\" display=\"u\">"
                          "<enum name=\"Off\" id=\"0\" comment=\"c\" display=\"3d\"/></enums>"
                          "</tag></zat16>");
        QTest::newRow("enumeration list before bit list and two lists")
            << QByteArray("<zat16><tag name=\"T\" id=\"0x1001\"><enums/><bits/><enums/></tag></zat16>");
        QTest::newRow("display forms") << QByteArray(
            "<zat16 display=\"X\"><tag name=\"T\" display=\"4\"><enums display=\"o\"/>"
            "<bits display=\"12d\"/></tag></zat16>");
        QTest::newRow("names") << QByteArray(
            "<zat16><tag name=\"_\"/><tag name=\"Ta\"/><tag name=\"Tags\"/>"
            "<tag name=\"tag\"/><tag name=\"TAG\"/><tag name=\"Tab\"/><tag name=\"Xag\"/>"
            "<tag name=\"_1\"/></zat16>");
        QTest::newRow("comments, blank lines and a document type")
            << QByteArray("<?xml version=\"1.0\"?> <!-- -*- nxml -*- --><!DOCTYPE zat16>\n<zat16>\n  <!-- note -->\n\n"
                          "  <tag name=\"T\" id=\"0x1001\">\n    <enums>\n      <!-- note -->\n\n"
                          "      <enum name=\"A\" id=\"1\"/>\n    </enums>\n  </tag>\n</zat16>");
    }

    void acceptedForms()
    {
        QFETCH(QByteArray, text);
        QVERIFY(readerAccepts(text));
        const Lint result = lintText(text);
        QVERIFY2(result.status == 0, qPrintable(result.output));
    }

    // Rejected by the schema. `reader` tells what the reader does with the same text: "error",
    // "warning" or "reads" (where the schema is stricter on purpose). A misspelled attribute is
    // one the reader does not know, and it warns that the attribute is not kept.
    void rejected_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("reader");
        QTest::newRow("misspelled root") << QByteArray("<zat61><tag name=\"T\" id=\"0x1001\"/></zat61>") << "error";
        QTest::newRow("misspelled tag") << QByteArray("<zat16><tga name=\"T\" id=\"0x1001\"/></zat16>") << "warning";
        QTest::newRow("misspelled enums") << QByteArray(
            "<zat16><tag name=\"T\" id=\"0x1001\"><enmus><enum name=\"A\" id=\"1\"/></enmus></tag></zat16>")
                                          << "warning";
        QTest::newRow("misspelled bit") << QByteArray(
            "<zat16><tag name=\"T\" id=\"0x1001\"><bits><bti name=\"A\" id=\"1\"/></bits></tag></zat16>")
                                        << "warning";
        QTest::newRow("misspelled name") << QByteArray("<zat16><tag nmae=\"T\" id=\"0x1001\"/></zat16>") << "warning";
        QTest::newRow("misspelled id") << QByteArray("<zat16><tag name=\"T\" ids=\"0x1001\"/></zat16>") << "warning";
        QTest::newRow("misspelled comment") << QByteArray("<zat16><tag name=\"T\" coment=\"c\"/></zat16>") << "warning";
        QTest::newRow("misspelled secure")
            << QByteArray("<zat16><tag name=\"T\" secrue=\"true\"/></zat16>") << "warning";
        QTest::newRow("misspelled display")
            << QByteArray("<zat16><tag name=\"T\"><enums dispaly=\"x\"/></tag></zat16>") << "warning";
        QTest::newRow("attribute in another case") << QByteArray("<zat16><tag Name=\"T\"/></zat16>") << "warning";
        QTest::newRow("enum directly in a tag")
            << QByteArray("<zat16><tag name=\"T\" id=\"0x1001\"><enum name=\"A\" id=\"1\"/></tag></zat16>")
            << "warning";
        QTest::newRow("tag in a tag") << QByteArray(
            "<zat16><tag name=\"T\" id=\"0x1001\"><tag name=\"U\" id=\"0x1002\"/></tag></zat16>")
                                      << "warning";
        QTest::newRow("bit in enums") << QByteArray(
            "<zat16><tag name=\"T\" id=\"0x1001\"><enums><bit name=\"A\" id=\"1\"/></enums></tag></zat16>")
                                      << "warning";
        QTest::newRow("tag as the top element") << QByteArray("<tag name=\"T\" id=\"0x1001\"/>") << "reads";
        QTest::newRow("text in an element")
            << QByteArray("<zat16><tag name=\"T\" id=\"0x1001\">text</tag></zat16>") << "warning";
        QTest::newRow("reserved name") << QByteArray("<zat16><tag name=\"Tag\"/></zat16>") << "error";
        QTest::newRow("name starting with a digit") << QByteArray("<zat16><tag name=\"1a\"/></zat16>") << "error";
        QTest::newRow("name with a minus") << QByteArray("<zat16><tag name=\"a-b\"/></zat16>") << "error";
        QTest::newRow("name with a blank") << QByteArray("<zat16><tag name=\" A\"/></zat16>") << "error";
        QTest::newRow("empty name") << QByteArray("<zat16><tag name=\"\"/></zat16>") << "error";
        QTest::newRow("secure True") << QByteArray("<zat16><tag name=\"T\" secure=\"True\"/></zat16>") << "error";
        QTest::newRow("secure 1") << QByteArray("<zat16><tag name=\"T\" secure=\"1\"/></zat16>") << "error";
        QTest::newRow("display with an unknown letter")
            << QByteArray("<zat16><tag name=\"T\" display=\"4q\"/></zat16>") << "reads";
        QTest::newRow("display with more after the letter")
            << QByteArray("<zat16><tag name=\"T\" display=\"4xy\"/></zat16>") << "reads";
        QTest::newRow("empty display") << QByteArray("<zat16><tag name=\"T\" display=\"\"/></zat16>") << "reads";
        const QByteArray value(
            "<zat16><tag name=\"T\" id=\"0x1001\"><enums><enum name=\"A\" id=\"%1\"/></enums></tag></zat16>");
        const char *const badValues[]
            = { "",      "0x",
                "0o",    "0y",
                "0B",    "0Y1",
                "00+5",  "+-5",
                "- 5",   "1e3",
                "0x+5",  "0x1g",
                "1_000", "0b11111111111111111111111111111111111111111111111111111111111111111" };
        for (const char *id : badValues)
            QTest::newRow(qPrintable(QStringLiteral("value id '%1'").arg(QLatin1String(id))))
                << QByteArray(value).replace("%1", id) << "error";
        const QByteArray tag("<zat16><tag name=\"T\" id=\"%1\"/></zat16>");
        const char *const badCodes[]
            = { "0x10000", "0x1FFFF", "65536", "0200000", "0o200000", "0y10000000000000000", "-1", "-0x1" };
        for (const char *id : badCodes)
            QTest::newRow(qPrintable(QStringLiteral("tag id '%1'").arg(QLatin1String(id))))
                << QByteArray(tag).replace("%1", id) << "error";
    }

    void rejected()
    {
        QFETCH(QByteArray, text);
        QFETCH(QString, reader);
        bool warned = false;
        const bool ok = readerAccepts(text, &warned);
        QCOMPARE(!ok ? QStringLiteral("error") : (warned ? QStringLiteral("warning") : QStringLiteral("reads")),
                 reader);
        const Lint result = lintText(text);
        QVERIFY2(result.status != 0, qPrintable(result.output));
        QVERIFY2(result.output.contains(QStringLiteral("fails to validate")), qPrintable(result.output));
    }
};

QTEST_GUILESS_MAIN(TestSchema)
#include "tst_schema.moc"

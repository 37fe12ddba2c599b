// Runs the built zatgen binary with generator plugins: the request a plugin gets, the files it
// makes written under its folder (unchanged ones left untouched, compared by --check-outputs),
// the usage of the options, and every way a plugin can fail. A failure gives exit status 6 and a
// message naming the plugin, and nothing is written, not even the other outputs.

#include "testfiles.h"
#include "zatgenrun.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

namespace {

using TestFiles::readFile;
using TestFiles::writeFile;
using ZatgenRun::Run;

const QString input = QStringLiteral(ZAT16_EXAMPLES "/battery-charger.zatdef");

// A shell script that prints `response` and exits with `status`.
QByteArray answering(const QByteArray &response, int status = 0)
{
    return "#!/bin/sh\ncat >/dev/null\nprintf '%s' '" + response + "'\nexit " + QByteArray::number(status) + "\n";
}

// Answers with the request it got, as the file request.json, and a file in a folder.
const QByteArray echoPlugin = "#!/usr/bin/env python3\n"
                              "import json, sys\n"
                              "text = sys.stdin.read()\n"
                              "json.dump({'protocol': 1, 'files': [{'name': 'request.json', 'content': text},\n"
                              "    {'name': 'sub/dir/note.txt', 'content': 'h\\u00e9llo\\n'}]}, sys.stdout)\n";

} // namespace

class TestZatgenPlugins : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;

    QString plugin(const QString &name, const QByteArray &script)
    {
        const QString path = m_dir.filePath(name);
        if (!writeFile(path, script)
            || !QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner))
            return QString();
        return path;
    }

private slots:
    void help()
    {
        const Run run = ZatgenRun::run({ QStringLiteral("--help") });
        QCOMPARE(run.status, 0);
        for (const char *option :
             { "--plugin <command>", "--plugin-out <dir>", "--plugin-opt <key=value>", "--plugin-timeout <seconds>" })
            QVERIFY2(run.out.contains(option), option);
    }

    void request()
    {
        const QString echo = plugin(QStringLiteral("echo"), echoPlugin);
        QVERIFY(!echo.isEmpty());
        QTemporaryDir out;
        const Run run = ZatgenRun::run({ QStringLiteral("--plugin"),
                                         echo,
                                         QStringLiteral("--plugin-opt"),
                                         QStringLiteral("module=tags"),
                                         QStringLiteral("--plugin-out"),
                                         out.path(),
                                         QStringLiteral("--plugin-opt"),
                                         QStringLiteral("empty="),
                                         QStringLiteral("--plugin-opt"),
                                         QStringLiteral("module=battery=1"),
                                         input });
        QCOMPARE(run.err, QByteArray());
        QCOMPARE(run.status, 0);
        QCOMPARE(readFile(out.filePath(QStringLiteral("sub/dir/note.txt"))), QByteArray("h\xc3\xa9llo\n"));
        const QByteArray text = readFile(out.filePath(QStringLiteral("request.json")));
        const QJsonObject request = QJsonDocument::fromJson(text).object();
        QCOMPARE(request.value(QLatin1String("protocol")).toInt(), 1);
        QCOMPARE(request.value(QLatin1String("input")).toString(), input);
        QCOMPARE(request.value(QLatin1String("options")).toObject(),
                 QJsonObject({ { QStringLiteral("module"), QStringLiteral("battery=1") },
                               { QStringLiteral("empty"), QString() } }));
        // The model is the document of --json.
        const Run json = ZatgenRun::run({ QStringLiteral("--json"), QStringLiteral("-"), input });
        QCOMPARE(json.status, 0);
        QCOMPARE(request.value(QLatin1String("model")).toObject(), QJsonDocument::fromJson(json.out).object());
        QCOMPARE(request.value(QLatin1String("model")).toObject().value(QLatin1String("tags")).toArray().size(), 24);
    }

    // Files that would not change keep their time; --check-outputs compares them.
    void unchangedFilesAndCheckOutputs()
    {
        const QString files = plugin(QStringLiteral("files"),
                                     answering("{\"files\": [{\"name\": \"a.txt\", \"content\": \"A\\n\"},"
                                               " {\"name\": \"empty\", \"content\": \"\"}]}"));
        QVERIFY(!files.isEmpty());
        QTemporaryDir out;
        const QStringList arguments = { QStringLiteral("--plugin"), files, QStringLiteral("--plugin-out"), out.path() };
        const QString a = out.filePath(QStringLiteral("a.txt"));
        const QString empty = out.filePath(QStringLiteral("empty"));
        Run run = ZatgenRun::run(QStringList { QStringLiteral("--check-outputs") } + arguments + QStringList { input });
        QCOMPARE(run.status, 4);
        QCOMPARE(QString::fromUtf8(run.err),
                 QStringLiteral("zatgen: out of date: %1\nzatgen: out of date: %2\n").arg(a, empty));
        QVERIFY(!QFileInfo::exists(a));

        run = ZatgenRun::run(arguments + QStringList { input });
        QCOMPARE(run.status, 0);
        QCOMPARE(readFile(a), QByteArray("A\n"));
        QCOMPARE(readFile(empty), QByteArray());
        const QDateTime past = QDateTime::currentDateTime().addDays(-1);
        for (const QString &path : { a, empty }) {
            QFile file(path);
            QVERIFY(file.open(QIODevice::ReadWrite) && file.setFileTime(past, QFileDevice::FileModificationTime));
        }
        run = ZatgenRun::run(arguments + QStringList { input });
        QCOMPARE(run.status, 0);
        QCOMPARE(QFileInfo(a).lastModified().toSecsSinceEpoch(), past.toSecsSinceEpoch());
        QCOMPARE(QFileInfo(empty).lastModified().toSecsSinceEpoch(), past.toSecsSinceEpoch());
        run = ZatgenRun::run(QStringList { QStringLiteral("--check-outputs") } + arguments + QStringList { input });
        QCOMPARE(run.status, 0);

        QVERIFY(writeFile(a, "B\n"));
        run = ZatgenRun::run(QStringList { QStringLiteral("--check-outputs") } + arguments + QStringList { input });
        QCOMPARE(run.status, 4);
        QCOMPARE(QString::fromUtf8(run.err), QStringLiteral("zatgen: out of date: %1\n").arg(a));
        QCOMPARE(readFile(a), QByteArray("B\n"));
    }

    void usage_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("message");
        QTest::newRow("folder before the plugin") << QStringList {
            QStringLiteral("--plugin-out"), QStringLiteral("o"), QStringLiteral("--plugin"), QStringLiteral("p")
        } << QStringLiteral("zatgen: --plugin-out o comes before any --plugin\n");
        QTest::newRow("no folder") << QStringList { QStringLiteral("--plugin"), QStringLiteral("p") }
                                   << QStringLiteral("zatgen: --plugin p has no --plugin-out\n");
        QTest::newRow("second plugin without folder")
            << QStringList { QStringLiteral("--plugin"), QStringLiteral("p"),        QStringLiteral("--plugin-out"),
                             QStringLiteral("o"),        QStringLiteral("--plugin"), QStringLiteral("q") }
            << QStringLiteral("zatgen: --plugin q has no --plugin-out\n");
        QTest::newRow("two folders") << QStringList { QStringLiteral("--plugin"),     QStringLiteral("p"),
                                                      QStringLiteral("--plugin-out"), QStringLiteral("o"),
                                                      QStringLiteral("--plugin-out"), QStringLiteral("o2") }
                                     << QStringLiteral("zatgen: --plugin p has more than one --plugin-out\n");
        QTest::newRow("option without value") << QStringList { QStringLiteral("--plugin"),     QStringLiteral("p"),
                                                               QStringLiteral("--plugin-out"), QStringLiteral("o"),
                                                               QStringLiteral("--plugin-opt"), QStringLiteral("key") }
                                              << QStringLiteral("zatgen: --plugin-opt key is not KEY=VALUE\n");
        QTest::newRow("time of zero") << QStringList { QStringLiteral("--plugin-timeout"), QStringLiteral("0") }
                                      << QStringLiteral(
                                             "zatgen: --plugin-timeout needs a number of seconds above 0: 0\n");
        QTest::newRow("with --compare") << QStringList {
            QStringLiteral("--compare"),    input,
            QStringLiteral("--plugin"),     QStringLiteral("p"),
            QStringLiteral("--plugin-out"), QStringLiteral("o")
        } << QStringLiteral("zatgen: --compare cannot be combined with --check, --check-outputs or an output\n");
    }

    void usage()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, message);
        QTemporaryDir work;
        const Run run = ZatgenRun::run(arguments << input, work.path());
        QCOMPARE(QString::fromUtf8(run.err), message);
        QCOMPARE(run.status, 2);
        QCOMPARE(QDir(work.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList());
    }

    // Each failure: status 6, the message naming the plugin, and nothing written, neither the
    // plugin's folder nor the other outputs of the run.
    void failures_data()
    {
        QTest::addColumn<QByteArray>("script");
        QTest::addColumn<QString>("message");
        QTest::newRow("exit status 1") << answering("{\"files\": []}", 1)
                                       << QStringLiteral("zatgen: plugin %1: exited with status 1\n");
        QTest::newRow("no JSON") << QByteArray("#!/bin/sh\necho done\n")
                                 << QStringLiteral("zatgen: plugin %1: no valid response: illegal value at offset 1\n");
        QTest::newRow("parent folder") << answering(
            "{\"files\": [{\"name\": \"ok.txt\", \"content\": \"x\"}, {\"name\": \"../x\", \"content\": \"x\"}]}")
                                       << QStringLiteral("zatgen: plugin %1: file outside %2: ../x\n");
        QTest::newRow("parent folder inside")
            << answering("{\"files\": [{\"name\": \"a/../../x\", \"content\": \"x\"}]}")
            << QStringLiteral("zatgen: plugin %1: file outside %2: a/../../x\n");
        QTest::newRow("absolute name") << answering("{\"files\": [{\"name\": \"/tmp/x\", \"content\": \"x\"}]}")
                                       << QStringLiteral("zatgen: plugin %1: file outside %2: /tmp/x\n");
        QTest::newRow("hangs") << QByteArray("#!/bin/sh\nexec sleep 30\n")
                               << QStringLiteral("zatgen: plugin %1: did not finish within 1 s\n");
        QTest::newRow("error text") << answering("{\"protocol\": 1, \"error\": \"bit 64 of Flags is out of range\"}")
                                    << QStringLiteral("zatgen: plugin %1: bit 64 of Flags is out of range\n");
        QTest::newRow("not an object") << answering("[1, 2]")
                                       << QStringLiteral("zatgen: plugin %1: no valid response: not a JSON object\n");
        QTest::newRow("neither files nor error")
            << answering("{\"protocol\": 1}")
            << QStringLiteral("zatgen: plugin %1: no valid response: neither \"files\" nor \"error\"\n");
        QTest::newRow("other protocol") << answering("{\"protocol\": 2, \"files\": []}")
                                        << QStringLiteral("zatgen: plugin %1: no valid response: protocol is not 1\n");
        QTest::newRow("content not a text")
            << answering("{\"files\": [{\"name\": \"a\", \"content\": 1}]}")
            << QStringLiteral("zatgen: plugin %1: no valid response: a file without a text \"name\" and \"content\"\n");
        QTest::newRow("empty folder name")
            << answering("{\"files\": [{\"name\": \"a//b\", \"content\": \"\"}]}")
            << QStringLiteral("zatgen: plugin %1: no valid response: the file name \"a//b\" is not a relative path\n");
        QTest::newRow("named twice")
            << answering("{\"files\": [{\"name\": \"a\", \"content\": \"\"}, {\"name\": \"a\", \"content\": \"x\"}]}")
            << QStringLiteral("zatgen: plugin %1: no valid response: the file a is named twice\n");
    }

    void failures()
    {
        QFETCH(QByteArray, script);
        QFETCH(QString, message);
        static int count = 0;
        const QString path = plugin(QStringLiteral("failing%1").arg(++count), script);
        QVERIFY(!path.isEmpty());
        QTemporaryDir work;
        const QString out = QDir(work.path()).filePath(QStringLiteral("out"));
        const Run run = ZatgenRun::run({ QStringLiteral("--plugin-timeout"),
                                         QStringLiteral("1"),
                                         QStringLiteral("--header"),
                                         QDir(work.path()).filePath(QStringLiteral("tags.h")),
                                         QStringLiteral("--plugin"),
                                         path,
                                         QStringLiteral("--plugin-out"),
                                         out,
                                         input });
        QCOMPARE(QString::fromUtf8(run.err), message.arg(path, out));
        QCOMPARE(run.status, 6);
        QCOMPARE(QDir(work.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList());
    }

    void notFound()
    {
        const Run run = ZatgenRun::run({ QStringLiteral("--plugin"),
                                         QStringLiteral("zatgen-no-such-plugin"),
                                         QStringLiteral("--plugin-out"),
                                         m_dir.filePath(QStringLiteral("none")),
                                         input });
        QCOMPARE(run.err, QByteArray("zatgen: plugin zatgen-no-such-plugin: not found beside zatgen or on PATH\n"));
        QCOMPARE(run.status, 6);
    }

    // A symbolic link in the folder that leads out of it, to a folder or to a file, is not
    // followed; one that stays inside is.
    void symbolicLinks()
    {
        QTemporaryDir work;
        const QDir dir(work.path());
        QVERIFY(dir.mkpath(QStringLiteral("out/inner")));
        QVERIFY(dir.mkpath(QStringLiteral("outside")));
        QVERIFY(QFile::link(dir.filePath(QStringLiteral("outside")), dir.filePath(QStringLiteral("out/away"))));
        QVERIFY(
            QFile::link(dir.filePath(QStringLiteral("outside/file")), dir.filePath(QStringLiteral("out/dangling"))));
        QVERIFY(QFile::link(QStringLiteral("inner"), dir.filePath(QStringLiteral("out/here"))));
        const QString out = dir.filePath(QStringLiteral("out"));
        for (const char *name : { "away/x", "dangling" }) {
            const QString path
                = plugin(QStringLiteral("link-%1").arg(QLatin1String(name).left(4)),
                         answering("{\"files\": [{\"name\": \"" + QByteArray(name) + "\", \"content\": \"x\"}]}"));
            const Run run
                = ZatgenRun::run({ QStringLiteral("--plugin"), path, QStringLiteral("--plugin-out"), out, input });
            QCOMPARE(QString::fromUtf8(run.err),
                     QStringLiteral("zatgen: plugin %1: file outside %2: %3\n").arg(path, out, QLatin1String(name)));
            QCOMPARE(run.status, 6);
            QCOMPARE(dir.entryList({ QStringLiteral("outside/*") }), QStringList());
            QVERIFY(!QFileInfo::exists(dir.filePath(QStringLiteral("outside/file"))));
            QVERIFY(!QFileInfo::exists(dir.filePath(QStringLiteral("outside/x"))));
        }
        const QString inside = plugin(QStringLiteral("link-inside"),
                                      answering("{\"files\": [{\"name\": \"here/x\", \"content\": \"x\"}]}"));
        const Run run
            = ZatgenRun::run({ QStringLiteral("--plugin"), inside, QStringLiteral("--plugin-out"), out, input });
        QCOMPARE(run.err, QByteArray());
        QCOMPARE(run.status, 0);
        QCOMPARE(readFile(dir.filePath(QStringLiteral("out/inner/x"))), QByteArray("x"));
    }
};

QTEST_GUILESS_MAIN(TestZatgenPlugins)
#include "tst_zatgen_plugins.moc"

// Runs the built zatedit: --help and --version without a display, the messages and the exit
// status of bad usage, and a file named on the command line, which the editor opens.

#include "processrun.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <unistd.h>

namespace {

// Removes a file named by its bytes at the end of the scope: QTemporaryDir cannot remove a name
// that is not UTF-8.
struct RemovedAtEnd {
    QByteArray name;
    ~RemovedAtEnd() { ::unlink(name.constData()); }
};

using ProcessRun::Run;

} // namespace

class TestCommandLine : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;

    QString path(const QString &name) const { return m_dir.filePath(name); }

    // An environment of the test's own for the editor: its settings, recovery files and runtime
    // folder under the test's folder. `display` false takes away every way to a screen, as on a
    // machine without one; true gives it the offscreen one.
    QProcessEnvironment environment(bool display) const
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        for (const char *name : { "DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM" })
            env.remove(QLatin1String(name));
        if (display)
            env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        env.insert(QStringLiteral("HOME"), path(QStringLiteral("home")));
        env.insert(QStringLiteral("XDG_CONFIG_HOME"), path(QStringLiteral("config")));
        env.insert(QStringLiteral("XDG_DATA_HOME"), path(QStringLiteral("data")));
        env.insert(QStringLiteral("XDG_RUNTIME_DIR"), path(QStringLiteral("runtime")));
        return env;
    }

    Run run(const QStringList &arguments, bool display)
    {
        QProcess process;
        process.setProcessEnvironment(environment(display));
        process.setWorkingDirectory(m_dir.path());
        process.start(QStringLiteral(ZATEDIT_PATH), arguments);
        return ProcessRun::finish(process, 60000);
    }

    QString settingsFile() const { return path(QStringLiteral("config/zatedit/zatedit.conf")); }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        QVERIFY(QFile::exists(QStringLiteral(ZATEDIT_PATH)));
        for (const char *folder : { "home", "config", "data", "runtime" })
            QVERIFY(QDir(m_dir.path()).mkdir(QLatin1String(folder)));
        QVERIFY(QFile::setPermissions(path(QStringLiteral("runtime")),
                                      QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    }

    void version_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::newRow("--version") << QStringList { QStringLiteral("--version") };
        QTest::newRow("-v") << QStringList { QStringLiteral("-v") };
        // Qt's own options are taken out before the arguments are parsed.
        QTest::newRow("after Qt options") << QStringList {
            QStringLiteral("-style"), QStringLiteral("fusion"), QStringLiteral("-reverse"), QStringLiteral("--version")
        };
        QTest::newRow("before a file") << QStringList { QStringLiteral("--version"), QStringLiteral("defs.zatdef") };
    }

    void version()
    {
        QFETCH(QStringList, arguments);
        const Run result = run(arguments, false);
        QCOMPARE(result.status, 0);
        QCOMPARE(result.out, QByteArray("zatedit " ZAT16_VERSION_TEXT "\n"));
        QCOMPARE(result.err, QByteArray());
    }

    void help_data()
    {
        QTest::addColumn<QString>("option");
        QTest::newRow("--help") << QStringLiteral("--help");
        QTest::newRow("-h") << QStringLiteral("-h");
    }

    void help()
    {
        QFETCH(QString, option);
        const Run result = run({ option }, false);
        QCOMPARE(result.status, 0);
        QCOMPARE(result.err, QByteArray());
        const QList<QByteArray> lines = result.out.split('\n');
        QCOMPARE(lines.value(0), QByteArray("Usage: " ZATEDIT_PATH " [options] [file]"));
        QCOMPARE(lines.value(1), QByteArray("Edits the tag definitions of the ZAT16 device protocol."));
        QVERIFY(result.out.contains("\n  -h, --help "));
        QVERIFY(result.out.contains("\n  -v, --version "));
        QVERIFY(result.out.contains("\nArguments:\n  file "));
        QVERIFY(result.out.contains("The definitions file (.zatdef) to open."));
        // Qt's options only with --help-all.
        QVERIFY(!result.out.contains("--platform"));
    }

    void helpAllListsQtOptions()
    {
        const Run result = run({ QStringLiteral("--help-all") }, false);
        QCOMPARE(result.status, 0);
        QVERIFY(result.out.startsWith("Usage: " ZATEDIT_PATH " [options] [file]\n"));
        QVERIFY(result.out.contains("\n  --platform "));
        QVERIFY(result.out.contains("\n  -v, --version "));
    }

    void badUsage_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<bool>("display");
        QTest::addColumn<QByteArray>("message");
        QTest::newRow("unknown option") << QStringList { QStringLiteral("--frobnicate") } << true
                                        << QByteArray("zatedit: Unknown option 'frobnicate'.\n");
        QTest::newRow("unknown option before a file")
            << QStringList { QStringLiteral("-x"), QStringLiteral("defs.zatdef") } << true
            << QByteArray("zatedit: Unknown option 'x'.\n");
        // Wrong usage with the help is reported, as zatgen does, also without a display.
        QTest::newRow("unknown option with --help")
            << QStringList { QStringLiteral("--frobnicate"), QStringLiteral("--help") } << false
            << QByteArray("zatedit: Unknown option 'frobnicate'.\n");
        QTest::newRow("two files") << QStringList { QStringLiteral("a.zatdef"), QStringLiteral("b.zatdef") } << true
                                   << QByteArray("zatedit: only one file can be opened\n");
        // Without a display the toolkit used to end the program as it started, before the usage
        // was looked at.
        QTest::newRow("unknown option without a display") << QStringList { QStringLiteral("--frobnicate") } << false
                                                          << QByteArray("zatedit: Unknown option 'frobnicate'.\n");
        QTest::newRow("two files without a display")
            << QStringList { QStringLiteral("a.zatdef"), QStringLiteral("b.zatdef") } << false
            << QByteArray("zatedit: only one file can be opened\n");
        // Qt takes "--help" as the title of the window: no window opens where no screen is.
        QTest::newRow("--help as the value of a Qt option")
            << QStringList { QStringLiteral("-qwindowtitle"), QStringLiteral("--help") } << false
            << QByteArray("zatedit: --help or --version was given as the value of an option\n");
    }

    void badUsage()
    {
        QFETCH(QStringList, arguments);
        QFETCH(bool, display);
        QFETCH(QByteArray, message);
        const Run result = run(arguments, display);
        QCOMPARE(result.status, 2);
        QCOMPARE(result.err, message);
        QCOMPARE(result.out, QByteArray());
    }

    // Without a display the editor says so, rather than the toolkit's advice about its plugins.
    void noDisplay_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::newRow("no file") << QStringList();
        QTest::newRow("a file") << QStringList { QStringLiteral("defs.zatdef") };
    }

    void noDisplay()
    {
        QFETCH(QStringList, arguments);
        const Run result = run(arguments, false);
        QCOMPARE(result.status, 1);
        QCOMPARE(result.err,
                 QByteArray(
                     "zatedit: no display to show the window on (neither DISPLAY nor WAYLAND_DISPLAY is set)\n"));
        QCOMPARE(result.out, QByteArray());
    }

    // The file is opened as the bytes it is named with, also after "--" where it looks like an
    // option; the editor lists it at once among the recent files, with its absolute path.
    void fileIsOpened_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<bool>("afterDashes");
        QTest::newRow("name not UTF-8") << QByteArray("caf\xE9.zatdef") << false;
        QTest::newRow("name like an option, after --") << QByteArray("-v") << true;
    }

    void fileIsOpened()
    {
        QFETCH(QByteArray, name);
        QFETCH(bool, afterDashes);
        QFile::remove(settingsFile());
        const QByteArray full = QFile::encodeName(m_dir.path()) + '/' + name;
        const int fd = ::open(full.constData(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        QVERIFY(fd >= 0);
        const QByteArray defs = "<zat16>\n  <tag name=\"Power\" id=\"0x2001\"/>\n</zat16>\n";
        QCOMPARE(::write(fd, defs.constData(), size_t(defs.size())), ssize_t(defs.size()));
        ::close(fd);
        const RemovedAtEnd removed { full };

        // Through the shell, which passes the name's bytes as they are.
        QProcess process;
        QProcessEnvironment env = environment(true);
        env.insert(QStringLiteral("ZATEDIT"), QStringLiteral(ZATEDIT_PATH));
        process.setProcessEnvironment(env);
        process.setWorkingDirectory(m_dir.path());
        QString script = QStringLiteral("exec \"$ZATEDIT\" ");
        if (afterDashes)
            script += QStringLiteral("-- ");
        // printf turns the name's bytes, written as \ooo, back into the bytes.
        QString octal;
        for (char c : name)
            octal += QStringLiteral("\\%1").arg(uint(uchar(c)), 3, 8, QLatin1Char('0'));
        script += QStringLiteral("\"$(printf '%1')\"").arg(octal);
        process.start(QStringLiteral("/bin/sh"), { QStringLiteral("-c"), script });
        QVERIFY(process.waitForStarted());

        // The list keeps the name's bytes, percent-encoded.
        const QString expected = QStringLiteral("file://") + QString::fromLatin1(full.toPercentEncoding("/"));
        QVariant recent;
        // Until the editor has opened the file; it runs until it is killed.
        QTRY_VERIFY_WITH_TIMEOUT(
            (recent = QSettings(settingsFile(), QSettings::IniFormat).value(QStringLiteral("ZAT16Editor/RecentFiles")))
                .isValid(),
            60000);
        process.kill();
        process.waitForFinished();
        QCOMPARE(recent.toStringList(), QStringList(expected));
    }
};

QTEST_GUILESS_MAIN(TestCommandLine)

#include "tst_commandline.moc"

// The save sequence on real files: the first save, the single backup generation, a write that
// fails on a full device, and saves killed at random moments, after which the file always holds
// a complete version and no version is lost.

#include "item.h"
#include "parser.h"
#include "savesequence.h"
#include "writerxml.h"

#include <QtTest>

#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <sys/stat.h>

#include <cerrno>
#include <csignal>
#include <memory>

using namespace ZAT16;

namespace {

QByteArray readFile(const QString &path, bool *exists = nullptr)
{
    QFile file(path);
    const bool open = file.open(QIODevice::ReadOnly);
    if (exists)
        *exists = open;
    return open ? file.readAll() : QByteArray();
}

bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size();
}

std::unique_ptr<Item> load(const QString &path)
{
    Parser parser;
    if (!parser.parse(path))
        return nullptr;
    return std::unique_ptr<Item>(parser.takeRoot());
}

QByteArray encode(const Item *root)
{
    WriterXml writer;
    return writer.encode(root);
}

ino_t inode(const QString &path)
{
    struct stat st;
    return ::stat(QFile::encodeName(path).constData(), &st) == 0 ? st.st_ino : 0;
}

} // namespace

class TestSaveSequence : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    std::unique_ptr<Item> m_first;
    std::unique_ptr<Item> m_second;
    QByteArray m_firstText;
    QByteArray m_secondText;

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        m_first = load(QStringLiteral(ZAT16_EXAMPLES "/weather-station.zatdef"));
        m_second = load(QStringLiteral(ZAT16_EXAMPLES "/battery-charger.zatdef"));
        QVERIFY(m_first && m_second);
        m_firstText = encode(m_first.get());
        m_secondText = encode(m_second.get());
        QVERIFY(m_firstText != m_secondText);
    }

    void firstSaveCreatesOnlyTheFile()
    {
        const QString path = m_dir.filePath(QStringLiteral("first.zatdef"));
        SaveSequence sequence(path);
        QVERIFY(sequence.run(m_first.get()));
        QCOMPARE(sequence.failed, SaveSequence::Saved);
        QCOMPARE(readFile(path), m_firstText);
        QVERIFY(!QFile::exists(path + QStringLiteral(".bak")));
        QVERIFY(!QFile::exists(path + QStringLiteral(".tmp")));
    }

    void backupIsThePreviousFile()
    {
        const QString path = m_dir.filePath(QStringLiteral("twice.zatdef"));
        QVERIFY(SaveSequence(path).run(m_first.get()));
        const ino_t before = inode(path);
        QVERIFY(SaveSequence(path).run(m_second.get()));
        QCOMPARE(readFile(path), m_secondText);
        QCOMPARE(readFile(path + QStringLiteral(".bak")), m_firstText);
        // The old file itself became the backup, by a link: its name never stood empty.
        QCOMPARE(inode(path + QStringLiteral(".bak")), before);
        QVERIFY(inode(path) != before);
        QVERIFY(SaveSequence(path).run(m_first.get()));
        QCOMPARE(readFile(path + QStringLiteral(".bak")), m_secondText);
        QVERIFY(!QFile::exists(path + QStringLiteral(".tmp")));
    }

    void fullDeviceLeavesEverythingAsItWas()
    {
        const QString path = m_dir.filePath(QStringLiteral("full.zatdef"));
        QVERIFY(writeFile(path, m_firstText));
        QVERIFY(writeFile(path + QStringLiteral(".bak"), "the old backup"));
        QVERIFY(QFile::link(QStringLiteral("/dev/full"), path + QStringLiteral(".tmp")));
        SaveSequence sequence(path);
        QVERIFY(!sequence.run(m_second.get()));
        QCOMPARE(sequence.failed, SaveSequence::WriteTemporary);
        QCOMPARE(sequence.writerError,
                 QStringLiteral("Error writing ") + path + QStringLiteral(".tmp:\n  No space left on device"));
        QCOMPARE(readFile(path), m_firstText);
        QCOMPARE(readFile(path + QStringLiteral(".bak")), QByteArray("the old backup"));
    }

    // A save counts once the temporary file has taken the file's name. Whenever the saving
    // process dies, the file holds a complete version, and the version of the last save that
    // had completed is not lost.
    void killedWhileSaving()
    {
        const QString path = m_dir.filePath(QStringLiteral("killed.zatdef"));
        const QString firstPath = QStringLiteral(ZAT16_EXAMPLES "/weather-station.zatdef");
        const QString secondPath = QStringLiteral(ZAT16_EXAMPLES "/battery-charger.zatdef");
        // As after two saves: one version in the file, the other in the backup.
        QVERIFY(writeFile(path, m_firstText));
        QVERIFY(writeFile(path + QStringLiteral(".bak"), m_secondText));

        QRandomGenerator rng(20261122);
        QByteArray lastSaved = m_firstText;
        for (int kill = 0; kill < 200; ++kill) {
            QProcess child;
            child.start(QStringLiteral(SAVECHILD_PATH), {path, firstPath, secondPath});
            QVERIFY(child.waitForStarted());
            QVERIFY(child.waitForReadyRead(10000));
            QCOMPARE(child.readLine(), QByteArray("ready\n"));
            QTest::qSleep(int(rng.bounded(25)));
            QCOMPARE(child.state(), QProcess::Running);
            ::kill(pid_t(child.processId()), SIGKILL);
            QVERIFY(child.waitForFinished());

            bool fileExists = false;
            bool backupExists = false;
            bool temporaryExists = false;
            const QByteArray file = readFile(path, &fileExists);
            const QByteArray backup = readFile(path + QStringLiteral(".bak"), &backupExists);
            const QByteArray temporary = readFile(path + QStringLiteral(".tmp"), &temporaryExists);
            const QString state = QStringLiteral("after kill %1: file %2, backup %3, temporary %4 bytes")
                                      .arg(kill)
                                      .arg(fileExists ? file.size() : -1)
                                      .arg(backupExists ? backup.size() : -1)
                                      .arg(temporaryExists ? temporary.size() : -1);
            QVERIFY2(fileExists, qPrintable(state));
            QVERIFY2(file == m_firstText || file == m_secondText, qPrintable(state));
            QVERIFY2(!backupExists || backup == m_firstText || backup == m_secondText, qPrintable(state));
            // What the file held when this child started, the last save known to be complete, is
            // still there: in the file, the backup, or a complete temporary file (while it is
            // being saved again).
            QVERIFY2(file == lastSaved || (backupExists && backup == lastSaved)
                         || (temporaryExists && temporary == lastSaved),
                     qPrintable(state));
            lastSaved = file;
        }
    }

    // Given bytes (a viewer's text) replace the file through the temporary file alone.
    void replaceWithWritesExactlyTheBytes()
    {
        const QString path = m_dir.filePath(QStringLiteral("generated.h"));
        const QByteArray bytes("\xEF\xBB\xBF#define A 1\r\nno final line break \xE2\x82\xAC", 39);
        SaveSequence sequence(path);
        QVERIFY(sequence.replaceWith(bytes));
        QCOMPARE(sequence.failed, SaveSequence::Saved);
        QCOMPARE(readFile(path), bytes);
        QVERIFY(!QFile::exists(path + QStringLiteral(".tmp")));
        QVERIFY(!QFile::exists(path + QStringLiteral(".bak")));

        // An existing file is replaced in one rename, and no backup is kept.
        const ino_t before = inode(path);
        QVERIFY(SaveSequence(path).replaceWith("second"));
        QCOMPARE(readFile(path), QByteArray("second"));
        QVERIFY(inode(path) != before);
        QVERIFY(!QFile::exists(path + QStringLiteral(".tmp")));
        QVERIFY(!QFile::exists(path + QStringLiteral(".bak")));

        QVERIFY(SaveSequence(path).replaceWith(QByteArray()));
        bool exists = false;
        QCOMPARE(readFile(path, &exists), QByteArray());
        QVERIFY(exists);
    }

    void replaceWithOnFullDevice()
    {
        const QString path = m_dir.filePath(QStringLiteral("full.h"));
        QVERIFY(writeFile(path, "old text"));
        QVERIFY(QFile::link(QStringLiteral("/dev/full"), path + QStringLiteral(".tmp")));
        SaveSequence sequence(path);
        QVERIFY(!sequence.replaceWith(QByteArray(100000, 'x')));
        QCOMPARE(sequence.failed, SaveSequence::WriteTemporary);
        QCOMPARE(sequence.writerError,
                 QStringLiteral("Error writing ") + path + QStringLiteral(".tmp:\n  No space left on device"));
        QCOMPARE(readFile(path), QByteArray("old text"));
        QVERIFY(!QFileInfo::exists(path + QStringLiteral(".tmp")) && !QFileInfo(path + QStringLiteral(".tmp")).isSymLink());
    }

    void replaceWithUnopenableTemporary()
    {
        const QString path = m_dir.filePath(QStringLiteral("missing-dir/out.h"));
        SaveSequence sequence(path);
        QVERIFY(!sequence.replaceWith("text"));
        QCOMPARE(sequence.failed, SaveSequence::WriteTemporary);
        QCOMPARE(sequence.writerError, QStringLiteral("Failed to open output file ") + path + QStringLiteral(".tmp."));
    }

    void replaceWithFailingRename()
    {
        const QString path = m_dir.filePath(QStringLiteral("rename.h"));
        QVERIFY(writeFile(path, "old text"));
        const SaveSequence::Operations saved = SaveSequence::operations();
        SaveSequence::operations().rename = [](const char *, const char *) {
            errno = EACCES;
            return -1;
        };
        SaveSequence sequence(path);
        const bool ok = sequence.replaceWith("new text");
        SaveSequence::operations() = saved;
        QVERIFY(!ok);
        QCOMPARE(sequence.failed, SaveSequence::RenameTemporary);
        QCOMPARE(sequence.errorNumber, EACCES);
        QCOMPARE(readFile(path), QByteArray("old text"));
        QVERIFY(!QFile::exists(path + QStringLiteral(".tmp")));
    }
};

QTEST_GUILESS_MAIN(TestSaveSequence)
#include "tst_savesequence.moc"

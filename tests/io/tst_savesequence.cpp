// The save sequence on real files: the first save, the single backup generation, symbolic links,
// modes, owners and hard links, failures at every step (a full disk among them), content that
// would not load again, saves killed at random moments, and saves of one file at once.

#include "item.h"
#include "parser.h"
#include "savesequence.h"
#include "testfiles.h"
#include "writerxml.h"

#include <QtTest>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <functional>
#include <memory>

using namespace ZAT16;

namespace {

using TestFiles::readFile;
using TestFiles::writeFile;

std::unique_ptr<Item> load(const QString &path)
{
    Parser parser;
    if (!parser.parse(path))
        return nullptr;
    return std::unique_ptr<Item>(parser.takeRoot());
}

std::unique_ptr<Item> loadText(const QByteArray &text)
{
    Parser parser;
    if (!parser.parse(text))
        return nullptr;
    return std::unique_ptr<Item>(parser.takeRoot());
}

QByteArray encode(const Item *root)
{
    WriterXml writer;
    return writer.encode(root);
}

struct stat fileStatus(const QString &path)
{
    struct stat st = {};
    ::lstat(QFile::encodeName(path).constData(), &st);
    return st;
}

ino_t inode(const QString &path)
{
    return fileStatus(path).st_ino;
}

// The temporary files of saves of `name` that are left in `folder`.
QStringList temporaries(const QString &folder, const QString &name)
{
    return QDir(folder).entryList({ name + QStringLiteral(".tmp*") }, QDir::Files | QDir::System | QDir::Hidden);
}

QString systemText(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

// A disk that fills up after `writeBudget` more bytes.
qsizetype writeBudget = 0;
ssize_t writeUntilFull(int fd, const void *data, size_t size)
{
    if (writeBudget <= 0) {
        errno = ENOSPC;
        return -1;
    }
    const ssize_t n = ::write(fd, data, qMin<size_t>(size, size_t(writeBudget)));
    if (n > 0)
        writeBudget -= n;
    return n;
}

int linkRefused(const char *, const char *)
{
    errno = EACCES;
    return -1;
}

// Refuses to rename the temporary file into place; the backup's renames go through.
int renameIntoPlaceRefused(const char *from, const char *to)
{
    if (QByteArray(to).endsWith(".bak"))
        return ::rename(from, to);
    errno = EACCES;
    return -1;
}

int chownRefused(int, uid_t, gid_t)
{
    errno = EPERM;
    return -1;
}

// A tree built in code: one tag with an enumeration list.
std::unique_ptr<Item> tagWithValue(const QString &tagName, const QString &valueName)
{
    auto root = std::make_unique<Item>();
    root->type = Root;
    auto *tag = new Item;
    tag->type = Tag;
    tag->name = tagName;
    tag->id = 0x1001;
    tag->hasId = true;
    root->appendChild(tag);
    auto *list = new Item;
    list->type = Enums;
    tag->appendChild(list);
    auto *value = new Item;
    value->type = Enum;
    value->name = valueName;
    value->id = 1;
    value->hasId = true;
    list->appendChild(value);
    return root;
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
    QString m_firstPath;
    QString m_secondPath;

    QString folder(const QString &name)
    {
        const QString path = m_dir.filePath(name);
        QDir().mkpath(path);
        return path;
    }

    // Runs savechild processes that kill at random moments; after each kill the state of the
    // files is checked by `check`, which returns an empty string or what is wrong.
    void killSaves(const QString &path,
                   int kills,
                   const std::function<QString(const QByteArray &lastSaved)> &check,
                   QByteArray *lastSaved)
    {
        QRandomGenerator rng(20261124);
        for (int kill = 0; kill < kills; ++kill) {
            QProcess child;
            child.start(QStringLiteral(SAVECHILD_PATH), { path, m_firstPath, m_secondPath });
            QVERIFY(child.waitForStarted());
            QVERIFY(child.waitForReadyRead(10000));
            QCOMPARE(child.readLine(), QByteArray("ready\n"));
            QTest::qSleep(int(rng.bounded(25)));
            QCOMPARE(child.state(), QProcess::Running);
            ::kill(pid_t(child.processId()), SIGKILL);
            QVERIFY(child.waitForFinished());
            const QString problem = check(*lastSaved);
            QVERIFY2(problem.isEmpty(), qPrintable(QStringLiteral("after kill %1: %2").arg(kill).arg(problem)));
            const QByteArray file = readFile(path);
            if (file == m_firstText || file == m_secondText)
                *lastSaved = file;
        }
    }

    // Whether `content` is in one of the temporary files left beside `path`.
    bool inTemporary(const QString &path, const QByteArray &content)
    {
        const QFileInfo info(path);
        for (const QString &name : temporaries(info.path(), info.fileName())) {
            if (readFile(info.dir().filePath(name)) == content)
                return true;
        }
        return false;
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        m_firstPath = QStringLiteral(ZAT16_EXAMPLES "/weather-station.zatdef");
        m_secondPath = QStringLiteral(ZAT16_EXAMPLES "/battery-charger.zatdef");
        m_first = load(m_firstPath);
        m_second = load(m_secondPath);
        QVERIFY(m_first && m_second);
        m_firstText = encode(m_first.get());
        m_secondText = encode(m_second.get());
        QVERIFY(m_firstText != m_secondText);
    }

    void cleanup() { SaveSequence::operations() = SaveSequence::systemOperations(); }

    void firstSaveCreatesOnlyTheFile()
    {
        const QString dir = folder(QStringLiteral("first"));
        const QString path = dir + QStringLiteral("/first.zatdef");
        SaveSequence sequence(path);
        QVERIFY(sequence.run(m_first.get()));
        QCOMPARE(sequence.failed, SaveSequence::Saved);
        QCOMPARE(sequence.errorMessage(), QString());
        QCOMPARE(readFile(path), m_firstText);
        QCOMPARE(QDir(dir).entryList(QDir::Files | QDir::System | QDir::Hidden),
                 QStringList { QStringLiteral("first.zatdef") });
        QVERIFY(sequence.temporaryPath.startsWith(path + QStringLiteral(".tmp")));
        QVERIFY(sequence.temporaryPath.size() > path.size() + 4);
        QVERIFY(!sequence.rewrittenInPlace);
    }

    void backupIsThePreviousFile()
    {
        const QString dir = folder(QStringLiteral("twice"));
        const QString path = dir + QStringLiteral("/twice.zatdef");
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
        QCOMPARE(QDir(dir).entryList(QDir::Files | QDir::System | QDir::Hidden),
                 QStringList({ QStringLiteral("twice.zatdef"), QStringLiteral("twice.zatdef.bak") }));
    }

    void stampIsTheWrittenFile()
    {
        const QString path = folder(QStringLiteral("stamp")) + QStringLiteral("/stamp.zatdef");
        SaveSequence sequence(path);
        QVERIFY(sequence.run(m_first.get()));
        QVERIFY(sequence.stamp.known && sequence.stamp.exists);
        QCOMPARE(sequence.stamp.size, m_firstText.size());
        QCOMPARE(sequence.stamp.inode, quint64(inode(path)));
        QCOMPARE(sequence.stamp.hash, FileStamp::hashOf(m_firstText));
        QVERIFY(sequence.stamp.sameContent(FileStamp::ofFile(path)));
    }

    // A name "FILE.tmp" that already exists, a symbolic link to another user's file say, is
    // neither written through nor renamed over the document.
    void existingTemporaryNameIsNotUsed_data()
    {
        QTest::addColumn<bool>("definitions");
        QTest::newRow("definitions") << true;
        QTest::newRow("viewer text") << false;
    }

    void existingTemporaryNameIsNotUsed()
    {
        QFETCH(bool, definitions);
        const QString dir = folder(QStringLiteral("tmplink-%1").arg(definitions));
        const QString path = dir + QStringLiteral("/doc.zatdef");
        const QString victim = folder(QStringLiteral("other-user")) + QStringLiteral("/private-%1").arg(definitions);
        QVERIFY(writeFile(victim, "another user's file"));
        QVERIFY(writeFile(path, "old"));
        QVERIFY(QFile::link(victim, path + QStringLiteral(".tmp")));
        SaveSequence sequence(path);
        QVERIFY(definitions ? sequence.run(m_first.get()) : sequence.replaceWith(m_firstText));
        QCOMPARE(readFile(victim), QByteArray("another user's file"));
        QVERIFY(QFileInfo(path + QStringLiteral(".tmp")).isSymLink());
        QCOMPARE(QFileInfo(path + QStringLiteral(".tmp")).symLinkTarget(), victim);
        QVERIFY(!QFileInfo(path).isSymLink());
        QCOMPARE(readFile(path), m_firstText);
    }

    // The disk fills up while the temporary file is written: the file and its backup stay as
    // they were, byte for byte, and no temporary file is left to keep the disk full.
    void fullDiskLeavesFileAndBackupAsTheyWere_data()
    {
        QTest::addColumn<bool>("definitions");
        QTest::addColumn<qsizetype>("budget");
        QTest::newRow("definitions, nothing written") << true << qsizetype(0);
        QTest::newRow("definitions, part written") << true << qsizetype(1000);
        QTest::newRow("viewer text, part written") << false << qsizetype(1000);
    }

    void fullDiskLeavesFileAndBackupAsTheyWere()
    {
        QFETCH(bool, definitions);
        QFETCH(qsizetype, budget);
        const QString dir = folder(QStringLiteral("full-%1-%2").arg(definitions).arg(budget));
        const QString path = dir + QStringLiteral("/full.zatdef");
        QVERIFY(writeFile(path, m_firstText));
        QVERIFY(writeFile(path + QStringLiteral(".bak"), "the old backup"));
        writeBudget = budget;
        SaveSequence::operations().write = writeUntilFull;
        SaveSequence sequence(path);
        QVERIFY(definitions ? !sequence.run(m_second.get()) : !sequence.replaceWith(m_secondText));
        QCOMPARE(sequence.failed, SaveSequence::WriteTemporary);
        QCOMPARE(sequence.errorMessage(),
                 QStringLiteral("Error writing ") + path + QStringLiteral(":\n  No space left on device"));
        QCOMPARE(readFile(path), m_firstText);
        QCOMPARE(readFile(path + QStringLiteral(".bak")), QByteArray("the old backup"));
        QCOMPARE(temporaries(dir, QStringLiteral("full.zatdef")), QStringList());
    }

    // Whatever step fails, the temporary file is gone afterwards and the file is as it was.
    void failedStepsRemoveTheTemporary_data()
    {
        QTest::addColumn<int>("operation");
        QTest::addColumn<int>("step");
        QTest::addColumn<QString>("message");
        QTest::addColumn<bool>("backupReplaced");
        QTest::newRow("link to the backup")
            << 0 << int(SaveSequence::RenameToBackup)
            << QStringLiteral("Could not rename %1 to %1.bak: ") + systemText(EACCES) << false;
        // The old file has become the backup by then; its own name still holds it.
        QTest::newRow("rename into place")
            << 1 << int(SaveSequence::RenameTemporary)
            << QStringLiteral("Could not rename %2 to %1: ") + systemText(EACCES) << true;
    }

    void failedStepsRemoveTheTemporary()
    {
        QFETCH(int, operation);
        QFETCH(int, step);
        QFETCH(QString, message);
        QFETCH(bool, backupReplaced);
        const QString dir = folder(QStringLiteral("failing-%1").arg(operation));
        const QString path = dir + QStringLiteral("/doc.zatdef");
        QVERIFY(writeFile(path, m_firstText));
        QVERIFY(writeFile(path + QStringLiteral(".bak"), "old backup"));
        if (operation == 0)
            SaveSequence::operations().link = linkRefused;
        else
            SaveSequence::operations().rename = renameIntoPlaceRefused;
        SaveSequence sequence(path);
        QVERIFY(!sequence.run(m_second.get()));
        QCOMPARE(int(sequence.failed), step);
        QCOMPARE(
            sequence.errorMessage(),
            QString(message).replace(QLatin1String("%1"), path).replace(QLatin1String("%2"), sequence.temporaryPath));
        QCOMPARE(readFile(path), m_firstText);
        QCOMPARE(readFile(path + QStringLiteral(".bak")), backupReplaced ? m_firstText : QByteArray("old backup"));
        QCOMPARE(temporaries(dir, QStringLiteral("doc.zatdef")), QStringList());
    }

    // A file that was deleted or moved away before the save has no content to take the place of
    // the backup, which therefore stays.
    void missingFileKeepsTheBackup()
    {
        const QString dir = folder(QStringLiteral("moved"));
        const QString path = dir + QStringLiteral("/doc.zatdef");
        QVERIFY(writeFile(path + QStringLiteral(".bak"), "the only older version"));
        QVERIFY(SaveSequence(path).run(m_first.get()));
        QCOMPARE(readFile(path), m_firstText);
        QCOMPARE(readFile(path + QStringLiteral(".bak")), QByteArray("the only older version"));
    }

    // Through a symbolic link the link's target is saved; the link stays, and the backup goes
    // beside the target.
    void savesThroughSymbolicLinks_data()
    {
        QTest::addColumn<bool>("relative");
        QTest::newRow("absolute link") << false;
        QTest::newRow("relative links, two hops") << true;
    }

    void savesThroughSymbolicLinks()
    {
        QFETCH(bool, relative);
        const QString work = folder(QStringLiteral("links-%1/work").arg(relative));
        const QString shared = folder(QStringLiteral("links-%1/shared").arg(relative));
        const QString target = shared + QStringLiteral("/real.zatdef");
        const QString link = work + QStringLiteral("/doc.zatdef");
        QVERIFY(writeFile(target, m_firstText));
        if (relative) {
            QVERIFY(::symlink("real.zatdef", QFile::encodeName(shared + QStringLiteral("/hop.zatdef")).constData())
                    == 0);
            QVERIFY(::symlink("../shared/hop.zatdef", QFile::encodeName(link).constData()) == 0);
        } else {
            QVERIFY(QFile::link(target, link));
        }
        SaveSequence sequence(link);
        QVERIFY(sequence.run(m_second.get()));
        QCOMPARE(sequence.targetPath, relative ? work + QStringLiteral("/../shared/real.zatdef") : target);
        QVERIFY(QFileInfo(link).isSymLink());
        QCOMPARE(readFile(link), m_secondText);
        QCOMPARE(readFile(target), m_secondText);
        QCOMPARE(readFile(target + QStringLiteral(".bak")), m_firstText);
        QCOMPARE(QDir(work).entryList(QDir::Files | QDir::System | QDir::Hidden),
                 QStringList { QStringLiteral("doc.zatdef") });
        QCOMPARE(temporaries(shared, QStringLiteral("real.zatdef")), QStringList());
    }

    void linkLoopIsRefused()
    {
        const QString dir = folder(QStringLiteral("loop"));
        const QString a = dir + QStringLiteral("/a.zatdef");
        QVERIFY(QFile::link(dir + QStringLiteral("/b.zatdef"), a));
        QVERIFY(QFile::link(a, dir + QStringLiteral("/b.zatdef")));
        SaveSequence sequence(a);
        QVERIFY(!sequence.run(m_first.get()));
        QCOMPARE(sequence.failed, SaveSequence::ResolvePath);
        QCOMPARE(sequence.errorMessage(),
                 QStringLiteral("Could not save ") + a + QStringLiteral(": ") + systemText(ELOOP));
    }

    void folderIsRefused()
    {
        const QString path = folder(QStringLiteral("a-folder.zatdef"));
        SaveSequence sequence(path);
        QVERIFY(!sequence.run(m_first.get()));
        QCOMPARE(sequence.errorMessage(),
                 QStringLiteral("Could not save ") + path + QStringLiteral(": ") + systemText(EISDIR));
        QVERIFY(QFileInfo(path).isDir());
    }

    void modeIsKept_data()
    {
        QTest::addColumn<int>("mode");
        for (int mode : { 0600, 0640, 0664, 0755, 0444, 0400 })
            QTest::newRow(qPrintable(QString::number(mode, 8))) << mode;
    }

    void modeIsKept()
    {
        QFETCH(int, mode);
        const QString path = folder(QStringLiteral("mode")) + QStringLiteral("/mode-%1.zatdef").arg(mode, 0, 8);
        QVERIFY(writeFile(path, m_firstText));
        QCOMPARE(::chmod(QFile::encodeName(path).constData(), mode_t(mode)), 0);
        SaveSequence sequence(path);
        QVERIFY(sequence.run(m_second.get()));
        QVERIFY(!sequence.rewrittenInPlace);
        QCOMPARE(readFile(path), m_secondText);
        QCOMPARE(int(fileStatus(path).st_mode & 07777), mode);
        QCOMPARE(int(fileStatus(path + QStringLiteral(".bak")).st_mode & 07777), mode);
    }

    void newFileGetsTheUsualMode()
    {
        const mode_t saved = ::umask(027);
        const QString path = folder(QStringLiteral("umask")) + QStringLiteral("/new.zatdef");
        const bool ok = SaveSequence(path).run(m_first.get());
        ::umask(saved);
        QVERIFY(ok);
        QCOMPARE(int(fileStatus(path).st_mode & 07777), 0640);
    }

    // The file's group is kept: in a set-group-ID folder a new file would get the folder's
    // group, elsewhere the user's own.
    void groupIsKept()
    {
        if (::geteuid() != 0)
            QSKIP("needs to give files groups of which the user is not a member");
        const QString dir = folder(QStringLiteral("setgid"));
        QCOMPARE(::chown(QFile::encodeName(dir).constData(), uid_t(-1), 4242), 0);
        QCOMPARE(::chmod(QFile::encodeName(dir).constData(), 02775), 0);
        const QString path = dir + QStringLiteral("/group.zatdef");
        QVERIFY(writeFile(path, m_firstText));
        QCOMPARE(::chown(QFile::encodeName(path).constData(), 4343, 4343), 0);
        QCOMPARE(::chmod(QFile::encodeName(path).constData(), 0660), 0);
        SaveSequence sequence(path);
        QVERIFY(sequence.run(m_second.get()));
        QVERIFY(!sequence.rewrittenInPlace);
        QCOMPARE(fileStatus(path).st_gid, gid_t(4343));
        QCOMPARE(fileStatus(path).st_uid, uid_t(4343));
        QCOMPARE(int(fileStatus(path).st_mode & 07777), 0660);
        QCOMPARE(readFile(path), m_secondText);
    }

    // Where the owner or group cannot be given to a new file, the file is rewritten in place
    // after its content was copied to the backup.
    void ownerThatCannotBeKeptRewritesInPlace()
    {
        if (::geteuid() != 0)
            QSKIP("needs a file of another owner");
        const QString dir = folder(QStringLiteral("owner"));
        const QString path = dir + QStringLiteral("/owned.zatdef");
        QVERIFY(writeFile(path, m_firstText));
        QCOMPARE(::chown(QFile::encodeName(path).constData(), 4444, 4444), 0);
        QCOMPARE(::chmod(QFile::encodeName(path).constData(), 0664), 0);
        const ino_t before = inode(path);
        SaveSequence::operations().fchown = chownRefused;
        SaveSequence sequence(path);
        QVERIFY(sequence.run(m_second.get()));
        QVERIFY(sequence.rewrittenInPlace);
        QCOMPARE(inode(path), before);
        QCOMPARE(fileStatus(path).st_uid, uid_t(4444));
        QCOMPARE(readFile(path), m_secondText);
        QCOMPARE(readFile(path + QStringLiteral(".bak")), m_firstText);
        // The backup could not get the file's group either: nobody but its owner may read it.
        QCOMPARE(int(fileStatus(path + QStringLiteral(".bak")).st_mode & 07777), 0600);
        QCOMPARE(temporaries(dir, QStringLiteral("owned.zatdef")), QStringList());
        QVERIFY(sequence.stamp.sameContent(FileStamp::ofFile(path)));
    }

    // A file with other hard links is rewritten in place, so that every name sees the new
    // content.
    void hardLinksAreKept()
    {
        const QString dir = folder(QStringLiteral("hardlinks"));
        const QString path = dir + QStringLiteral("/doc.zatdef");
        const QString other = dir + QStringLiteral("/other-name.zatdef");
        QVERIFY(writeFile(path, m_firstText));
        QCOMPARE(::chmod(QFile::encodeName(path).constData(), 0600), 0);
        QCOMPARE(::link(QFile::encodeName(path).constData(), QFile::encodeName(other).constData()), 0);
        SaveSequence sequence(path);
        QVERIFY(sequence.run(m_second.get()));
        QVERIFY(sequence.rewrittenInPlace);
        QCOMPARE(inode(path), inode(other));
        QCOMPARE(readFile(other), m_secondText);
        QCOMPARE(readFile(path + QStringLiteral(".bak")), m_firstText);
        QVERIFY(inode(path + QStringLiteral(".bak")) != inode(path));
        QCOMPARE(int(fileStatus(path + QStringLiteral(".bak")).st_mode & 07777), 0600);
        QCOMPARE(QDir(dir).entryList(QDir::Files | QDir::System | QDir::Hidden),
                 QStringList({ QStringLiteral("doc.zatdef"),
                               QStringLiteral("doc.zatdef.bak"),
                               QStringLiteral("other-name.zatdef") }));
    }

    // A full disk while a file is rewritten in place: the space is taken before anything is
    // overwritten, or the backup holds the previous version.
    void fullDiskWhileRewritingInPlace()
    {
        const QString dir = folder(QStringLiteral("hardlinks-full"));
        const QString path = dir + QStringLiteral("/doc.zatdef");
        QVERIFY(writeFile(path, m_firstText));
        QCOMPARE(::link(QFile::encodeName(path).constData(),
                        QFile::encodeName(dir + QStringLiteral("/other")).constData()),
                 0);
        // Enough for the temporary file and the backup copy, not for the rewrite.
        writeBudget = m_secondText.size() + m_firstText.size() + 10;
        SaveSequence::operations().write = writeUntilFull;
        SaveSequence sequence(path);
        QVERIFY(!sequence.run(m_second.get()));
        QCOMPARE(sequence.failed, SaveSequence::WriteInPlace);
        QCOMPARE(sequence.errorMessage(),
                 QStringLiteral(
                     "Error writing %1:\n  No space left on device\nThe version before this save is in %1.bak.")
                     .arg(path));
        QCOMPARE(readFile(path + QStringLiteral(".bak")), m_firstText);
        QCOMPARE(temporaries(dir, QStringLiteral("doc.zatdef")), QStringList());
    }

    // A save killed after it linked the file to the backup leaves two names for one file; the
    // next save does not take that for a hard link of the user's.
    void leftoversOfKilledSavesAreNotHardLinks()
    {
        const QString dir = folder(QStringLiteral("leftovers"));
        const QString path = dir + QStringLiteral("/doc.zatdef");
        QVERIFY(writeFile(path, m_firstText));
        QCOMPARE(::link(QFile::encodeName(path).constData(),
                        QFile::encodeName(path + QStringLiteral(".bak")).constData()),
                 0);
        const QString second = path + QStringLiteral(".tmpAbCdEfGh.bak");
        QCOMPARE(::link(QFile::encodeName(path).constData(), QFile::encodeName(second).constData()), 0);
        const ino_t before = inode(path);
        SaveSequence sequence(path);
        QVERIFY(sequence.run(m_second.get()));
        QVERIFY(!sequence.rewrittenInPlace);
        QVERIFY(inode(path) != before);
        QCOMPARE(readFile(path + QStringLiteral(".bak")), m_firstText);
        QVERIFY(!QFileInfo::exists(second));
        QCOMPARE(QDir(dir).entryList(QDir::Files | QDir::System | QDir::Hidden),
                 QStringList({ QStringLiteral("doc.zatdef"), QStringLiteral("doc.zatdef.bak") }));
    }

    // A name like those second names that is not one (its own part is not 8 characters) is
    // another hard link of the user's: it is kept, and the file rewritten in place.
    void usersOwnLinksAreKept()
    {
        const QString dir = folder(QStringLiteral("own-links"));
        const QString path = dir + QStringLiteral("/doc.zatdef");
        QVERIFY(writeFile(path, m_firstText));
        const QString mine = path + QStringLiteral(".tmp-mine.bak");
        QCOMPARE(::link(QFile::encodeName(path).constData(), QFile::encodeName(mine).constData()), 0);
        SaveSequence sequence(path);
        QVERIFY(sequence.run(m_second.get()));
        QVERIFY(sequence.rewrittenInPlace);
        QCOMPARE(readFile(mine), m_secondText);
    }

    // Without hard links the backup is a copy, and the file's name is never empty: when the last
    // rename fails, the file is still there as it was.
    void withoutHardLinksTheNameStaysFilled()
    {
        const QString dir = folder(QStringLiteral("no-links"));
        const QString path = dir + QStringLiteral("/doc.zatdef");
        QVERIFY(writeFile(path, m_firstText));
        QVERIFY(writeFile(path + QStringLiteral(".bak"), "old backup"));
        SaveSequence::operations().link = [](const char *, const char *) {
            errno = EPERM;
            return -1;
        };
        SaveSequence::operations().rename = renameIntoPlaceRefused;
        SaveSequence sequence(path);
        QVERIFY(!sequence.run(m_second.get()));
        QCOMPARE(sequence.failed, SaveSequence::RenameTemporary);
        QCOMPARE(readFile(path), m_firstText);
        QCOMPARE(readFile(path + QStringLiteral(".bak")), m_firstText);
        QCOMPARE(temporaries(dir, QStringLiteral("doc.zatdef")), QStringList());

        SaveSequence::operations().rename = ::rename;
        QVERIFY(SaveSequence(path).run(m_second.get()));
        QCOMPARE(readFile(path), m_secondText);
        QCOMPARE(readFile(path + QStringLiteral(".bak")), m_firstText);
        QVERIFY(inode(path + QStringLiteral(".bak")) != inode(path));
    }

    // The content on its way is readable by its owner alone, whatever the file's mode and group.
    void temporaryFileIsPrivateWhileWritten()
    {
        const QString dir = folder(QStringLiteral("private"));
        const QString path = dir + QStringLiteral("/shared.zatdef");
        QVERIFY(writeFile(path, m_firstText));
        QCOMPARE(::chmod(QFile::encodeName(path).constData(), 0664), 0);
        static mode_t seen = 0;
        seen = 0;
        SaveSequence::operations().write = [](int fd, const void *data, size_t size) -> ssize_t {
            struct stat st;
            if (::fstat(fd, &st) == 0)
                seen |= st.st_mode & 0077;
            return ::write(fd, data, size);
        };
        QVERIFY(SaveSequence(path).run(m_second.get()));
        QCOMPARE(int(seen), 0);
        QCOMPARE(int(fileStatus(path).st_mode & 07777), 0664);
    }

    // The file is compared with what the caller expects it to hold at the last moment, under the
    // lock: another content is not replaced.
    void expectedContentIsCheckedLast()
    {
        const QString dir = folder(QStringLiteral("expected"));
        const QString path = dir + QStringLiteral("/doc.zatdef");
        QVERIFY(writeFile(path, m_firstText));
        SaveSequence sequence(path);
        sequence.expectedContent = FileStamp::ofFile(path);
        QVERIFY(writeFile(path, "changed by another program"));
        QVERIFY(!sequence.run(m_second.get()));
        QCOMPARE(sequence.failed, SaveSequence::Changed);
        QCOMPARE(sequence.errorMessage(), path + QStringLiteral(" was changed by another program since it was opened"));
        QCOMPARE(readFile(path), QByteArray("changed by another program"));
        QVERIFY(!QFileInfo::exists(path + QStringLiteral(".bak")));
        QCOMPARE(temporaries(dir, QStringLiteral("doc.zatdef")), QStringList());

        // The same content, or a file that is gone, is no change.
        QVERIFY(writeFile(path, m_firstText));
        QVERIFY(sequence.run(m_second.get()));
        QVERIFY(QFile::remove(path));
        QVERIFY(sequence.run(m_second.get()));
    }

    // A file that was only partly read (text between its elements) is still a version: rewritten
    // in place, it goes to the backup like any other.
    void partlyReadFileGoesToTheBackup()
    {
        const QString dir = folder(QStringLiteral("partly"));
        const QString path = dir + QStringLiteral("/doc.zatdef");
        const QByteArray partly
            = "<zat16>\n  <tag name=\"A\" id=\"0x1001\"/>\n  x\n  <tag name=\"Unread\"/>\n</zat16>\n";
        QVERIFY(writeFile(path, partly));
        QVERIFY(writeFile(path + QStringLiteral(".bak"), "older backup"));
        QCOMPARE(::link(QFile::encodeName(path).constData(),
                        QFile::encodeName(dir + QStringLiteral("/other")).constData()),
                 0);
        SaveSequence sequence(path);
        QVERIFY(sequence.run(m_second.get()));
        QVERIFY(sequence.rewrittenInPlace);
        QCOMPARE(readFile(path + QStringLiteral(".bak")), partly);
    }

    // Without a backup (zatgen), a file rewritten in place keeps its old content in a safety copy
    // until the rewrite is done; after a failure the message says where it is.
    void safetyCopyWhileRewritingWithoutBackup()
    {
        const QString dir = folder(QStringLiteral("safety"));
        const QString path = dir + QStringLiteral("/doc.zatdef");
        QVERIFY(writeFile(path, m_firstText));
        QCOMPARE(::link(QFile::encodeName(path).constData(),
                        QFile::encodeName(dir + QStringLiteral("/other")).constData()),
                 0);
        writeBudget = m_secondText.size() + m_firstText.size() + 10;
        SaveSequence::operations().write = writeUntilFull;
        SaveSequence sequence(path);
        QVERIFY(!sequence.run(m_second.get(), SaveSequence::NoBackup));
        QCOMPARE(sequence.failed, SaveSequence::WriteInPlace);
        QVERIFY(sequence.previousVersionPath.startsWith(path + QStringLiteral(".tmp")));
        QCOMPARE(readFile(sequence.previousVersionPath), m_firstText);
        QCOMPARE(sequence.errorMessage(),
                 QStringLiteral("Error writing %1:\n  No space left on device\nThe version before this save is in %2.")
                     .arg(path, sequence.previousVersionPath));

        SaveSequence::operations() = SaveSequence::systemOperations();
        QVERIFY(QFile::remove(sequence.previousVersionPath));
        QVERIFY(writeFile(path, m_firstText));
        QVERIFY(sequence.run(m_second.get(), SaveSequence::NoBackup));
        QCOMPARE(readFile(path), m_secondText);
        QCOMPARE(QDir(dir).entryList(QDir::Files | QDir::System | QDir::Hidden),
                 QStringList({ QStringLiteral("doc.zatdef"), QStringLiteral("other") }));
    }

    // Content that would not load again, or not as it is, does not replace the file.
    void whatWouldNotLoadAgainIsNotSaved_data()
    {
        QTest::addColumn<QString>("tagName");
        QTest::addColumn<QString>("valueName");
        QTest::addColumn<QString>("detail");
        QTest::newRow("reserved name") << "Tag"
                                       << "One"
                                       << "the tag \"Tag\" would not load again (The name \"Tag\" is reserved.)";
        QTest::newRow("name starting with a digit") << "Power"
                                                    << "1abc"
                                                    << "the value \"1abc\" of tag \"Power\" would not load again "
                                                       "(Name must not start with a digit.)";
        QTest::newRow("control character in a name")
            << QStringLiteral("Po\x01wer") << "One"
            << QStringLiteral("the tag \"Po\x01wer\" would not load again (it holds "
                              "characters that a file cannot carry)");
    }

    void whatWouldNotLoadAgainIsNotSaved()
    {
        QFETCH(QString, tagName);
        QFETCH(QString, valueName);
        QFETCH(QString, detail);
        const QString dir = folder(
            QStringLiteral("refused-%1").arg(QTest::currentDataTag()).replace(QLatin1Char(' '), QLatin1Char('-')));
        const QString path = dir + QStringLiteral("/doc.zatdef");
        QVERIFY(writeFile(path, m_firstText));
        QVERIFY(writeFile(path + QStringLiteral(".bak"), "backup"));
        const std::unique_ptr<Item> root = tagWithValue(tagName, valueName);
        SaveSequence sequence(path);
        QVERIFY(!sequence.run(root.get()));
        QCOMPARE(sequence.failed, SaveSequence::Verify);
        QCOMPARE(sequence.detail, detail);
        QCOMPARE(sequence.errorMessage(), QStringLiteral("The file %1 was not saved: %2.").arg(path, detail));
        QCOMPARE(readFile(path), m_firstText);
        QCOMPARE(readFile(path + QStringLiteral(".bak")), QByteArray("backup"));
        QCOMPARE(temporaries(dir, QStringLiteral("doc.zatdef")), QStringList());
    }

    // The 13 bytes "<tag><bit/>]<" read (with two warnings) as a tag whose only child is empty.
    // Saved, the tag would come back as a blank line; a tag with only a blank line, saved,
    // would come back as nothing at all, which does not load. Neither save happens.
    void unstableSavesAreRefused()
    {
        const QString dir = folder(QStringLiteral("thirteen"));
        const QString path = dir + QStringLiteral("/doc.zatdef");
        const std::unique_ptr<Item> first = loadText("<tag><bit/>]<");
        QVERIFY(first);
        SaveSequence sequence(path);
        QVERIFY(!sequence.run(first.get()));
        QCOMPARE(sequence.detail, QStringLiteral("the document would not load again"));
        QVERIFY(!QFileInfo::exists(path));

        const std::unique_ptr<Item> second = loadText("<tag>\n\n</tag>");
        QVERIFY(second);
        QVERIFY(!sequence.run(second.get()));
        QCOMPARE(sequence.detail, QStringLiteral("the document would not load again (No decodable data found)"));
        QVERIFY(!QFileInfo::exists(path));
        QCOMPARE(QDir(dir).entryList(QDir::Files | QDir::System | QDir::Hidden), QStringList());
    }

    // A save counts once the temporary file has taken the file's name. Whenever the saving
    // process dies, the file holds a complete version, and the version of the last save that
    // had completed is not lost.
    void killedWhileSaving()
    {
        const QString dir = folder(QStringLiteral("killed"));
        const QString path = dir + QStringLiteral("/killed.zatdef");
        // As after two saves: one version in the file, the other in the backup.
        QVERIFY(writeFile(path, m_firstText));
        QVERIFY(writeFile(path + QStringLiteral(".bak"), m_secondText));
        QByteArray lastSaved = m_firstText;
        killSaves(
            path,
            200,
            [&](const QByteArray &saved) -> QString {
                bool fileExists = false;
                bool backupExists = false;
                const QByteArray file = readFile(path, &fileExists);
                const QByteArray backup = readFile(path + QStringLiteral(".bak"), &backupExists);
                if (!fileExists)
                    return QStringLiteral("the file's name is empty");
                if (file != m_firstText && file != m_secondText)
                    return QStringLiteral("the file holds %1 bytes that are no version").arg(file.size());
                if (backupExists && backup != m_firstText && backup != m_secondText)
                    return QStringLiteral("the backup holds %1 bytes that are no version").arg(backup.size());
                if (file != saved && backup != saved && !inTemporary(path, saved))
                    return QStringLiteral("the last saved version is lost");
                return QString();
            },
            &lastSaved);
    }

    // The same for a file that is rewritten in place (it has another hard link): the file may
    // be caught half rewritten, but then the backup holds the version before that save and the
    // temporary file the version being written.
    void killedWhileRewritingInPlace()
    {
        const QString dir = folder(QStringLiteral("killed-in-place"));
        const QString path = dir + QStringLiteral("/killed.zatdef");
        const QString other = dir + QStringLiteral("/other-name");
        QVERIFY(writeFile(path, m_firstText));
        QVERIFY(writeFile(path + QStringLiteral(".bak"), m_secondText));
        QCOMPARE(::link(QFile::encodeName(path).constData(), QFile::encodeName(other).constData()), 0);
        QByteArray lastSaved = m_firstText;
        int halfWritten = 0;
        killSaves(
            path,
            200,
            [&](const QByteArray &saved) -> QString {
                bool fileExists = false;
                bool backupExists = false;
                const QByteArray file = readFile(path, &fileExists);
                const QByteArray backup = readFile(path + QStringLiteral(".bak"), &backupExists);
                if (!fileExists)
                    return QStringLiteral("the file's name is empty");
                if (inode(path) != inode(other))
                    return QStringLiteral("the file lost its other name");
                if (!backupExists || (backup != m_firstText && backup != m_secondText))
                    return QStringLiteral("the backup is not a complete version");
                const bool complete = file == m_firstText || file == m_secondText;
                if (!complete) {
                    // Caught while rewriting: the backup holds the version before this save (the
                    // saves alternate), the temporary file the one being written.
                    ++halfWritten;
                    if (!inTemporary(path, backup == m_firstText ? m_secondText : m_firstText))
                        return QStringLiteral(
                            "the file is half written and the version being written is not in a temporary file");
                }
                if (file != saved && backup != saved && !inTemporary(path, saved))
                    return QStringLiteral("the last saved version is lost");
                return QString();
            },
            &lastSaved);
        qInfo("files caught half rewritten: %d of 200", halfWritten);
    }

    // Two processes save different versions of one file 50 times each, at once, while this one
    // reads the file all the time: every read is a complete version, and so is the end.
    void concurrentSavesNeverMix()
    {
        const QString dir = folder(QStringLiteral("concurrent"));
        const QString path = dir + QStringLiteral("/shared.zatdef");
        QVERIFY(writeFile(path, m_firstText));
        QProcess first;
        QProcess second;
        first.start(QStringLiteral(SAVECHILD_PATH),
                    { QStringLiteral("--times"), QStringLiteral("50"), path, m_firstPath });
        second.start(QStringLiteral(SAVECHILD_PATH),
                     { QStringLiteral("--times"), QStringLiteral("50"), path, m_secondPath });
        for (QProcess *child : { &first, &second }) {
            QVERIFY(child->waitForStarted());
            QVERIFY(child->waitForReadyRead(10000));
            QCOMPARE(child->readLine(), QByteArray("ready\n"));
        }
        first.write("go\n");
        second.write("go\n");
        first.waitForBytesWritten();
        second.waitForBytesWritten();
        int reads = 0;
        QSet<int> seen;
        QElapsedTimer timer;
        timer.start();
        while ((first.state() != QProcess::NotRunning || second.state() != QProcess::NotRunning)
               && timer.elapsed() < 120000) {
            bool exists = false;
            const QByteArray content = readFile(path, &exists);
            QVERIFY2(exists, "the file's name was empty");
            QVERIFY2(content == m_firstText || content == m_secondText,
                     qPrintable(QStringLiteral("read %1 bytes that are no version").arg(content.size())));
            seen.insert(content == m_firstText ? 1 : 2);
            ++reads;
            first.waitForFinished(0);
            second.waitForFinished(0);
        }
        for (QProcess *child : { &first, &second })
            QVERIFY(child->state() == QProcess::NotRunning || child->waitForFinished());
        QCOMPARE(first.readAllStandardOutput(), QByteArray());
        QCOMPARE(second.readAllStandardOutput(), QByteArray());
        QCOMPARE(first.exitCode(), 0);
        QCOMPARE(second.exitCode(), 0);
        const QByteArray end = readFile(path);
        QVERIFY(end == m_firstText || end == m_secondText);
        const QByteArray backup = readFile(path + QStringLiteral(".bak"));
        QVERIFY(backup == m_firstText || backup == m_secondText);
        QCOMPARE(temporaries(dir, QStringLiteral("shared.zatdef")), QStringList());
        qInfo("%d reads while saving, versions seen: %d", reads, int(seen.size()));
    }

    // Given bytes (a viewer's text) replace the file through the temporary file alone.
    void replaceWithWritesExactlyTheBytes()
    {
        const QString dir = folder(QStringLiteral("generated"));
        const QString path = dir + QStringLiteral("/generated.h");
        const QByteArray bytes("\xEF\xBB\xBF#define A 1\r\nno final line break \xE2\x82\xAC", 39);
        SaveSequence sequence(path);
        QVERIFY(sequence.replaceWith(bytes));
        QCOMPARE(sequence.failed, SaveSequence::Saved);
        QCOMPARE(readFile(path), bytes);
        QCOMPARE(QDir(dir).entryList(QDir::Files | QDir::System | QDir::Hidden),
                 QStringList { QStringLiteral("generated.h") });

        // An existing file is replaced in one rename, and no backup is kept.
        const ino_t before = inode(path);
        QVERIFY(SaveSequence(path).replaceWith("second"));
        QCOMPARE(readFile(path), QByteArray("second"));
        QVERIFY(inode(path) != before);
        QCOMPARE(QDir(dir).entryList(QDir::Files | QDir::System | QDir::Hidden),
                 QStringList { QStringLiteral("generated.h") });

        QVERIFY(SaveSequence(path).replaceWith(QByteArray()));
        bool exists = false;
        QCOMPARE(readFile(path, &exists), QByteArray());
        QVERIFY(exists);
    }

    void replaceWithInMissingFolder()
    {
        const QString path = m_dir.filePath(QStringLiteral("missing-dir/out.h"));
        SaveSequence sequence(path);
        QVERIFY(!sequence.replaceWith("text"));
        QCOMPARE(sequence.failed, SaveSequence::CreateTemporary);
        QCOMPARE(sequence.errorMessage(),
                 QStringLiteral("Could not create a temporary file beside ") + path + QStringLiteral(": ")
                     + systemText(ENOENT));
    }
};

QTEST_GUILESS_MAIN(TestSaveSequence)
#include "tst_savesequence.moc"

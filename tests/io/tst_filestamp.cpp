// What a file was when it was read or written, and whether it still is.

#include "filestamp.h"
#include "parser.h"
#include "testfiles.h"

#include <QtTest>

#include <QFile>
#include <QTemporaryDir>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace ZAT16;

namespace {

using TestFiles::writeFile;

} // namespace

class TestFileStamp : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;

private slots:
    void ofFile()
    {
        const QString path = m_dir.filePath(QStringLiteral("a.zatdef"));
        QVERIFY(writeFile(path, "<zat16/>"));
        const FileStamp stamp = FileStamp::ofFile(path);
        QVERIFY(stamp.known && stamp.exists);
        QCOMPARE(stamp.size, 8);
        QCOMPARE(stamp.hash, FileStamp::hashOf("<zat16/>"));
        struct stat st;
        QCOMPARE(::stat(QFile::encodeName(path).constData(), &st), 0);
        QCOMPARE(stamp.inode, quint64(st.st_ino));
        QCOMPARE(stamp.modified, qint64(st.st_mtim.tv_sec) * 1000000000 + st.st_mtim.tv_nsec);

        const FileStamp missing = FileStamp::ofFile(m_dir.filePath(QStringLiteral("missing")));
        QVERIFY(missing.known && !missing.exists);
        QVERIFY(!FileStamp::ofFile(m_dir.path()).known);
    }

    // The same content is the same file to the user, whatever its time or inode; another
    // content of the same size is not.
    void sameContent()
    {
        const QString path = m_dir.filePath(QStringLiteral("b.zatdef"));
        QVERIFY(writeFile(path, "<zat16><tag name=\"A\"/></zat16>"));
        const FileStamp before = FileStamp::ofFile(path);
        QVERIFY(before.sameContent(before));
        QVERIFY(QFile::remove(path));
        QVERIFY(writeFile(path, "<zat16><tag name=\"A\"/></zat16>"));
        const FileStamp copy = FileStamp::ofFile(path);
        QVERIFY(before.sameContent(copy));
        QVERIFY(writeFile(path, "<zat16><tag name=\"B\"/></zat16>"));
        const FileStamp changed = FileStamp::ofFile(path);
        QCOMPARE(changed.size, before.size);
        QVERIFY(!before.sameContent(changed));
        QVERIFY(!before.sameContent(FileStamp::ofFile(m_dir.filePath(QStringLiteral("gone")))));
        QVERIFY(!before.sameContent(FileStamp()));
        QVERIFY(!FileStamp().sameContent(FileStamp()));
        QVERIFY(FileStamp::ofFile(m_dir.filePath(QStringLiteral("x")))
                    .sameContent(FileStamp::ofFile(m_dir.filePath(QStringLiteral("y")))));
    }

    // The stamp of a parse is taken from the file that was read, even when its name has been
    // given to another file since.
    void stampOfAParse()
    {
        const QString path = m_dir.filePath(QStringLiteral("parsed.zatdef"));
        const QByteArray text = "<zat16>\n  <tag name=\"A\" id=\"0x1001\"/>\n</zat16>\n";
        QVERIFY(writeFile(path, text));
        Parser parser;
        FileStamp stamp;
        QVERIFY(parser.parse(path, &stamp));
        QVERIFY(stamp.known);
        QCOMPARE(stamp.hash, FileStamp::hashOf(text));
        QVERIFY(stamp.sameContent(FileStamp::ofFile(path)));

        QVERIFY(!parser.parse(m_dir.filePath(QStringLiteral("missing.zatdef")), &stamp));
        QVERIFY(!stamp.known);
    }

    // A file read in pieces has the hash of its content in one piece; one byte more or another
    // byte anywhere gives another hash.
    void hashOfLargeContent()
    {
        QByteArray content;
        for (int i = 0; i < 200001; ++i)
            content += char('a' + i % 23);
        const QString path = m_dir.filePath(QStringLiteral("large"));
        QVERIFY(writeFile(path, content));
        const FileStamp stamp = FileStamp::ofFile(path);
        QCOMPARE(stamp.hash, FileStamp::hashOf(content));
        QCOMPARE(stamp.hash.size(), 16);
        QByteArray changed = content;
        changed[150000] = 'Z';
        QVERIFY(FileStamp::hashOf(changed) != stamp.hash);
        QVERIFY(FileStamp::hashOf(content + 'a') != stamp.hash);
        QVERIFY(FileStamp::hashOf(content.left(65536)) != FileStamp::hashOf(content.left(65537)));
    }

    // A file written to after it was opened (while a parse read it, say) has no stamp: the tree
    // holds neither version, and the next save must ask.
    void changedSinceOpened()
    {
        const QString path = m_dir.filePath(QStringLiteral("opened"));
        QVERIFY(writeFile(path, "first version"));
        const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY);
        QVERIFY(fd >= 0);
        const FileStamp opened = FileStamp::metadataOf(fd);
        QVERIFY(!opened.known && opened.exists);
        QVERIFY(FileStamp::ofDescriptor(fd, &opened).known);
        {
            QFile other(path);
            QVERIFY(other.open(QIODevice::ReadWrite));
            QVERIFY(other.seek(0));
            QCOMPARE(other.write("FIRST"), qint64(5));
        }
        QVERIFY(!FileStamp::ofDescriptor(fd, &opened).known);
        QVERIFY(FileStamp::ofDescriptor(fd).known);
        ::close(fd);
    }

    void ofWritten()
    {
        const QString path = m_dir.filePath(QStringLiteral("written"));
        QVERIFY(writeFile(path, "abc"));
        const FileStamp stamp = FileStamp::ofWritten(path, "abc");
        QVERIFY(stamp.known);
        QVERIFY(stamp.sameContent(FileStamp::ofFile(path)));
        // A size that is not the content's: nothing is known.
        QVERIFY(!FileStamp::ofWritten(path, "abcd").known);
    }
};

QTEST_GUILESS_MAIN(TestFileStamp)
#include "tst_filestamp.moc"

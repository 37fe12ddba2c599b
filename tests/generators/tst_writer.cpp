// The writer frame: destinations (file, standard output, memory), error texts and the texts
// that the generators read.

#include "generatortest.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

using namespace ZAT16;

namespace {

// Writes a fixed text and records what the frame showed it while it ran.
class RecordingWriter : public Writer
{
public:
    bool writeDefinitions(const Item *) override
    {
        ++calls;
        fileNameSeen = fileName;
        hadDevice = device != nullptr;
        if (!errorWhileWriting.isEmpty()) {
            error = errorWhileWriting;
            formatErrorWhileWriting = formatError();
        }
        write(text);
        return result;
    }

    QString text = QStringLiteral("generated text \u00e4\n");
    bool result = true;
    QString errorWhileWriting;

    int calls = 0;
    QString fileNameSeen;
    bool hadDevice = false;
    QString formatErrorWhileWriting;
};

QStringList entries(const QString &path)
{
    return QDir(path).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden);
}

} // namespace

class TestWriter : public QObject
{
    Q_OBJECT

private slots:
    void defaults()
    {
        RecordingWriter writer;
        QVERIFY(writer.error.isNull());
        QVERIFY(writer.fileName.isNull());
        QVERIFY(!writer.device);
        QCOMPARE(writer.prologue, QString());
        QCOMPARE(writer.epilogue, QString());
        QCOMPARE(writer.nameSuffix, QString());
        QCOMPARE(writer.outerIndent, QString());
        QCOMPARE(writer.innerIndent, QStringLiteral("  "));
    }

    void setIndent()
    {
        RecordingWriter writer;
        writer.setIndent(3, 1);
        QCOMPARE(writer.outerIndent, QStringLiteral("   "));
        QCOMPARE(writer.innerIndent, QStringLiteral(" "));
        writer.setIndent(0, 0);
        QCOMPARE(writer.outerIndent, QString());
        QCOMPARE(writer.innerIndent, QString());
    }

    void writeToFile()
    {
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        const QString path = dir.filePath(QStringLiteral("out.txt"));
        QVERIFY(GeneratorTest::writeFile(path, "old content that is longer than the new one\n"));
        Item root;
        RecordingWriter writer;
        QVERIFY(writer.write(&root, path));
        QCOMPARE(writer.calls, 1);
        QCOMPARE(writer.fileNameSeen, path);
        QVERIFY(writer.hadDevice);
        QVERIFY(writer.fileName.isNull());
        QVERIFY(!writer.device);
        QCOMPARE(GeneratorTest::readFile(path), QByteArray("generated text \xc3\xa4\n"));
        // Straight to the destination: no temporary or backup file beside it.
        QCOMPARE(entries(dir.path()), QStringList { QStringLiteral("out.txt") });
    }

    void writeReturnsTheWritersResult()
    {
        QTemporaryDir dir;
        Item root;
        RecordingWriter writer;
        writer.result = false;
        QVERIFY(!writer.write(&root, dir.filePath(QStringLiteral("out.txt"))));
        QCOMPARE(writer.calls, 1);
    }

    void writeToStandardOutput()
    {
        QTemporaryDir work;
        QTemporaryDir captureDir;
        QVERIFY(work.isValid() && captureDir.isValid());
        const QString previous = QDir::currentPath();
        QVERIFY(QDir::setCurrent(work.path()));
        const QString capturePath = captureDir.filePath(QStringLiteral("stdout.txt"));

        // Descriptor 1 goes to a file for the duration of the write.
        std::fflush(stdout);
        const int saved = ::dup(1);
        QVERIFY(saved >= 0);
        const int capture = ::open(QFile::encodeName(capturePath).constData(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        QVERIFY(capture >= 0);
        QVERIFY(::dup2(capture, 1) == 1);
        ::close(capture);

        Item root;
        RecordingWriter writer;
        const bool ok = writer.write(&root, QStringLiteral("-"));

        std::fflush(stdout);
        ::dup2(saved, 1);
        ::close(saved);
        QDir::setCurrent(previous);

        QVERIFY(ok);
        QCOMPARE(writer.fileNameSeen, QStringLiteral("-"));
        QVERIFY(writer.fileName.isNull());
        QVERIFY(!writer.device);
        QCOMPARE(GeneratorTest::readFile(capturePath), QByteArray("generated text \xc3\xa4\n"));
        // No file named "-" (or anything else) appeared in the working directory.
        QCOMPARE(entries(work.path()), QStringList());
        // Standard output is still usable afterwards.
        QVERIFY(::write(1, "", 0) == 0);
    }

    void missingDirectory()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("missing/out.h"));
        Item root;
        RecordingWriter writer;
        QVERIFY(!writer.write(&root, path));
        QCOMPARE(writer.calls, 0);
        QCOMPARE(writer.formatError(), QStringLiteral("Failed to open output file ") + path + QStringLiteral("."));
        QCOMPARE(writer.error, writer.formatError());
        QVERIFY(!QFileInfo::exists(dir.filePath(QStringLiteral("missing"))));
    }

    void formatErrorWhileWriting()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("out.txt"));
        Item root;
        RecordingWriter writer;
        writer.errorWhileWriting = QStringLiteral("Disk full");
        writer.result = false;
        QVERIFY(!writer.write(&root, path));
        QCOMPARE(writer.formatErrorWhileWriting,
                 QStringLiteral("Error writing ") + path + QStringLiteral(":\n  Disk full"));
        // The file name is cleared when the write ends, so afterwards the error stands alone.
        QCOMPARE(writer.formatError(), QStringLiteral("Disk full"));
    }

    void encodeTouchesNoFile()
    {
        QTemporaryDir work;
        QVERIFY(work.isValid());
        const QString previous = QDir::currentPath();
        QVERIFY(QDir::setCurrent(work.path()));
        Item root;
        RecordingWriter writer;
        const QByteArray bytes = writer.encode(&root);
        QDir::setCurrent(previous);

        QCOMPARE(bytes, QByteArray("generated text \xc3\xa4\n"));
        QCOMPARE(writer.calls, 1);
        QVERIFY(writer.fileNameSeen.isNull());
        QVERIFY(writer.hadDevice);
        QVERIFY(writer.fileName.isNull());
        QVERIFY(!writer.device);
        QCOMPARE(entries(work.path()), QStringList());
    }

    void encodeAfterWriteLeavesFileNameNull()
    {
        QTemporaryDir dir;
        Item root;
        RecordingWriter writer;
        QVERIFY(writer.write(&root, dir.filePath(QStringLiteral("out.txt"))));
        QVERIFY(!writer.encode(&root).isEmpty());
        QVERIFY(writer.fileNameSeen.isNull());
        QVERIFY(writer.fileName.isNull());
    }

    void encodeFailureGivesEmptyBytes()
    {
        Item root;
        RecordingWriter writer;
        writer.result = false;
        QCOMPARE(writer.encode(&root), QByteArray());
    }

    void fullDeviceIsNoticed()
    {
        // A full disk shows only when the buffered data is flushed: write() must notice it.
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        const QString path = dir.filePath(QStringLiteral("full.h"));
        QVERIFY(QFile::link(QStringLiteral("/dev/full"), path));
        RecordingWriter writer;
        QVERIFY(!writer.write(nullptr, path));
        QCOMPARE(writer.formatError(),
                 QStringLiteral("Error writing ") + path + QStringLiteral(":\n  No space left on device"));
    }

    void failedWriterGetsAMessage()
    {
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        const QString path = dir.filePath(QStringLiteral("out.h"));
        RecordingWriter writer;
        writer.result = false;
        QVERIFY(!writer.write(nullptr, path));
        QCOMPARE(writer.formatError(),
                 QStringLiteral("Error writing ") + path + QStringLiteral(":\n  The output could not be produced."));
    }

    void beginUtf8()
    {
        class BomWriter : public Writer
        {
        public:
            bool writeDefinitions(const Item *) override
            {
                beginUtf8();
                write(QStringLiteral("x"));
                return true;
            }
        };
        Item root;
        BomWriter writer;
        QCOMPARE(writer.encode(&root), QByteArray("\xEF\xBB\xBFx"));
    }
};

QTEST_GUILESS_MAIN(TestWriter)
#include "tst_writer.moc"

// File names that survive any bytes, and opening only what is a regular file.

#include "localfile.h"
#include "testfiles.h"

#include <QtTest>

#include <QFile>
#include <QTemporaryDir>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

using namespace ZAT16;

class TestLocalFile : public QObject
{
    Q_OBJECT

private slots:
    // Every byte sequence goes through a QString and back unchanged.
    void namesSurviveAnyBytes_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::newRow("ASCII") << QByteArray("defs.zatdef");
        QTest::newRow("UTF-8") << QByteArray("d\xC3\xA9"
                                             "fs-\xE2\x82\xAC-\xF0\x9F\x98\x80.h");
        QTest::newRow("a lone byte") << QByteArray("out\xFE.h");
        QTest::newRow("a cut sequence") << QByteArray("\xE2\x82");
        QTest::newRow("an overlong slash") << QByteArray("a\xC0\xAF"
                                                         "b");
        QTest::newRow("an encoded surrogate") << QByteArray("\xED\xA0\x80");
        QTest::newRow("beyond U+10FFFF") << QByteArray("\xF4\x90\x80\x80");
        QByteArray all;
        for (int c = 1; c < 256; ++c)
            all += char(c);
        QTest::newRow("every byte") << all;
    }

    void namesSurviveAnyBytes()
    {
        QFETCH(QByteArray, name);
        QCOMPARE(LocalFile::encodeName(LocalFile::decodeName(name)), name);
    }

    // Valid UTF-8 reads as Qt reads it; each byte that is not stands for itself.
    void decodingLikeQt()
    {
        const QByteArray utf8("d\xC3\xA9"
                              "fs-\xF0\x9F\x98\x80");
        QCOMPARE(LocalFile::decodeName(utf8), QFile::decodeName(utf8));
        QCOMPARE(LocalFile::encodeName(QFile::decodeName(utf8)), QFile::encodeName(QFile::decodeName(utf8)));
        QCOMPARE(LocalFile::decodeName("out\xFE.h"), QStringLiteral("out") + QChar(0xDCFE) + QStringLiteral(".h"));
        // A surrogate that stands for no byte is written as U+FFFD.
        QCOMPARE(LocalFile::encodeName(QString(QChar(0xD800))), QByteArray("\xEF\xBF\xBD"));
    }

    void openForReading()
    {
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        const QString file = dir.filePath(QStringLiteral("file \xE9.zatdef"));
        QVERIFY(TestFiles::writeFile(file, "content"));
        QString reason;
        int fd = LocalFile::openForReading(file, &reason);
        QVERIFY(fd >= 0);
        char buffer[16];
        QCOMPARE(::read(fd, buffer, sizeof buffer), ssize_t(7));
        ::close(fd);
        QVERIFY(QFile::link(file, dir.filePath(QStringLiteral("link"))));
        fd = LocalFile::openForReading(dir.filePath(QStringLiteral("link")), &reason);
        QVERIFY(fd >= 0);
        ::close(fd);

        QCOMPARE(LocalFile::openForReading(dir.filePath(QStringLiteral("missing")), &reason), -1);
        QCOMPARE(reason, QString::fromLocal8Bit(std::strerror(ENOENT)));
        QCOMPARE(LocalFile::openForReading(dir.path(), &reason), -1);
        QCOMPARE(reason, QString::fromLocal8Bit(std::strerror(EISDIR)));
        const QString pipe = dir.filePath(QStringLiteral("pipe"));
        QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        QCOMPARE(LocalFile::openForReading(pipe, &reason), -1);
        QCOMPARE(reason, QStringLiteral("Is a named pipe"));
        QCOMPARE(LocalFile::openForReading(QStringLiteral("/dev/null"), &reason), -1);
        QCOMPARE(reason, QStringLiteral("Is a device"));

        const QString socketPath = dir.filePath(QStringLiteral("socket"));
        const int s = ::socket(AF_UNIX, SOCK_STREAM, 0);
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, QFile::encodeName(socketPath).constData(), sizeof address.sun_path - 1);
        QCOMPARE(::bind(s, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
        QCOMPARE(LocalFile::openForReading(socketPath, &reason), -1);
        QCOMPARE(reason, QStringLiteral("Is a socket"));
        ::close(s);
    }

    // A name that is not UTF-8 is opened as the bytes it is.
    void openByteName()
    {
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        const QByteArray native = QFile::encodeName(dir.path()) + "/in\xFF.zatdef";
        const int out = ::open(native.constData(), O_WRONLY | O_CREAT, 0600);
        QVERIFY(out >= 0);
        QCOMPARE(::write(out, "x", 1), ssize_t(1));
        ::close(out);
        QString reason;
        const int fd = LocalFile::openForReading(LocalFile::decodeName(native), &reason);
        QVERIFY2(fd >= 0, qPrintable(reason));
        ::close(fd);
    }
};

QTEST_GUILESS_MAIN(TestLocalFile)
#include "tst_localfile.moc"

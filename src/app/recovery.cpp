#include "recovery.h"

#include "editormodel.h"
#include "item.h"
#include "localfile.h"
#include "parser.h"
#include "savesequence.h"
#include "writerxml.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSocketNotifier>
#include <QStandardPaths>
#include <QUndoStack>

#include <algorithm>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ZAT16 {

namespace {

const QByteArray magicLine = "zatedit recovery 1\n";
const QByteArray documentKey = "document: ";
const QByteArray writtenKey = "written: ";
const QString suffix = QStringLiteral(".recovery");
// The header ends within this many bytes even for the longest path, percent-encoded.
constexpr qint64 headerLimit = 64 * 1024;
// Of the document's file name in the recovery file's name, which the system limits to 255 bytes.
constexpr qsizetype nameLimit = 64;

struct Header {
    QString document;
    QDateTime written;
    qsizetype textStart = 0;
};

QString absolute(const QString &document)
{
    return document.isEmpty() ? QString() : QFileInfo(document).absoluteFilePath();
}

QByteArray headerFor(const QString &document, const QDateTime &written)
{
    // Percent-encoded, so that any name the file system allows (a line break, bytes that are not
    // UTF-8) fits on its line and comes back as it was.
    return magicLine + documentKey + LocalFile::encodeName(document).toPercentEncoding("/") + '\n' + writtenKey
        + written.toString(Qt::ISODateWithMs).toLatin1() + "\n\n";
}

bool parseHeader(const QByteArray &bytes, Header *header)
{
    if (!bytes.startsWith(magicLine))
        return false;
    const qsizetype end = bytes.indexOf("\n\n", magicLine.size() - 1);
    if (end < 0)
        return false;
    bool hasDocument = false;
    // Lines with other keys are passed over: a later version may add some.
    for (const QByteArray &line : bytes.mid(magicLine.size(), end - magicLine.size() + 1).split('\n')) {
        if (line.startsWith(documentKey)) {
            header->document = LocalFile::decodeName(QByteArray::fromPercentEncoding(line.mid(documentKey.size())));
            hasDocument = true;
        } else if (line.startsWith(writtenKey)) {
            const QString written = QString::fromLatin1(line.mid(writtenKey.size()));
            header->written = QDateTime::fromString(written, Qt::ISODateWithMs);
        }
    }
    header->textStart = end + 2;
    return hasDocument && header->written.isValid();
}

QByteArray lockName(const QString &path)
{
    return LocalFile::encodeName(path + QStringLiteral(".lock"));
}

// Locks "<path>.lock", creating it. -1 with errno EWOULDBLOCK when another editor holds it: the
// system drops a lock when its process ends, also by a crash or SIGKILL.
int lockFile(const QString &path)
{
    const QByteArray name = lockName(path);
    for (int attempt = 0; attempt < 3; ++attempt) {
        const int fd = ::open(name.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
        if (fd < 0)
            return -1;
        if (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
            const int error = errno;
            ::close(fd);
            errno = error;
            return -1;
        }
        // The holder before may have removed the name between our open and our lock; a lock on a
        // file that has lost its name would keep nobody out.
        struct stat held;
        struct stat named;
        if (::fstat(fd, &held) == 0 && ::stat(name.constData(), &named) == 0 && held.st_dev == named.st_dev
            && held.st_ino == named.st_ino)
            return fd;
        ::close(fd);
    }
    errno = EWOULDBLOCK;
    return -1;
}

// The name goes while the lock is still held, so that nobody takes the old file's lock for the
// new one's.
void unlockFile(int fd, const QString &path)
{
    ::unlink(lockName(path).constData());
    ::close(fd);
}

int terminationPipe[2] = { -1, -1 };

void onTerminationSignal(int)
{
    const int saved = errno;
    const char byte = 0;
    // A full pipe already has a byte waiting for the event loop.
    [[maybe_unused]] const ssize_t written = ::write(terminationPipe[1], &byte, 1);
    errno = saved;
}

} // namespace

Recovery::Recovery(EditorModel *model, QUndoStack *stack, QObject *parent)
    : QObject(parent)
    , m_model(model)
    , m_stack(stack)
{
    // Started by a change and not again until the next one, so that an idle window writes nothing.
    m_timer.setSingleShot(true);
    m_timer.setInterval(defaultInterval);
    connect(&m_timer, &QTimer::timeout, this, &Recovery::onTimeout);
    connect(stack, &QUndoStack::indexChanged, this, [this]() { onStackChanged(m_stack->isClean()); });
    connect(stack, &QUndoStack::cleanChanged, this, &Recovery::onStackChanged);
}

Recovery::~Recovery()
{
    // The file stays: an editor that ends without closing its window (after SIGTERM, say) leaves
    // the changes for the next start.
    release();
}

QString Recovery::folder()
{
    return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) + QStringLiteral("/recovery");
}

void Recovery::setInterval(int msec)
{
    m_timer.setInterval(msec);
}

void Recovery::setDocument(const QString &path)
{
    const QString document = absolute(path);
    if (document == m_document)
        return;
    m_document = document;
    if (m_lock < 0)
        return;
    QFile::remove(m_path);
    release();
    onStackChanged(m_stack->isClean());
}

void Recovery::onStackChanged(bool clean)
{
    if (clean) {
        discard();
        return;
    }
    m_pending = true;
    if (!m_timer.isActive())
        m_timer.start();
}

void Recovery::onTimeout()
{
    // A failure is tried again after another interval, without another report.
    if (!write() && !m_stack->isClean())
        m_timer.start();
}

bool Recovery::write()
{
    if (m_stack->isClean() || !m_model->root())
        return false;
    if (!m_pending && m_lock >= 0)
        return true;
    if (!own())
        return false;
    WriterXml writer;
    const QByteArray text = writer.encode(m_model->root());
    if (text.isEmpty()) {
        fail(writer.formatError());
        return false;
    }
    SaveSequence sequence(m_path);
    if (!sequence.replaceWith(headerFor(m_document, QDateTime::currentDateTimeUtc()) + text)) {
        fail(sequence.errorMessage());
        return false;
    }
    m_pending = false;
    return true;
}

void Recovery::discard()
{
    m_timer.stop();
    m_pending = false;
    if (m_lock < 0)
        return;
    QFile::remove(m_path);
    release();
}

// Chooses the recovery file for the document and locks it, unless it holds one already.
bool Recovery::own()
{
    if (m_lock >= 0)
        return true;
    const QString dir = folder();
    if (!QFileInfo(dir).isDir()) {
        if (!QDir().mkpath(dir)) {
            fail(tr("the folder %1 cannot be created").arg(QDir::toNativeSeparators(dir)));
            return false;
        }
        // Unsaved work is nobody else's to read.
        QFile::setPermissions(dir, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    }
    QString base;
    if (m_document.isEmpty()) {
        base = QStringLiteral("unnamed-%1-%2")
                   .arg(QCoreApplication::applicationPid())
                   .arg(QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyyMMddThhmmsszzz")));
    } else {
        const QByteArray hash
            = QCryptographicHash::hash(LocalFile::encodeName(m_document), QCryptographicHash::Sha256).toHex().left(16);
        base = QString::fromLatin1(hash) + QLatin1Char('-') + QFileInfo(m_document).fileName().left(nameLimit);
    }
    // Another running editor of the same document holds the first name; this one writes beside it.
    for (int n = 0; n < 100; ++n) {
        const QString path
            = dir + QLatin1Char('/') + base + (n == 0 ? QString() : QLatin1Char('.') + QString::number(n)) + suffix;
        const int fd = lockFile(path);
        if (fd >= 0) {
            m_path = path;
            m_lock = fd;
            return true;
        }
        if (errno != EWOULDBLOCK) {
            fail(QDir::toNativeSeparators(path) + QStringLiteral(".lock: ") + LocalFile::errorText(errno));
            return false;
        }
    }
    fail(tr("every name for %1 is taken").arg(QDir::toNativeSeparators(m_document)));
    return false;
}

// Lets go of the recovery file, which stays where it is.
void Recovery::release()
{
    if (m_lock < 0)
        return;
    unlockFile(m_lock, m_path);
    m_lock = -1;
    m_path.clear();
}

void Recovery::fail(const QString &reason)
{
    if (m_failureReported)
        return;
    m_failureReported = true;
    emit problem(tr("Unsaved changes cannot be kept for recovery: %1").arg(reason));
}

QStringList Recovery::find(const QString &document, const QDateTime &notBefore)
{
    const QString wanted = absolute(document);
    const QDir dir(folder());
    QList<QPair<QDateTime, QString>> found;
    for (const QString &name : dir.entryList({ QLatin1Char('*') + suffix }, QDir::Files | QDir::Hidden)) {
        const QString path = dir.filePath(name);
        QFile file(path);
        Header header;
        if (!file.open(QIODevice::ReadOnly) || !parseHeader(file.read(headerLimit), &header))
            continue;
        if (header.document == wanted && (!notBefore.isValid() || header.written >= notBefore))
            found.append({ header.written, path });
    }
    std::sort(found.begin(), found.end(), [](const auto &a, const auto &b) { return a.first > b.first; });
    QStringList paths;
    for (const auto &entry : std::as_const(found))
        paths.append(entry.second);
    return paths;
}

bool Recovery::take(const QString &path, Found *found)
{
    const int fd = lockFile(path);
    if (fd < 0)
        return false;
    // Read under the lock: the editor that wrote it may have been about to replace it.
    QFile file(path);
    const QByteArray bytes = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    Header header;
    Parser parser;
    QString reason;
    if (!parseHeader(bytes, &header))
        reason = tr("it is not a recovery file");
    else if (!parser.parse(bytes.mid(header.textStart)) || !parser.root)
        reason = parser.formatError();
    else if (parser.stoppedAtLine != 0)
        // Only part of the changes would come back, and the rest would be lost with the file.
        reason = tr("the text stops at line %1").arg(parser.stoppedAtLine);
    if (!reason.isEmpty()) {
        unlockFile(fd, path);
        emit problem(tr("The recovery file %1 cannot be read: %2").arg(QDir::toNativeSeparators(path), reason));
        return false;
    }
    if (m_lock >= 0)
        release();
    m_path = path;
    m_lock = fd;
    m_document = header.document;
    found->path = path;
    found->document = header.document;
    found->written = header.written;
    found->root.reset(parser.takeRoot());
    found->warnings = parser.warnings;
    return true;
}

bool Recovery::onTermination(QObject *context, const std::function<void()> &handler)
{
    if (terminationPipe[0] < 0 && ::pipe2(terminationPipe, O_CLOEXEC | O_NONBLOCK) != 0)
        return false;
    auto *notifier = new QSocketNotifier(terminationPipe[0], QSocketNotifier::Read, context);
    connect(notifier, &QSocketNotifier::activated, context, [handler]() {
        char bytes[64];
        while (::read(terminationPipe[0], bytes, sizeof bytes) > 0) {
        }
        handler();
    });
    struct sigaction action = {};
    action.sa_handler = onTerminationSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    return ::sigaction(SIGTERM, &action, nullptr) == 0;
}

} // namespace ZAT16

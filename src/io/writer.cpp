#include "writer.h"

#include <QBuffer>
#include <QFile>

#include <cerrno>
#include <cstring>
#include <unistd.h>

namespace ZAT16 {

Writer::Writer()
    : innerIndent(QStringLiteral("  "))
{
}

Writer::~Writer() = default;

bool Writer::write(const Item *root, const QString &path)
{
    QFile file;
    bool open;
    if (path == QLatin1String("-")) {
        open = file.open(1, QIODevice::WriteOnly | QIODevice::Text);
    } else {
        file.setFileName(path);
        open = file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text);
    }
    if (!open) {
        error = QLatin1String("Failed to open output file ") + path + QLatin1Char('.');
        return false;
    }
    device = &file;
    fileName = path;
    bool result = writeDefinitions(root);
    fileName = QString();
    device = nullptr;

    // A full disk or an I/O error shows up in a write, the flush, the fsync or the close.
    QString failure;
    if (!file.flush() || file.error() != QFileDevice::NoError)
        failure = file.errorString();
    // Standard output may be a pipe or a terminal, which cannot be synced.
    if (failure.isEmpty() && ::fsync(file.handle()) != 0 && errno != EINVAL && errno != ENOTSUP && errno != EROFS)
        failure = QString::fromLocal8Bit(std::strerror(errno));
    file.close();
    if (failure.isEmpty() && file.error() != QFileDevice::NoError)
        failure = file.errorString();
    if (!result && failure.isEmpty() && error.isEmpty())
        failure = QStringLiteral("The output could not be produced.");
    if (!failure.isEmpty()) {
        error = QLatin1String("Error writing ") + path + QLatin1String(":\n  ") + failure;
        result = false;
    }
    return result;
}

QByteArray Writer::encode(const Item *root)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly | QIODevice::Text);
    fileName = QString();
    device = &buffer;
    const bool result = writeDefinitions(root);
    buffer.close();
    device = nullptr;
    return result ? bytes : QByteArray();
}

QString Writer::formatError() const
{
    if (!fileName.isEmpty())
        return QLatin1String("Error writing ") + fileName + QLatin1String(":\n  ") + error;
    return error;
}

void Writer::write(const QString &text)
{
    device->write(text.toUtf8());
}

void Writer::beginUtf8()
{
    device->write("\xEF\xBB\xBF", 3);
}

void Writer::setIndent(int outer, int inner)
{
    outerIndent = QString(outer, QLatin1Char(' '));
    innerIndent = QString(inner, QLatin1Char(' '));
}

} // namespace ZAT16

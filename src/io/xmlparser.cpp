#include "xmlparser.h"

#include "entityguard.h"
#include "filestamp.h"
#include "localfile.h"

#include <QBuffer>
#include <QDebug>
#include <QFile>

#include <unistd.h>

XmlParser::XmlParser() = default;

XmlParser::~XmlParser()
{
    setDevice(nullptr);
}

bool XmlParser::parse(const QString &path)
{
    return parse(path, nullptr);
}

bool XmlParser::parse(const QString &path, ZAT16::FileStamp *stamp)
{
    depth = 0;
    if (stamp)
        *stamp = ZAT16::FileStamp();
    QString reason;
    const int fd = ZAT16::LocalFile::openForReading(path, &reason);
    auto file = std::make_unique<QFile>();
    if (fd < 0 || !file->open(fd, QIODevice::ReadOnly | QIODevice::Text, QFileDevice::AutoCloseHandle)) {
        if (fd >= 0) {
            reason = file->errorString();
            ::close(fd);
        }
        raiseError(QLatin1String("Failed to open input file ") + path + QLatin1String(": ") + reason);
        return false;
    }
    fileName = path;
    const ZAT16::FileStamp opened = ZAT16::FileStamp::metadataOf(fd);
    const bool result = run(std::move(file));
    // Taken from the file that was read, even if its name stands for another one by now; unknown
    // when it was written to while it was read, since the tree then holds neither version.
    if (stamp)
        *stamp = ZAT16::FileStamp::ofDescriptor(fd, &opened);
    return result;
}

bool XmlParser::parse(const QByteArray &data)
{
    depth = 0;
    auto buffer = std::make_unique<QBuffer>();
    buffer->setData(data);
    buffer->open(QIODevice::ReadOnly | QIODevice::Text);
    fileName = QStringLiteral("data");
    return run(std::move(buffer));
}

bool XmlParser::run(std::unique_ptr<QIODevice> input)
{
    // The reader sees the input through a guard that stops it where reading would cost far more
    // than the input is long (declarations of entities and attribute lists, endless attributes).
    auto guard = std::make_unique<EntityGuard>(input.get());
    setDevice(guard.get());
    m_guard = std::move(guard);
    m_input = std::move(input);
    warningCount = 0;
    bool result = parser();
    if (m_guard->tripped()) {
        raiseError(m_guard->refusalMessage());
        result = false;
    }
    if (warningCount > maximumWarnings) {
        // Counted exactly; the texts were not even made, so that an input with millions of
        // duplicates costs neither the time nor the memory of listing them.
        QString text = QStringLiteral("Warning: ");
        if (!fileName.isEmpty())
            text += fileName + QLatin1String(":\n  ");
        warning(text + QString::number(warningCount - maximumWarnings)
                + QLatin1String(" more warnings were not listed"));
    }
    return result;
}

QXmlStreamReader::TokenType XmlParser::readNext(ReadMode mode)
{
    TokenType type;
    for (;;) {
        type = QXmlStreamReader::readNext();
        if (type == ProcessingInstruction)
            continue;
        if (mode == SkipCommentsAndWhitespace && (type == Comment || (type == Characters && isWhitespace())))
            continue;
        break;
    }
    if (verbose) {
        qDebug("tt=%s name=\"%s\" text=\"%s\"",
               qPrintable(tokenName(type)),
               qPrintable(name().toString()),
               qPrintable(text().toString()));
    }
    return type;
}

bool XmlParser::skipElement()
{
    if (++depth > maximumDepth) {
        raiseError(QStringLiteral("File too deeply nested"));
        return false;
    }
    for (;;) {
        switch (readNext(SkipCommentsAndWhitespace)) {
        case StartElement:
            if (!skipElement())
                return false;
            break;
        case EndElement:
            --depth;
            return true;
        case NoToken:
        case Invalid:
            --depth;
            return false;
        default:
            break;
        }
    }
}

QString XmlParser::readCharacters()
{
    const QString element = name().toString();
    const TokenType type = QXmlStreamReader::readNext();
    if (type == EndElement)
        return QString();
    if (type != Characters) {
        raiseError(QLatin1String("Characters for <") + element + QLatin1String("> element expected."));
        return QString();
    }
    const QString result = text().toString();
    if (readNext(SkipCommentsAndWhitespace) == EndElement)
        return result;
    raiseError(QLatin1String("End of <") + element + QLatin1String("> element expected."));
    return QString();
}

void XmlParser::raiseError(const QString &message)
{
    if (device())
        QXmlStreamReader::raiseError(QLatin1Char('(') + tokenName(tokenType()) + QLatin1String(") ") + message);
    else
        QXmlStreamReader::raiseError(message);
}

void XmlParser::raiseWarning(const QString &message)
{
    if (++warningCount > maximumWarnings)
        return;
    const QString text = formatWarning(message);
    if (verbose)
        qDebug("%s", qPrintable(text));
    warning(text);
}

void XmlParser::raiseUnexpectedEndError()
{
    raiseError(QStringLiteral("Unexpected end of document"));
}

void XmlParser::raiseEndElementExpectedError()
{
    raiseError(QStringLiteral("End element expected."));
}

void XmlParser::raiseStartElementExpectedError()
{
    raiseError(QStringLiteral("Start of element expected."));
}

void XmlParser::raiseUnexpectedCharactersWarning()
{
    raiseWarning(QStringLiteral("Unexpected characters encountered"));
}

void XmlParser::raiseUnexpectedElementWarning(const QString &expected)
{
    if (!listsWarnings()) {
        countWarning();
        return;
    }
    QString message = QLatin1String("Unexpected element <") + name().toString() + QLatin1String(">.");
    if (!expected.isEmpty())
        message += QLatin1String(" Expected ") + expected + QLatin1Char('.');
    raiseWarning(message);
}

QString XmlParser::formatError(const QString &message) const
{
    return formatEW(QStringLiteral("Error"), message);
}

QString XmlParser::formatWarning(const QString &message) const
{
    return formatEW(QStringLiteral("Warning"), message);
}

QString XmlParser::formatError() const
{
    return formatError(errorString());
}

QString XmlParser::formatEW(const QString &kind, const QString &message) const
{
    QString text = kind + QLatin1String(": ");
    if (!fileName.isEmpty())
        text += fileName + QLatin1String(", ");
    if (device()) {
        text += QLatin1String("Line ") + QString::number(lineNumber()) + QLatin1String(", Column ")
            + QString::number(columnNumber()) + QLatin1String(":\n  ");
    }
    return text + message;
}

QString XmlParser::tokenName(int type)
{
    static const char *const names[] = {
        "NoToken",    "Invalid", "StartDocument", "EndDocument",     "StartElement",          "EndElement",
        "Characters", "Comment", "DTD",           "EntityReference", "ProcessingInstruction",
    };
    if (type >= 0 && type <= 10)
        return QString::fromLatin1(names[type]);
    return QString::number(type);
}

void XmlParser::warning(const QString &text)
{
    warnings += text + QLatin1Char('\n');
}

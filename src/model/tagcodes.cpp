#include "tagcodes.h"

#include <cctype>

namespace ZAT16 {

DataType dataType(unsigned int code)
{
    unsigned int type = code >> 12;
    if (type == 8)
        type = code >> 8;
    return DataType(type);
}

bool isNestedTag(int code)
{
    // Unsigned on purpose: the extended types (0x80 and up) are never nested.
    return unsigned(dataType(unsigned(code))) - 12u < 4u;
}

int answerCode(int requestCode)
{
    if (dataType(unsigned(requestCode)) != Request)
        return -1;
    return 0xE000 | (requestCode & 0x0F00) | (requestCode & 0x00FF);
}

unsigned int setDataType(unsigned int code, DataType type)
{
    if (unsigned(type) > 15)
        return (unsigned(type) << 8) | (code & 0xFF);
    return (unsigned(type) << 12) | (code & 0xFFF);
}

QString typeName(unsigned int code)
{
    // Indexed by the top nibble only: the extended codes 0x80xx..0x8Fxx all show as "Int64".
    static const char *const names[16] = {
        "Binary",
        "Integer",
        "Bool",
        "String",
        "Date",
        "Time",
        "DateTime",
        "BitArray",
        "Int64",
        "IPAddress",
        nullptr,
        nullptr,
        "List",
        "Request",
        "Answer",
        "Message",
    };
    const char *name = names[(code >> 12) & 0xF];
    return name ? QString::fromLatin1(name) : QString();
}

QString tag2hex(unsigned int code)
{
    return QLatin1String("0x") + QString::number(code, 16).toUpper().rightJustified(4, QLatin1Char('0'));
}

QString formatNumber(unsigned long long value, const DisplayMode &mode)
{
    QString prefix;
    QString digits;
    switch (mode.mode) {
    case 1:
        digits = QString::number(qint64(value));
        break;
    case 2:
        digits = QString::number(quint64(value));
        break;
    case 3:
        prefix = QStringLiteral("0x");
        digits = QString::number(quint64(value), 16).toUpper();
        break;
    case 4:
        prefix = QStringLiteral("0o");
        digits = QString::number(quint64(value), 8);
        break;
    case 5:
        prefix = QStringLiteral("0y");
        digits = QString::number(quint64(value), 2);
        break;
    default:
        break;
    }
    if (digits.isEmpty())
        digits = QString::number(qint64(value));
    // The padding goes before the digit text including its sign: -5 with 4 digits is "00-5".
    // No number needs more than 64 digits (binary); a larger count from a damaged file would
    // otherwise make every number gigabytes long.
    if (mode.digits != 0)
        digits = digits.rightJustified(qMin(mode.digits, maximumDigits), QLatin1Char('0'));
    return prefix + digits;
}

bool isValidIdentifier(const QString &name, QString *error)
{
    QString message;
    if (name.isEmpty()) {
        message = QStringLiteral("Empty name not allowed.");
    } else if (name.at(0).isDigit()) {
        message = QStringLiteral("Name must not start with a digit.");
    } else if (name == QLatin1String("Tag")) {
        message = QStringLiteral("The name \"Tag\" is reserved.");
    } else {
        for (QChar c : name) {
            const char16_t u = c.unicode();
            if (u != '_' && !(u < 128 && std::isalnum(int(u)))) {
                message = QStringLiteral("Invalid characters in name.");
                break;
            }
        }
    }
    if (error)
        *error = message;
    return message.isNull();
}

} // namespace ZAT16

#include "tagcodes.h"

#include "datatypes.h"

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
    return DataTypes::typeName(int((code >> 12) & 0xF));
}

namespace {

// Writes the digits of `value` in `base` (2 to 16, upper-case letters) backwards, ending just
// before `end`, and returns where they start.
char16_t *digitsBefore(char16_t *end, quint64 value, unsigned base)
{
    do {
        *--end = u"0123456789ABCDEF"[value % base];
        value /= base;
    } while (value);
    return end;
}

} // namespace

QString tag2hex(unsigned int code)
{
    QString text;
    appendTag2hex(text, code);
    return text;
}

void appendTag2hex(QString &text, unsigned int code)
{
    char16_t buffer[12];
    char16_t *const end = buffer + 12;
    char16_t *begin = digitsBefore(end, code, 16);
    while (end - begin < 4)
        *--begin = u'0';
    *--begin = u'x';
    *--begin = u'0';
    text.append(reinterpret_cast<const QChar *>(begin), end - begin);
}

QString formatNumber(unsigned long long value, const DisplayMode &mode)
{
    QString text;
    appendNumber(text, value, mode);
    return text;
}

void appendNumber(QString &text, unsigned long long value, const DisplayMode &mode)
{
    // Room for a sign and the 64 digits of the longest (binary) number.
    char16_t buffer[80];
    char16_t *const end = buffer + 80;
    char16_t *begin;
    QLatin1String prefix;
    switch (mode.mode) {
    case 2:
        begin = digitsBefore(end, value, 10);
        break;
    case 3:
        prefix = QLatin1String("0x");
        begin = digitsBefore(end, value, 16);
        break;
    case 4:
        prefix = QLatin1String("0o");
        begin = digitsBefore(end, value, 8);
        break;
    case 5:
        prefix = QLatin1String("0y");
        begin = digitsBefore(end, value, 2);
        break;
    default:
        // Signed decimal, also for modes that are not set or not known.
        if (qint64(value) < 0) {
            begin = digitsBefore(end, quint64(0) - value, 10);
            *--begin = u'-';
        } else {
            begin = digitsBefore(end, value, 10);
        }
        break;
    }
    text += prefix;
    // The padding goes before the digit text including its sign: -5 with 4 digits is "00-5".
    // No number needs more than 64 digits (binary); a larger count from a damaged file would
    // otherwise make every number gigabytes long.
    const qsizetype width = qMin(mode.digits, maximumDigits);
    if (width > end - begin)
        text.resize(text.size() + width - (end - begin), QLatin1Char('0'));
    text.append(reinterpret_cast<const QChar *>(begin), end - begin);
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
            // ASCII letters and digits, whatever the locale says of other characters.
            const bool alphanumeric = (u >= '0' && u <= '9') || (u >= 'a' && u <= 'z') || (u >= 'A' && u <= 'Z');
            if (u != '_' && !alphanumeric) {
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

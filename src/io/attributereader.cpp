#include "attributereader.h"

#include "parser.h"

#include <limits>

#include <cstring>

namespace ZAT16 {

namespace {

const QString attrSecure = QStringLiteral("secure");

// Whether numbers shown in `display` come out as decimal digits that may start with a zero: the
// signed and unsigned modes, and a digit count without a mode.
bool isDecimalDisplay(const DisplayMode &display)
{
    return display.mode == 1 || display.mode == 2 || (display.mode == 0 && display.digits != 0);
}

// Whether `text` is `literal`, whose length the caller has checked already.
template<std::size_t N>
bool sameText(QStringView text, const char16_t (&literal)[N])
{
    return std::memcmp(text.utf16(), literal, (N - 1) * sizeof(char16_t)) == 0;
}

// The notations of nearly every id, read without Qt's general conversion: decimal digits without
// a leading zero, and "0x" or "0X" with hexadecimal digits, both too short to overflow. The value
// is the one QStringView::toLongLong(&ok, 0) gives; false leaves the text to it.
bool readPlainNumber(QStringView t, quint64 *value)
{
    const qsizetype n = t.size();
    if (n == 0)
        return false;
    quint64 result = 0;
    if (n >= 3 && n <= 17 && t.at(0) == u'0' && (t.at(1) == u'x' || t.at(1) == u'X')) {
        for (qsizetype i = 2; i < n; ++i) {
            const char16_t c = t.at(i).unicode();
            unsigned digit;
            if (c >= u'0' && c <= u'9')
                digit = c - u'0';
            else if (c >= u'A' && c <= u'F')
                digit = c - u'A' + 10;
            else if (c >= u'a' && c <= u'f')
                digit = c - u'a' + 10;
            else
                return false;
            result = result * 16 + digit;
        }
        *value = result;
        return true;
    }
    if (n > 18 || (n > 1 && t.at(0) == u'0'))
        return false;
    for (qsizetype i = 0; i < n; ++i) {
        const char16_t c = t.at(i).unicode();
        if (c < u'0' || c > u'9')
            return false;
        result = result * 10 + (c - u'0');
    }
    *value = result;
    return true;
}

// Reads `digits` in `base`, digits only (Qt's conversion would also take a sign or blanks in
// front), negated where `negative` is set; a negative number goes down to -2^63.
bool readDigits(QStringView digits, int base, bool negative, quint64 *value)
{
    if (digits.isEmpty() || digits.front() == u'-' || digits.front() == u'+' || digits.front().isSpace())
        return false;
    bool ok = false;
    const quint64 u = digits.toULongLong(&ok, base);
    if (!ok || (negative && u > quint64(1) << 63))
        return false;
    *value = negative ? quint64(0) - u : u;
    return true;
}

// Reads an "id" in the notations the writer produces and in C notation: "0x"/"0X" hexadecimal,
// "0o"/"0O" octal, "0y"/"0b" binary, a leading "0" octal, otherwise decimal, each with an optional
// sign. Zeros before a minus sign are padding ("00-5" is -5). Where `padded` is set, digits with
// leading zeros are padded decimal, as the writer pads decimal numbers; digits that are no padded
// decimal in range are still read in C notation, so that the display mode never refuses an id
// that C notation takes. Values above the signed range are taken unsigned.
bool parseId(QStringView text, bool padded, quint64 *value)
{
    QStringView t = text.trimmed();
    qsizetype zeros = 0;
    while (zeros < t.size() && t.at(zeros) == u'0')
        ++zeros;
    if (zeros > 0 && zeros < t.size() && t.at(zeros) == u'-')
        t = t.mid(zeros);

    bool negative = false;
    QStringView digits = t;
    if (!digits.isEmpty() && (digits.front() == u'-' || digits.front() == u'+')) {
        negative = digits.front() == u'-';
        digits = digits.mid(1);
    }
    if (digits.size() > 2 && digits.at(0) == u'0') {
        const QChar letter = digits.at(1);
        if (letter == u'o' || letter == u'O')
            return readDigits(digits.mid(2), 8, negative, value);
        if (letter == u'y' || letter == u'b')
            return readDigits(digits.mid(2), 2, negative, value);
    }
    if (padded && digits.size() > 1 && digits.front() == u'0' && digits.at(1).isDigit()
        && readDigits(digits, 10, negative, value))
        return true;

    if (readPlainNumber(t, value))
        return true;
    bool ok = false;
    const qint64 s = t.toLongLong(&ok, 0);
    if (ok) {
        *value = quint64(s);
        return true;
    }
    const quint64 u = t.toULongLong(&ok, 0);
    if (ok) {
        *value = u;
        return true;
    }
    return false;
}

} // namespace

AttributeReader::AttributeReader(Parser &parser)
    : m_parser(parser)
{
}

void AttributeReader::clear()
{
    m_texts.clear();
}

bool AttributeReader::read(ItemData *data, const QList<const Item *> &open)
{
    // One pass over the attributes; the first of each name counts, as with
    // QXmlStreamAttributes::value().
    QStringView name;
    QStringView comment;
    QStringView id;
    QStringView secure;
    QStringView display;
    // The reader hands namespace declarations over apart from the attributes; the tree keeps them
    // no more than any other attribute it does not know, and a save would drop them unnoticed.
    const QXmlStreamNamespaceDeclarations &declarations = m_parser.namespaceDeclarations();
    for (const QXmlStreamNamespaceDeclaration &declaration : declarations) {
        m_parser.warn([&] {
            QString name = QStringLiteral("xmlns");
            if (!declaration.prefix().isEmpty())
                name += QLatin1Char(':') + declaration.prefix().toString();
            return QStringLiteral("Attribute \"%1\" is not kept").arg(name);
        });
    }
    const QXmlStreamAttributes &attrs = m_parser.attributes();
    for (const QXmlStreamAttribute &attribute : attrs) {
        const QStringView key = attribute.qualifiedName();
        QStringView *slot = nullptr;
        switch (key.size()) {
        case 2:
            if (sameText(key, u"id"))
                slot = &id;
            break;
        case 4:
            if (sameText(key, u"name"))
                slot = &name;
            break;
        case 6:
            if (sameText(key, u"secure"))
                slot = &secure;
            break;
        case 7:
            if (sameText(key, u"comment"))
                slot = &comment;
            else if (sameText(key, u"display"))
                slot = &display;
            break;
        default:
            break;
        }
        if (!slot)
            m_parser.warn([&] { return QStringLiteral("Attribute \"%1\" is not kept").arg(key); });
        else if (slot->isNull())
            *slot = attribute.value();
    }

    // Names and comments of values, bits and lists repeat from list to list; tag names are
    // unique and tag comments mostly are.
    const bool shareTexts = data->type != Tag;
    if (!name.isNull()) {
        // A shared name is checked the first time it is read as a name.
        const SharedText *shared = shareTexts && !name.isEmpty() ? &sharedEntry(name) : nullptr;
        const QString text = shared ? shared->text : name.toString();
        if (!shared || !shared->identifier) {
            QString error;
            if (!isValidIdentifier(text, &error)) {
                m_parser.raiseError(error);
                return false;
            }
            if (shared)
                shared->identifier = true;
        }
        data->name = text;
    }

    data->comment = shareTexts ? sharedText(comment) : comment.toString();

    // The display mode is read before the id: it decides how zero-padded digits are read.
    if (!display.isNull()) {
        const QStringView text = display;
        qsizetype i = 0;
        int digits = 0;
        // A digit count beyond the range of int stays at its largest value, so that what is
        // read is written back the same way and read again alike.
        while (i < text.size() && text.at(i) >= u'0' && text.at(i) <= u'9') {
            const int digit = text.at(i).unicode() - u'0';
            digits = digits > (std::numeric_limits<int>::max() - digit) / 10 ? std::numeric_limits<int>::max()
                                                                             : digits * 10 + digit;
            ++i;
        }
        data->display.digits = digits;
        if (i < text.size()) {
            switch (text.at(i).unicode()) {
            case u'X':
            case u'x':
                data->display.mode = 3;
                break;
            case u'b':
            case u'y':
                data->display.mode = 5;
                break;
            case u'd':
                data->display.mode = 1;
                break;
            case u'o':
                data->display.mode = 4;
                break;
            case u'u':
                data->display.mode = 2;
                break;
            default:
                break;
            }
        }
    }

    if (!id.isNull()) {
        // The display in effect for this element, as the tree inherits it: the open elements
        // around it are not linked to their parents yet, so they are walked here. A tag's code is
        // always written in hexadecimal, whatever the display, so no display changes how it reads.
        bool padded = false;
        if (data->type != Tag) {
            DisplayMode mode = data->display;
            for (qsizetype i = open.size() - 1; mode.mode == 0 && i >= 0; --i) {
                if (open.at(i)->display.mode != 0)
                    mode = open.at(i)->display;
            }
            padded = isDecimalDisplay(mode);
        }
        if (!parseId(id, padded, &data->id)) {
            m_parser.raiseError(QStringLiteral("Invalid ID"));
            return false;
        }
        data->hasId = true;
    }

    if (!secure.isNull())
        data->secure = readBool(attrSecure);

    return true;
}

// One QString per distinct text in this parse: equal names and comments share their storage.
QString AttributeReader::sharedText(QStringView text)
{
    if (text.isEmpty())
        return text.toString();
    return sharedEntry(text).text;
}

const AttributeReader::SharedText &AttributeReader::sharedEntry(QStringView text)
{
    const auto it = m_texts.constFind(text);
    if (it != m_texts.constEnd())
        return it.value();
    SharedText entry;
    entry.text = text.toString();
    const QStringView key(entry.text);
    return m_texts.insert(key, std::move(entry)).value();
}

bool AttributeReader::readBool(const QString &attributeName)
{
    const QStringView value = m_parser.attributes().value(attributeName);
    if (value == u"true" || value == u"TRUE")
        return true;
    if (value == u"false" || value == u"FALSE")
        return false;
    m_parser.raiseError(QStringLiteral("Invalid boolean value"));
    return false;
}

} // namespace ZAT16

#include "tagvalidator.h"

#include "item.h"

namespace ZAT16 {

TagValidator::TagValidator(const Item *item, QObject *parent)
    : QValidator(parent)
    , m_item(item)
{
}

static bool isHexDigit(QChar c)
{
    const char16_t u = c.unicode();
    return (u >= '0' && u <= '9') || (u >= 'a' && u <= 'f') || (u >= 'A' && u <= 'F');
}

QValidator::State TagValidator::validate(QString &input, int &) const
{
    if (input.isEmpty())
        return Acceptable; // a tag without code
    if (input.size() > 64) {
        emit message(tr("Input too long"));
        return Invalid;
    }
    for (QChar c : qAsConst(input)) {
        if (!isHexDigit(c) && c != QLatin1Char('x') && c != QLatin1Char('X')) {
            emit message(tr("Non numeric input"));
            return Invalid;
        }
    }
    if (input.size() > 10) {
        emit message(tr("Input too long"));
        return Intermediate;
    }
    if (input.size() == 2 && input.startsWith(QLatin1String("0x"), Qt::CaseInsensitive))
        return Intermediate; // the user is about to type the digits
    bool ok = false;
    // 64 bits, so that ten digits are still a number (out of range) rather than an overflow
    const qulonglong value = input.toULongLong(&ok, 16);
    if (!ok) {
        emit message(tr("Not a hexadecimal number"));
        return Intermediate;
    }
    if (value > 65535) {
        emit message(tr("Tag code out of range"));
        return Intermediate;
    }
    if (m_item && m_item->parent && m_item->parent->findBut(unsigned(value), m_item) >= 0) {
        emit message(tr("Tag code already exists"));
        return Acceptable;
    }
    emit message(QString());
    return Acceptable;
}

} // namespace ZAT16

#include "identifiervalidator.h"

#include "item.h"

namespace ZAT16 {

IdentifierValidator::IdentifierValidator(const Item *item, QObject *parent)
    : QValidator(parent)
    , m_item(item)
{
}

static bool isIdentifierChar(QChar c)
{
    const char16_t u = c.unicode();
    return (u >= 'a' && u <= 'z') || (u >= 'A' && u <= 'Z') || (u >= '0' && u <= '9') || u == '_';
}

QValidator::State IdentifierValidator::validate(QString &input, int &) const
{
    if (input.isEmpty())
        return Acceptable;
    if (input.size() > 1024) {
        emit message(tr("Input too long"));
        return Invalid;
    }
    if (input.at(0) >= QLatin1Char('0') && input.at(0) <= QLatin1Char('9')) {
        emit message(tr("Identifier must not start with a digit"));
        return Intermediate;
    }
    // ASCII only: the names end up as identifiers in C, C++, C# and Lua
    for (QChar c : qAsConst(input)) {
        if (!isIdentifierChar(c)) {
            emit message(tr("Only a-z, A-Z, 0-9 and _ allowed in identifier"));
            return Intermediate;
        }
    }
    // The reader refuses it: a file with it would not open again.
    if (input == QLatin1String("Tag")) {
        emit message(tr("The name \"Tag\" is reserved."));
        return Intermediate;
    }
    if (m_item && m_item->parent && m_item->parent->findBut(input, m_item) >= 0) {
        emit message(tr("Identifier already exists"));
        return Acceptable;
    }
    emit message(QString());
    return Acceptable;
}

} // namespace ZAT16

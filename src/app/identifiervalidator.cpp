#include "identifiervalidator.h"

#include "item.h"

namespace ZAT16 {

IdentifierValidator::IdentifierValidator(const Item *item, QObject *parent)
    : QValidator(parent)
    , EditorValidator(item)
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
    if (input.size() > 1024)
        return answer(Invalid, tr("Input too long"));
    if (input.at(0) >= QLatin1Char('0') && input.at(0) <= QLatin1Char('9'))
        return answer(Intermediate, tr("Identifier must not start with a digit"));
    // ASCII only: the names end up as identifiers in C, C++, C# and Lua
    for (QChar c : qAsConst(input)) {
        if (!isIdentifierChar(c))
            return answer(Intermediate, tr("Only a-z, A-Z, 0-9 and _ allowed in identifier"));
    }
    // The reader refuses it: a file with it would not open again.
    if (input == QLatin1String("Tag"))
        return answer(Intermediate, tr("The name \"Tag\" is reserved."));
    if (parentItem() && parentItem()->findBut(input, item()) >= 0)
        return answer(Acceptable, tr("Identifier already exists"));
    return answer(Acceptable);
}

} // namespace ZAT16

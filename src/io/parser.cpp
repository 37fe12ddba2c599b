#include "parser.h"

namespace ZAT16 {

namespace {

const QString attrName = QStringLiteral("name");
const QString attrComment = QStringLiteral("comment");
const QString attrId = QStringLiteral("id");
const QString attrSecure = QStringLiteral("secure");
const QString attrDisplay = QStringLiteral("display");

ItemType elementType(QStringView name)
{
    if (name == u"zat16")
        return Root;
    if (name == u"tag")
        return Tag;
    if (name == u"bits")
        return Bits;
    if (name == u"enums")
        return Enums;
    if (name == u"bit")
        return Bit;
    if (name == u"enum")
        return Enum;
    return ZAT16::Invalid;
}

// C notation: "0x"/"0X" hexadecimal, a leading "0" octal, otherwise decimal; signed first, then
// unsigned for values above the signed range.
bool parseId(QStringView text, quint64 *value)
{
    bool ok = false;
    const qint64 s = text.toLongLong(&ok, 0);
    if (ok) {
        *value = quint64(s);
        return true;
    }
    const quint64 u = text.toULongLong(&ok, 0);
    if (ok) {
        *value = u;
        return true;
    }
    return false;
}

} // namespace

Parser::Parser() = default;

Parser::~Parser()
{
    delete root;
}

void Parser::clear()
{
    tagCodes.clear();
    tagNames.clear();
    delete root;
    root = nullptr;
    dtd = QString();
}

Item *Parser::takeRoot()
{
    Item *item = root;
    root = nullptr;
    return item;
}

bool Parser::parser()
{
    tagCodes.clear();
    tagNames.clear();
    delete root;
    root = nullptr;
    dtd = QString();
    m_siblings.clear();

    if (readNext(SkipCommentsAndWhitespace) != StartDocument) {
        raiseError(QStringLiteral("This doesn't look like an XML file."));
        return false;
    }
    parseElements(nullptr);
    if (!root)
        raiseError(QStringLiteral("No decodable data found"));

    tagCodes.clear();
    tagNames.clear();
    if (root)
        root->comment = dtd;
    dtd = QString();
    m_siblings.clear();

    if (hasError()) {
        delete root;
        root = nullptr;
        return false;
    }
    return true;
}

bool Parser::parseElements(Item *parent)
{
    // The duplicate checks of the children look at what this list holds so far.
    m_siblings.append(Siblings());
    struct Pop {
        QList<Siblings> &stack;
        ~Pop() { stack.removeLast(); }
    } pop{m_siblings};

    while (!atEnd() && !hasError()) {
        switch (readNext(KeepCommentsAndWhitespace)) {
        case EndDocument:
            if (!parent)
                return true;
            raiseUnexpectedEndError();
            return false;
        case StartElement: {
            const ItemType type = elementType(name());
            if (type == ZAT16::Invalid) {
                raiseUnexpectedElementWarning(QString());
                if (!skipElement())
                    return false;
                break;
            }
            if (parent && parent->type != Item::matchingParentType(type))
                raiseWarning(QStringLiteral("Element <%1> not expected.").arg(name()));
            if (!addElement(parent, type))
                return false;
            break;
        }
        case EndElement:
            if (parent)
                return true;
            raiseError(QStringLiteral("Unexpected end element"));
            return false;
        case Characters:
            // Text that is not whitespace ends reading here, quietly: the tree read so far stays.
            if (!checkForNewline(parent))
                return false;
            break;
        case Comment:
            storeComment(parent);
            break;
        case DTD:
            dtd = text().toString();
            break;
        default:
            raiseStartElementExpectedError();
            return false;
        }
    }
    raiseError(QStringLiteral("Unexpected end of input"));
    return false;
}

bool Parser::addElement(Item *parent, ItemType type)
{
    Item *item = new Item;
    item->type = type;
    if (!root) {
        root = item;
        root->comment = dtd;
    }
    const QString rawId = attributes().value(attrId).toString();

    auto fail = [&]() {
        if (item != root)
            delete item;
        return false;
    };

    if (!parseElementAttributes(item))
        return fail();
    if (verbose)
        item->dump(0);
    if (!parseElements(item))
        return fail();

    if (type != Tag) {
        if (parent) {
            // Same result as parent->findBut(id) and parent->findBut(name) on the list read so far.
            const Siblings &siblings = m_siblings.last();
            if (item->hasId && siblings.ids.contains(quint64(quint32(item->id))))
                raiseWarning(QLatin1String("Double number ") + rawId);
            if (!item->name.isEmpty() && siblings.names.contains(item->name))
                raiseWarning(QLatin1String("Double name ") + item->name);
        }
    } else {
        if (item->id >> 16) {
            raiseError(QStringLiteral("Tag out of range"));
            return fail();
        }
        const unsigned int code = unsigned(item->id);
        if (item->hasId && tagCodes.contains(code))
            raiseWarning(QLatin1String("Double tag code ") + tag2hex(code));
        if (tagNames.contains(item->name))
            raiseWarning(QLatin1String("Double tag name ") + item->name);
        tagCodes.insert(code);
        tagNames.insert(item->name);
        item->sortChildrenByType();
    }

    for (Item *child : std::as_const(item->children))
        trimNewlines(child);

    if (parent) {
        parent->appendChild(item);
        Siblings &siblings = m_siblings.last();
        if (item->hasId)
            siblings.ids.insert(item->id);
        if (!item->name.isEmpty())
            siblings.names.insert(item->name);
        return true;
    }
    // A second top-level element is read and checked, then dropped.
    if (item != root)
        delete item;
    return true;
}

bool Parser::parseElementAttributes(ItemData *data)
{
    const QXmlStreamAttributes attrs = attributes();

    if (attrs.hasAttribute(attrName)) {
        const QString name = attrs.value(attrName).toString();
        QString error;
        if (!isValidIdentifier(name, &error)) {
            raiseError(error);
            return false;
        }
        data->name = name;
    }

    data->comment = attrs.value(attrComment).toString();

    if (attrs.hasAttribute(attrId)) {
        if (!parseId(attrs.value(attrId), &data->id)) {
            raiseError(QStringLiteral("Invalid ID"));
            return false;
        }
        data->hasId = true;
    }

    if (attrs.hasAttribute(attrSecure))
        data->secure = parseBool(attrSecure);

    if (attrs.hasAttribute(attrDisplay)) {
        const QByteArray text = attrs.value(attrDisplay).toLatin1();
        int i = 0;
        int digits = 0;
        while (i < text.size() && text.at(i) >= '0' && text.at(i) <= '9') {
            digits = int(unsigned(digits) * 10u + unsigned(text.at(i) - '0'));
            ++i;
        }
        data->display.digits = digits;
        if (i < text.size()) {
            switch (text.at(i)) {
            case 'X':
            case 'x':
                data->display.mode = 3;
                break;
            case 'b':
            case 'y':
                data->display.mode = 5;
                break;
            case 'd':
                data->display.mode = 1;
                break;
            case 'o':
                data->display.mode = 4;
                break;
            case 'u':
                data->display.mode = 2;
                break;
            default:
                break;
            }
        }
    }
    return true;
}

bool Parser::parseBool(const QString &attributeName)
{
    const QStringView value = attributes().value(attributeName);
    if (value == u"true" || value == u"TRUE")
        return true;
    if (value == u"false" || value == u"FALSE")
        return false;
    raiseError(QStringLiteral("Invalid boolean value"));
    return false;
}

bool Parser::checkForNewline(Item *parent)
{
    if (!isWhitespace())
        return false;
    if (parent && !parent->children.isEmpty() && !parent->children.last()->isNewline()
        && text().count(QLatin1Char('\n')) > 1)
        appendNewline(parent);
    return true;
}

void Parser::appendNewline(Item *parent)
{
    Item *item = new Item;
    switch (parent->type) {
    case Bits:
    case Bit:
        item->type = Bit;
        break;
    case Enums:
    case Enum:
        item->type = Enum;
        break;
    case Root:
    case Tag:
        item->type = Tag;
        break;
    default:
        break;
    }
    if (verbose)
        item->dump(0);
    parent->appendChild(item);
}

void Parser::trimNewlines(Item *item)
{
    while (!item->children.isEmpty() && item->children.last()->isNewline())
        item->removeChild(int(item->children.size()) - 1);
}

void Parser::storeComment(Item *parent)
{
    if (!parent)
        return;
    Item *item = new Item;
    item->comment = text().toString();
    if (verbose)
        item->dump(0);
    appendComment(parent, item);
}

void Parser::appendComment(Item *parent, Item *comment)
{
    switch (parent->type) {
    case Root:
        comment->type = Tag;
        break;
    case Enums:
        comment->type = Enum;
        break;
    case Bits:
        comment->type = Bit;
        break;
    default:
        delete comment;
        return;
    }
    parent->appendChild(comment);
}

} // namespace ZAT16

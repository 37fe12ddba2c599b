#include "parser.h"

namespace ZAT16 {

namespace {

const QString attrId = QStringLiteral("id");

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
    m_open.clear();
    m_attributes.clear();
    m_depth = 0;
    stoppedAtLine = 0;

    if (readNext(SkipCommentsAndWhitespace) != StartDocument) {
        raiseError(QStringLiteral("This doesn't look like an XML file."));
        return false;
    }
    parseElements(nullptr);
    if (!root)
        raiseError(QStringLiteral("No decodable data found"));

    tagCodes.clear();
    tagNames.clear();
    if (root && !entry)
        root->comment = dtd;
    dtd = QString();
    m_siblings.clear();
    m_attributes.clear();

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
    } pop { m_siblings };

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
                warn([this] { return QStringLiteral("Element <%1> not expected.").arg(name()); });
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
            // Text that is not whitespace ends reading here: the tree read so far stays. The
            // warning tells that the rest of the file was not read.
            if (!checkForNewline(parent)) {
                raiseUnexpectedCharactersWarning();
                stoppedAtLine = strayTextLine();
                return false;
            }
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
    auto fail = [&]() {
        if (item != root)
            delete item;
        return false;
    };

    if (!parseElementAttributes(item))
        return fail();
    // The raw text of the id, for the duplicate-number warning, which is given after the
    // children are read; whether it will be given is known now already (reading the children
    // does not change the list that holds the item).
    const bool doubleNumber
        = type != Tag && parent && item->hasIdKey() && hasSiblingId(parent, quint64(quint32(item->id)));
    QString rawId;
    if (doubleNumber && listsWarnings())
        rawId = attributes().value(attrId).toString();
    if (verbose)
        item->dump(0);
    // Known elements have the same nesting limit as skipped ones, so that no input can make the
    // reading recurse without bound.
    if (++m_depth > maximumDepth) {
        raiseError(QStringLiteral("File too deeply nested"));
        return fail();
    }
    m_open.append(item);
    const bool read = parseElements(item);
    m_open.removeLast();
    --m_depth;
    if (!read)
        return fail();

    if (type != Tag) {
        if (parent) {
            // Same result as parent->findBut(id) and parent->findBut(name) on the list read so far.
            if (doubleNumber)
                warn([&] { return QLatin1String("Double number ") + rawId; });
            if (item->hasNameKey() && hasSiblingName(parent, item->name))
                warn([&] { return QLatin1String("Double name ") + item->name; });
        }
    } else {
        if (item->id >> 16) {
            raiseError(QStringLiteral("Tag out of range"));
            return fail();
        }
        const unsigned int code = unsigned(item->id);
        if (item->hasId && tagCodes.contains(code))
            warn([&] { return QLatin1String("Double tag code ") + tag2hex(code); });
        if (tagNames.contains(item->name))
            warn([&] { return QLatin1String("Double tag name ") + item->name; });
        tagCodes.insert(code);
        tagNames.insert(item->name);
        item->sortChildrenByType();
        // Sorting brings together blank lines that other children stood between, and may put one
        // first. Reading makes neither: it keeps one blank line for any number of them, and none
        // before the first child. The tree keeps to that, or the next save would write lines that
        // the next reading takes otherwise.
        for (int row = int(item->children.size()) - 1; row >= 0; --row) {
            if (item->children.at(row)->isNewline() && (row == 0 || item->children.at(row - 1)->isNewline()))
                item->removeChild(row);
        }
    }

    for (Item *child : std::as_const(item->children))
        trimNewlines(child);
    // The list grew while it was read; a loaded file keeps it at its size.
    item->children.squeeze();

    if (parent) {
        parent->appendChild(item);
        Siblings &siblings = m_siblings.last();
        if (siblings.filled)
            siblings.index.append(item);
        return true;
    }
    // A second top-level element is read and checked, then dropped.
    if (item != root)
        delete item;
    return true;
}

// A short list is searched. A long one gets an index of the names and codes of its children,
// made once from the children read so far and kept up to date as the list grows, so that no input
// makes the checks quadratic.
const SiblingIndex &Parser::siblingIndex(const Item *parent)
{
    Siblings &siblings = m_siblings.last();
    if (!siblings.filled) {
        siblings.index = SiblingIndex(parent);
        siblings.filled = true;
    }
    return siblings.index;
}

// Whether a child of `parent` holds `id` as its id key. The caller passes the low 32 bits of the
// new item's id, as Item::findBut(unsigned int, ...) takes it.
bool Parser::hasSiblingId(const Item *parent, quint64 id)
{
    if (!m_siblings.last().filled && parent->children.size() < shortList) {
        for (const Item *child : parent->children) {
            if (child->hasIdKey() && child->id == id)
                return true;
        }
        return false;
    }
    return siblingIndex(parent).idHolders(id).count > 0;
}

// Whether a child of `parent` holds `name`, which is not empty, as its name key.
bool Parser::hasSiblingName(const Item *parent, const QString &name)
{
    if (!m_siblings.last().filled && parent->children.size() < shortList) {
        // The names of everything but tags are shared: two of them are equal when they are the
        // same string. An empty name has another size than `name`.
        const qsizetype size = name.size();
        for (const Item *child : parent->children) {
            const QString &other = child->name;
            if (other.size() == size
                && (other.constData() == name.constData() || (child->type == Tag && other == name)))
                return true;
        }
        return false;
    }
    return siblingIndex(parent).nameHolders(name).count > 0;
}

// The steps of reading an element's attributes are the parser's own; AttributeReader does them.
bool Parser::parseElementAttributes(ItemData *data)
{
    return m_attributes.read(data, m_open);
}

bool Parser::parseBool(const QString &attributeName)
{
    return m_attributes.readBool(attributeName);
}

// The line of the first character of the current text that is not blank. The reader stands at
// the end of the text; CDATA counts from its start, since even blanks there are not blank.
int Parser::strayTextLine() const
{
    const QStringView t = text();
    qsizetype first = 0;
    if (!isCDATA()) {
        while (first < t.size()
               && (t.at(first) == u' ' || t.at(first) == u'\t' || t.at(first) == u'\n' || t.at(first) == u'\r'))
            ++first;
    }
    const qsizetype after = t.size() - first;
    return int(lineNumber() - t.right(after).count(QLatin1Char('\n')));
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
    // A tag holds its lists only, sorted by type once it is read: a comment between them has no
    // place in the tree and would be gone after the next save.
    if (parent->type == Tag) {
        warn([] { return QStringLiteral("Comment inside <tag> is not kept"); });
        return;
    }
    Item *item = new Item;
    item->comment = m_attributes.sharedText(text());
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

#include "parser.h"

#include <limits>

#include <cstring>

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
    m_texts.clear();
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
    m_texts.clear();

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
            if (other.size() == size && (other.constData() == name.constData() || (child->type == Tag && other == name)))
                return true;
        }
        return false;
    }
    return siblingIndex(parent).nameHolders(name).count > 0;
}

bool Parser::parseElementAttributes(ItemData *data)
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
    const QXmlStreamNamespaceDeclarations &declarations = namespaceDeclarations();
    for (const QXmlStreamNamespaceDeclaration &declaration : declarations) {
        warn([&] {
            QString name = QStringLiteral("xmlns");
            if (!declaration.prefix().isEmpty())
                name += QLatin1Char(':') + declaration.prefix().toString();
            return QStringLiteral("Attribute \"%1\" is not kept").arg(name);
        });
    }
    const QXmlStreamAttributes &attrs = attributes();
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
            warn([&] { return QStringLiteral("Attribute \"%1\" is not kept").arg(key); });
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
                raiseError(error);
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
            for (qsizetype i = m_open.size() - 1; mode.mode == 0 && i >= 0; --i) {
                if (m_open.at(i)->display.mode != 0)
                    mode = m_open.at(i)->display;
            }
            padded = isDecimalDisplay(mode);
        }
        if (!parseId(id, padded, &data->id)) {
            raiseError(QStringLiteral("Invalid ID"));
            return false;
        }
        data->hasId = true;
    }

    if (!secure.isNull())
        data->secure = parseBool(attrSecure);

    return true;
}

// One QString per distinct text in this parse: equal names and comments share their storage.
QString Parser::sharedText(QStringView text)
{
    if (text.isEmpty())
        return text.toString();
    return sharedEntry(text).text;
}

const Parser::SharedText &Parser::sharedEntry(QStringView text)
{
    const auto it = m_texts.constFind(text);
    if (it != m_texts.constEnd())
        return it.value();
    SharedText entry;
    entry.text = text.toString();
    const QStringView key(entry.text);
    return m_texts.insert(key, std::move(entry)).value();
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

// The line of the first character of the current text that is not blank. The reader stands at
// the end of the text; CDATA counts from its start, since even blanks there are not blank.
int Parser::strayTextLine() const
{
    const QStringView t = text();
    qsizetype first = 0;
    if (!isCDATA()) {
        while (first < t.size() && (t.at(first) == u' ' || t.at(first) == u'\t' || t.at(first) == u'\n' || t.at(first) == u'\r'))
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
    item->comment = sharedText(text());
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

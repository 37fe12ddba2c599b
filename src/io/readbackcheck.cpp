#include "readbackcheck.h"

#include "item.h"
#include "parser.h"
#include "writerxml.h"
#include "xmloutput.h"

#include <QBuffer>
#include <QStringList>

#include <algorithm>
#include <memory>

namespace ZAT16 {

namespace {

// One entry of a tree in document order, with its depth, which together give the tree's shape.
struct Entry {
    const Item *item;
    int depth;
};

// The entries that must come back, in the order the reader gives them: a blank line has nothing
// to lose, and a tag's children come back sorted by type.
void flatten(const Item *item, int depth, QList<Entry> &entries)
{
    if (item->isNewline())
        return;
    entries.append({ item, depth });
    if (item->type == Tag && item->children.size() > 1) {
        QList<const Item *> children(item->children.cbegin(), item->children.cend());
        std::stable_sort(children.begin(), children.end(), Item::sortsBefore);
        for (const Item *child : std::as_const(children))
            flatten(child, depth + 1, entries);
        return;
    }
    for (const Item *child : item->children)
        flatten(child, depth + 1, entries);
}

// The display as the file carries it: a mode with its digit count, or a digit count alone.
DisplayMode savedDisplay(const DisplayMode &display)
{
    if (display.mode >= 0 && display.mode <= 5)
        return display;
    return DisplayMode();
}

bool sameEntry(const Entry &a, const Entry &b)
{
    const Item *x = a.item;
    const Item *y = b.item;
    const DisplayMode dx = savedDisplay(x->display);
    const DisplayMode dy = savedDisplay(y->display);
    // The form the writer gives an entry (an element or a comment line) must come back too, or the
    // next save would write something else.
    return a.depth == b.depth && x->type == y->type && x->isComment() == y->isComment() && x->name == y->name
        && x->hasId == y->hasId && (!x->hasId || x->id == y->id) && x->comment == y->comment && dx.mode == dy.mode
        && dx.digits == dy.digits && x->secure == y->secure;
}

// The first character of every line of `text`.
QList<qsizetype> lineStarts(const QString &text)
{
    QList<qsizetype> starts { 0 };
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text.at(i) == QLatin1Char('\n'))
            starts.append(i + 1);
    }
    return starts;
}

// The item whose text holds the reader's position: the innermost span around it. The reader
// stands just after the token it complains about.
const Item *itemAt(const Item *root, const QString &text, qint64 line, qint64 column)
{
    QList<WriterXml::Span> spans;
    {
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        WriterXml writer;
        writer.spans = &spans;
        writer.device = &buffer;
        writer.writeDefinitions(root);
        writer.device = nullptr;
    }
    const QList<qsizetype> starts = lineStarts(text);
    if (line < 1 || line > starts.size())
        return nullptr;
    const qsizetype position = starts.at(line - 1) + column;
    const Item *found = nullptr;
    for (const WriterXml::Span &span : std::as_const(spans)) {
        if (span.begin < position && position <= span.end && !span.item->isNewline())
            found = span.item;
    }
    return found;
}

QString quoted(const QString &text)
{
    QString shown = text.simplified();
    if (shown.size() > 40)
        shown = shown.left(39) + QChar(0x2026);
    return QLatin1Char('"') + shown + QLatin1Char('"');
}

// `tag "Power"` or `tag 0x1001`; empty for an entry without name and code.
QString label(const Item *item, const QString &kind)
{
    if (!item->name.isEmpty())
        return kind + QLatin1Char(' ') + quoted(item->name);
    if (item->hasId)
        return kind + QLatin1Char(' ') + item->formatId();
    return QString();
}

// `the tag "Power"`, or `a tag without name or code`.
QString named(const Item *item, const QString &kind)
{
    const QString text = label(item, kind);
    return text.isEmpty() ? QStringLiteral("a %1 without name or code").arg(kind) : QStringLiteral("the ") + text;
}

// The type a comment line gets from its container when it is read.
ItemType commentTypeIn(const Item *parent)
{
    if (!parent)
        return ZAT16::Invalid;
    switch (parent->type) {
    case Root:
        return Tag;
    case Enums:
        return Enum;
    case Bits:
        return Bit;
    default:
        return ZAT16::Invalid;
    }
}

// Why an entry that reads back without an error does not come back as it is, where the format
// says why; empty otherwise.
QString reasonFor(const Item *item)
{
    if (!XmlOutput::canCarry(item->name) || !XmlOutput::canCarry(item->comment))
        return QStringLiteral("it holds characters that a file cannot carry");
    // The writer saves an entry with a comment and nothing else as a comment line; one whose
    // children all are blank lines would lose them, and come back as a comment line.
    if (!item->isComment()) {
        const bool onlyBlankChildren = !item->children.isEmpty()
            && std::all_of(item->children.cbegin(), item->children.cend(), [](const Item *c) {
                   return c->isNewline();
               });
        if (onlyBlankChildren && item->hasId == false && item->name.isEmpty() && !item->comment.isEmpty())
            return QStringLiteral("an entry with only a comment is saved as a comment line");
        return QString();
    }
    if (item->type == Enums || item->type == Bits)
        return QStringLiteral("a list with only a comment is saved as a comment line");
    if (item->secure || savedDisplay(item->display).mode != 0 || savedDisplay(item->display).digits != 0)
        return QStringLiteral("an entry with only a comment is saved as a comment line, without its other settings");
    if (item->comment.contains(QLatin1String("--")) || item->comment.endsWith(QLatin1Char('-')))
        return QStringLiteral("a comment line cannot hold \"--\" or end with \"-\"");
    if (item->parent && item->parent->type == Tag)
        return QStringLiteral("a comment line inside a tag is not kept");
    if (item->type != commentTypeIn(item->parent))
        return QStringLiteral("an entry with only a comment is saved as a comment line");
    return QString();
}

// "... would not load again", with the reason where there is one.
QString wouldNotLoad(const Item *item)
{
    const QString reason = item ? reasonFor(item) : QString();
    return ReadBackCheck::describe(item) + QStringLiteral(" would not load again")
        + (reason.isEmpty() ? QString() : QStringLiteral(" (") + reason + QLatin1Char(')'));
}

} // namespace

QString ReadBackCheck::describe(const Item *item)
{
    if (!item || !item->parent)
        return QStringLiteral("the document");
    QString text;
    // Lists are elements in any case; every other entry with only a comment is a comment line.
    if (item->isComment() && item->type != Enums && item->type != Bits) {
        text = QStringLiteral("the comment ") + quoted(item->comment);
    } else {
        switch (item->type) {
        case Tag:
            return named(item, QStringLiteral("tag"));
        case Enums:
            text = QStringLiteral("the enumeration list");
            break;
        case Enum:
            text = named(item, QStringLiteral("value"));
            break;
        case Bits:
            text = QStringLiteral("the bit list");
            break;
        case Bit:
            text = named(item, QStringLiteral("bit"));
            break;
        default:
            text = QStringLiteral("an entry of unknown kind");
            break;
        }
    }
    for (const Item *up = item->parent; up; up = up->parent) {
        if (up->type == Tag && up->parent) {
            const QString tag = label(up, QStringLiteral("tag"));
            return text + QStringLiteral(" of ") + (tag.isEmpty() ? QStringLiteral("a tag without name or code") : tag);
        }
    }
    return text;
}

QString ReadBackCheck::check(const Item *root, const QByteArray &written)
{
    Parser parser;
    if (!parser.parse(written)) {
        // errorString() is the reader's message with the token in front: "(StartElement) ...".
        QString reason = parser.errorString();
        if (reason.startsWith(QLatin1Char('('))) {
            const qsizetype close = reason.indexOf(QLatin1String(") "));
            if (close > 0)
                reason = reason.mid(close + 2);
        }
        const Item *culprit = itemAt(root, QString::fromUtf8(written), parser.lineNumber(), parser.columnNumber());
        return describe(culprit) + QStringLiteral(" would not load again (") + reason + QLatin1Char(')');
    }
    const std::unique_ptr<Item> back(parser.takeRoot());
    if (parser.stoppedAtLine != 0)
        return QStringLiteral("the text after line %1 would not load again").arg(parser.stoppedAtLine);

    QList<Entry> expected;
    QList<Entry> found;
    flatten(root, 0, expected);
    flatten(back.get(), 0, found);
    const qsizetype common = std::min(expected.size(), found.size());
    for (qsizetype i = 0; i < common; ++i) {
        if (!sameEntry(expected.at(i), found.at(i)))
            return wouldNotLoad(expected.at(i).item);
    }
    if (expected.size() > found.size())
        return wouldNotLoad(expected.at(common).item);
    if (found.size() > expected.size())
        return QStringLiteral("the document would load again with more entries than it has");
    return QString();
}

} // namespace ZAT16

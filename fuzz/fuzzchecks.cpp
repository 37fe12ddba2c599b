#include "fuzzchecks.h"

#include "editormodel.h"
#include "item.h"
#include "numbers.h"
#include "parser.h"
#include "readbackcheck.h"
#include "tagcodes.h"
#include "writercpp.h"
#include "writercpplut.h"
#include "writercs.h"
#include "writerheader.h"
#include "writerlua.h"
#include "writerxml.h"

#include <QAbstractItemModelTester>
#include <QMimeData>
#include <QStringList>
#include <QUndoStack>

#include <memory>

using namespace ZAT16;

namespace FuzzChecks {

namespace {

// Failure texts quote inputs in C notation so that a report shows control characters and
// invalid UTF-8 exactly.
QString quoted(const QByteArray &bytes, int limit = 200)
{
    QString text = QStringLiteral("\"");
    for (int i = 0; i < bytes.size() && i < limit; ++i) {
        const uchar c = uchar(bytes.at(i));
        if (c == '"' || c == '\\') {
            text += QLatin1Char('\\');
            text += QLatin1Char(char(c));
        } else if (c == '\n') {
            text += QStringLiteral("\\n");
        } else if (c >= 0x20 && c < 0x7F) {
            text += QLatin1Char(char(c));
        } else {
            text += QStringLiteral("\\x%1").arg(c, 2, 16, QLatin1Char('0'));
        }
    }
    if (bytes.size() > limit)
        text += QStringLiteral("\"... (%1 bytes)").arg(bytes.size());
    else
        text += QLatin1Char('"');
    return text;
}

QString kindName(int type)
{
    switch (type) {
    case Root:
        return QStringLiteral("zat16");
    case Tag:
        return QStringLiteral("tag");
    case Enums:
        return QStringLiteral("enums");
    case Enum:
        return QStringLiteral("enum");
    case Bits:
        return QStringLiteral("bits");
    case Bit:
        return QStringLiteral("bit");
    default:
        return QString::number(type);
    }
}

// What an item is to the writer: a comment, a blank line or an element of its type.
QString itemLabel(const Item *item)
{
    if (item->isComment())
        return QStringLiteral("comment item");
    if (item->isNewline())
        return QStringLiteral("blank-line item");
    return QLatin1Char('<') + kindName(item->type) + QLatin1Char('>');
}

QString dumpItem(const Item *item, int indent)
{
    QString line = QString(indent, QLatin1Char(' ')) + kindName(item->type);
    if (item->hasId)
        line += QStringLiteral(" id=0x") + QString::number(item->id, 16);
    else if (item->id != 0)
        line += QStringLiteral(" noid=0x") + QString::number(item->id, 16);
    if (!item->name.isEmpty())
        line += QStringLiteral(" name='") + item->name + QLatin1Char('\'');
    if (!item->comment.isEmpty())
        line += QStringLiteral(" comment='") + item->comment + QLatin1Char('\'');
    if (item->display.mode || item->display.digits)
        line += QStringLiteral(" display=%1/%2").arg(item->display.mode).arg(item->display.digits);
    if (item->secure)
        line += QStringLiteral(" secure");
    line += QLatin1Char('\n');
    for (const Item *child : item->children) {
        if (child->parent != item)
            line += QString(indent + 2, QLatin1Char(' ')) + QStringLiteral("(wrong parent)\n");
        line += dumpItem(child, indent + 2);
    }
    return line;
}

// The fields in which two items differ, by name.
// The "display" attribute as the writer puts it, empty when it writes none.
QString writtenDisplay(const Item *item)
{
    const DisplayMode &display = item->display;
    const bool hasMode = display.mode >= 1 && display.mode <= 5;
    if (!hasMode && display.digits == 0)
        return QString();
    return (display.digits ? QString::number(display.digits) : QString())
        + (hasMode ? QString(QLatin1Char("duxoy"[display.mode - 1])) : QString());
}

// The parts of two items that the writer puts into the file and that differ: a difference
// of A and B must come from one of them. (An item's other fields, such as the secure flag of
// an item written as a comment, are lost on the first save already and change nothing after.)
// The item alone as the writer writes it, with the characters that XML cannot carry
// replaced; its id is left out (it depends on the display modes of the parents).
QByteArray writtenForm(const Item *item)
{
    WriterXml writer;
    auto *copy = new Item(static_cast<const ItemData &>(*item));
    copy->id = 0;
    if (!item->parent) {
        // The document's root: its comment is the document type declaration.
        std::unique_ptr<Item> root(copy);
        return writer.encode(root.get());
    }
    // Anything else is written inside a root, or its comment would be taken for one.
    Item root;
    root.type = Root;
    root.appendChild(copy);
    return writer.encode(&root);
}

QStringList differentFields(const Item *x, const Item *y)
{
    QStringList fields;
    if (itemLabel(x) != itemLabel(y))
        return { QStringLiteral("kind") };
    if (x->isNewline())
        return fields;
    if (!x->isComment() && (x->hasId != y->hasId || (x->hasId && x->formatId() != y->formatId())))
        fields << QStringLiteral("id");
    if (writtenForm(x) == writtenForm(y))
        return fields;
    if (x->name != y->name)
        fields << QStringLiteral("name");
    if (x->comment != y->comment)
        fields << QStringLiteral("comment");
    if (x->secure != y->secure)
        fields << QStringLiteral("secure");
    if (writtenDisplay(x) != writtenDisplay(y))
        fields << QStringLiteral("display");
    if (fields.isEmpty())
        fields << QStringLiteral("written form");
    return fields;
}

bool sameData(const Item *x, const Item *y)
{
    return differentFields(x, y).isEmpty() && x->children.size() == y->children.size();
}

// The first difference between two trees, walking both in file order. `what` gets the place
// and the values, `kind` the same without values, so that differences of one kind can be counted.
// Where a child is missing or extra, the siblings after it are lined up again, so that one lost
// item is reported as such and not as a change of every item after it.
bool firstDifference(const Item *x, const Item *y, const QString &path, QString *what, QString *kind)
{
    const QStringList fields = differentFields(x, y);
    if (!fields.isEmpty()) {
        if (itemLabel(x) != itemLabel(y))
            *kind = itemLabel(x) + QStringLiteral(" became a ") + itemLabel(y);
        else
            *kind = itemLabel(x) + QStringLiteral(" changed its ") + fields.join(QStringLiteral(", "));
        *what = path + QStringLiteral(": ") + *kind + QStringLiteral(":\n    before: ")
            + dumpItem(x, 0).section(QLatin1Char('\n'), 0, 0) + QStringLiteral("\n    after:  ")
            + dumpItem(y, 0).section(QLatin1Char('\n'), 0, 0);
        return true;
    }
    const QList<Item *> &a = x->children;
    const QList<Item *> &b = y->children;
    const QString where = QStringLiteral(" in ") + itemLabel(x);
    for (int i = 0; i < qMax(a.size(), b.size()); ++i) {
        const QString childPath = path + QLatin1Char('/') + kindName((i < a.size() ? a.at(i) : b.at(i))->type)
            + QLatin1Char('[') + QString::number(i) + QLatin1Char(']');
        if (i >= b.size()) {
            *kind = itemLabel(a.at(i)) + QStringLiteral(" lost at the end") + where;
            *what = childPath + QStringLiteral(": ") + *kind + QStringLiteral(": ") + dumpItem(a.at(i), 0).trimmed();
            return true;
        }
        if (i >= a.size()) {
            *kind = itemLabel(b.at(i)) + QStringLiteral(" added at the end") + where;
            *what = childPath + QStringLiteral(": ") + *kind + QStringLiteral(": ") + dumpItem(b.at(i), 0).trimmed();
            return true;
        }
        if (sameData(a.at(i), b.at(i))) {
            if (firstDifference(a.at(i), b.at(i), childPath, what, kind))
                return true;
            continue;
        }
        bool moved = false;
        for (int j = i + 1; j < b.size() && !moved; ++j)
            moved = sameData(a.at(i), b.at(j));
        if (moved && a.size() == b.size()) {
            *kind = QStringLiteral("children reordered") + where;
            *what = childPath + QStringLiteral(": ") + *kind + QStringLiteral(": ") + dumpItem(a.at(i), 0).trimmed()
                + QStringLiteral(" moved down");
            return true;
        }
        // One or a few items missing or extra here, and the rest lines up again.
        bool lost = false;
        bool added = false;
        for (int k = 1; k <= 3 && !lost; ++k)
            lost = i + k < a.size() && sameData(a.at(i + k), b.at(i));
        for (int k = 1; k <= 3 && !lost && !added; ++k)
            added = i + k < b.size() && sameData(a.at(i), b.at(i + k));
        if (lost) {
            *kind = itemLabel(a.at(i)) + QStringLiteral(" lost") + where;
            *what = childPath + QStringLiteral(": ") + *kind + QStringLiteral(": ") + dumpItem(a.at(i), 0).trimmed();
            return true;
        }
        if (added) {
            *kind = itemLabel(b.at(i)) + QStringLiteral(" added") + where;
            *what = childPath + QStringLiteral(": ") + *kind + QStringLiteral(": ") + dumpItem(b.at(i), 0).trimmed();
            return true;
        }
        return firstDifference(a.at(i), b.at(i), childPath, what, kind);
    }
    return false;
}

// The first line where two texts differ, with both versions of it.
QString lineDifference(const QByteArray &x, const QByteArray &y)
{
    const QList<QByteArray> a = x.split('\n');
    const QList<QByteArray> b = y.split('\n');
    for (int i = 0; i < qMax(a.size(), b.size()); ++i) {
        const QByteArray la = i < a.size() ? a.at(i) : QByteArray("(none)");
        const QByteArray lb = i < b.size() ? b.at(i) : QByteArray("(none)");
        if (la != lb) {
            return QStringLiteral("first difference in line %1:\n    - %2\n    + %3")
                .arg(i + 1)
                .arg(quoted(la), quoted(lb));
        }
    }
    return QStringLiteral("no line differs");
}

// Fresh parser per text; the caller owns the tree (null when the text does not load).
Item *load(const QByteArray &data, QString *error = nullptr)
{
    Parser parser;
    const bool ok = parser.parse(data);
    if (error)
        *error = parser.errorString();
    return ok ? parser.takeRoot() : nullptr;
}

QByteArray save(const Item *root)
{
    WriterXml writer;
    return writer.encode(root);
}

// `depth` 0 is the root. Reading that stops early at stray text leaves the root unfinished: its
// range check is skipped, and only the children of the root's children are certain to have had
// their blank lines trimmed.
// Characters of text held by the tree. Without entities every one of them comes from at least
// one byte of the input, so more characters than input bytes mean that entities were expanded.
qsizetype treeText(const Item *item)
{
    qsizetype size = item->name.size() + item->comment.size();
    for (const Item *child : item->children)
        size += treeText(child);
    return size;
}

QString checkTree(const Item *item, int depth)
{
    if (item->type < Root || item->type > Bit)
        return QStringLiteral("an item has the type %1:\n").arg(int(item->type)) + dumpItem(item, 0);
    // The top element's own checks come after its children; stray text that ends reading early
    // skips them, and the top element is kept as read so far.
    if (depth > 0 && item->type == Tag && (item->id >> 16))
        return QStringLiteral("a tag has a code of 0x10000 or more:\n") + dumpItem(item, 0);
    QString error;
    if (!item->name.isEmpty() && !isValidIdentifier(item->name, &error))
        return QStringLiteral("an item has a name that is no identifier (%1):\n").arg(error) + dumpItem(item, 0);
    // Blank lines at the end of an element are trimmed once its parent has been read; only the
    // root keeps its own.
    if (depth >= 2 && !item->children.isEmpty() && item->children.last()->isNewline())
        return QStringLiteral("an element ends with a blank line:\n") + dumpItem(item, 0);
    for (const Item *child : item->children) {
        if (child->parent != item)
            return QStringLiteral("a child does not point back to its parent:\n") + dumpItem(item, 0);
        const QString failure = checkTree(child, depth + 1);
        if (!failure.isEmpty())
            return failure;
    }
    return QString();
}

} // namespace

QString dumpTree(const Item *item)
{
    return item ? dumpItem(item, 0) : QStringLiteral("(null)\n");
}

// ---------------------------------------------------------------------------------------------
// Loading

QString checkLoad(const QByteArray &data)
{
    Parser parser;
    const bool ok = parser.parse(data);
    if (ok != (parser.root != nullptr))
        return QStringLiteral("parse() returned %1 but the root is %2").arg(ok).arg(parser.root ? "set" : "null");
    if (!ok) {
        const QString message = parser.formatError();
        if (!message.startsWith(QLatin1String("Error: data, Line ")))
            return QStringLiteral("a failed parse gives the error text ") + quoted(message.toUtf8());
        return QString();
    }
    if (parser.root->parent)
        return QStringLiteral("the root has a parent");
    if (parser.hasError())
        return QStringLiteral("a successful parse left the reader in the error state: ") + parser.errorString();
    const qsizetype text = treeText(parser.root);
    if (text > data.size()) {
        return QStringLiteral("the tree holds %1 characters of text read from %2 bytes: entities were expanded")
            .arg(text)
            .arg(data.size());
    }
    return checkTree(parser.root, 0);
}

// ---------------------------------------------------------------------------------------------
// Round trip

RoundTrip roundTrip(const QByteArray &data)
{
    RoundTrip result;
    std::unique_ptr<Item> original(load(data));
    if (!original)
        return result;
    result.loaded = true;
    result.a = save(original.get());
    // A save writes only what reads back as the tree; anything else it refuses, and then nothing
    // is written. A refused tree is no failure.
    result.refused = ReadBackCheck::check(original.get(), result.a);
    if (!result.refused.isEmpty())
        return result;

    QString error;
    std::unique_ptr<Item> fromA(load(result.a, &error));
    if (!fromA) {
        result.failure = QStringLiteral("A passed the read-back check but does not load: ") + error
            + QStringLiteral("\n  A = ") + quoted(result.a, 2000);
        return result;
    }
    result.b = save(fromA.get());
    // What was saved once can be saved again.
    const QString refusedAgain = ReadBackCheck::check(fromA.get(), result.b);
    if (!refusedAgain.isEmpty()) {
        result.failure = QStringLiteral("a saved file cannot be saved again: ") + refusedAgain
            + QStringLiteral("\n  A = ") + quoted(result.a, 2000);
        return result;
    }
    if (result.a != result.b) {
        QString what;
        QString kind;
        if (firstDifference(original.get(), fromA.get(), QStringLiteral("zat16"), &what, &kind)) {
            result.lossKind = kind;
            result.loss = what;
        } else {
            result.lossKind = QStringLiteral("the trees are equal but A and B differ");
            result.loss = result.lossKind;
        }
        result.loss += QStringLiteral("\n  A/B: ") + lineDifference(result.a, result.b);
    }

    std::unique_ptr<Item> fromB(load(result.b, &error));
    if (!fromB) {
        result.failure = QStringLiteral("B (a saved file that was loaded and saved again) does not load: ") + error
            + QStringLiteral("\n  B = ") + quoted(result.b, 2000);
        return result;
    }
    result.c = save(fromB.get());
    if (result.b != result.c) {
        QString what;
        QString kind;
        firstDifference(fromA.get(), fromB.get(), QStringLiteral("zat16"), &what, &kind);
        result.failure = QStringLiteral("saving is not stable: B and C differ; ") + lineDifference(result.b, result.c)
            + QStringLiteral("\n  tree of A vs tree of B: ") + (what.isEmpty() ? QStringLiteral("equal") : what)
            + QStringLiteral("\n  B = ") + quoted(result.b, 2000);
    }
    return result;
}

QString checkRoundTrip(const QByteArray &data, bool strict)
{
    const RoundTrip result = roundTrip(data);
    if (!result.failure.isEmpty())
        return result.failure;
    if (strict && !result.loss.isEmpty())
        return QStringLiteral("A and B differ: ") + result.loss;
    return QString();
}

// ---------------------------------------------------------------------------------------------
// Generators

QString checkGenerators(const QByteArray &data)
{
    std::unique_ptr<Item> root(load(data));
    if (!root)
        return QString();
    QStringList empty;
    {
        WriterHeader writer;
        if (writer.encode(root.get()).isEmpty())
            empty << QStringLiteral("WriterHeader");
    }
    {
        WriterLua writer;
        if (writer.encode(root.get()).isEmpty())
            empty << QStringLiteral("WriterLua");
    }
    {
        WriterCpp writer;
        if (writer.encode(root.get()).isEmpty())
            empty << QStringLiteral("WriterCpp");
    }
    {
        WriterCs writer;
        if (writer.encode(root.get()).isEmpty())
            empty << QStringLiteral("WriterCs");
    }
    {
        WriterCppLut writer;
        if (writer.encode(root.get()).isEmpty())
            empty << QStringLiteral("WriterCppLut");
    }
    if (!empty.isEmpty())
        return QStringLiteral("no output from ") + empty.join(QStringLiteral(", "));
    return QString();
}

// ---------------------------------------------------------------------------------------------
// Numbers

namespace {

// The rules for typed numbers, written again from their description: digits 0-9 and letters of
// either case (a = 10 ... z = 35), an optional sign, "0x"/"0X" or "0b" before the digits,
// wrap-around in the width of the result, and 0 with ok false at the first bad digit.
int digitValue(int c)
{
    static const char digits[] = "0123456789abcdefghijklmnopqrstuvwxyz";
    if (c >= 'A' && c <= 'Z')
        c += 'a' - 'A';
    for (int i = 0; i < 36; ++i) {
        if (digits[i] == c)
            return i;
    }
    return -1;
}

quint64 expectedNumber(const QByteArray &text, quint64 mask, bool *ok)
{
    int i = 0;
    bool negative = false;
    if (!text.isEmpty() && (text.at(0) == '+' || text.at(0) == '-')) {
        negative = text.at(0) == '-';
        i = 1;
    }
    quint64 base = 10;
    if (text.size() - i >= 2 && text.at(i) == '0') {
        if (text.at(i + 1) == 'x' || text.at(i + 1) == 'X') {
            base = 16;
            i += 2;
        } else if (text.at(i + 1) == 'b') {
            base = 2;
            i += 2;
        }
    }
    quint64 value = 0;
    for (; i < text.size(); ++i) {
        const int digit = digitValue(uchar(text.at(i)));
        if (digit < 0 || quint64(digit) >= base) {
            *ok = false;
            return 0;
        }
        value = (value * base + quint64(digit)) & mask;
    }
    *ok = true;
    return negative ? (quint64(0) - value) & mask : value;
}

quint32 expectedAtoi(const QByteArray &text, unsigned int base)
{
    quint32 value = 0;
    for (const char c : text) {
        const int digit = digitValue(uchar(c));
        if (digit < 0 || unsigned(digit) >= base)
            return 0xFFFFFFFFu;
        value = value * base + quint32(digit);
    }
    return value;
}

QString compareNumber(
    const char *function, const QByteArray &text, quint64 got, bool gotOk, quint64 expected, bool expectedOk)
{
    if (got == expected && gotOk == expectedOk)
        return QString();
    return QStringLiteral("%1(%2) gave 0x%3 ok=%4, expected 0x%5 ok=%6\n")
        .arg(QLatin1String(function), quoted(text))
        .arg(got, 0, 16)
        .arg(gotOk)
        .arg(expected, 0, 16)
        .arg(expectedOk);
}

} // namespace

QString checkNumbers(const QByteArray &data)
{
    QString failures;
    const quint64 mask32 = 0xFFFFFFFFu;
    const quint64 mask64 = ~quint64(0);
    bool expectedOk = false;
    bool ok = true;

    // The byte forms see the input exactly.
    quint64 expected = expectedNumber(data, mask64, &expectedOk);
    ok = !expectedOk;
    quint64 got = Numbers::to64(data.constData(), unsigned(data.size()), &ok);
    failures += compareNumber("to64(void*)", data, got, ok, expected, expectedOk);
    ok = !expectedOk;
    got = Numbers::to64(data, &ok);
    failures += compareNumber("to64(QByteArray)", data, got, ok, expected, expectedOk);

    expected = expectedNumber(data, mask32, &expectedOk);
    ok = !expectedOk;
    got = Numbers::to32(data.constData(), unsigned(data.size()), &ok);
    failures += compareNumber("to32(void*)", data, got, ok, expected, expectedOk);
    ok = !expectedOk;
    got = Numbers::to32(data, &ok);
    failures += compareNumber("to32(QByteArray)", data, got, ok, expected, expectedOk);

    // The string forms work on the text's UTF-8 form; invalid input bytes become U+FFFD first.
    const QString text = QString::fromUtf8(data);
    const QByteArray utf8 = text.toUtf8();
    expected = expectedNumber(utf8, mask64, &expectedOk);
    ok = !expectedOk;
    got = Numbers::to64(text, &ok);
    failures += compareNumber("to64(QString)", utf8, got, ok, expected, expectedOk);
    expected = expectedNumber(utf8, mask32, &expectedOk);
    ok = !expectedOk;
    got = Numbers::to32(text, &ok);
    failures += compareNumber("to32(QString)", utf8, got, ok, expected, expectedOk);

    // atoi: the first byte chooses the base (0 to 39), the rest are the digits.
    if (!data.isEmpty()) {
        const unsigned int base = uchar(data.at(0)) % 40;
        const QByteArray digits = data.mid(1);
        const quint32 value = Numbers::atoi(digits.constData(), unsigned(digits.size()), base);
        const quint32 expectedValue = expectedAtoi(digits, base);
        if (value != expectedValue) {
            failures += QStringLiteral("atoi(%1, base %2) gave 0x%3, expected 0x%4\n")
                            .arg(quoted(digits))
                            .arg(base)
                            .arg(value, 0, 16)
                            .arg(expectedValue, 0, 16);
        }
        if (!digits.isEmpty() && Numbers::atoi(nullptr, unsigned(digits.size()), base) != 0xFFFFFFFFu)
            failures += QStringLiteral("atoi of a null text is not 0xFFFFFFFF\n");
    }

    // cton of every byte, read as unsigned and as signed char.
    for (const char c : data) {
        for (const int value : { int(uchar(c)), int(c) }) {
            const int digit = Numbers::cton(value);
            if (digit != digitValue(value))
                failures
                    += QStringLiteral("cton(%1) gave %2, expected %3\n").arg(value).arg(digit).arg(digitValue(value));
        }
    }
    return failures;
}

// ---------------------------------------------------------------------------------------------
// Paste

char pasteSelector(PasteFormat format, PasteRow row, int column)
{
    return char(int(format) + PasteFormatCount * (int(row) + PasteRowCount * column));
}

QString pasteRowName(PasteRow row)
{
    switch (row) {
    case PasteTag:
        return QStringLiteral("tag");
    case PasteEnumList:
        return QStringLiteral("enum list");
    case PasteEnum:
        return QStringLiteral("enum");
    case PasteBitList:
        return QStringLiteral("bit list");
    case PasteBit:
        return QStringLiteral("bit");
    case PasteComment:
        return QStringLiteral("comment");
    case PasteListComment:
        return QStringLiteral("comment in a list");
    case PasteBlankLine:
        return QStringLiteral("blank line");
    case PasteListBlankLine:
        return QStringLiteral("blank line in a list");
    default:
        return QStringLiteral("row %1").arg(int(row));
    }
}

namespace {

bool isList(const Item *item)
{
    return item && (item->type == Enums || item->type == Bits);
}

bool matches(const Item *item, PasteRow row)
{
    const bool special = item->isComment() || item->isNewline();
    switch (row) {
    case PasteTag:
        return item->type == Tag && !special && item->parent && item->parent->type == Root;
    case PasteEnumList:
        return item->type == Enums;
    case PasteEnum:
        return item->type == Enum && !special;
    case PasteBitList:
        return item->type == Bits;
    case PasteBit:
        return item->type == Bit && !special;
    case PasteComment:
        return item->isComment() && item->parent && item->parent->type == Root;
    case PasteListComment:
        return item->isComment() && isList(item->parent);
    case PasteBlankLine:
        return item->isNewline() && item->parent && item->parent->type == Root;
    case PasteListBlankLine:
        return item->isNewline() && isList(item->parent);
    default:
        return false;
    }
}

// The first item of the kind in file order.
const Item *findRow(const Item *item, PasteRow row)
{
    if (item->parent && matches(item, row))
        return item;
    for (const Item *child : item->children) {
        if (const Item *found = findRow(child, row))
            return found;
    }
    return nullptr;
}

} // namespace

namespace {

Item *copyTree(const Item *item)
{
    auto *copy = new Item(static_cast<const ItemData &>(*item));
    for (const Item *child : item->children)
        copy->appendChild(copyTree(child));
    return copy;
}

// The document is the same for every input of a run: it is read, saved and dumped once, and
// each input gets a copy of the tree.
struct PasteDocument {
    QByteArray text;
    std::unique_ptr<Item> tree;
    QByteArray saved;
    QString dump;
};

const PasteDocument &pasteDocument(const QByteArray &text)
{
    static PasteDocument document;
    if (document.text != text || !document.tree) {
        document.text = text;
        document.tree.reset(load(text));
        document.saved = document.tree ? save(document.tree.get()) : QByteArray();
        document.dump = dumpTree(document.tree.get());
    }
    return document;
}

// Asks for every cell's texts and colour, as a view showing the whole tree does.
void showAll(const EditorModel &model, const QModelIndex &parent)
{
    static const int roles[] = { Qt::DisplayRole, Qt::EditRole, Qt::ToolTipRole, Qt::BackgroundRole };
    for (int row = 0; row < model.rowCount(parent); ++row) {
        for (int column = 0; column < model.columnCount(parent); ++column) {
            const QModelIndex index = model.index(row, column, parent);
            for (const int role : roles)
                model.data(index, role);
        }
        showAll(model, model.index(row, 0, parent));
    }
}

} // namespace

QString checkPaste(const QByteArray &document, const QByteArray &data, bool modelTester)
{
    if (data.isEmpty())
        return QString();
    const int selector = uchar(data.at(0));
    const auto format = PasteFormat(selector % PasteFormatCount);
    const auto row = PasteRow(selector / PasteFormatCount % PasteRowCount);
    const int column = selector / (PasteFormatCount * PasteRowCount) % 3;
    const QByteArray payload = data.mid(1);

    const PasteDocument &original = pasteDocument(document);
    if (!original.tree)
        return QStringLiteral("the document to paste into does not load");
    EditorModel model;
    QUndoStack stack;
    model.setUndoStack(&stack);
    model.setTags(copyTree(original.tree.get()));
    std::unique_ptr<QAbstractItemModelTester> tester;
    if (modelTester) {
        // The model's dataChanged ranges end one past the last row and column on purpose (views
        // take them as a request to repaint); the tester would reject them, so it does not see them.
        tester
            = std::make_unique<QAbstractItemModelTester>(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
        QObject::disconnect(&model, &QAbstractItemModel::dataChanged, tester.get(), nullptr);
    }

    const Item *target = findRow(model.root(), row);
    if (!target)
        return QStringLiteral("the document has no %1 row").arg(pasteRowName(row));
    const QModelIndex item = model.item2index(target);
    const QModelIndex at = model.index(item.row(), column, item.parent());

    QMimeData mime;
    if (format == PasteXml || format == PasteXmlAndText)
        mime.setData(QStringLiteral("text/xml"), payload);
    if (format == PasteText || format == PasteXmlAndText)
        mime.setText(QString::fromUtf8(payload));
    model.paste(at, &mime);
    showAll(model, QModelIndex());

    const QString where = QStringLiteral("pasting %1 onto the %2 row, column %3")
                              .arg(format == PasteXml        ? "XML"
                                       : format == PasteText ? "text"
                                                             : "XML and text")
                              .arg(pasteRowName(row))
                              .arg(column);
    const QString afterTree = dumpTree(model.root());
    const int pushed = stack.count();

    // Equal trees save to equal text, so the text is compared only where it is the property
    // itself (the document after undoing the paste) and to describe a difference.
    auto compare = [&](const char *step, const QString &expectedTree, const QByteArray &expectedText) {
        const QString tree = dumpTree(model.root());
        const QByteArray text = expectedText.isNull() ? QByteArray() : save(model.root());
        if (tree == expectedTree && text == expectedText)
            return QString();
        QString failure = where + QStringLiteral(" (%1 command(s) pushed): %2 ").arg(pushed).arg(step);
        if (text != expectedText)
            failure += QStringLiteral("the saved document differs; ") + lineDifference(expectedText, text)
                + QLatin1Char('\n');
        else
            failure += QStringLiteral("the tree differs, the saved document does not\n");
        return failure + QStringLiteral("  expected tree:\n") + expectedTree + QStringLiteral("  actual tree:\n")
            + tree;
    };

    while (stack.canUndo())
        stack.undo();
    QString failure = compare("after undoing everything", original.dump, original.saved);
    if (!failure.isEmpty())
        return failure;
    while (stack.canRedo())
        stack.redo();
    failure = compare("after redoing everything", afterTree, QByteArray());
    if (!failure.isEmpty())
        return failure;
    while (stack.canUndo())
        stack.undo();
    return compare("after undoing everything a second time", original.dump, QByteArray());
}

} // namespace FuzzChecks

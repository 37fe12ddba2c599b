#pragma once

// Trees as text, one item a line, indented by depth, so that tests compare trees as strings and
// show them on a mismatch.

#include "item.h"

#include <QString>

namespace TreeText {

inline QString typeName(int type)
{
    switch (type) {
    case ZAT16::Invalid:
        return QStringLiteral("Invalid");
    case ZAT16::Root:
        return QStringLiteral("Root");
    case ZAT16::Tag:
        return QStringLiteral("Tag");
    case ZAT16::Enums:
        return QStringLiteral("Enums");
    case ZAT16::Enum:
        return QStringLiteral("Enum");
    case ZAT16::Bits:
        return QStringLiteral("Bits");
    case ZAT16::Bit:
        return QStringLiteral("Bit");
    }
    return QString::number(type);
}

/// Every field of every item, one indented line each; a child whose parent pointer does not
/// point back is marked, so that the text compares whole trees exactly.
inline QString dumpTree(const ZAT16::Item *item, int indent = 0)
{
    if (!item)
        return QStringLiteral("(null)\n");
    QString line = QString(indent, QLatin1Char(' ')) + typeName(item->type);
    if (item->hasId)
        line += QStringLiteral(" id=0x") + QString::number(item->id, 16);
    else if (item->id != 0)
        line += QStringLiteral(" noid=0x") + QString::number(item->id, 16);
    if (!item->name.isNull())
        line += QStringLiteral(" name='") + item->name + QLatin1Char('\'');
    if (!item->comment.isEmpty())
        line += QStringLiteral(" comment='") + item->comment + QLatin1Char('\'');
    if (item->display.mode || item->display.digits)
        line += QStringLiteral(" display=%1/%2").arg(item->display.mode).arg(item->display.digits);
    if (item->secure)
        line += QStringLiteral(" secure");
    line += QLatin1Char('\n');
    for (const ZAT16::Item *child : item->children) {
        if (child->parent != item)
            line += QString(indent + 2, QLatin1Char(' ')) + QStringLiteral("(wrong parent)\n");
        line += dumpTree(child, indent + 2);
    }
    return line;
}

inline void appendOutline(QString &out, const ZAT16::Item *item, int depth)
{
    out += QString(2 * depth, QLatin1Char(' ')) + typeName(item->type);
    if (item->isNewline()) {
        out += QStringLiteral(" blank");
    } else if (item->isComment()) {
        out += QStringLiteral(" <!--") + item->comment + QStringLiteral("-->");
    } else {
        if (!item->name.isEmpty())
            out += QLatin1Char(' ') + item->name;
        if (item->hasId)
            out += QStringLiteral(" id=0x") + QString::number(item->id, 16).toUpper();
        if (!item->comment.isEmpty())
            out += QStringLiteral(" comment=\"") + item->comment + QLatin1Char('"');
        if (item->secure)
            out += QStringLiteral(" secure");
        if (item->display.mode != 0 || item->display.digits != 0)
            out += QStringLiteral(" display=%1/%2").arg(item->display.mode).arg(item->display.digits);
    }
    out += QLatin1Char('\n');
    for (const ZAT16::Item *child : item->children) {
        if (child->parent != item)
            out += QStringLiteral("!! wrong parent\n");
        appendOutline(out, child, depth + 1);
    }
}

/// The tree as the reader tests spell it, one item a line: blank-line items as "blank", comment
/// items as "<!--text-->", other items with their name and the fields that are set (codes in
/// upper-case hexadecimal); empty for no tree.
inline QString outline(const ZAT16::Item *root)
{
    QString out;
    if (root)
        appendOutline(out, root, 0);
    return out;
}

} // namespace TreeText

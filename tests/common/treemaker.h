#pragma once

// Random trees of the kind the editor saves: every item type, blank lines and comment lines in
// lists, display modes, free text with the characters that need escaping, and codes, numbers
// and names unique where reading would warn about duplicates. The same seed gives the same tree.

#include "item.h"

#include <QRandomGenerator>
#include <QSet>
#include <QString>

#include <memory>

namespace ZAT16 {

class TreeMaker
{
public:
    explicit TreeMaker(quint32 seed)
        : m_rng(seed)
    {
    }

    std::unique_ptr<Item> root()
    {
        auto root = std::make_unique<Item>();
        root->type = Root;
        if (chance(10))
            root->comment = QStringLiteral("<!DOCTYPE zat16>");
        if (chance(20))
            root->display = display();
        const int tags = bounded(12);
        for (int i = 0; i < tags; ++i) {
            if (i > 0 && chance(15))
                addBlank(root.get(), Tag);
            if (chance(15))
                addComment(root.get(), Tag);
            root->appendChild(tag(i));
        }
        return root;
    }

private:
    bool chance(int percent) { return int(m_rng.bounded(100)) < percent; }
    int bounded(int n) { return int(m_rng.bounded(n)); }

    DisplayMode display()
    {
        DisplayMode d;
        d.mode = bounded(6);
        d.digits = chance(50) ? bounded(21) : 0;
        return d;
    }

    QString name()
    {
        static const char first[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ_";
        static const char rest[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ_0123456789";
        QString n = QString(QLatin1Char(first[bounded(sizeof(first) - 1)]));
        const int length = bounded(12);
        for (int i = 0; i < length; ++i)
            n += QLatin1Char(rest[bounded(sizeof(rest) - 1)]);
        return n == QLatin1String("Tag") ? QStringLiteral("Tag_") : n;
    }

    // Free text as users type it, with the characters that need escaping in attributes.
    QString text(bool forComment)
    {
        static const QString pieces[] = {
            QStringLiteral("plain"), QStringLiteral(" "),     QStringLiteral("\""),  QStringLiteral("'"),
            QStringLiteral("&"),     QStringLiteral("<"),     QStringLiteral(">"),   QStringLiteral("\t"),
            QStringLiteral("\n"),    QStringLiteral("\r"),    QStringLiteral("ünï"), QStringLiteral("日本"),
            QStringLiteral("😀"),     QStringLiteral("&amp;"), QStringLiteral("]]>"), QStringLiteral("-"),
        };
        QString t;
        const int length = 1 + bounded(8);
        for (int i = 0; i < length; ++i) {
            const QString &piece = pieces[bounded(16)];
            // Comment lines are written raw: no carriage returns (they do not survive reading)
            // and no double dashes (XML does not allow them there).
            if (forComment && (piece == QLatin1String("\r") || piece == QLatin1String("-")))
                continue;
            t += piece;
        }
        if (forComment && t.trimmed().isEmpty())
            t = QStringLiteral("note");
        return t;
    }

    quint64 number()
    {
        switch (bounded(4)) {
        case 0:
            return m_rng.bounded(64);
        case 1:
            return quint64(-qint64(m_rng.bounded(1000)));
        case 2:
            return m_rng.generate64();
        default:
            return m_rng.bounded(100000);
        }
    }

    void addBlank(Item *parent, ItemType type)
    {
        auto *blank = new Item;
        blank->type = type;
        parent->appendChild(blank);
    }

    void addComment(Item *parent, ItemType type)
    {
        auto *comment = new Item;
        comment->type = type;
        comment->comment = text(true);
        parent->appendChild(comment);
    }

    Item *tag(int i)
    {
        auto *tag = new Item;
        tag->type = Tag;
        tag->name = name() + QString::number(i);
        // Codes, numbers and names are unique where reading warns about duplicates.
        tag->hasId = chance(90);
        do {
            tag->id = tag->hasId ? m_rng.bounded(0x10000) : 0;
        } while (tag->hasId && m_codes.contains(tag->id));
        m_codes.insert(tag->id);
        if (chance(40))
            tag->comment = text(false);
        tag->secure = chance(20);
        if (chance(30))
            tag->display = display();
        // Bit lists come before enumeration lists, as the reader sorts them.
        if (chance(40))
            tag->appendChild(list(Bits, Bit));
        const int enumLists = chance(50) ? (chance(10) ? 2 : 1) : 0;
        for (int j = 0; j < enumLists; ++j)
            tag->appendChild(list(Enums, Enum));
        return tag;
    }

    Item *list(ItemType listType, ItemType valueType)
    {
        auto *list = new Item;
        list->type = listType;
        if (chance(60))
            list->display = display();
        const int values = bounded(10);
        bool lastBlank = true;
        for (int i = 0; i < values; ++i) {
            if (!lastBlank && i + 1 < values && chance(15)) {
                addBlank(list, valueType);
                lastBlank = true;
                continue;
            }
            if (chance(10)) {
                addComment(list, valueType);
                lastBlank = false;
                continue;
            }
            auto *value = new Item;
            value->type = valueType;
            value->hasId = chance(95);
            do {
                value->id = value->hasId ? number() : 0;
            } while (value->hasId && list->findBut(unsigned(value->id), nullptr) >= 0);
            // Nameless values need a code to stay values (without one they read as comments).
            if (!value->hasId || chance(90))
                value->name = name() + QString::number(i);
            if (chance(30))
                value->comment = text(false);
            if (chance(40))
                value->display = display();
            value->secure = chance(5);
            list->appendChild(value);
            lastBlank = false;
        }
        // A blank line cannot end a list.
        while (!list->children.isEmpty() && list->children.last()->isNewline())
            list->removeChild(int(list->children.size()) - 1);
        // An empty list with a comment would read as a comment line.
        if (!list->children.isEmpty() && chance(20))
            list->comment = text(false);
        return list;
    }

    QRandomGenerator m_rng;
    QSet<quint64> m_codes;
};

} // namespace ZAT16

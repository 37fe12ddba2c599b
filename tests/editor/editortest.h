#pragma once

// Shared helpers of the editor tests: a model with its undo stack and an attached model tester,
// trees rendered as text, and short renderings of model signals.

#include "editormodel.h"
#include "item.h"
#include "makeitem.h"
#include "parser.h"
#include "treetext.h"
#include "writerxml.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QUndoStack>
#include <QtTest>

#include <memory>

namespace EditorTest {

using namespace ZAT16;

using TestItems::makeItem;
using TreeText::dumpTree;

/// The definitions-file encoding of a tree.
inline QByteArray encode(const Item *root)
{
    if (!root)
        return QByteArray();
    WriterXml writer;
    return writer.encode(root);
}

/// Parses definitions text; the caller owns the result (null when nothing was read).
inline Item *parseText(const QByteArray &xml)
{
    Parser parser;
    parser.parse(xml);
    return parser.takeRoot();
}

/// The encoding of a tree parsed from definitions text, parsed and freed here.
inline QByteArray encodeText(const QByteArray &xml)
{
    std::unique_ptr<Item> root(parseText(xml));
    return encode(root.get());
}

inline Item *parseFile(const QString &path)
{
    Parser parser;
    if (!parser.parse(path))
        return nullptr;
    return parser.takeRoot();
}

/// Keeps the model's note that an insertion went to another list than the one given off the
/// debug channel while it lives: in a random walk that is expected and not worth printing.
class QuietInsertions
{
public:
    QuietInsertions() { s_previous = qInstallMessageHandler(handler); }
    ~QuietInsertions() { qInstallMessageHandler(s_previous); }
    QuietInsertions(const QuietInsertions &) = delete;
    QuietInsertions &operator=(const QuietInsertions &) = delete;

private:
    static void handler(QtMsgType type, const QMessageLogContext &context, const QString &message)
    {
        if (type == QtDebugMsg && message == QLatin1String("insertion point modified"))
            return;
        s_previous(type, context, message);
    }
    static inline QtMessageHandler s_previous = nullptr;
};

inline QByteArray document(const QByteArray &body)
{
    return QByteArrayLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<zat16>\n") + body
        + QByteArrayLiteral("</zat16>\n");
}

/// "dataChanged 3,0-3,3 Name": the rows and columns of a dataChanged signal and the name of the
/// item its indexes carry.
inline QString dataChangedText(const QList<QVariant> &arguments)
{
    const auto topLeft = arguments.at(0).value<QModelIndex>();
    const auto bottomRight = arguments.at(1).value<QModelIndex>();
    const Item *item = static_cast<const Item *>(topLeft.internalPointer());
    const Item *item2 = static_cast<const Item *>(bottomRight.internalPointer());
    QString text = QStringLiteral("dataChanged %1,%2-%3,%4")
                       .arg(topLeft.row())
                       .arg(topLeft.column())
                       .arg(bottomRight.row())
                       .arg(bottomRight.column());
    if (item != item2)
        text += QStringLiteral(" (two items)");
    if (item)
        text += QLatin1Char(' ') + (item->type == Root ? QStringLiteral("<root>") : item->name);
    return text;
}

/// The dataChanged signals a spy caught, one a line.
inline QString signalText(const QSignalSpy &spy)
{
    QStringList lines;
    for (const QList<QVariant> &arguments : spy)
        lines << dataChangedText(arguments);
    return lines.join(QLatin1Char('\n'));
}

/// An EditorModel with its undo stack and a model tester in fatal mode, attached before the
/// model is filled. The tester is kept off dataChanged only: the model's dataChanged ranges end
/// one past the last row and column on purpose, which the tester would reject; the tests check
/// those ranges themselves.
struct Fixture {
    QUndoStack stack;
    EditorModel model;
    std::unique_ptr<QAbstractItemModelTester> tester;

    explicit Fixture(Item *root = nullptr)
    {
        tester
            = std::make_unique<QAbstractItemModelTester>(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
        QObject::disconnect(&model, &QAbstractItemModel::dataChanged, tester.get(), nullptr);
        model.setUndoStack(&stack);
        if (root)
            model.setTags(root);
    }
    explicit Fixture(const QByteArray &xml)
        : Fixture(parseText(xml))
    {
    }
    ~Fixture()
    {
        // The commands go first; they may hold items but never need the model to free them.
        stack.clear();
        tester.reset();
    }

    Item *root() const { return model.root(); }
    QByteArray encoding() const { return encode(model.root()); }
    QString dump() const { return dumpTree(model.root()); }

    /// The item reached by a path of rows from the root.
    Item *at(std::initializer_list<int> rows) const
    {
        Item *item = model.root();
        for (int row : rows) {
            if (!item)
                return nullptr;
            item = item->child(row);
        }
        return item;
    }
    QModelIndex index(std::initializer_list<int> rows, int column = 0) const
    {
        QModelIndex index;
        int last = -1;
        int n = 0;
        for (int row : rows) {
            if (++n < int(rows.size()))
                index = model.index(row, 0, index);
            last = row;
        }
        return model.index(last, column, index);
    }
};

} // namespace EditorTest

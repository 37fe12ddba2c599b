#pragma once

// Trees for tests, read from the body of a definitions file.

#include "item.h"
#include "parser.h"

#include <QByteArray>

#include <memory>

namespace TestTrees {

/// The tree of a definitions file whose root element holds `body`; null when it does not read.
inline std::unique_ptr<ZAT16::Item> parseBody(const QByteArray &body)
{
    ZAT16::Parser parser;
    if (!parser.parse(QByteArray("<zat16>\n") + body + QByteArray("\n</zat16>\n")))
        return nullptr;
    return std::unique_ptr<ZAT16::Item>(parser.takeRoot());
}

} // namespace TestTrees

#include "highlighterlua.h"

namespace {

const char *const keywords[] = {
    "and", "break", "continue", "do",  "else", "elseif", "end",    "false", "for",  "function", "if",
    "in",  "local", "nil",      "not", "or",   "repeat", "return", "then",  "true", "until",    "while",
};

} // namespace

HighlighterLua::HighlighterLua(QTextDocument *parent)
    : CommentHighlighter(parent,
                         Qt::blue,
                         keywords,
                         int(std::size(keywords)),
                         { QStringLiteral("//[^\n]*"), QStringLiteral("--[^\n]*") })
{
}

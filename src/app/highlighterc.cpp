#include "highlighterc.h"

namespace {

const char *const keywords[] = {
    "char",      "class",    "const",   "double",    "enum",   "explicit", "friend",  "inline", "int",      "long",
    "namespace", "operator", "private", "protected", "public", "short",    "signals", "signed", "slots",    "static",
    "struct",    "template", "typedef", "typename",  "union",  "unsigned", "virtual", "void",   "volatile",
};

} // namespace

HighlighterC::HighlighterC(QTextDocument *parent)
    : CommentHighlighter(parent, Qt::darkBlue, keywords, int(std::size(keywords)), { QStringLiteral("//[^\n]*") })
{
}

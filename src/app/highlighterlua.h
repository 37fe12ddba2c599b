#pragma once

#include "commenthighlighter.h"

/// Colours the generated Lua: keywords, "--" comments, and, like the C highlighter, // and
/// /* */ comments (Lua's own long comments are not treated specially).
class HighlighterLua : public CommentHighlighter
{
    Q_OBJECT

public:
    explicit HighlighterLua(QTextDocument *parent = nullptr);
};

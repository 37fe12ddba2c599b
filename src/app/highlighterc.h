#pragma once

#include "commenthighlighter.h"

/// Colours C-family text (the generated C header): keywords, // comments and /* */ comments.
class HighlighterC : public CommentHighlighter
{
    Q_OBJECT

public:
    explicit HighlighterC(QTextDocument *parent = nullptr);
};

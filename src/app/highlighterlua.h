#pragma once

#include <QRegularExpression>
#include <QSyntaxHighlighter>
#include <QTextCharFormat>
#include <QVector>

/// Colours Lua text: keywords, -- and // comments, and /* */ comments (the C forms as well, on
/// purpose; Lua's long comments are not treated specially).
class HighlighterLua : public QSyntaxHighlighter {
    Q_OBJECT

public:
    explicit HighlighterLua(QTextDocument *parent = nullptr);

protected:
    void highlightBlock(const QString &text) override;

private:
    struct HighlightingRule {
        QRegularExpression pattern;
        QTextCharFormat format;
    };
    QVector<HighlightingRule> m_highlightingRules;

    QRegularExpression m_commentStartExpression;
    QRegularExpression m_commentEndExpression;

    QTextCharFormat m_multiLineCommentFormat;
};

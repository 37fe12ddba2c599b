#include "commenthighlighter.h"

CommentHighlighter::CommentHighlighter(QTextDocument *parent,
                                       const QColor &keywordColor,
                                       const char *const *keywords,
                                       int keywordCount,
                                       const QStringList &singleLineComments)
    : QSyntaxHighlighter(parent)
{
    QTextCharFormat keywordFormat;
    keywordFormat.setForeground(keywordColor);
    keywordFormat.setFontWeight(QFont::Bold);
    for (int i = 0; i < keywordCount; ++i) {
        const QString pattern = QLatin1String("\\b") + QLatin1String(keywords[i]) + QLatin1String("\\b");
        m_highlightingRules.append({ QRegularExpression(pattern), keywordFormat });
    }

    QTextCharFormat singleLineCommentFormat;
    singleLineCommentFormat.setForeground(Qt::darkRed);
    for (const QString &pattern : singleLineComments)
        m_highlightingRules.append({ QRegularExpression(pattern), singleLineCommentFormat });

    m_multiLineCommentFormat.setForeground(Qt::darkRed);
    m_commentStartExpression = QRegularExpression(QStringLiteral("/\\*"));
    m_commentEndExpression = QRegularExpression(QStringLiteral("\\*/"));
}

void CommentHighlighter::highlightBlock(const QString &text)
{
    for (const HighlightingRule &rule : qAsConst(m_highlightingRules)) {
        QRegularExpressionMatchIterator matches = rule.pattern.globalMatch(text);
        while (matches.hasNext()) {
            const QRegularExpressionMatch match = matches.next();
            setFormat(match.capturedStart(), match.capturedLength(), rule.format);
        }
    }

    // Block state 1: the block ends inside a /* */ comment.
    setCurrentBlockState(0);
    int startIndex = 0;
    if (previousBlockState() != 1)
        startIndex = text.indexOf(m_commentStartExpression);
    while (startIndex >= 0) {
        const QRegularExpressionMatch match = m_commentEndExpression.match(text, startIndex);
        const int endIndex = match.capturedStart();
        int commentLength;
        if (endIndex == -1) {
            setCurrentBlockState(1);
            commentLength = text.length() - startIndex;
        } else {
            commentLength = endIndex - startIndex + match.capturedLength();
        }
        setFormat(startIndex, commentLength, m_multiLineCommentFormat);
        startIndex = text.indexOf(m_commentStartExpression, startIndex + commentLength);
    }
}

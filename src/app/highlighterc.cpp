#include "highlighterc.h"

HighlighterC::HighlighterC(QTextDocument *parent)
    : QSyntaxHighlighter(parent)
{
    QTextCharFormat keywordFormat;
    keywordFormat.setForeground(Qt::darkBlue);
    keywordFormat.setFontWeight(QFont::Bold);
    static const char *const keywords[] = {
        "char",
        "class",
        "const",
        "double",
        "enum",
        "explicit",
        "friend",
        "inline",
        "int",
        "long",
        "namespace",
        "operator",
        "private",
        "protected",
        "public",
        "short",
        "signals",
        "signed",
        "slots",
        "static",
        "struct",
        "template",
        "typedef",
        "typename",
        "union",
        "unsigned",
        "virtual",
        "void",
        "volatile",
    };
    for (const char *keyword : keywords) {
        const QString pattern = QLatin1String("\\b") + QLatin1String(keyword) + QLatin1String("\\b");
        m_highlightingRules.append({ QRegularExpression(pattern), keywordFormat });
    }

    QTextCharFormat singleLineCommentFormat;
    singleLineCommentFormat.setForeground(Qt::darkRed);
    m_highlightingRules.append({ QRegularExpression(QStringLiteral("//[^\n]*")), singleLineCommentFormat });

    m_multiLineCommentFormat.setForeground(Qt::darkRed);
    m_commentStartExpression = QRegularExpression(QStringLiteral("/\\*"));
    m_commentEndExpression = QRegularExpression(QStringLiteral("\\*/"));
}

void HighlighterC::highlightBlock(const QString &text)
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

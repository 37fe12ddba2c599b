#pragma once

#include <QRegularExpression>
#include <QStringList>
#include <QSyntaxHighlighter>
#include <QTextCharFormat>
#include <QVector>

/// The shape shared by the highlighters of generated code: keywords in bold, single-line
/// comments, and /* */ comments that may run over several lines. Subclasses name the keywords,
/// their colour and the single-line comment patterns.
class CommentHighlighter : public QSyntaxHighlighter
{
    Q_OBJECT

protected:
    CommentHighlighter(QTextDocument *parent,
                       const QColor &keywordColor,
                       const char *const *keywords,
                       int keywordCount,
                       const QStringList &singleLineComments);

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

#pragma once

#include <QString>
#include <QXmlStreamReader>

#include <memory>

class EntityGuard;
class QIODevice;

namespace ZAT16 {
struct FileStamp;
}

/// A streaming XML pull reader with diagnostics that carry the source name, line and column.
/// It reads a file or a buffer, can keep or drop comments and whitespace, skips unknown elements
/// up to a nesting limit, and collects warnings. A subclass supplies the grammar in parser().
class XmlParser : public QXmlStreamReader
{
public:
    enum ReadMode {
        SkipCommentsAndWhitespace = 0,
        KeepCommentsAndWhitespace = 1,
    };

    XmlParser();
    virtual ~XmlParser();
    XmlParser(const XmlParser &) = delete;
    XmlParser &operator=(const XmlParser &) = delete;

    /// Reads the file at `path` and runs the grammar. Only regular files are read; on an open
    /// failure the error is "Failed to open input file " + path + ": " + the reason.
    bool parse(const QString &path);
    /// The same, and `stamp` receives what the file was when it was read (unknown when it could
    /// not be opened or changed while it was read).
    bool parse(const QString &path, ZAT16::FileStamp *stamp);
    /// Reads `data` and runs the grammar; messages name the source "data".
    bool parse(const QByteArray &data);

    /// Elements may nest this deep, known or not; one more level fails with
    /// "File too deeply nested".
    static constexpr int maximumDepth = 100;
    /// Warnings of one parse that are listed; of the others only the number is kept, in one last
    /// line.
    static constexpr int maximumWarnings = 1000;

    /// Next token; processing instructions are always skipped, comments and whitespace-only
    /// text only in SkipCommentsAndWhitespace mode.
    TokenType readNext(ReadMode mode);
    /// Skips the rest of the current element. More than 100 nested levels fail.
    bool skipElement();
    /// Text content of a simple element, or a null string (with an error unless it was empty).
    QString readCharacters();

    /// Stops parsing with `message`, prefixed by the current token's name in parentheses.
    void raiseError(const QString &message);
    /// Records a warning; parsing goes on. After maximumWarnings warnings only their number is
    /// kept.
    void raiseWarning(const QString &message);
    /// Whether a warning raised now would be listed. When not, a caller that would have to build
    /// the text first may countWarning() instead.
    bool listsWarnings() const { return warningCount < maximumWarnings; }
    void countWarning() { ++warningCount; }

    void raiseUnexpectedEndError();
    void raiseEndElementExpectedError();
    void raiseStartElementExpectedError();
    void raiseUnexpectedCharactersWarning();
    void raiseUnexpectedElementWarning(const QString &expected);

    QString formatError(const QString &message) const;
    QString formatWarning(const QString &message) const;
    /// The error of the last parse in the diagnostic format.
    QString formatError() const;
    /// kind + ": " + file name + ", Line L, Column C:\n  " + message.
    QString formatEW(const QString &kind, const QString &message) const;

    /// The name of a token type, or its number when it has none. The number is taken as an int:
    /// a value outside TokenType must not be held in a TokenType.
    static QString tokenName(int type);

    QString fileName; ///< the path, or "data" for a buffer
    bool verbose = false; ///< trace tokens and warnings with qDebug
    QString warnings; ///< every warning so far, each followed by "\n"
    int depth = 0; ///< nesting depth of skipElement()
    int warningCount = 0; ///< warnings raised by the last parse, listed or not

protected:
    /// The grammar, run once the input is set up.
    virtual bool parser() = 0;
    /// Receives every warning; the default appends it to `warnings`.
    virtual void warning(const QString &text);

private:
    bool run(std::unique_ptr<QIODevice> input);

    std::unique_ptr<QIODevice> m_input;
    std::unique_ptr<EntityGuard> m_guard;
};

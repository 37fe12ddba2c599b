#pragma once

#include <QByteArray>
#include <QIODevice>
#include <QString>
#include <QStringDecoder>

/// A read-only pass-through device that refuses entity declarations. The XML reader expands
/// entities declared in a document type declaration before it reports anything, so a few hundred
/// bytes of declarations can cost it gigabytes and minutes (the "billion laughs" and its quadratic
/// variants, also through parameter entities). Definitions files have no use for entities, so the
/// guard stops the input at the first "<!ENTITY" in any of the encodings the reader decodes
/// (8-bit, UTF-16 and UTF-32 in both byte orders) before the reader sees it.
class EntityGuard : public QIODevice
{
public:
    /// Reads from `source` (not owned), which must stay open while the guard is used.
    explicit EntityGuard(QIODevice *source, QObject *parent = nullptr);

    /// True once an entity declaration was found; the input ended there.
    bool tripped() const { return m_tripped; }

    bool isSequential() const override { return true; }
    qint64 bytesAvailable() const override;
    bool atEnd() const override;

protected:
    qint64 readData(char *data, qint64 maxSize) override;
    qint64 writeData(const char *data, qint64 maxSize) override;

private:
    bool scan(const char *data, qint64 size);
    bool scanDecoded(const char *data, qint64 size);
    void sniffEncoding(const QByteArray &start);

public:
    /// The length of the longest byte pattern of "<!ENTITY" (UTF-32).
    static constexpr int longestPattern = 32;

private:
    QIODevice *m_source;
    char m_tail[longestPattern]; ///< the end of the previous chunks, for declarations split between reads
    int m_tailSize = 0;
    bool m_tripped = false;
    bool m_sniffed = false;
    QStringDecoder m_decoder; ///< for a declared encoding that spells "<" unlike ASCII
    QString m_decodedTail;
};

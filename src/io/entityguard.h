#pragma once

#include <QByteArray>
#include <QIODevice>
#include <QString>
#include <QStringDecoder>

#include "attributecounter.h"

/// A read-only pass-through device that stops the input, before the XML reader sees it, where the
/// reader would spend gigabytes or minutes on a few bytes:
/// - entity declarations: the reader expands entities declared in a document type declaration
///   before it reports anything (the "billion laughs" and its quadratic variants, also through
///   parameter entities);
/// - attribute-list declarations: the reader gives every element of the name its own copy of a
///   declared default value, so one default of a megabyte costs a megabyte per element;
/// - elements with more than 256 attributes: the reader compares each attribute of an element
///   with all the ones before it, so 100,000 attributes take seconds.
/// Definitions files need none of these. The declarations are looked for in any of the encodings
/// the reader decodes (8-bit, UTF-16 and UTF-32 in both byte orders, and an encoding named in the
/// XML declaration); the attributes are counted on the characters the reader will see.
class EntityGuard : public QIODevice
{
public:
    /// What stopped the input.
    enum class Refusal { None, EntityDeclaration, AttributeListDeclaration, TooManyAttributes };

    /// Reads from `source` (not owned), which must stay open while the guard is used.
    explicit EntityGuard(QIODevice *source, QObject *parent = nullptr);

    /// True once the input was refused; it ended before the read that held the refused part.
    bool tripped() const { return m_refusal != Refusal::None; }
    /// The refusal that stopped the input (the first one in it when a read held several).
    Refusal refusal() const { return m_refusal; }
    /// Why the input ended early, as the error text for the user; empty while not tripped.
    QString refusalMessage() const;

    bool isSequential() const override { return true; }
    qint64 bytesAvailable() const override;
    bool atEnd() const override;

    /// The attributes an element may have; one more stops the input.
    static constexpr int maximumAttributes = AttributeCounter::maximumAttributes;
    /// The length of the longest byte pattern looked for: "<!ATTLIST" in UTF-32.
    static constexpr int longestPattern = 36;

protected:
    qint64 readData(char *data, qint64 maxSize) override;
    qint64 writeData(const char *data, qint64 maxSize) override;

private:
    struct Hit {
        qint64 at = 0; ///< where the refused part begins, relative to the current read
        Refusal refusal = Refusal::None;
    };

    Refusal scan(const char *data, qint64 size);
    Refusal scanDecoded(const char *data, qint64 size);
    Hit countAttributes(const char *data, qint64 size);
    Hit countUnits(const char *data, qint64 size);
    void sniffEncoding(const QByteArray &start);

    QIODevice *m_source;
    char m_tail[longestPattern]; ///< the end of the previous chunks, for declarations split between reads
    int m_tailSize = 0;
    Refusal m_refusal = Refusal::None;
    bool m_sniffed = false;
    QStringDecoder m_decoder; ///< for a declared encoding that spells "<" unlike ASCII
    QString m_decodedTail;
    AttributeCounter m_counter;
    int m_unitSize = 0; ///< bytes per code unit (1, 2 or 4) once the first four bytes are in; 0 before
    bool m_bigEndian = false;
    char m_unit[4]; ///< the first four bytes until they are all in, then a code unit split between reads
    int m_unitFill = 0;
};

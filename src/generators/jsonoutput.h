#pragma once

#include <QLatin1String>
#include <QString>
#include <QStringView>

namespace ZAT16 {

/// The text of a JSON document while it is written, indented by two blanks per level. Integers
/// are written from 64-bit values digit by digit, so that every value of a definitions file, up
/// to 18446744073709551615 and down to -9223372036854775808, stays exact (a JSON library that
/// holds numbers as doubles would round those beyond 2^53). Commas and line breaks between the
/// members of an object or the elements of an array are put in by the text itself.
class JsonOutput
{
public:
    void beginObject();
    void endObject();
    void beginArray();
    void endArray();
    /// The name of the next member of the object being written.
    void key(QLatin1String name);
    void key(QStringView name);

    void value(QStringView text);
    void value(QLatin1String text) { value(QStringView(QString(text))); }
    void valueSigned(qint64 number);
    void valueUnsigned(quint64 number);
    void value(bool flag);
    void valueNull();
    /// A value that is already JSON text (a document written by another JsonOutput); it is
    /// indented as the level it is put at.
    void valueRaw(QStringView json);

    /// The document written so far.
    const QString &text() const { return m_text; }

    /// Appends `text` as a JSON string, with quotes. Characters below U+0020, the quote and the
    /// backslash are escaped; so is a lone surrogate, which UTF-8 could not carry.
    static void appendString(QString &out, QStringView text);

private:
    void beforeValue();
    void lineBreak();

    QString m_text;
    int m_depth = 0;
    bool m_first = true; ///< nothing written yet in the object or array just begun
    bool m_afterKey = false;
};

} // namespace ZAT16

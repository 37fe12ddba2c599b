#pragma once

#include <QLatin1String>
#include <QString>
#include <QStringView>

class QIODevice;

namespace ZAT16 {

/// The text of an XML document while it is written: fixed markup, names and texts, and attribute
/// values with their escaping, gathered in one string that is handed to a device as UTF-8 in
/// large pieces. What it does with characters XML cannot carry is what a QXmlStreamWriter does,
/// down to the byte: a value with a lone surrogate, which UTF-8 cannot encode, loses itself and
/// every later name and text, and the document is then failed.
class XmlOutput
{
public:
    /// Starts a document: nothing written, handed over, lost or failed.
    void start();
    /// Frees the text once the document is written.
    void release();

    /// Fixed markup: written whatever happened to a value before.
    void appendMarkup(QLatin1String markup) { m_text += markup; }
    /// Names and texts: once a value held a lone surrogate, which UTF-8 cannot encode, none of
    /// them is written any more; the file is then reported as failed. (The text a
    /// QXmlStreamWriter leaves in that case, kept to the byte.)
    void appendText(QStringView text)
    {
        if (!m_textLost)
            m_text += text;
    }
    void appendText(QLatin1String text)
    {
        if (!m_textLost)
            m_text += text;
    }
    /// A line break and `blanks` blanks (unless the texts are lost).
    void appendLineBreak(int blanks);
    /// ` name="value"` with the markup characters and quotes of the value as entities; see the
    /// definition for the characters that XML cannot carry.
    void appendAttribute(QLatin1String name, QStringView value, bool replaceInvalid);
    /// ` name="value"` for a value that needs no escaping (a number: letters, digits and signs),
    /// which `appendValue` adds to the text it is given.
    template<typename AppendValue>
    void appendPlainAttribute(QLatin1String name, AppendValue appendValue)
    {
        m_text += QLatin1Char(' ');
        appendText(name);
        m_text += QLatin1String("=\"");
        if (!m_textLost)
            appendValue(m_text);
        m_text += QLatin1Char('"');
    }

    /// Hands the text to `device` once enough has gathered.
    void flushIfLarge(QIODevice *device);
    /// Hands the text to `device` as UTF-8. After a refused write nothing more is written.
    void flush(QIODevice *device);

    /// Where the next character goes in the whole document, in UTF-16 code units.
    qsizetype position() const { return m_handedOver + m_text.size(); }
    /// A character was dropped, the texts were lost or a device write failed.
    bool failed() const { return m_failed; }

    /// Whether a file can carry `text` as it is: every character is one that XML allows.
    static bool canCarry(QStringView text);
    /// The text with every character that XML cannot carry replaced by U+FFFD.
    static QString validText(const QString &text);
    /// The text of an XML comment: invalid characters replaced, and no "--" or final "-".
    static QString commentText(const QString &text);

private:
    QString m_text; ///< written but not yet handed to the device
    qsizetype m_handedOver = 0; ///< code units handed to the device before m_text
    bool m_textLost = false; ///< a value held a lone surrogate: later texts are not written
    bool m_failed = false; ///< a character was dropped or a device write failed
    bool m_deviceFailed = false; ///< the device refused a write: nothing more is written
};

} // namespace ZAT16

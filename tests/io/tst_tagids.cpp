// How the reader takes "id" under the display modes: a tag's code in C notation (and the writer's
// notations) whatever the display, since the writer always writes it in hexadecimal; values, bits,
// lists and the root as padded decimal where a decimal display is in effect, and in C notation
// otherwise or where the digits are no padded decimal in range. Random files are checked against a
// small reader of the test's own.

#include "iotesthelpers.h"
#include "parser.h"

#include <QtTest>

#include <QMap>
#include <QRandomGenerator>

#include <limits>
#include <memory>
#include <optional>

using namespace ZAT16;

namespace {

using IoTest::load;
using IoTest::Loaded;

const Item *findNamed(const Item *item, const QString &name)
{
    if (!item)
        return nullptr;
    if (item->name == name)
        return item;
    for (const Item *child : item->children) {
        if (const Item *found = findNamed(child, name))
            return found;
    }
    return nullptr;
}

// The ids of the tree by the names of their items.
void collectIds(const Item *item, QMap<QString, quint64> *ids)
{
    if (item->hasId)
        ids->insert(item->name, item->id);
    for (const Item *child : item->children)
        collectIds(child, ids);
}

// "name=0x...", one a line, sorted by name.
QString idLines(const QMap<QString, quint64> &ids)
{
    QString text;
    for (auto it = ids.cbegin(); it != ids.cend(); ++it)
        text += it.key() + QStringLiteral("=0x") + QString::number(it.value(), 16).toUpper() + QLatin1Char('\n');
    return text;
}

// The test's own reader of "id", written from the file format and sharing nothing with the
// program's: C notation ("0x"/"0X" hexadecimal, a leading "0" octal, otherwise decimal), the
// writer's "0o"/"0O" octal and "0y"/"0b" binary, an optional sign, zeros before a minus as padding;
// 64 bits, taken unsigned above the signed range, negative down to -2^63.

// The value of `digits` in `base`; nothing for an empty text, a character that is no digit of the
// base, or a value beyond 64 bits.
std::optional<quint64> digitsValue(const QByteArray &digits, unsigned base)
{
    if (digits.isEmpty())
        return std::nullopt;
    quint64 value = 0;
    for (const char c : digits) {
        unsigned digit;
        if (c >= '0' && c <= '9')
            digit = unsigned(c - '0');
        else if (c >= 'a' && c <= 'f')
            digit = unsigned(c - 'a' + 10);
        else if (c >= 'A' && c <= 'F')
            digit = unsigned(c - 'A' + 10);
        else
            return std::nullopt;
        if (digit >= base || value > (std::numeric_limits<quint64>::max() - digit) / base)
            return std::nullopt;
        value = value * base + digit;
    }
    return value;
}

std::optional<quint64> withSign(std::optional<quint64> magnitude, bool negative)
{
    if (!magnitude || !negative)
        return magnitude;
    if (*magnitude > quint64(1) << 63)
        return std::nullopt;
    return quint64(0) - *magnitude;
}

struct Signed {
    bool negative = false;
    QByteArray body; ///< what follows the sign
};

Signed splitSign(const QByteArray &text)
{
    QByteArray t = text;
    int zeros = 0;
    while (zeros < t.size() && t.at(zeros) == '0')
        ++zeros;
    if (zeros > 0 && zeros < t.size() && t.at(zeros) == '-')
        t = t.mid(zeros);
    Signed result;
    result.body = t;
    if (!t.isEmpty() && (t.at(0) == '-' || t.at(0) == '+')) {
        result.negative = t.at(0) == '-';
        result.body = t.mid(1);
    }
    return result;
}

std::optional<quint64> cValue(const QByteArray &text)
{
    const Signed number = splitSign(text);
    const QByteArray &body = number.body;
    unsigned base = 10;
    int prefix = 0;
    if (body.size() >= 2 && body.at(0) == '0') {
        const char letter = body.at(1);
        if (letter == 'x' || letter == 'X') {
            base = 16;
            prefix = 2;
        } else if (letter == 'o' || letter == 'O') {
            base = 8;
            prefix = 2;
        } else if (letter == 'y' || letter == 'b') {
            base = 2;
            prefix = 2;
        } else {
            base = 8;
            prefix = 1;
        }
    }
    return withSign(digitsValue(body.mid(prefix), base), number.negative);
}

// Digits with a leading zero read as decimal, as the writer pads decimal numbers; nothing when the
// text is not of that form or the number is out of range.
std::optional<quint64> paddedDecimalValue(const QByteArray &text)
{
    const Signed number = splitSign(text);
    if (number.body.size() < 2 || number.body.at(0) != '0' || number.body.at(1) < '0' || number.body.at(1) > '9')
        return std::nullopt;
    return withSign(digitsValue(number.body, 10), number.negative);
}

bool hasLeadingZeroDigits(const QByteArray &text)
{
    const QByteArray body = splitSign(text).body;
    return body.size() >= 2 && body.at(0) == '0' && body.at(1) >= '0' && body.at(1) <= '9';
}

struct Display {
    int mode = 0;
    int digits = 0;
};

// A digit count and a letter, as the format defines "display"; an unknown letter is no mode.
Display displayOf(const QByteArray &text)
{
    Display display;
    int i = 0;
    while (i < text.size() && text.at(i) >= '0' && text.at(i) <= '9')
        display.digits = display.digits * 10 + (text.at(i++) - '0');
    if (i < text.size()) {
        switch (text.at(i)) {
        case 'd':
            display.mode = 1;
            break;
        case 'u':
            display.mode = 2;
            break;
        case 'x':
        case 'X':
            display.mode = 3;
            break;
        case 'o':
            display.mode = 4;
            break;
        case 'y':
        case 'b':
            display.mode = 5;
            break;
        default:
            break;
        }
    }
    return display;
}

// Whether numbers of the element show as decimal digits: the nearest mode letter of the element and
// the elements around it (innermost first), else the element's own digit count alone.
bool decimalInEffect(const QList<QByteArray> &displays)
{
    for (qsizetype i = displays.size() - 1; i >= 0; --i) {
        const Display display = displayOf(displays.at(i));
        if (display.mode != 0)
            return display.mode == 1 || display.mode == 2;
    }
    return !displays.isEmpty() && displayOf(displays.last()).digits != 0;
}

// One id of a random file: the element's name, the text of its id, and whether it is a tag's.
struct IdCase {
    QString name;
    QByteArray text;
    bool tag = false;
    bool decimal = false; ///< a decimal display is in effect for the element
};

// Random definitions files whose ids are written in every notation, with and without leading
// zeros, below every display mode on the element, its list, its tag or the root.
class FileMaker
{
public:
    explicit FileMaker(quint32 seed)
        : m_random(seed)
    {
    }

    QByteArray file(QList<IdCase> *ids)
    {
        m_ids = ids;
        QList<QByteArray> displays;
        QByteArray text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<zat16";
        text += attributes(QStringLiteral("R"), false, &displays);
        text += ">\n";
        const int tags = 1 + int(m_random.bounded(4u));
        for (int t = 0; t < tags; ++t) {
            const QString tagName = QStringLiteral("T%1").arg(t);
            QList<QByteArray> tagDisplays = displays;
            text += "  <tag" + attributes(tagName, true, &tagDisplays);
            const int lists = int(m_random.bounded(3u));
            if (lists == 0) {
                text += "/>\n";
                continue;
            }
            text += ">\n";
            for (int l = 0; l < lists; ++l) {
                const bool bits = chance(50);
                const QByteArray list = bits ? "bits" : "enums";
                const QByteArray entry = bits ? "bit" : "enum";
                const QString listName = QStringLiteral("L%1_%2").arg(t).arg(l);
                QList<QByteArray> listDisplays = tagDisplays;
                text += "    <" + list + attributes(listName, false, &listDisplays) + ">\n";
                const int entries = 1 + int(m_random.bounded(4u));
                for (int e = 0; e < entries; ++e) {
                    QList<QByteArray> entryDisplays = listDisplays;
                    text += "      <" + entry
                        + attributes(QStringLiteral("V%1_%2_%3").arg(t).arg(l).arg(e), false, &entryDisplays) + "/>\n";
                }
                text += "    </" + list + ">\n";
            }
            text += "  </tag>\n";
        }
        text += "</zat16>\n";
        return text;
    }

private:
    bool chance(quint32 percent) { return m_random.bounded(100u) < percent; }

    template<std::size_t N>
    const char *pick(const char *const (&choices)[N])
    {
        return choices[m_random.bounded(quint32(N))];
    }

    // The attributes of one element; its display is appended to `displays`, the chain of the
    // displays from the root down (an element without one adds an empty text).
    QByteArray attributes(const QString &name, bool tag, QList<QByteArray> *displays)
    {
        static const char *const modes[]
            = { "d", "u", "x", "X", "o", "y", "b", "4d", "3u", "16u", "8x", "2o", "16y", "4", "6", "22", "0u" };
        const QByteArray display = chance(40) ? QByteArray(pick(modes)) : QByteArray();
        displays->append(display);
        QByteArray text = " name=\"" + name.toLatin1() + "\"";
        // The root and the lists have an id now and then, tags and entries always.
        const bool listOrRoot = !tag && !name.startsWith(QLatin1Char('V'));
        if (!listOrRoot || chance(30)) {
            const QByteArray id = tag ? tagIdText() : valueIdText();
            text += " id=\"" + id + "\"";
            m_ids->append({ name, id, tag, decimalInEffect(*displays) });
        }
        if (!display.isEmpty())
            text += " display=\"" + display + "\"";
        return text;
    }

    QByteArray zeros() { return QByteArray(1 + int(m_random.bounded(3u)), '0'); }

    QByteArray tagIdText()
    {
        const quint64 code = chance(30) ? m_random.bounded(64u) : m_random.bounded(0x10000u);
        switch (m_random.bounded(8u)) {
        case 0:
            return "0x" + QByteArray::number(code, 16).toUpper().rightJustified(4, '0');
        case 1:
            return "0x" + QByteArray::number(code, 16);
        case 2:
            return QByteArray::number(code);
        case 3:
            return "0o" + QByteArray::number(code, 8);
        case 4:
            return "0y" + QByteArray::number(code, 2);
        case 5:
            // The padded decimal digits a decimal display would show, read as C reads them.
            return zeros() + QByteArray::number(code);
        default:
            return zeros() + QByteArray::number(code, 8);
        }
    }

    quint64 randomValue()
    {
        static const quint64 edges[] = { 0, 1, 0x7FFFFFFFFFFFFFFFull, 0x8000000000000000ull, 0xFFFFFFFFFFFFFFFFull };
        switch (m_random.bounded(6u)) {
        case 0:
            return m_random.bounded(20u);
        case 1:
            return m_random.bounded(0x10000u);
        case 2:
            return m_random.generate();
        case 3:
            return m_random.generate64();
        case 4:
            return quint64(0) - (1 + m_random.bounded(1000u));
        default:
            return edges[m_random.bounded(5u)];
        }
    }

    QByteArray valueIdText()
    {
        const quint64 value = randomValue();
        const bool negative = qint64(value) < 0;
        const quint64 magnitude = negative ? quint64(0) - value : value;
        switch (m_random.bounded(12u)) {
        case 0:
            return QByteArray::number(value);
        case 1:
            return negative ? "-" + QByteArray::number(magnitude) : QByteArray::number(value);
        case 2:
            return "0x" + QByteArray::number(value, 16);
        case 3:
            return "0X" + QByteArray::number(value, 16).toUpper().rightJustified(8, '0');
        case 4:
            return "0o" + QByteArray::number(value, 8);
        case 5:
            return "0y" + QByteArray::number(value, 2);
        case 6:
            // Mostly digits a decimal display could pad, now and then ones with an 8 or a 9, which
            // only a decimal display reads.
            return zeros() + QByteArray::number(chance(70) ? value : value % 010000);
        case 7:
            return negative ? zeros() + "-" + QByteArray::number(magnitude)
                            : "-0" + QByteArray::number(magnitude % 64, 8);
        case 8:
            return "-0" + QByteArray::number(negative ? magnitude : value % 4096, 8);
        default:
            return zeros() + QByteArray::number(value, 8);
        }
    }

    QRandomGenerator m_random;
    QList<IdCase> *m_ids = nullptr;
};

} // namespace

class TestTagIds : public QObject
{
    Q_OBJECT

private slots:
    void ids_data()
    {
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<QString>("name");
        QTest::addColumn<quint64>("id");

        // A tag's code is C notation under any display: 0161751 is octal, 0xE3E9.
        QTest::newRow("tag, own 4u") << QByteArray("<zat16><tag name=\"T\" id=\"0161751\" display=\"4u\"/></zat16>")
                                     << QStringLiteral("T") << quint64(0xE3E9);
        QTest::newRow("tag, root 4u") << QByteArray("<zat16 display=\"4u\"><tag name=\"T\" id=\"0161751\"/></zat16>")
                                      << QStringLiteral("T") << quint64(0xE3E9);
        QTest::newRow("tag, enclosing tag 4u") << QByteArray("<zat16><tag name=\"Outer\" id=\"0x1001\" display=\"4u\">"
                                                             "<tag name=\"T\" id=\"0161751\"/></tag></zat16>")
                                               << QStringLiteral("T") << quint64(0xE3E9);
        QTest::newRow("tag as the top element, 4u")
            << QByteArray("<tag name=\"T\" id=\"0161751\" display=\"4u\"/>") << QStringLiteral("T") << quint64(0xE3E9);
        QTest::newRow("tag 03366, own d") << QByteArray("<zat16><tag name=\"T\" id=\"03366\" display=\"d\"/></zat16>")
                                          << QStringLiteral("T") << quint64(0x06F6);
        QTest::newRow("tag 03366, root u") << QByteArray("<zat16 display=\"u\"><tag name=\"T\" id=\"03366\"/></zat16>")
                                           << QStringLiteral("T") << quint64(0x06F6);
        QTest::newRow("tag 03366, own digit count")
            << QByteArray("<zat16><tag name=\"T\" id=\"03366\" display=\"6\"/></zat16>") << QStringLiteral("T")
            << quint64(0x06F6);
        QTest::newRow("tag 0010, 4u") << QByteArray("<zat16><tag name=\"T\" id=\"0010\" display=\"4u\"/></zat16>")
                                      << QStringLiteral("T") << quint64(8);
        QTest::newRow("tag decimal, 4u") << QByteArray("<zat16><tag name=\"T\" id=\"4097\" display=\"4u\"/></zat16>")
                                         << QStringLiteral("T") << quint64(0x1001);
        QTest::newRow("tag as written, 4u")
            << QByteArray("<zat16><tag name=\"T\" id=\"0xE3E9\" display=\"4u\"/></zat16>") << QStringLiteral("T")
            << quint64(0xE3E9);

        // Values, bits, lists and the root stay padded decimal under a decimal display.
        const QByteArray enumIn("<zat16><tag name=\"T\" id=\"0x1001\"><enums display=\"%2\">"
                                "<enum name=\"V\" id=\"%1\"/></enums></tag></zat16>");
        auto value = [&](const char *id, const char *display) {
            return QByteArray(enumIn).replace("%1", id).replace("%2", display);
        };
        QTest::newRow("value 0010, 4u") << value("0010", "4u") << QStringLiteral("V") << quint64(10);
        QTest::newRow("value 03366, 4u") << value("03366", "4u") << QStringLiteral("V") << quint64(3366);
        QTest::newRow("value 0161751, 4u") << value("0161751", "4u") << QStringLiteral("V") << quint64(161751);
        QTest::newRow("value 0010, 4x") << value("0010", "4x") << QStringLiteral("V") << quint64(8);
        // Too large for a padded decimal: C notation, octal, with the same sign rules.
        QTest::newRow("value 0777777777777777777777, 16u")
            << value("0777777777777777777777", "16u") << QStringLiteral("V") << quint64(0x7FFFFFFFFFFFFFFFull);
        QTest::newRow("value 01777777777777777777777, u")
            << value("01777777777777777777777", "u") << QStringLiteral("V") << quint64(0xFFFFFFFFFFFFFFFFull);
        QTest::newRow("value -0777777777777777777777, 16d")
            << value("-0777777777777777777777", "16d") << QStringLiteral("V") << quint64(0x8000000000000001ull);
        QTest::newRow("value 00-0777777777777777777777, 16d")
            << value("00-0777777777777777777777", "16d") << QStringLiteral("V") << quint64(0x8000000000000001ull);
        QTest::newRow("value -01000000000000000000000, d")
            << value("-01000000000000000000000", "d") << QStringLiteral("V") << quint64(0x8000000000000000ull);
        // The largest padded decimals still are decimal.
        QTest::newRow("value 00018446744073709551615, 23u")
            << value("00018446744073709551615", "23u") << QStringLiteral("V") << quint64(0xFFFFFFFFFFFFFFFFull);
        QTest::newRow("value -09223372036854775808, d")
            << value("-09223372036854775808", "d") << QStringLiteral("V") << quint64(0x8000000000000000ull);
        // Beyond the negative range as a decimal (-11111111111111111111), but a negative octal in
        // range: -0x249249249249249.
        QTest::newRow("value -011111111111111111111, d")
            << value("-011111111111111111111", "d") << QStringLiteral("V") << quint64(0xFDB6DB6DB6DB6DB7ull);

        const QByteArray underTag("<zat16 id=\"0010\" name=\"R\" display=\"4u\"><tag name=\"T\" id=\"0161751\">"
                                  "<bits name=\"L\" id=\"0777777777777777777777\" display=\"16u\">"
                                  "<bit name=\"B\" id=\"0161751\"/></bits></tag></zat16>");
        QTest::newRow("root below its own 4u") << underTag << QStringLiteral("R") << quint64(10);
        QTest::newRow("tag below the root's 4u") << underTag << QStringLiteral("T") << quint64(0xE3E9);
        QTest::newRow("list too large below 16u") << underTag << QStringLiteral("L") << quint64(0x7FFFFFFFFFFFFFFFull);
        QTest::newRow("bit below the root's 4u") << underTag << QStringLiteral("B") << quint64(161751);
    }

    void ids()
    {
        QFETCH(QByteArray, data);
        QFETCH(QString, name);
        QFETCH(quint64, id);
        const Loaded loaded = load(data);
        QVERIFY2(loaded.ok, qPrintable(loaded.error));
        const Item *item = findNamed(loaded.root.get(), name);
        QVERIFY(item);
        QVERIFY(item->hasId);
        QCOMPARE(QString::number(item->id, 16), QString::number(id, 16));
    }

    void refused_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<QString>("error");
        // Digits a tag's code never has: C notation refuses them under any display.
        QTest::newRow("tag 0089, 4u") << QByteArray("<tag name=\"T\" id=\"0089\" display=\"4u\"/>")
                                      << QStringLiteral("Error: data, Line 2, Column 38:\n  (StartElement) Invalid ID");
        QTest::newRow("tag 0200000, 4u: octal beyond 16 bits")
            << QByteArray("<tag name=\"T\" id=\"0200000\" display=\"4u\"/>")
            << QStringLiteral("Error: data, Line 2, Column 41:\n  (EndElement) Tag out of range");
        // Neither a padded decimal in range nor an octal number.
        QTest::newRow("value 018446744073709551616, u")
            << QByteArray("<enums display=\"u\"><enum name=\"V\" id=\"018446744073709551616\"/></enums>")
            << QStringLiteral("Error: data, Line 2, Column 62:\n  (StartElement) Invalid ID");
        QTest::newRow("value 02000000000000000000000, u")
            << QByteArray("<enums display=\"u\"><enum name=\"V\" id=\"02000000000000000000000\"/></enums>")
            << QStringLiteral("Error: data, Line 2, Column 64:\n  (StartElement) Invalid ID");
        QTest::newRow("value -09223372036854775809, d")
            << QByteArray("<enums display=\"d\"><enum name=\"V\" id=\"-09223372036854775809\"/></enums>")
            << QStringLiteral("Error: data, Line 2, Column 62:\n  (StartElement) Invalid ID");
    }

    void refused()
    {
        QFETCH(QByteArray, line);
        QFETCH(QString, error);
        const Loaded loaded = load("<zat16>\n" + line + "\n</zat16>\n");
        QVERIFY(!loaded.ok);
        QCOMPARE(loaded.error, error);
    }

    // Random files: every file whose ids the test's own C-notation reader takes loads, with the
    // values of the rule (tags in C notation; anything else padded decimal where a decimal display
    // is in effect and the digits are a padded decimal in range, C notation otherwise). Files whose
    // ids the rule refuses are refused.
    void randomFiles()
    {
        const int files = 600;
        int acceptedInC = 0;
        int acceptedByRule = 0;
        int tagsWithLeadingZeros = 0; // codes with a leading zero below a decimal display
        int readAsPaddedDecimal = 0; // values that C notation would read otherwise
        int tooLargeForDecimal = 0; // values with a leading zero below a decimal display read in C notation
        for (quint32 seed = 1; seed <= quint32(files); ++seed) {
            FileMaker maker(seed);
            QList<IdCase> ids;
            const QByteArray text = maker.file(&ids);

            bool cReads = true;
            bool ruleReads = true;
            QMap<QString, quint64> expected;
            int fileTags = 0;
            int filePadded = 0;
            int fileTooLarge = 0;
            for (const IdCase &id : std::as_const(ids)) {
                std::optional<quint64> c = cValue(id.text);
                std::optional<quint64> rule = c;
                if (!id.tag && id.decimal) {
                    if (const std::optional<quint64> padded = paddedDecimalValue(id.text))
                        rule = padded;
                }
                if (id.tag && c && *c > 0xFFFF) {
                    // Refused as a tag code, "Tag out of range".
                    c.reset();
                    rule.reset();
                }
                cReads = cReads && c.has_value();
                ruleReads = ruleReads && rule.has_value();
                if (rule)
                    expected.insert(id.name, *rule);
                const bool leadingZero = id.decimal && hasLeadingZeroDigits(id.text);
                if (id.tag && leadingZero && c)
                    ++fileTags;
                if (!id.tag && c && rule && *c != *rule)
                    ++filePadded;
                if (!id.tag && leadingZero && c && !paddedDecimalValue(id.text))
                    ++fileTooLarge;
            }

            const Loaded loaded = load(text);
            const QString context = QStringLiteral("seed %1:\n").arg(seed) + QString::fromLatin1(text);
            if (!ruleReads) {
                QVERIFY2(!loaded.ok, qPrintable(context));
                continue;
            }
            QVERIFY2(loaded.ok, qPrintable(context + loaded.error));
            QMap<QString, quint64> read;
            collectIds(loaded.root.get(), &read);
            QVERIFY2(idLines(read) == idLines(expected),
                     qPrintable(context + QStringLiteral("read:\n") + idLines(read) + QStringLiteral("expected:\n")
                                + idLines(expected)));
            ++acceptedByRule;
            if (cReads) {
                ++acceptedInC;
                tagsWithLeadingZeros += fileTags;
                readAsPaddedDecimal += filePadded;
                tooLargeForDecimal += fileTooLarge;
            }
        }
        // The files cover what they are made for.
        QVERIFY2(acceptedInC >= 200, qPrintable(QString::number(acceptedInC)));
        QVERIFY2(acceptedByRule > acceptedInC, qPrintable(QString::number(acceptedByRule)));
        QVERIFY2(tagsWithLeadingZeros >= 50, qPrintable(QString::number(tagsWithLeadingZeros)));
        QVERIFY2(readAsPaddedDecimal >= 50, qPrintable(QString::number(readAsPaddedDecimal)));
        QVERIFY2(tooLargeForDecimal >= 20, qPrintable(QString::number(tooLargeForDecimal)));
    }
};

QTEST_GUILESS_MAIN(TestTagIds)
#include "tst_tagids.moc"

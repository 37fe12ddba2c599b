#include "identifiervalidator.h"
#include "item.h"
#include "numbervalidator.h"
#include "tagvalidator.h"

#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTest>

#include <climits>
#include <memory>

using namespace ZAT16;

Q_DECLARE_METATYPE(QValidator::State)

namespace {

Item *newItem(ItemType type, const QString &name, quint64 id, bool hasId = true)
{
    auto *item = new Item;
    item->type = type;
    item->name = name;
    item->id = id;
    item->hasId = hasId;
    return item;
}

// The message a validation emitted, or "<none>" when it emitted nothing.
QString emitted(const QSignalSpy &spy)
{
    if (spy.isEmpty())
        return QStringLiteral("<none>");
    return spy.last().at(0).toString();
}

// The rules of TagValidator with the base-16 conversion of QString, which the validator used
// before it read codes with Numbers::readHex: the two must agree on every input.
QValidator::State qstringTagValidation(const QString &input, const Item *item, QString *message)
{
    *message = QStringLiteral("<none>");
    if (input.isEmpty())
        return QValidator::Acceptable;
    if (input.size() > 64) {
        *message = QStringLiteral("Input too long");
        return QValidator::Invalid;
    }
    for (QChar c : input) {
        const char16_t u = c.unicode();
        const bool hex = (u >= '0' && u <= '9') || (u >= 'a' && u <= 'f') || (u >= 'A' && u <= 'F');
        if (!hex && c != QLatin1Char('x') && c != QLatin1Char('X')) {
            *message = QStringLiteral("Non numeric input");
            return QValidator::Invalid;
        }
    }
    if (input.size() > 10) {
        *message = QStringLiteral("Input too long");
        return QValidator::Intermediate;
    }
    if (input.size() == 2 && input.startsWith(QLatin1String("0x"), Qt::CaseInsensitive))
        return QValidator::Intermediate;
    bool ok = false;
    const qulonglong value = input.toULongLong(&ok, 16);
    if (!ok) {
        *message = QStringLiteral("Not a hexadecimal number");
        return QValidator::Intermediate;
    }
    if (value > 65535) {
        *message = QStringLiteral("Tag code out of range");
        return QValidator::Intermediate;
    }
    bool taken = false;
    if (item && item->parent) {
        for (const Item *sibling : item->parent->children)
            taken = taken || (sibling != item && sibling->hasId && sibling->id == value);
    }
    if (taken) {
        *message = QStringLiteral("Tag code already exists");
        return QValidator::Acceptable;
    }
    *message = QString();
    return QValidator::Acceptable;
}

// Every text of up to `maxLength` characters from `alphabet`.
QStringList allTexts(const QString &alphabet, int maxLength)
{
    QStringList texts { QString() };
    QStringList last { QString() };
    for (int length = 1; length <= maxLength; ++length) {
        QStringList longer;
        for (const QString &text : qAsConst(last)) {
            for (QChar c : alphabet)
                longer.append(text + c);
        }
        texts += longer;
        last = longer;
    }
    return texts;
}

// `count` texts of `length` characters from `alphabet`, the same ones on every run.
QStringList someTexts(const QString &alphabet, int length, int count)
{
    QRandomGenerator random(quint32(length) * 7919u);
    QStringList texts;
    for (int i = 0; i < count; ++i) {
        QString text;
        for (int j = 0; j < length; ++j)
            text += alphabet.at(random.bounded(int(alphabet.size())));
        texts.append(text);
    }
    return texts;
}

} // namespace

class TestValidators : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();

    void tagValidator_data();
    void tagValidator();
    void tagValidatorReadsAsQString_data();
    void tagValidatorReadsAsQString();
    void identifierValidator_data();
    void identifierValidator();
    void numberValidator_data();
    void numberValidator();

    void numberValidatorDefaultRange();
    void validatorsKeepTheirItem();

private:
    // Root with the tags alpha (0x1001) and beta (0x1002); alpha has an enumeration list
    // (one = 1, minus = -1, two = 2) and a bit list (b0 = 0, b1 = 1).
    std::unique_ptr<Item> m_root;
    Item *m_alpha = nullptr;
    Item *m_beta = nullptr;
    Item *m_two = nullptr;
    Item *m_b1 = nullptr;

    const Item *itemFor(const QString &which) const;
};

void TestValidators::initTestCase()
{
    m_root.reset(newItem(Root, QString(), 0, false));
    m_alpha = newItem(Tag, "alpha", 0x1001);
    m_beta = newItem(Tag, "beta", 0x1002);
    m_root->appendChild(m_alpha);
    m_root->appendChild(m_beta);
    Item *bits = newItem(Bits, QString(), 0, false);
    m_alpha->appendChild(bits);
    bits->appendChild(newItem(Bit, "b0", 0));
    m_b1 = newItem(Bit, "b1", 1);
    bits->appendChild(m_b1);
    Item *enums = newItem(Enums, QString(), 0, false);
    m_alpha->appendChild(enums);
    enums->appendChild(newItem(Enum, "one", 1));
    enums->appendChild(newItem(Enum, "minus", quint64(-1)));
    enums->appendChild(newItem(Enum, "ten", 10));
    m_two = newItem(Enum, "two", 2);
    enums->appendChild(m_two);
}

void TestValidators::cleanupTestCase()
{
    m_root.reset();
}

const Item *TestValidators::itemFor(const QString &which) const
{
    if (which == "tag")
        return m_beta;
    if (which == "enum")
        return m_two;
    if (which == "bit")
        return m_b1;
    return nullptr;
}

void TestValidators::tagValidator_data()
{
    QTest::addColumn<QString>("item");
    QTest::addColumn<QString>("input");
    QTest::addColumn<QValidator::State>("state");
    QTest::addColumn<QString>("message");

    QTest::newRow("empty") << "tag"
                           << "" << QValidator::Acceptable << "<none>";
    QTest::newRow("longer than 64") << "tag" << QString(65, '1') << QValidator::Invalid << "Input too long";
    QTest::newRow("letter g") << "tag"
                              << "12g" << QValidator::Invalid << "Non numeric input";
    QTest::newRow("minus sign") << "tag"
                                << "-1" << QValidator::Invalid << "Non numeric input";
    QTest::newRow("blank") << "tag"
                           << "0x 1" << QValidator::Invalid << "Non numeric input";
    QTest::newRow("64 digits") << "tag" << QString(64, '1') << QValidator::Intermediate << "Input too long";
    QTest::newRow("longer than 10") << "tag"
                                    << "00000000001" << QValidator::Intermediate << "Input too long";
    QTest::newRow("0x alone") << "tag"
                              << "0x" << QValidator::Intermediate << "<none>";
    QTest::newRow("0X alone") << "tag"
                              << "0X" << QValidator::Intermediate << "<none>";
    QTest::newRow("x first") << "tag"
                             << "x12" << QValidator::Intermediate << "Not a hexadecimal number";
    QTest::newRow("x inside") << "tag"
                              << "0x1x" << QValidator::Intermediate << "Not a hexadecimal number";
    QTest::newRow("x last") << "tag"
                            << "12x" << QValidator::Intermediate << "Not a hexadecimal number";
    QTest::newRow("0x10000") << "tag"
                             << "0x10000" << QValidator::Intermediate << "Tag code out of range";
    QTest::newRow("10000") << "tag"
                           << "10000" << QValidator::Intermediate << "Tag code out of range";
    QTest::newRow("ten digits") << "tag"
                                << "FFFFFFFFFF" << QValidator::Intermediate << "Tag code out of range";
    QTest::newRow("sibling's code") << "tag"
                                    << "0x1001" << QValidator::Acceptable << "Tag code already exists";
    QTest::newRow("sibling's code without 0x") << "tag"
                                               << "1001" << QValidator::Acceptable << "Tag code already exists";
    QTest::newRow("own code") << "tag"
                              << "0x1002" << QValidator::Acceptable << "";
    QTest::newRow("ffff") << "tag"
                          << "ffff" << QValidator::Acceptable << "";
    QTest::newRow("0XABCD") << "tag"
                            << "0XABCD" << QValidator::Acceptable << "";
    QTest::newRow("no item, no collision") << "none"
                                           << "0x1001" << QValidator::Acceptable << "";
}

void TestValidators::tagValidator()
{
    QFETCH(QString, item);
    QFETCH(QString, input);
    QFETCH(QValidator::State, state);
    QFETCH(QString, message);

    TagValidator validator(itemFor(item));
    QSignalSpy spy(&validator, &TagValidator::message);
    int pos = input.size();
    QCOMPARE(validator.validate(input, pos), state);
    QCOMPARE(emitted(spy), message);
    QVERIFY(spy.size() <= 1);
}

void TestValidators::tagValidatorReadsAsQString_data()
{
    QTest::addColumn<QString>("item");
    QTest::addColumn<QStringList>("inputs");

    // Hexadecimal digits, the letters of the prefixes, a letter past f, a blank, signs and a
    // non-ASCII letter: every branch of the rules, and every place for an "x".
    const QString everything = QStringLiteral("01aFxXbB g-+") + QChar(0xE9);
    // What passes the character check and so reaches the conversion.
    const QString hexAndX = QStringLiteral("0123456789abcdefABCDEFxX");
    const QString zeroOneAndX = QStringLiteral("01x");
    for (const char *item : { "tag", "none" }) {
        QTest::addRow("%s: up to 4 of anything", item) << item << allTexts(everything, 4);
        QTest::addRow("%s: up to 6 of hexadecimal digits and x", item) << item << allTexts(QStringLiteral("0bBfxX"), 6);
        QTest::addRow("%s: up to 11 of 0, 1 and x", item) << item << allTexts(zeroOneAndX, 11);
        QStringList longer;
        for (int length = 5; length <= 12; ++length)
            longer += someTexts(hexAndX, length, 2000);
        for (int length = 5; length <= 12; ++length) {
            for (const QString &text : someTexts(QStringLiteral("0123456789abcdefABCDEF"), length - 2, 500))
                longer += QStringLiteral("0x") + text;
        }
        QTest::addRow("%s: 5 to 12 of hexadecimal digits and x", item) << item << longer;
        QTest::addRow("%s: long", item) << item
                                        << QStringList { QString(64, QLatin1Char('1')),
                                                         QString(65, QLatin1Char('1')),
                                                         QStringLiteral("0x") + QString(62, QLatin1Char('f')),
                                                         QString(64, QLatin1Char('x')),
                                                         QString(65, QLatin1Char('g')) };
    }
}

void TestValidators::tagValidatorReadsAsQString()
{
    QFETCH(QString, item);
    QFETCH(QStringList, inputs);

    TagValidator validator(itemFor(item));
    QSignalSpy spy(&validator, &TagValidator::message);
    for (const QString &text : qAsConst(inputs)) {
        QString expectedMessage;
        const QValidator::State expected = qstringTagValidation(text, itemFor(item), &expectedMessage);
        spy.clear();
        QString input = text;
        int pos = input.size();
        const QValidator::State state = validator.validate(input, pos);
        QVERIFY2(state == expected && emitted(spy) == expectedMessage && spy.size() <= 1,
                 qPrintable(QStringLiteral("\"%1\": %2 \"%3\", expected %4 \"%5\"")
                                .arg(text)
                                .arg(int(state))
                                .arg(emitted(spy))
                                .arg(int(expected))
                                .arg(expectedMessage)));
        QCOMPARE(input, text);
    }
}

void TestValidators::identifierValidator_data()
{
    QTest::addColumn<QString>("item");
    QTest::addColumn<QString>("input");
    QTest::addColumn<QValidator::State>("state");
    QTest::addColumn<QString>("message");

    QTest::newRow("empty") << "tag"
                           << "" << QValidator::Acceptable << "<none>";
    QTest::newRow("longer than 1024") << "tag" << QString(1025, 'a') << QValidator::Invalid << "Input too long";
    QTest::newRow("1024 characters") << "tag" << QString(1024, 'a') << QValidator::Acceptable << "";
    QTest::newRow("starts with a digit") << "tag"
                                         << "1abc" << QValidator::Intermediate
                                         << "Identifier must not start with a digit";
    QTest::newRow("starts with 9 and a dash")
        << "tag"
        << "9-" << QValidator::Intermediate << "Identifier must not start with a digit";
    QTest::newRow("dash") << "tag"
                          << "a-b" << QValidator::Intermediate << "Only a-z, A-Z, 0-9 and _ allowed in identifier";
    QTest::newRow("blank") << "tag"
                           << "a b" << QValidator::Intermediate << "Only a-z, A-Z, 0-9 and _ allowed in identifier";
    QTest::newRow("non-ASCII letter") << "tag"
                                      << QString::fromUtf8("Gr\xc3\xb6\xc3\x9f"
                                                           "e")
                                      << QValidator::Intermediate << "Only a-z, A-Z, 0-9 and _ allowed in identifier";
    // The reader refuses it, so it is never committed.
    QTest::newRow("reserved name") << "tag"
                                   << "Tag" << QValidator::Intermediate << "The name \"Tag\" is reserved.";
    QTest::newRow("reserved name for a value") << "enum"
                                               << "Tag" << QValidator::Intermediate << "The name \"Tag\" is reserved.";
    QTest::newRow("reserved name in another case") << "tag"
                                                   << "tag" << QValidator::Acceptable << "";
    QTest::newRow("reserved name with more") << "tag"
                                             << "Tags" << QValidator::Acceptable << "";
    QTest::newRow("sibling's name") << "tag"
                                    << "alpha" << QValidator::Acceptable << "Identifier already exists";
    QTest::newRow("sibling's name differs in case") << "tag"
                                                    << "Alpha" << QValidator::Acceptable << "";
    QTest::newRow("own name") << "tag"
                              << "beta" << QValidator::Acceptable << "";
    QTest::newRow("underscore and digits") << "tag"
                                           << "_x1" << QValidator::Acceptable << "";
    QTest::newRow("enum sibling's name") << "enum"
                                         << "one" << QValidator::Acceptable << "Identifier already exists";
    QTest::newRow("bit sibling's name") << "bit"
                                        << "b0" << QValidator::Acceptable << "Identifier already exists";
    QTest::newRow("name of a tag, for a bit") << "bit"
                                              << "alpha" << QValidator::Acceptable << "";
    QTest::newRow("no item, no collision") << "none"
                                           << "alpha" << QValidator::Acceptable << "";
}

void TestValidators::identifierValidator()
{
    QFETCH(QString, item);
    QFETCH(QString, input);
    QFETCH(QValidator::State, state);
    QFETCH(QString, message);

    IdentifierValidator validator(itemFor(item));
    QSignalSpy spy(&validator, &IdentifierValidator::message);
    int pos = 0;
    QCOMPARE(validator.validate(input, pos), state);
    QCOMPARE(emitted(spy), message);
    QVERIFY(spy.size() <= 1);
}

void TestValidators::numberValidator_data()
{
    QTest::addColumn<QString>("item");
    QTest::addColumn<int>("bottom"); // INT_MIN: left as it is
    QTest::addColumn<QString>("input");
    QTest::addColumn<QValidator::State>("state");
    QTest::addColumn<QString>("message");

    QTest::newRow("empty") << "enum" << INT_MIN << "" << QValidator::Acceptable << "<none>";
    QTest::newRow("letters") << "enum" << INT_MIN << "abc" << QValidator::Intermediate << "Non numeric input";
    QTest::newRow("trailing blank") << "enum" << INT_MIN << "5 " << QValidator::Intermediate << "Non numeric input";
    QTest::newRow("leading blank") << "enum" << INT_MIN << " 5" << QValidator::Intermediate << "Non numeric input";
    // A leading zero is a padded decimal, as the cell and the dialog store it.
    QTest::newRow("08 is eight") << "enum" << INT_MIN << "08" << QValidator::Acceptable << "";
    QTest::newRow("010 is ten") << "enum" << INT_MIN << "010" << QValidator::Acceptable << "This number already exists";
    QTest::newRow("hexadecimal") << "enum" << INT_MIN << "0x10" << QValidator::Acceptable << "";
    QTest::newRow("binary") << "enum" << INT_MIN << "0b1010" << QValidator::Acceptable << "This number already exists";
    QTest::newRow("017") << "enum" << INT_MIN << "017" << QValidator::Acceptable << "";
    QTest::newRow("sign alone") << "enum" << INT_MIN << "-" << QValidator::Intermediate << "Non numeric input";
    QTest::newRow("prefix alone") << "enum" << INT_MIN << "0x" << QValidator::Intermediate << "Non numeric input";
    QTest::newRow("bit -1") << "bit" << 0 << "-1" << QValidator::Intermediate << "Number out of range";
    QTest::newRow("bit 0x40") << "bit" << 0 << "0x40" << QValidator::Acceptable << "";
    // Values take all 64 bits, with a sign.
    QTest::newRow("above int") << "enum" << INT_MIN << "2147483648" << QValidator::Acceptable << "";
    QTest::newRow("below int") << "enum" << INT_MIN << "-2147483649" << QValidator::Acceptable << "";
    QTest::newRow("highest, the bits of -1")
        << "enum" << INT_MIN << "18446744073709551615" << QValidator::Acceptable << "This number already exists";
    QTest::newRow("below highest") << "enum" << INT_MIN << "18446744073709551614" << QValidator::Acceptable << "";
    QTest::newRow("highest in hexadecimal")
        << "enum" << INT_MIN << "0xFFFFFFFFFFFFFFFF" << QValidator::Acceptable << "This number already exists";
    QTest::newRow("lowest") << "enum" << INT_MIN << "-9223372036854775808" << QValidator::Acceptable << "";
    QTest::newRow("above 64 bits") << "enum" << INT_MIN << "18446744073709551616" << QValidator::Intermediate
                                   << "Number out of range";
    QTest::newRow("above 64 bits in hexadecimal")
        << "enum" << INT_MIN << "0x10000000000000000" << QValidator::Intermediate << "Number out of range";
    QTest::newRow("below 64 bits") << "enum" << INT_MIN << "-9223372036854775809" << QValidator::Intermediate
                                   << "Number out of range";
    QTest::newRow("sibling's value") << "enum" << INT_MIN << "1" << QValidator::Acceptable
                                     << "This number already exists";
    QTest::newRow("sibling's value in hexadecimal")
        << "enum" << INT_MIN << "0x1" << QValidator::Acceptable << "This number already exists";
    QTest::newRow("sibling's negative value")
        << "enum" << INT_MIN << "-1" << QValidator::Acceptable << "This number already exists";
    QTest::newRow("own value") << "enum" << INT_MIN << "2" << QValidator::Acceptable << "";
    QTest::newRow("free value") << "enum" << INT_MIN << "3" << QValidator::Acceptable << "";
    QTest::newRow("bit sibling's value") << "bit" << 0 << "0" << QValidator::Acceptable << "This number already exists";
    QTest::newRow("no item, no collision") << "none" << INT_MIN << "1" << QValidator::Acceptable << "";
}

void TestValidators::numberValidator()
{
    QFETCH(QString, item);
    QFETCH(int, bottom);
    QFETCH(QString, input);
    QFETCH(QValidator::State, state);
    QFETCH(QString, message);

    NumberValidator validator(itemFor(item));
    if (bottom != INT_MIN)
        validator.setBottom(bottom);
    QSignalSpy spy(&validator, &NumberValidator::message);
    int pos = 0;
    QCOMPARE(validator.validate(input, pos), state);
    QCOMPARE(emitted(spy), message);
    QVERIFY(spy.size() <= 1);
}

void TestValidators::numberValidatorDefaultRange()
{
    NumberValidator validator(nullptr);
    QCOMPARE(validator.bottom(), INT_MIN);
    QCOMPARE(validator.top(), INT_MAX);
}

void TestValidators::validatorsKeepTheirItem()
{
    QCOMPARE(TagValidator(m_beta).item(), m_beta);
    QCOMPARE(IdentifierValidator(m_two).item(), m_two);
    QCOMPARE(NumberValidator(m_b1).item(), m_b1);
}

QTEST_GUILESS_MAIN(TestValidators)
#include "tst_validators.moc"

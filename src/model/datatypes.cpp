#include "datatypes.h"

namespace ZAT16 {

namespace {

using Entry = DataTypes::Entry;

// By value. Columns: value, DataType name (compatibility report), typeName (generators), tooltip
// (tree), icon (tree and tag selector), tag selector row, prefix and name.
// clang-format off
constexpr Entry entries[] = {
    {0x00, u"Binary", u"Binary", QT_TRANSLATE_NOOP("ZAT16::EditorModel", "Binary"),
     ":/icons/i16_data.png", 0, "0 - ", QT_TRANSLATE_NOOP("ZAT16::EditorTagModel", "Binary")},
    {0x01, u"Integer", u"Integer", QT_TRANSLATE_NOOP("ZAT16::EditorModel", "Integer"),
     ":/icons/i16_int.png", 1, "1 - ", QT_TRANSLATE_NOOP("ZAT16::EditorTagModel", "Integer")},
    {0x02, u"Bool", u"Bool", QT_TRANSLATE_NOOP("ZAT16::EditorModel", "Bool"),
     ":/icons/i16_bool.png", 2, "2 - ", QT_TRANSLATE_NOOP("ZAT16::EditorTagModel", "Bool")},
    {0x03, u"String", u"String", QT_TRANSLATE_NOOP("ZAT16::EditorModel", "String"),
     ":/icons/i16_string.png", 3, "3 - ", QT_TRANSLATE_NOOP("ZAT16::EditorTagModel", "String")},
    {0x04, u"Date", u"Date", QT_TRANSLATE_NOOP("ZAT16::EditorModel", "Date"),
     ":/icons/i16_date.png", 4, "4 - ", QT_TRANSLATE_NOOP("ZAT16::EditorTagModel", "Date")},
    {0x05, u"Time", u"Time", QT_TRANSLATE_NOOP("ZAT16::EditorModel", "Time"),
     ":/icons/i16_time.png", 5, "5 - ", QT_TRANSLATE_NOOP("ZAT16::EditorTagModel", "Time")},
    {0x06, u"DateTime", u"DateTime", QT_TRANSLATE_NOOP("ZAT16::EditorModel", "DateTime"),
     ":/icons/i16_datetime.png", 6, "6 - ", QT_TRANSLATE_NOOP("ZAT16::EditorTagModel", "DateTime")},
    {0x07, u"BitArray", u"BitArray", QT_TRANSLATE_NOOP("ZAT16::EditorModel", "BitArray"),
     ":/icons/i16_list_bullets.png", 7, "7 - ", QT_TRANSLATE_NOOP("ZAT16::EditorTagModel", "BitArray")},
    // The escape to the extended form: no DataType, but a name for the nibble.
    {0x08, QStringView(), u"Int64", nullptr,
     nullptr, -1, nullptr, nullptr},
    {0x09, u"NetworkAddress", u"IPAddress", QT_TRANSLATE_NOOP("ZAT16::EditorModel", "Network-Address"),
     ":/icons/i16_network.png", 11, "9 - ", QT_TRANSLATE_NOOP("ZAT16::EditorTagModel", "Network address")},
    {0x0C, u"List", u"List", QT_TRANSLATE_NOOP("ZAT16::EditorModel", "List"),
     ":/icons/i16_list.png", 12, "C - ", QT_TRANSLATE_NOOP("ZAT16::EditorTagModel", "List")},
    // Requests, answers and messages have rows past the ones the tag selector offers.
    {0x0D, u"Request", u"Request", QT_TRANSLATE_NOOP("ZAT16::EditorModel", "Request"),
     ":/icons/i16_question.png", 13, "D - ", QT_TRANSLATE_NOOP("ZAT16::EditorTagModel", "Request")},
    {0x0E, u"Answer", u"Answer", QT_TRANSLATE_NOOP("ZAT16::EditorModel", "Answer"),
     ":/icons/i16_answer.png", 14, "E - ", QT_TRANSLATE_NOOP("ZAT16::EditorTagModel", "Answer")},
    {0x0F, u"Message", u"Message", QT_TRANSLATE_NOOP("ZAT16::EditorModel", "Message"),
     ":/icons/i16_message.png", 15, "F - ", QT_TRANSLATE_NOOP("ZAT16::EditorTagModel", "Message")},
    {0x80, u"ExtPoint", QStringView(), QT_TRANSLATE_NOOP("ZAT16::EditorModel", "Point"),
     ":/icons/i16_point.png", 8, "80 - ", QT_TRANSLATE_NOOP("ZAT16::EditorTagModel", "Point")},
    {0x81, u"ExtRect", QStringView(), QT_TRANSLATE_NOOP("ZAT16::EditorModel", "Rect"),
     ":/icons/i16_rect.png", 9, "81 - ", QT_TRANSLATE_NOOP("ZAT16::EditorTagModel", "Rect")},
    {0x82, u"ExtSize", QStringView(), QT_TRANSLATE_NOOP("ZAT16::EditorModel", "Size"),
     ":/icons/i16_size.png", 10, "82 - ", QT_TRANSLATE_NOOP("ZAT16::EditorTagModel", "Size")},
};
// clang-format on

// The texts are literals: a QString on them allocates nothing, so that the generators can ask for
// a type name per tag.
QString literal(QStringView text)
{
    if (text.isNull())
        return QString();
    return QString::fromRawData(text.data(), text.size());
}

} // namespace

const DataTypes::Entry *DataTypes::find(int type)
{
    for (const Entry &entry : entries) {
        if (entry.value == type)
            return &entry;
    }
    return nullptr;
}

const DataTypes::Entry *DataTypes::atSelectorRow(int row)
{
    if (row < 0)
        return nullptr;
    for (const Entry &entry : entries) {
        if (entry.selectorRow == row)
            return &entry;
    }
    return nullptr;
}

QString DataTypes::enumName(int type)
{
    const Entry *entry = find(type);
    return entry ? literal(entry->enumName) : QString();
}

QString DataTypes::typeName(int nibble)
{
    // Only the nibbles: an extended type is known by its nibble 8.
    const Entry *entry = nibble >= 0 && nibble < 16 ? find(nibble) : nullptr;
    return entry ? literal(entry->typeName) : QString();
}

const char *DataTypes::tooltip(int type)
{
    const Entry *entry = find(type);
    return entry ? entry->tooltip : nullptr;
}

const char *DataTypes::iconPath(int type)
{
    const Entry *entry = find(type);
    return entry ? entry->icon : nullptr;
}

} // namespace ZAT16

// Uses the C++ lookup tables and enumerations that zat16_generate() made from
// battery-charger.zatdef: names are turned into codes and back, as a host program would.

#include <cstdio>
#include <cstring>

// The generated tables use these two records and leave their definition to the includer.
// Enumeration values may be negative (CurrentOffset), so the value is signed.
struct NameLookupTable {
    const char *name;
    long long value;
};
struct TagLookupTable {
    unsigned int code;
    const NameLookupTable *table;
};

#include "battery_enums.hpp"
#include "battery_lookup.hpp"

namespace {

int checks = 0;
int failures = 0;

void expect(const char *what, long long actual, long long expected)
{
    ++checks;
    if (actual != expected) {
        std::printf("FAIL: %s is %lld (0x%llX), expected %lld (0x%llX)\n",
                    what,
                    actual,
                    static_cast<unsigned long long>(actual),
                    expected,
                    static_cast<unsigned long long>(expected));
        ++failures;
    }
}

void expectText(const char *what, const char *actual, const char *expected)
{
    ++checks;
    if (!actual || std::strcmp(actual, expected) != 0) {
        std::printf("FAIL: %s is \"%s\", expected \"%s\"\n", what, actual ? actual : "(none)", expected);
        ++failures;
    }
}

// The rows of a name table after its heading row, up to the closing { 0, 0 }.
const NameLookupTable *findName(const NameLookupTable *table, const char *name)
{
    for (const NameLookupTable *row = table + 1; row->name; ++row) {
        if (std::strcmp(row->name, name) == 0)
            return row;
    }
    return nullptr;
}

const char *nameOf(const NameLookupTable *table, long long value)
{
    for (const NameLookupTable *row = table + 1; row->name; ++row) {
        if (row->value == value)
            return row->name;
    }
    return nullptr;
}

// The name table of a tag code; ~0U stands for the table of all top-level tags.
const NameLookupTable *tableOf(unsigned int code)
{
    for (const TagLookupTable *row = ZAT16::tagLookup; row->table; ++row) {
        if (row->code == code)
            return row->table;
    }
    return nullptr;
}

long long valueOf(const NameLookupTable *table, const char *name)
{
    const NameLookupTable *row = table ? findName(table, name) : nullptr;
    return row ? row->value : -1;
}

int rowCount(const NameLookupTable *table)
{
    int count = 0;
    for (const NameLookupTable *row = table + 1; row->name; ++row)
        ++count;
    return count;
}

} // namespace

int main()
{
    // The top-level table: heading row, then every tag by name.
    const NameLookupTable *tags = tableOf(~0U);
    expect("tagLookup[0] points to the top-level table", tags == ZAT16::nameLookupToplevelTags, 1);
    expectText("heading of the top-level table", tags[0].name, "ToplevelTags");
    expect("type of the top-level table", tags[0].value, 0);
    expect("ChargeCurrent", valueOf(tags, "ChargeCurrent"), 0x1104);
    expect("GetBayState", valueOf(tags, "GetBayState"), 0xD101);
    expect("BayStateReply", valueOf(tags, "BayStateReply"), 0xE101);
    expect("FactoryReset", valueOf(tags, "FactoryReset"), 0xD1FF);
    expect("CalibrationData", valueOf(tags, "CalibrationData"), 0x0101);
    expectText("name of 0x9101", nameOf(tags, 0x9101), "ChargerAddress");
    expect("number of top-level tags", rowCount(tags), 24);

    // Enumeration tables, reached through the tag code.
    const NameLookupTable *chemistry = tableOf(0x1102);
    expectText("heading of the table of 0x1102", chemistry ? chemistry[0].name : nullptr, "Chemistry");
    expect("type of an enumeration table", chemistry ? chemistry[0].value : -1, 1);
    expect("Chemistry LiFePO4", valueOf(chemistry, "LiFePO4"), 4);
    expectText("Chemistry 5", chemistry ? nameOf(chemistry, 5) : nullptr, "LeadAcid");
    expect("CurrentOffset Minus20", valueOf(tableOf(0x1103), "Minus20"), -20);
    expect("BayIndex Bay3", valueOf(tableOf(0x1101), "Bay3"), 3);

    // The bit table, listed twice in the tag table.
    const NameLookupTable *bits = tableOf(0x7101);
    expect("type of a bit table", bits ? bits[0].value : -1, 2);
    expect("BayStatus Overheated", valueOf(bits, "Overheated"), 12);
    int bitRows = 0;
    for (const TagLookupTable *row = ZAT16::tagLookup; row->table; ++row)
        bitRows += row->code == 0x7101;
    expect("rows of 0x7101 in the tag table", bitRows, 2);
    expect("tag without lists", tableOf(0x1104) == nullptr, 1);

    // The enumerations header agrees with the tables.
    expect("ZAT16::Tag::ChargeCurrent", ZAT16::Tag::ChargeCurrent, valueOf(tags, "ChargeCurrent"));
    expect("ZAT16::Cmd::GetBayState", ZAT16::Cmd::GetBayState, 0xD101);
    expect("ZAT16::Chemistry::EnumCount", ZAT16::Chemistry::EnumCount, 6);
    expect("ZAT16::BayStatus::Overheated", ZAT16::BayStatus::Overheated, 0x1000);

    std::printf("check_lookup: %d checks, %d failed\n", checks, failures);
    return failures ? 1 : 0;
}

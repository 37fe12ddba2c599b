#include "writerjson.h"

#include "item.h"
#include "jsonoutput.h"
#include "problems.h"

#include <QHash>

namespace ZAT16 {

namespace {

// The problem kinds as the document names them, in the order of Problems::Kind.
const char *const problemKinds[] = {
    "name-without-code", "code-without-name", "name-collision", "code-collision",
    "incomplete-parent", "invalid-name",      "keyword",
};

void writeDisplay(JsonOutput &json, const DisplayMode &display)
{
    json.key(QLatin1String("display"));
    json.beginObject();
    json.key(QLatin1String("mode"));
    json.valueSigned(display.mode);
    json.key(QLatin1String("digits"));
    json.valueSigned(display.digits);
    json.endObject();
}

// A number is signed unless the display in effect shows it unsigned, as formatNumber() does.
bool displaysUnsigned(const Item &item)
{
    const int mode = item.displayMode().mode;
    return mode >= 2 && mode <= 5;
}

void writeEntry(JsonOutput &json, const Item &entry)
{
    json.beginObject();
    json.key(QLatin1String("name"));
    json.value(entry.name);
    json.key(QLatin1String("value"));
    if (!entry.hasId)
        json.valueNull();
    else if (displaysUnsigned(entry))
        json.valueUnsigned(entry.id);
    else
        json.valueSigned(qint64(entry.id));
    json.key(QLatin1String("valueText"));
    if (entry.hasId)
        json.value(entry.formatId());
    else
        json.valueNull();
    json.key(QLatin1String("comment"));
    json.value(entry.comment);
    writeDisplay(json, entry.display);
    json.endObject();
}

void writeList(JsonOutput &json, const Item &list)
{
    json.beginObject();
    json.key(QLatin1String("kind"));
    json.value(QLatin1String(list.type == Enums ? "enums" : "bits"));
    writeDisplay(json, list.display);
    json.key(QLatin1String("enumCount"));
    json.valueSigned(list.enumCount());
    json.key(QLatin1String("entries"));
    json.beginArray();
    for (const Item *entry : list.children) {
        if ((entry->type == Enum || entry->type == Bit) && !entry->isComment() && !entry->isNewline())
            writeEntry(json, *entry);
    }
    json.endArray();
    json.endObject();
}

void writeTag(JsonOutput &json, const Item &tag)
{
    json.beginObject();
    json.key(QLatin1String("name"));
    json.value(tag.name);
    // A tag code has 16 bits; the reader refuses more.
    const quint32 code = quint32(tag.id);
    json.key(QLatin1String("code"));
    if (tag.hasId)
        json.valueUnsigned(code);
    else
        json.valueNull();
    json.key(QLatin1String("codeText"));
    if (tag.hasId)
        json.value(tag2hex(code));
    else
        json.valueNull();
    json.key(QLatin1String("type"));
    if (tag.hasId)
        json.valueSigned(dataType(code));
    else
        json.valueNull();
    json.key(QLatin1String("typeName"));
    const QString type = tag.hasId ? typeName(code) : QString();
    if (type.isNull())
        json.valueNull();
    else
        json.value(type);
    json.key(QLatin1String("answerCode"));
    const int answer = tag.hasId ? answerCode(int(code)) : -1;
    if (answer < 0)
        json.valueNull();
    else
        json.valueSigned(answer);
    json.key(QLatin1String("comment"));
    json.value(tag.comment);
    json.key(QLatin1String("secure"));
    json.value(tag.secure);
    writeDisplay(json, tag.display);
    json.key(QLatin1String("lists"));
    json.beginArray();
    for (const Item *list : tag.children) {
        if (list->type == Enums || list->type == Bits)
            writeList(json, *list);
    }
    json.endArray();
    json.endObject();
}

} // namespace

const char *WriterJson::formatName()
{
    return "zatdef-model";
}

int WriterJson::formatVersion()
{
    return 1;
}

void WriterJson::writeModel(JsonOutput &json, const Item *root)
{
    json.beginObject();
    json.key(QLatin1String("format"));
    json.value(QLatin1String(formatName()));
    json.key(QLatin1String("version"));
    json.valueSigned(formatVersion());
    writeDisplay(json, root ? root->display : DisplayMode());

    // The index of each top-level tag in "tags", by which a problem names its tag.
    QHash<const Item *, int> tagIndex;
    json.key(QLatin1String("tags"));
    json.beginArray();
    if (root) {
        for (const Item *tag : root->children) {
            if (tag->type != Tag || tag->isComment() || tag->isNewline())
                continue;
            tagIndex.insert(tag, int(tagIndex.size()));
            writeTag(json, *tag);
        }
    }
    json.endArray();

    json.key(QLatin1String("problems"));
    json.beginArray();
    const QList<Problems::Problem> problems = Problems::find(root);
    for (const Problems::Problem &problem : problems) {
        json.beginObject();
        json.key(QLatin1String("kind"));
        json.value(QLatin1String(problemKinds[problem.kind]));
        json.key(QLatin1String("warning"));
        json.value(problem.isWarning());
        json.key(QLatin1String("message"));
        json.value(problem.message);
        const Item *top = problem.item;
        while (top && top->parent && top->parent != root)
            top = top->parent;
        json.key(QLatin1String("tag"));
        const auto found = tagIndex.constFind(top);
        if (found == tagIndex.constEnd())
            json.valueNull();
        else
            json.valueSigned(found.value());
        json.endObject();
    }
    json.endArray();
    json.endObject();
}

bool WriterJson::writeDefinitions(const Item *root)
{
    JsonOutput json;
    writeModel(json, root);
    write(json.text());
    return true;
}

} // namespace ZAT16

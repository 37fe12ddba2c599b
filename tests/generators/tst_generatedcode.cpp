// The generated code fed to the programs that consume it: the C header is compiled and run by a
// C program that checks every macro, the Lua tables are loaded by lua5.4 and every entry is
// checked, the C# file is compiled by mcs, and the two C++ headers are compiled (and the lookup
// tables walked) by c++. The expected values are worked out here from the parsed tree.

#include "generatortest.h"
#include "outputproblems.h"
#include "outputs.h"
#include "writercpp.h"
#include "writercpplut.h"
#include "writercs.h"
#include "writerheader.h"
#include "writerlua.h"

#include <QDir>
#include <QMap>
#include <QProcess>
#include <QRegularExpression>
#include <QSet>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

using namespace ZAT16;

namespace {

struct Run {
    int status = -1;
    QByteArray output;
};

Run runProgram(const QString &program, const QStringList &arguments, const QString &directory)
{
    QProcess process;
    process.setWorkingDirectory(directory);
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    Run run;
    if (!process.waitForFinished(120000) || process.exitStatus() != QProcess::NormalExit) {
        run.output = "did not run to its end: " + process.errorString().toUtf8() + "\n" + process.readAll();
        return run;
    }
    run.status = process.exitCode();
    run.output = process.readAll();
    return run;
}

// ---- What the generated code must contain, worked out from the tree ----

struct Listed {
    const Item *tag;
    bool nested; ///< listed among the request/answer pairs or the other nested tags
};

// The top-level tags in listing order: pairs, other nested tags, plain tags, each code once.
// Answers are looked up with findBut, the plain scan that the generators replace by a hash.
QList<Listed> listedTags(const Item *root)
{
    QList<Listed> listed;
    QSet<quint64> written;
    for (const Item *tag : root->children) {
        if (!tag->isValid(Tag) || ((tag->id >> 12) & 0xF) != 13)
            continue;
        const quint64 answer = 0xE000 | (tag->id & 0x0FFF);
        const int row = root->findBut(unsigned(answer), nullptr);
        if (written.contains(tag->id) || written.contains(answer) || row < 0)
            continue;
        listed.append({ tag, true });
        listed.append({ root->child(row), true });
        written << tag->id << answer;
    }
    for (int pass = 0; pass < 2; ++pass) {
        for (const Item *tag : root->children) {
            if (!tag->isValid(Tag) || written.contains(tag->id))
                continue;
            const bool nested = ((tag->id >> 12) & 0xF) >= 12;
            if (nested == (pass == 0)) {
                listed.append({ tag, nested });
                written << tag->id;
            }
        }
    }
    return listed;
}

QList<const Item *> validTags(const Item *root)
{
    QList<const Item *> tags;
    for (const Item *tag : root->children) {
        if (tag->isValid(Tag))
            tags << tag;
    }
    return tags;
}

const Item *listOf(const Item *tag, ItemType type)
{
    for (const Item *child : tag->children) {
        if (child->type == type)
            return child;
    }
    return nullptr;
}

QList<const Item *> validChildren(const Item *list, ItemType type)
{
    QList<const Item *> items;
    if (list) {
        for (const Item *child : list->children) {
            if (child->isValid(type))
                items << child;
        }
    }
    return items;
}

// Number of values when the values form the run 0,1,2,... or 1,2,3,...; else 0.
int runLength(const Item *list)
{
    int count = 0;
    quint64 next = 0;
    for (const Item *child : list->children) {
        if (!child->hasId)
            continue;
        if (count == 0 ? quint32(child->id) > 1 : child->id != next)
            return 0;
        next = (count == 0 ? quint32(child->id) : child->id) + 1;
        ++count;
    }
    return count;
}

quint64 mask64(quint64 bit)
{
    return (quint64(1) << (bit % 64)) & 0xFFFFFFFFu;
}

struct Macro {
    QString name;
    quint64 value;
};

QList<Macro> expectedMacros(const Item *root)
{
    QList<Macro> macros = {
        { QStringLiteral("ZAT16DT_Binary"), 0 },         { QStringLiteral("ZAT16DT_Integer"), 1 },
        { QStringLiteral("ZAT16DT_Bool"), 2 },           { QStringLiteral("ZAT16DT_String"), 3 },
        { QStringLiteral("ZAT16DT_Date"), 4 },           { QStringLiteral("ZAT16DT_Time"), 5 },
        { QStringLiteral("ZAT16DT_DateTime"), 6 },       { QStringLiteral("ZAT16DT_BitArray"), 7 },
        { QStringLiteral("ZAT16DT_NetworkAddress"), 9 }, { QStringLiteral("ZAT16DT_List"), 12 },
        { QStringLiteral("ZAT16DT_Request"), 13 },       { QStringLiteral("ZAT16DT_Answer"), 14 },
        { QStringLiteral("ZAT16DT_Message"), 15 },       { QStringLiteral("ZAT16DT_ExtPoint"), 0x80 },
        { QStringLiteral("ZAT16DT_ExtRect"), 0x81 },     { QStringLiteral("ZAT16DT_ExtSize"), 0x82 },
    };
    for (const Listed &listed : listedTags(root))
        macros.append(
            { (listed.nested ? QStringLiteral("MSG_") : QStringLiteral("TAG_")) + listed.tag->name, listed.tag->id });
    for (const Item *tag : validTags(root)) {
        const Item *enums = listOf(tag, Enums);
        if (!enums)
            continue;
        for (const Item *value : validChildren(enums, Enum)) {
            if (!value->name.isEmpty())
                macros.append({ QStringLiteral("ENU_") + tag->name + QLatin1Char('_') + value->name, value->id });
        }
        if (const int count = runLength(enums))
            macros.append({ QStringLiteral("CNT_") + tag->name, quint64(count) });
    }
    for (const Item *tag : validTags(root)) {
        const QList<const Item *> bits = validChildren(listOf(tag, Bits), Bit);
        for (const Item *bit : bits)
            macros.append({ QStringLiteral("BIT_") + tag->name + QLatin1Char('_') + bit->name, bit->id });
        for (const Item *bit : bits)
            macros.append({ QStringLiteral("MSK_") + tag->name + QLatin1Char('_') + bit->name, mask64(bit->id) });
    }
    return macros;
}

// A Lua string literal.
QString luaString(const QString &text)
{
    QString quoted = QStringLiteral("\"");
    for (const char c : text.toUtf8()) {
        const unsigned char u = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            quoted += QLatin1Char('\\');
            quoted += QLatin1Char(c);
        } else if (u < 0x20 || u >= 0x7F)
            quoted += QStringLiteral("\\%1").arg(u, 3, 10, QLatin1Char('0'));
        else
            quoted += QLatin1Char(c);
    }
    return quoted + QLatin1Char('"');
}

// Lua tables by name, each a map from key to integer; a later table of the same name replaces
// an earlier one, and a later key replaces an earlier one, as when Lua runs the script.
QMap<QString, QMap<QString, qint64>> expectedLuaTables(const Item *root)
{
    QMap<QString, QMap<QString, qint64>> tables;
    QMap<QString, qint64> &tagTable = tables[QStringLiteral("lutTag")];
    for (const Listed &listed : listedTags(root))
        tagTable.insert(listed.tag->name, qint64(listed.tag->id));
    for (const Item *tag : validTags(root)) {
        const Item *enums = listOf(tag, Enums);
        if (!enums)
            continue;
        QMap<QString, qint64> table;
        for (const Item *value : enums->children) {
            if (!value->hasId)
                continue;
            if (!value->name.isEmpty())
                table.insert(value->name, qint64(value->id));
            else if (!value->comment.isEmpty())
                table.insert(QLatin1Char('"') + value->comment + QLatin1Char('"'), qint64(value->id));
        }
        tables.insert(QStringLiteral("lut") + tag->name, table);
    }
    for (const Item *tag : validTags(root)) {
        const Item *bits = listOf(tag, Bits);
        if (!bits)
            continue;
        QMap<QString, qint64> table;
        for (const Item *bit : bits->children) {
            if (bit->hasId)
                table.insert(bit->name, qint32(quint32(1) << (bit->id % 32)));
        }
        tables.insert(QStringLiteral("lutBit") + tag->name, table);
    }
    return tables;
}

// Tags whose enumeration values and bits both give a group: the C++ headers then hold two
// namespaces or two tables of the same name, which a compiler rejects.
QStringList tagsWithBothGroups(const Item *root)
{
    QStringList names;
    for (const Item *tag : validTags(root)) {
        if (!validChildren(listOf(tag, Enums), Enum).isEmpty() && !validChildren(listOf(tag, Bits), Bit).isEmpty())
            names << tag->name;
    }
    return names;
}

QString ullLiteral(quint64 value)
{
    return QString::number(value) + QStringLiteral("ULL");
}

QString cString(const QString &text)
{
    QString quoted = QStringLiteral("\"");
    for (const char c : text.toUtf8()) {
        const unsigned char u = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            quoted += QLatin1Char('\\');
            quoted += QLatin1Char(c);
        } else if (u < 0x20 || u >= 0x7F)
            quoted += QStringLiteral("\\%1").arg(u, 3, 8, QLatin1Char('0'));
        else
            quoted += QLatin1Char(c);
    }
    return quoted + QLatin1Char('"');
}

QString missingTool(const QString &name)
{
    return QStandardPaths::findExecutable(name).isEmpty() ? name + QStringLiteral(" is not installed") : QString();
}

} // namespace

class TestGeneratedCode : public QObject
{
    Q_OBJECT

private:
    void addTrees()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("worked example") << QStringLiteral(ZAT16_TEST_DATA "/generators/worked.zatdef");
        const QDir examples(QStringLiteral(ZAT16_EXAMPLES));
        for (const QString &name : examples.entryList({ QStringLiteral("*.zatdef") }, QDir::Files, QDir::Name))
            QTest::newRow(qPrintable(name)) << examples.filePath(name);
    }

private slots:
    void cHeader_data() { addTrees(); }
    void cHeader()
    {
        QFETCH(QString, path);
        if (const QString missing = missingTool(QStringLiteral("cc")); !missing.isEmpty())
            QSKIP(qPrintable(missing));
        const auto root = GeneratorTest::treeFromFile(path);
        QVERIFY(root);
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        const QByteArray header = GeneratorTest::generate<WriterHeader>(root.get());
        QVERIFY(GeneratorTest::writeFile(dir.filePath(QStringLiteral("zat16_tags.h")), header));

        // Every macro the header defines is one that is expected, and the other way round.
        const QList<Macro> macros = expectedMacros(root.get());
        QStringList expectedNames { QStringLiteral("ZAT16_TAGS_H") };
        for (const Macro &macro : macros)
            expectedNames << macro.name;
        QStringList definedNames;
        const QRegularExpression define(QStringLiteral("^#define (\\S+)"), QRegularExpression::MultilineOption);
        for (auto it = define.globalMatch(QString::fromUtf8(header)); it.hasNext();)
            definedNames << it.next().captured(1);
        QCOMPARE(definedNames, expectedNames);

        QString program = QStringLiteral(
            "#include <stdio.h>\n#include \"zat16_tags.h\"\n\n"
            "static int failures;\n\n"
            "static void check(const char *name, unsigned long long actual, unsigned long long expected)\n"
            "{\n"
            "    if (actual != expected) {\n"
            "        printf(\"%s is %llu, expected %llu\\n\", name, actual, expected);\n"
            "        ++failures;\n"
            "    }\n"
            "}\n\n"
            "int main(void)\n{\n");
        for (const Macro &macro : macros)
            program += QStringLiteral("    check(\"%1\", (unsigned long long)(%1), %2);\n")
                           .arg(macro.name, ullLiteral(macro.value));
        program += QStringLiteral("    printf(\"%d macros checked\\n\", %1);\n    return failures != 0;\n}\n")
                       .arg(macros.size());
        QVERIFY(GeneratorTest::writeFile(dir.filePath(QStringLiteral("check.c")), program.toUtf8()));

        const Run compile = runProgram(QStringLiteral("cc"),
                                       { QStringLiteral("-std=c99"),
                                         QStringLiteral("-Wall"),
                                         QStringLiteral("-Werror"),
                                         QStringLiteral("check.c"),
                                         QStringLiteral("-o"),
                                         QStringLiteral("check") },
                                       dir.path());
        QVERIFY2(compile.status == 0, compile.output.constData());
        const Run check = runProgram(dir.filePath(QStringLiteral("check")), {}, dir.path());
        QVERIFY2(check.status == 0, check.output.constData());
        QCOMPARE(check.output, QByteArray::number(macros.size()) + " macros checked\n");
    }

    void lua_data() { addTrees(); }
    void lua()
    {
        QFETCH(QString, path);
        if (const QString missing = missingTool(QStringLiteral("lua5.4")); !missing.isEmpty())
            QSKIP(qPrintable(missing));
        const auto root = GeneratorTest::treeFromFile(path);
        QVERIFY(root);
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        QVERIFY(GeneratorTest::writeFile(dir.filePath(QStringLiteral("zat16.lua")),
                                         GeneratorTest::generate<WriterLua>(root.get())));

        const auto tables = expectedLuaTables(root.get());
        QString script = QStringLiteral(
            "zat16 = {}\n"
            "dofile(\"zat16.lua\")\n"
            "local failures = 0\n"
            "local entries = 0\n"
            "local function check(table, key, expected)\n"
            "  local actual = zat16[table] and zat16[table][key]\n"
            "  if actual ~= expected or math.type(actual) ~= \"integer\" then\n"
            "    print(table .. \"[\" .. key .. \"] is \" .. tostring(actual) .. \", expected \" .. expected)\n"
            "    failures = failures + 1\n"
            "  end\n"
            "  entries = entries + 1\n"
            "end\n"
            "local function size(table, expected)\n"
            "  local count = 0\n"
            "  for _ in pairs(zat16[table] or {}) do count = count + 1 end\n"
            "  if zat16[table] == nil or count ~= expected then\n"
            "    print(table .. \" has \" .. count .. \" entries, expected \" .. expected)\n"
            "    failures = failures + 1\n"
            "  end\n"
            "end\n");
        int tableCount = 0;
        for (auto table = tables.cbegin(); table != tables.cend(); ++table) {
            ++tableCount;
            script += QStringLiteral("size(%1, %2)\n").arg(luaString(table.key())).arg(table.value().size());
            for (auto entry = table.value().cbegin(); entry != table.value().cend(); ++entry) {
                // Hexadecimal keeps every 64-bit value an integer in Lua.
                script += QStringLiteral("check(%1, %2, 0x%3)\n")
                              .arg(luaString(table.key()), luaString(entry.key()))
                              .arg(quint64(entry.value()), 0, 16);
            }
        }
        script += QStringLiteral("local tables = 0\nfor _ in pairs(zat16) do tables = tables + 1 end\n"
                                 "if tables ~= %1 then print(\"zat16 has \" .. tables .. \" tables, expected %1\") "
                                 "failures = failures + 1 end\n"
                                 "print(entries .. \" entries checked\")\n"
                                 "os.exit(failures == 0 and 0 or 1)\n")
                      .arg(tableCount);
        QVERIFY(GeneratorTest::writeFile(dir.filePath(QStringLiteral("check.lua")), script.toUtf8()));

        int entryCount = 0;
        for (const auto &table : tables)
            entryCount += table.size();
        const Run run = runProgram(QStringLiteral("lua5.4"), { QStringLiteral("check.lua") }, dir.path());
        QVERIFY2(run.status == 0, run.output.constData());
        QCOMPARE(run.output, QByteArray::number(entryCount) + " entries checked\n");
    }

    void csharp_data() { addTrees(); }
    void csharp()
    {
        QFETCH(QString, path);
        if (const QString missing = missingTool(QStringLiteral("mcs")); !missing.isEmpty())
            QSKIP(qPrintable(missing));
        const auto root = GeneratorTest::treeFromFile(path);
        QVERIFY(root);
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        QVERIFY(GeneratorTest::writeFile(dir.filePath(QStringLiteral("Zat16.cs")),
                                         GeneratorTest::generate<WriterCs>(root.get())));
        const Run compile = runProgram(QStringLiteral("mcs"),
                                       { QStringLiteral("-target:library"),
                                         QStringLiteral("-warnaserror+"),
                                         QStringLiteral("-out:Zat16.dll"),
                                         QStringLiteral("Zat16.cs") },
                                       dir.path());
        QVERIFY2(compile.status == 0, compile.output.constData());
        QVERIFY(QFileInfo::exists(dir.filePath(QStringLiteral("Zat16.dll"))));
    }

    void cppEnums_data()
    {
        addTrees();
        QTest::newRow("a tag with both lists") << QStringLiteral(ZAT16_TEST_DATA "/generators/both-lists.zatdef");
    }
    void cppEnums()
    {
        QFETCH(QString, path);
        if (const QString missing = missingTool(QStringLiteral("c++")); !missing.isEmpty())
            QSKIP(qPrintable(missing));
        const auto root = GeneratorTest::treeFromFile(path);
        QVERIFY(root);
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        QVERIFY(GeneratorTest::writeFile(dir.filePath(QStringLiteral("zat16_enums.hpp")),
                                         GeneratorTest::generate<WriterCpp>(root.get())));

        QString program = QStringLiteral("#include \"zat16_enums.hpp\"\n\n");
        int checks = 0;
        auto expect = [&](const QString &name, quint64 value) {
            program += QStringLiteral("static_assert(static_cast<unsigned long long>(ZAT16::%1) == %2, \"%1\");\n")
                           .arg(name, ullLiteral(value));
            ++checks;
        };
        const QList<std::pair<QString, int>> types
            = { { QStringLiteral("Binary"), 0 },         { QStringLiteral("Integer"), 1 },
                { QStringLiteral("Bool"), 2 },           { QStringLiteral("String"), 3 },
                { QStringLiteral("Date"), 4 },           { QStringLiteral("Time"), 5 },
                { QStringLiteral("DateTime"), 6 },       { QStringLiteral("BitArray"), 7 },
                { QStringLiteral("NetworkAddress"), 9 }, { QStringLiteral("List"), 12 },
                { QStringLiteral("Request"), 13 },       { QStringLiteral("Answer"), 14 },
                { QStringLiteral("Message"), 15 },       { QStringLiteral("ExtPoint"), 0x80 },
                { QStringLiteral("ExtRect"), 0x81 },     { QStringLiteral("ExtSize"), 0x82 } };
        for (const auto &type : types)
            expect(QStringLiteral("Type::") + type.first, quint64(type.second));
        for (const Listed &listed : listedTags(root.get()))
            expect((listed.nested ? QStringLiteral("Cmd::") : QStringLiteral("Tag::")) + listed.tag->name,
                   listed.tag->id);
        for (const Item *tag : validTags(root.get())) {
            const Item *enums = listOf(tag, Enums);
            const QList<const Item *> values = validChildren(enums, Enum);
            for (const Item *value : values)
                expect(tag->name + QStringLiteral("::") + value->name, value->id);
            if (!values.isEmpty() && runLength(enums))
                expect(tag->name + QStringLiteral("::EnumCount"), quint64(runLength(enums)));
        }
        for (const Item *tag : validTags(root.get())) {
            for (const Item *bit : validChildren(listOf(tag, Bits), Bit)) {
                expect(tag->name + QStringLiteral("Bits::") + bit->name, bit->id);
                expect(tag->name + QStringLiteral("::") + bit->name, mask64(bit->id));
            }
        }
        program += QStringLiteral("\nint main()\n{\n    return 0;\n}\n");
        QVERIFY(GeneratorTest::writeFile(dir.filePath(QStringLiteral("check.cpp")), program.toUtf8()));

        const Run compile = runProgram(QStringLiteral("c++"),
                                       { QStringLiteral("-std=c++17"),
                                         QStringLiteral("-Wall"),
                                         QStringLiteral("-Werror"),
                                         QStringLiteral("-fsyntax-only"),
                                         QStringLiteral("check.cpp") },
                                       dir.path());
        // A tag with enumeration values and bits gets two namespaces with an enum T each: the
        // header does not compile, and the problems of the C++ enums header say so for each.
        const QStringList both = tagsWithBothGroups(root.get());
        if (!both.isEmpty()) {
            QVERIFY2(compile.status > 0 && compile.output.contains("error"), compile.output.constData());
            QStringList said;
            for (const OutputProblems::Problem &problem : OutputProblems::find(root.get(), 1u << Outputs::Cpp)) {
                if (problem.message.endsWith(QLatin1String(": the C++ enums header will not compile: the tag has both "
                                                           "an enumeration list and a bit list")))
                    said << problem.item->name;
            }
            QCOMPARE(said, both);
            return;
        }
        QVERIFY2(compile.status == 0, compile.output.constData());
        QVERIFY(checks > 16);
    }

    void cppLookupTables_data() { addTrees(); }
    void cppLookupTables()
    {
        QFETCH(QString, path);
        if (const QString missing = missingTool(QStringLiteral("c++")); !missing.isEmpty())
            QSKIP(qPrintable(missing));
        const auto root = GeneratorTest::treeFromFile(path);
        QVERIFY(root);
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        QVERIFY(GeneratorTest::writeFile(dir.filePath(QStringLiteral("zat16_lookup.hpp")),
                                         GeneratorTest::generate<WriterCppLut>(root.get())));

        QString program = QStringLiteral(
            "#include <cstdio>\n#include <cstring>\n\n"
            "struct NameLookupTable {\n    const char *name;\n    long long value;\n};\n"
            "struct TagLookupTable {\n    unsigned code;\n    const NameLookupTable *table;\n};\n\n"
            "#include \"zat16_lookup.hpp\"\n\n"
            "static int failures;\n\n"
            "static void row(const NameLookupTable *table, const char *tableName, int index, const char *name, long "
            "long value)\n"
            "{\n"
            "    const NameLookupTable &r = table[index];\n"
            "    if (!name ? (r.name != nullptr || r.value != 0) : (!r.name || std::strcmp(r.name, name) != 0 || "
            "r.value != value)) {\n"
            "        std::printf(\"%s[%d] is { %s, %lld }\\n\", tableName, index, r.name ? r.name : \"0\", r.value);\n"
            "        ++failures;\n"
            "    }\n"
            "}\n\n"
            "static void tag(int index, unsigned code, const NameLookupTable *table)\n"
            "{\n"
            "    if (ZAT16::tagLookup[index].code != code || ZAT16::tagLookup[index].table != table) {\n"
            "        std::printf(\"tagLookup[%d] is wrong\\n\", index);\n"
            "        ++failures;\n"
            "    }\n"
            "}\n\n"
            "int main()\n{\n    using namespace ZAT16;\n");
        int checks = 0;
        auto rows = [&](const QString &table, int type, const QList<std::pair<QString, quint64>> &entries) {
            const QString id = QStringLiteral("nameLookup") + table;
            program += QStringLiteral("    row(%1, \"%1\", 0, %2, %3);\n").arg(id, cString(table)).arg(type);
            for (int i = 0; i < entries.size(); ++i) {
                program += QStringLiteral("    row(%1, \"%1\", %2, %3, %4LL);\n")
                               .arg(id)
                               .arg(i + 1)
                               .arg(cString(entries.at(i).first))
                               .arg(qint64(entries.at(i).second));
            }
            program += QStringLiteral("    row(%1, \"%1\", %2, nullptr, 0);\n").arg(id).arg(entries.size() + 1);
            checks += int(entries.size()) + 2;
        };
        QList<std::pair<QString, quint64>> topLevel;
        for (const Listed &listed : listedTags(root.get()))
            topLevel.append({ listed.tag->name, listed.tag->id });
        rows(QStringLiteral("ToplevelTags"), 0, topLevel);
        for (const Item *tag : validTags(root.get())) {
            QList<std::pair<QString, quint64>> entries;
            for (const Item *value : validChildren(listOf(tag, Enums), Enum))
                entries.append({ value->name, value->id });
            if (!entries.isEmpty())
                rows(tag->name, 1, entries);
        }
        for (const Item *tag : validTags(root.get())) {
            QList<std::pair<QString, quint64>> entries;
            for (const Item *bit : validChildren(listOf(tag, Bits), Bit))
                entries.append({ bit->name, bit->id });
            if (!entries.isEmpty())
                rows(tag->name, 2, entries);
        }
        int index = 0;
        program += QStringLiteral("    tag(%1, ~0U, nameLookupToplevelTags);\n").arg(index++);
        for (const Item *tag : validTags(root.get())) {
            if (listOf(tag, Enums) || listOf(tag, Bits))
                program += QStringLiteral("    tag(%1, %2u, nameLookup%3);\n").arg(index++).arg(tag->id).arg(tag->name);
        }
        for (const Item *tag : validTags(root.get())) {
            if (listOf(tag, Bits))
                program += QStringLiteral("    tag(%1, %2u, nameLookup%3);\n").arg(index++).arg(tag->id).arg(tag->name);
        }
        program += QStringLiteral("    tag(%1, 0, nullptr);\n").arg(index);
        program += QStringLiteral("    std::printf(\"%1 rows checked\\n\");\n    return failures != 0;\n}\n")
                       .arg(checks + index + 1);
        QVERIFY(GeneratorTest::writeFile(dir.filePath(QStringLiteral("check.cpp")), program.toUtf8()));

        const Run compile = runProgram(QStringLiteral("c++"),
                                       { QStringLiteral("-std=c++17"),
                                         QStringLiteral("-Wall"),
                                         QStringLiteral("-Werror"),
                                         QStringLiteral("check.cpp"),
                                         QStringLiteral("-o"),
                                         QStringLiteral("check") },
                                       dir.path());
        QVERIFY2(compile.status == 0, compile.output.constData());
        const Run check = runProgram(dir.filePath(QStringLiteral("check")), {}, dir.path());
        QVERIFY2(check.status == 0, check.output.constData());
        QCOMPARE(check.output, QByteArray::number(checks + index + 1) + " rows checked\n");
    }
};

QTEST_GUILESS_MAIN(TestGeneratedCode)
#include "tst_generatedcode.moc"

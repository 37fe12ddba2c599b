#pragma once

// Helpers of the plugin tests: definitions files of random trees as zatgen reads them, and
// python3 running a script that the test writes.

#include "item.h"
#include "jsonoutput.h"
#include "parser.h"
#include "processrun.h"
#include "testfiles.h"
#include "treemaker.h"
#include "writerjson.h"
#include "writerxml.h"

#include <QDir>
#include <QFileInfo>

#include <QProcess>
#include <QString>
#include <QStringList>

#include <memory>

namespace PluginTest {

/// Writes the random tree of `seed` to `path`, after `adjust` has changed it, and returns the
/// tree read back from the file, which is what zatgen and its plugins see; null on failure.
template<typename Adjust>
std::unique_ptr<ZAT16::Item> randomFile(quint32 seed, const QString &path, Adjust adjust)
{
    std::unique_ptr<ZAT16::Item> made = ZAT16::TreeMaker(seed).root();
    adjust(made.get());
    ZAT16::WriterXml writer;
    if (!TestFiles::writeFile(path, writer.encode(made.get())))
        return nullptr;
    ZAT16::Parser parser;
    if (!parser.parse(path))
        return nullptr;
    return std::unique_ptr<ZAT16::Item>(parser.takeRoot());
}

/// Runs `program` with `arguments` and collects what it gave (status -1 after `timeoutMs`).
inline ProcessRun::Run runProgram(const QString &program,
                                  const QStringList &arguments,
                                  const QString &workingDirectory = QString(),
                                  int timeoutMs = 120000)
{
    QProcess process;
    if (!workingDirectory.isEmpty())
        process.setWorkingDirectory(workingDirectory);
    process.start(program, arguments);
    return ProcessRun::finish(process, timeoutMs);
}

/// A Python literal of a text.
inline QString pythonString(const QString &text)
{
    QString out = QStringLiteral("'");
    for (const QChar c : text) {
        if (c == QLatin1Char('\\') || c == QLatin1Char('\''))
            out += QLatin1Char('\\') + QString(c);
        else if (c.unicode() < 0x20 || c.isSurrogate())
            out += QStringLiteral("\\u%1").arg(c.unicode(), 4, 16, QLatin1Char('0'));
        else
            out += c;
    }
    return out + QLatin1Char('\'');
}

/// The plugin `name` as the build put it beside zatgen.
inline QString pluginPath(const QString &name)
{
    return QFileInfo(QStringLiteral(ZATGEN_PATH)).dir().filePath(name);
}

/// The request zatgen sends a plugin for `root`, read from `input`, with `options`.
inline QByteArray request(const ZAT16::Item *root, const QString &input, const QList<QPair<QString, QString>> &options)
{
    ZAT16::JsonOutput json;
    json.beginObject();
    json.key(QLatin1String("protocol"));
    json.valueSigned(1);
    json.key(QLatin1String("input"));
    json.value(input);
    json.key(QLatin1String("options"));
    json.beginObject();
    for (const auto &option : options) {
        json.key(QStringView(option.first));
        json.value(QStringView(option.second));
    }
    json.endObject();
    json.key(QLatin1String("model"));
    ZAT16::JsonOutput model;
    ZAT16::WriterJson::writeModel(model, root);
    json.valueRaw(model.text());
    json.endObject();
    return json.text().toUtf8();
}

/// Runs the plugin at `plugin` once per request file in one python3 process (run_plugin.py). The
/// files of the responses are written under `out`. On a failure `report` says which request
/// failed.
inline bool runPluginBatch(const QString &plugin, const QString &out, const QStringList &requests, QString *report)
{
    const QString script = QStringLiteral(ZAT16_PLUGIN_TESTS "/run_plugin.py");
    const ProcessRun::Run run = runProgram(QStringLiteral("python3"), QStringList { script, plugin, out } + requests);
    *report = QString::fromUtf8(run.out + run.err);
    return run.status == 0;
}

} // namespace PluginTest

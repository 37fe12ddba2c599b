#include "plugin.h"

#include "jsonoutput.h"
#include "writerjson.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QSet>
#include <QStandardPaths>

#include <csignal>
#include <unistd.h>

namespace ZAT16 {

namespace {

// `path` (absolute) with every symbolic link that exists resolved, also one that points to
// nothing yet and the folders above a file still to be made; empty for a loop of links.
QString resolved(const QString &path, int links = 0)
{
    const QFileInfo info(path);
    if (info.exists())
        return info.canonicalFilePath();
    if (info.isSymLink()) {
        if (links > 40)
            return QString();
        return resolved(QDir::cleanPath(info.symLinkTarget()), links + 1);
    }
    const QString parent = info.absolutePath();
    if (parent == path)
        return path;
    const QString above = resolved(parent, links);
    if (above.isEmpty())
        return QString();
    return above == QLatin1String("/") ? above + info.fileName() : above + QLatin1Char('/') + info.fileName();
}

} // namespace

int Plugin::protocolVersion()
{
    return 1;
}

int Plugin::defaultTimeoutSeconds()
{
    return 60;
}

bool Plugin::fromCommandLine(const QCommandLineParser &cmd, QList<Plugin> *plugins, QString *error)
{
    // The parser keeps the values of each option in order, and the names of all options in the
    // order given; together they say which --plugin an option follows.
    const QString plugin = QStringLiteral("plugin");
    const QString out = QStringLiteral("plugin-out");
    const QString opt = QStringLiteral("plugin-opt");
    const QHash<QString, QStringList> values
        = { { plugin, cmd.values(plugin) }, { out, cmd.values(out) }, { opt, cmd.values(opt) } };
    QHash<QString, int> taken;
    plugins->clear();
    const QStringList names = cmd.optionNames();
    for (const QString &name : names) {
        if (!values.contains(name))
            continue;
        const QString value = values.value(name).value(taken[name]++);
        if (name == plugin) {
            Plugin next;
            next.command = value;
            plugins->append(next);
            continue;
        }
        if (plugins->isEmpty()) {
            *error = QStringLiteral("--%1 %2 comes before any --plugin").arg(name, value);
            return false;
        }
        Plugin &last = plugins->last();
        if (name == out) {
            if (!last.outputDirectory.isNull()) {
                *error = QStringLiteral("--plugin %1 has more than one --plugin-out").arg(last.command);
                return false;
            }
            last.outputDirectory = value;
        } else {
            const qsizetype equals = value.indexOf(QLatin1Char('='));
            if (equals <= 0) {
                *error = QStringLiteral("--plugin-opt %1 is not KEY=VALUE").arg(value);
                return false;
            }
            last.options.append({ value.left(equals), value.mid(equals + 1) });
        }
    }
    for (const Plugin &each : std::as_const(*plugins)) {
        if (each.outputDirectory.isEmpty()) {
            *error = QStringLiteral("--plugin %1 has no --plugin-out").arg(each.command);
            return false;
        }
    }
    return true;
}

QString Plugin::locate(const QString &command)
{
    if (command.contains(QLatin1Char('/'))) {
        const QFileInfo info(command);
        return info.isFile() && info.isExecutable() ? command : QString();
    }
    const QString beside = QStandardPaths::findExecutable(command, { QCoreApplication::applicationDirPath() });
    if (!beside.isEmpty())
        return beside;
    return QStandardPaths::findExecutable(command);
}

QByteArray Plugin::request(const Item *root, const QString &input) const
{
    JsonOutput json;
    json.beginObject();
    json.key(QLatin1String("protocol"));
    json.valueSigned(protocolVersion());
    json.key(QLatin1String("zatgen"));
    json.value(QCoreApplication::applicationVersion());
    json.key(QLatin1String("input"));
    json.value(input);
    json.key(QLatin1String("options"));
    json.beginObject();
    // A key given twice keeps its last value, as later options override earlier ones.
    QHash<QString, QString> last;
    QStringList keys;
    for (const auto &option : options) {
        if (!last.contains(option.first))
            keys.append(option.first);
        last.insert(option.first, option.second);
    }
    for (const QString &key : std::as_const(keys)) {
        json.key(QStringView(key));
        json.value(QStringView(last.value(key)));
    }
    json.endObject();
    json.key(QLatin1String("model"));
    JsonOutput model;
    WriterJson::writeModel(model, root);
    json.valueRaw(model.text());
    json.endObject();
    return json.text().toUtf8();
}

bool Plugin::run(const Item *root, const QString &input, int timeoutMs)
{
    files.clear();
    failure.clear();
    const QString program = locate(command);
    if (program.isEmpty()) {
        failure = command.contains(QLatin1Char('/')) ? QStringLiteral("no such executable")
                                                     : QStringLiteral("not found beside zatgen or on PATH");
        return false;
    }

    QProcess process;
    process.setProgram(program);
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    // A group of its own, so that a plugin that runs too long goes with everything it started.
    process.setChildProcessModifier([] { ::setpgid(0, 0); });
    const QDeadlineTimer deadline(timeoutMs);
    process.start(QIODevice::ReadWrite);
    if (!process.waitForStarted(int(qMax<qint64>(0, deadline.remainingTime())))) {
        failure = QStringLiteral("could not be started: %1").arg(process.errorString());
        return false;
    }
    // A plugin that exits without reading its input would otherwise end zatgen with SIGPIPE.
    std::signal(SIGPIPE, SIG_IGN);
    process.write(request(root, input));
    process.closeWriteChannel();
    if (!process.waitForFinished(int(qMax<qint64>(0, deadline.remainingTime())))) {
        if (process.state() != QProcess::NotRunning) {
            ::kill(-pid_t(process.processId()), SIGKILL);
            process.waitForFinished(-1);
            failure = QStringLiteral("did not finish within %1 s").arg(double(timeoutMs) / 1000.0);
            return false;
        }
    }
    if (process.exitStatus() != QProcess::NormalExit) {
        failure = QStringLiteral("crashed");
        return false;
    }
    if (process.exitCode() != 0) {
        failure = QStringLiteral("exited with status %1").arg(process.exitCode());
        return false;
    }
    return readResponse(process.readAllStandardOutput());
}

bool Plugin::readResponse(const QByteArray &response)
{
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(response, &parseError);
    const auto invalid = [this](const QString &why) {
        failure = QStringLiteral("no valid response: %1").arg(why);
        files.clear();
        return false;
    };
    if (parseError.error != QJsonParseError::NoError)
        return invalid(QStringLiteral("%1 at offset %2").arg(parseError.errorString()).arg(parseError.offset));
    if (!document.isObject())
        return invalid(QStringLiteral("not a JSON object"));
    const QJsonObject object = document.object();
    const QJsonValue protocol = object.value(QLatin1String("protocol"));
    if (!protocol.isUndefined() && protocol != QJsonValue(protocolVersion()))
        return invalid(QStringLiteral("protocol is not %1").arg(protocolVersion()));
    const QJsonValue error = object.value(QLatin1String("error"));
    if (!error.isUndefined()) {
        if (!error.isString())
            return invalid(QStringLiteral("\"error\" is not a text"));
        failure = error.toString();
        return false;
    }
    const QJsonValue list = object.value(QLatin1String("files"));
    if (!list.isArray())
        return invalid(QStringLiteral("neither \"files\" nor \"error\""));
    QSet<QString> names;
    const QJsonArray array = list.toArray();
    for (const QJsonValue &entry : array) {
        const QJsonValue name = entry.toObject().value(QLatin1String("name"));
        const QJsonValue content = entry.toObject().value(QLatin1String("content"));
        if (!name.isString() || !content.isString())
            return invalid(QStringLiteral("a file without a text \"name\" and \"content\""));
        const QString text = name.toString();
        const QStringList parts = text.split(QLatin1Char('/'));
        if (text.startsWith(QLatin1Char('/')) || parts.contains(QLatin1String(".."))) {
            failure = QStringLiteral("file outside %1: %2").arg(outputDirectory, text);
            files.clear();
            return false;
        }
        if (parts.contains(QString()) || parts.contains(QLatin1String(".")) || text.contains(QChar(0)))
            return invalid(QStringLiteral("the file name \"%1\" is not a relative path").arg(text));
        if (names.contains(text))
            return invalid(QStringLiteral("the file %1 is named twice").arg(text));
        names.insert(text);
        const QString path = QDir(outputDirectory).filePath(text);
        if (!staysInside(path)) {
            failure = QStringLiteral("file outside %1: %2").arg(outputDirectory, text);
            files.clear();
            return false;
        }
        files.append({ text, path, content.toString().toUtf8() });
    }
    return true;
}

bool Plugin::staysInside(const QString &path) const
{
    const QString directory = resolved(QDir(outputDirectory).absolutePath());
    const QString file = resolved(QFileInfo(path).absoluteFilePath());
    if (directory.isEmpty() || file.isEmpty())
        return false;
    const QString prefix = directory.endsWith(QLatin1Char('/')) ? directory : directory + QLatin1Char('/');
    return file.startsWith(prefix);
}

QString Plugin::errorMessage() const
{
    return failure.isEmpty() ? QString() : QStringLiteral("plugin %1: %2").arg(command, failure);
}

} // namespace ZAT16

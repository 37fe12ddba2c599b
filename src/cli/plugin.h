#pragma once

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>

class QCommandLineParser;

namespace ZAT16 {

class Item;

/// One generator plugin of zatgen: an executable that gets the definitions on its standard
/// input and answers with the files to write on its standard output, both as JSON.
///
/// The request is one object: "protocol" (protocolVersion()), "zatgen" (the version), "input"
/// (the definitions file's path as given), "options" (an object of the --plugin-opt pairs; a
/// key given twice keeps its last value) and "model" (the document of zatgen --json). The
/// standard input is closed after it.
///
/// The response is one object on standard output, the plugin ending with status 0: either
/// "files", a list of objects with "name" (a relative path under the output directory, "/"
/// between folders) and "content" (the text, written as UTF-8), or "error", a text that tells
/// the user why the plugin made nothing. "protocol", when present, must be protocolVersion();
/// other members are ignored. What the plugin prints on standard error reaches the user as it is.
///
/// The plugin runs without a shell, in zatgen's working directory, in a process group of its
/// own, which is killed when the time is up. Nothing is written unless the whole response is
/// valid: a file that would end up outside the output directory (an absolute name, "..", or a
/// symbolic link that leads out) fails the plugin.
class Plugin
{
public:
    static int protocolVersion();
    /// The time a plugin may take unless --plugin-timeout says otherwise.
    static int defaultTimeoutSeconds();

    /// The plugins of the command line, in order, each with the --plugin-out and --plugin-opt
    /// options that follow it up to the next --plugin. False with `error` set on bad usage.
    static bool fromCommandLine(const QCommandLineParser &cmd, QList<Plugin> *plugins, QString *error);

    /// Where a command is found: a name with a "/" as it is; a plain name beside zatgen first,
    /// then on PATH. Empty when there is no such executable.
    static QString locate(const QString &command);

    /// Runs the plugin on the tree read from `input`; afterwards `files` holds what it made.
    /// False when it failed; errorMessage() says why.
    bool run(const Item *root, const QString &input, int timeoutMs);

    /// "plugin <command>: <reason>"; empty after success.
    QString errorMessage() const;

    /// One file the plugin made: its name in the response and its path under the output
    /// directory.
    struct File {
        QString name;
        QString path;
        QByteArray content;
    };

    QString command; ///< as given to --plugin
    QString outputDirectory; ///< as given to --plugin-out
    QList<QPair<QString, QString>> options; ///< the --plugin-opt pairs in order
    QList<File> files;
    QString failure; ///< why the last run failed

private:
    QByteArray request(const Item *root, const QString &input) const;
    bool readResponse(const QByteArray &response);
    /// Whether `path` stays inside the output directory, also through symbolic links that
    /// exist already.
    bool staysInside(const QString &path) const;
};

} // namespace ZAT16

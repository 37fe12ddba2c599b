// Writes the seed inputs of fuzz_paste: every item of the given definitions files copied as the
// editor copies it (EditorModel::copy), once as its "text/xml" data and once as its text, each
// behind a selector byte that spreads the seeds over the kinds of target rows and the columns.
//
// Usage: fuzz_pasteseeds OUTPUT-FOLDER FILE.zatdef...

#include "editormodel.h"
#include "fuzzchecks.h"
#include "parser.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QMimeData>
#include <QUndoStack>

#include <cstdio>
#include <memory>

using namespace ZAT16;

namespace {

int written = 0;

void writeSeed(const QString &folder, const QByteArray &bytes)
{
    const QString name = QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Sha1).toHex());
    QFile file(folder + QLatin1Char('/') + name);
    if (file.exists())
        return;
    if (file.open(QIODevice::WriteOnly))
        written += file.write(bytes) == bytes.size();
}

void copyAll(EditorModel &model, const QModelIndex &parent, const QString &folder)
{
    for (int row = 0; row < model.rowCount(parent); ++row) {
        const QModelIndex index = model.index(row, 0, parent);
        std::unique_ptr<QMimeData> mime(model.copy(index));
        if (mime) {
            const auto target = FuzzChecks::PasteRow(written % FuzzChecks::PasteRowCount);
            const QByteArray xml = mime->data(QStringLiteral("text/xml"));
            if (!xml.isEmpty())
                writeSeed(folder, FuzzChecks::pasteSelector(FuzzChecks::PasteXml, target, 0) + xml);
            const QByteArray text = mime->text().toUtf8();
            writeSeed(folder, FuzzChecks::pasteSelector(FuzzChecks::PasteText, target, written % 3) + text);
        }
        copyAll(model, index, folder);
    }
}

} // namespace

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.size() < 2) {
        std::fprintf(stderr, "usage: fuzz_pasteseeds OUTPUT-FOLDER FILE.zatdef...\n");
        return 2;
    }
    const QString folder = args.at(1);
    QDir().mkpath(folder);
    for (int i = 2; i < args.size(); ++i) {
        Parser parser;
        if (!parser.parse(args.at(i)))
            continue; // files that do not load have nothing to copy
        EditorModel model;
        QUndoStack stack;
        model.setUndoStack(&stack);
        model.setTags(parser.takeRoot());
        copyAll(model, QModelIndex(), folder);
    }
    std::printf("fuzz_pasteseeds: %d seeds in %s\n", written, qPrintable(folder));
    return 0;
}

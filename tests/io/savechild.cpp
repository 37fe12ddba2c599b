// Saves definitions over one file with the save sequence, for the tests that kill a save or run
// several at once.
//
// savechild PATH FIRST SECOND: loads the trees from FIRST and SECOND, then saves whichever the
// file at PATH does not hold yet, forever, until it is killed.
// savechild --times N PATH TREE: loads the tree from TREE, prints "ready", waits for a line on
// standard input and then saves the tree over PATH N times.

#include "item.h"
#include "parser.h"
#include "savesequence.h"
#include "writerxml.h"

#include <QCoreApplication>
#include <QFile>

#include <cstdio>
#include <memory>

namespace {

std::unique_ptr<ZAT16::Item> load(const char *path)
{
    ZAT16::Parser parser;
    if (!parser.parse(QString::fromLocal8Bit(path)))
        return nullptr;
    return std::unique_ptr<ZAT16::Item>(parser.takeRoot());
}

void ready()
{
    std::printf("ready\n");
    std::fflush(stdout);
}

int saveTimes(int times, const QString &path, const ZAT16::Item *tree)
{
    ready();
    char line[16];
    if (!std::fgets(line, sizeof line, stdin))
        return 5;
    for (int i = 0; i < times; ++i) {
        ZAT16::SaveSequence sequence(path);
        if (!sequence.run(tree)) {
            std::printf("%s\n", qPrintable(sequence.errorMessage()));
            return 4;
        }
    }
    return 0;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    if (argc == 5 && QByteArray(argv[1]) == "--times") {
        const std::unique_ptr<ZAT16::Item> tree = load(argv[4]);
        if (!tree)
            return 3;
        return saveTimes(QByteArray(argv[2]).toInt(), QString::fromLocal8Bit(argv[3]), tree.get());
    }
    if (argc != 4)
        return 2;
    std::unique_ptr<ZAT16::Item> trees[2];
    QByteArray encoded[2];
    for (int i = 0; i < 2; ++i) {
        trees[i] = load(argv[2 + i]);
        if (!trees[i])
            return 3;
        ZAT16::WriterXml writer;
        encoded[i] = writer.encode(trees[i].get());
    }
    const QString path = QString::fromLocal8Bit(argv[1]);
    QFile current(path);
    int next = current.open(QIODevice::ReadOnly) && current.readAll() == encoded[0] ? 1 : 0;
    current.close();
    ready();
    for (;;) {
        ZAT16::SaveSequence sequence(path);
        if (!sequence.run(trees[next].get()))
            return 4;
        next = 1 - next;
    }
}

// Saves definitions over one file again and again with the save sequence, alternating between
// two trees, until it is killed. The crash test kills it at random moments.
//
// savechild PATH FIRST SECOND: loads the trees from FIRST and SECOND, then saves whichever the
// file at PATH does not hold yet, forever.

#include "item.h"
#include "parser.h"
#include "savesequence.h"
#include "writerxml.h"

#include <QCoreApplication>
#include <QFile>

#include <cstdio>
#include <memory>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    if (argc != 4)
        return 2;
    std::unique_ptr<ZAT16::Item> trees[2];
    QByteArray encoded[2];
    for (int i = 0; i < 2; ++i) {
        ZAT16::Parser parser;
        if (!parser.parse(QString::fromLocal8Bit(argv[2 + i])))
            return 3;
        trees[i].reset(parser.takeRoot());
        ZAT16::WriterXml writer;
        encoded[i] = writer.encode(trees[i].get());
    }
    const QString path = QString::fromLocal8Bit(argv[1]);
    QFile current(path);
    int next = current.open(QIODevice::ReadOnly) && current.readAll() == encoded[0] ? 1 : 0;
    current.close();
    std::printf("ready\n");
    std::fflush(stdout);
    for (;;) {
        ZAT16::SaveSequence sequence(path);
        if (!sequence.run(trees[next].get()))
            return 4;
        next = 1 - next;
    }
}

// zatoutputs: writes the CMake package's script from its template, with the keywords of
// zat16_generate() taken from the table of outputs that zatgen and the editor use, so that a
// new output is known to the CMake function without a second list. Run by the build only.
//   zatoutputs TEMPLATE DESTINATION

#include "outputs.h"

#include <QFile>
#include <QStringList>

#include <cstdio>

int main(int argc, char *argv[])
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: zatoutputs TEMPLATE DESTINATION\n");
        return 2;
    }
    QStringList keywords;
    for (int kind = 0; kind < ZAT16::Outputs::KindCount; ++kind) {
        // --cpp-lut is CPP_LUT
        QString keyword = QString::fromLatin1(ZAT16::Outputs::output(ZAT16::Outputs::Kind(kind)).option).toUpper();
        keywords.append(keyword.replace(QLatin1Char('-'), QLatin1Char('_')));
    }

    QFile in(QString::fromLocal8Bit(argv[1]));
    if (!in.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "zatoutputs: %s: %s\n", argv[1], qPrintable(in.errorString()));
        return 1;
    }
    QByteArray text = in.readAll();
    text.replace("@ZAT16_OUTPUT_KINDS@", keywords.join(QLatin1Char(' ')).toLatin1());
    QFile out(QString::fromLocal8Bit(argv[2]));
    if (!out.open(QIODevice::WriteOnly | QIODevice::Truncate) || out.write(text) != text.size() || !out.flush()) {
        std::fprintf(stderr, "zatoutputs: %s: %s\n", argv[2], qPrintable(out.errorString()));
        return 1;
    }
    return 0;
}

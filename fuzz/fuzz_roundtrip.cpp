// libFuzzer target: whatever loads is saved (A), loaded and saved again (B), and once more (C).
// A save that the read-back check refuses ends the trip, as the save sequence then writes
// nothing; such refusals are counted by kind. Otherwise A must load, B must pass the check, load
// and equal C: once a file has been saved, saving it again changes nothing. That a
// first save changes the file (A differs from B) is counted by kind and not treated as a crash,
// unless ZAT16_FUZZ_STRICT=1, or ZAT16_FUZZ_STRICT_KIND=<text> for the kinds whose description
// contains that text (to minimise an example of one kind with -minimize_crash=1).
//
// With ZAT16_FUZZ_LOSSES=<folder> the shortest input of every kind of A/B difference is kept
// there (<key>.zatdef, with <key>.txt describing it; the key is derived from the kind), and each
// fuzzing process counts the kinds it saw in counts-<pid>.txt ("count<TAB>kind" lines), so that
// the processes of a -fork run can be added up. The counts are also printed when a process ends.

#include "fuzzchecks.h"
#include "fuzztarget.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QList>
#include <QRegularExpression>

#include <algorithm>

namespace {

QHash<QString, quint64> counts;
QString lossFolder;
bool strict = false;
QString strictKind;
quint64 runs = 0;

QString countsText()
{
    QList<QString> kinds = counts.keys();
    std::sort(kinds.begin(), kinds.end(), [](const QString &a, const QString &b) {
        return counts.value(a) > counts.value(b);
    });
    QString text;
    for (const QString &kind : kinds)
        text += QString::number(counts.value(kind)) + QLatin1Char('\t') + kind + QLatin1Char('\n');
    return text;
}

void writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        file.write(bytes);
}

void writeCounts()
{
    if (!lossFolder.isEmpty())
        writeFile(lossFolder + QStringLiteral("/counts-%1.txt").arg(QCoreApplication::applicationPid()),
                  countsText().toUtf8());
}

void record(const QByteArray &data, const FuzzChecks::RoundTrip &result)
{
    quint64 &count = counts[result.lossKind];
    if (++count == 1)
        std::fprintf(stderr, "roundtrip: new kind of A/B difference: %s\n", qPrintable(result.lossKind));
    if (lossFolder.isEmpty())
        return;
    const QString key = QString::fromLatin1(
        QCryptographicHash::hash(result.lossKind.toUtf8(), QCryptographicHash::Sha1).toHex().left(10));
    const QString base = lossFolder + QLatin1Char('/') + key;
    const QFileInfo example(base + QStringLiteral(".zatdef"));
    if (!example.exists() || example.size() > data.size()) {
        writeFile(base + QStringLiteral(".zatdef"), data);
        writeFile(base + QStringLiteral(".txt"),
                  (result.lossKind + QStringLiteral("\n\n") + result.loss + QLatin1Char('\n')).toUtf8());
    }
    if ((count & (count - 1)) == 0)
        writeCounts();
}

void printCounts()
{
    writeCounts();
    if (!counts.isEmpty()) {
        std::fprintf(stderr, "roundtrip: %llu inputs; kinds of A/B difference:\n%s", runs, qPrintable(countsText()));
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    FuzzTarget::quietQt();
    strict = FuzzTarget::envFlag("ZAT16_FUZZ_STRICT");
    strictKind = qEnvironmentVariable("ZAT16_FUZZ_STRICT_KIND");
    lossFolder = qEnvironmentVariable("ZAT16_FUZZ_LOSSES");
    if (!lossFolder.isEmpty())
        QDir().mkpath(lossFolder);
    std::atexit(printCounts);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes = FuzzTarget::input(data, size);
    const FuzzChecks::RoundTrip result = FuzzChecks::roundTrip(bytes);
    ++runs;
    FuzzTarget::failIf(result.failure);
    if (!result.refused.isEmpty()) {
        // Counted by kind like the differences: the texts without the names and numbers.
        static const QRegularExpression values(QStringLiteral("\"[^\"]*\"|0x[0-9A-F]+|\\b[0-9]+\\b"));
        FuzzChecks::RoundTrip refusal;
        refusal.lossKind
            = QStringLiteral("save refused: ") + QString(result.refused).replace(values, QStringLiteral("_"));
        refusal.loss = result.refused;
        record(QByteArray(bytes.constData(), bytes.size()), refusal);
        return 0;
    }
    if (!result.loss.isEmpty()) {
        record(QByteArray(bytes.constData(), bytes.size()), result);
        if (strict || (!strictKind.isEmpty() && result.lossKind.contains(strictKind)))
            FuzzTarget::failIf(QStringLiteral("A and B differ: ") + result.loss);
    }
    return 0;
}

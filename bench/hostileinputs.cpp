#include "hostileinputs.h"

#include "benchrunner.h"

#include "item.h"
#include "parser.h"

#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QXmlStreamReader>

#include <cstdio>
#include <cstdlib>
#include <memory>

#include <sys/resource.h>

namespace {

// `unit` repeated between `head` and `tail` until the whole is about `bytes` long.
QByteArray repeated(const QByteArray &head, const QByteArray &unit, const QByteArray &tail, qint64 bytes)
{
    const qint64 count = qMax<qint64>(1, (bytes - head.size() - tail.size()) / unit.size());
    QByteArray text;
    text.reserve(head.size() + count * unit.size() + tail.size());
    text += head;
    for (qint64 i = 0; i < count; ++i)
        text += unit;
    text += tail;
    return text;
}

struct Shape {
    const char *name;
    const char *description;
    bool refused = false; ///< the input guard stops it: a bare reader would take minutes or gigabytes
};

const Shape shapeTable[] = {
    { "empty-tags", "<tag/> after <tag/>: the smallest element that becomes an item" },
    { "empty-comments", "<!----> after <!---->: the smallest comment that becomes an item" },
    { "duplicate-values", "<enum id=\"1\"/> in one list: a warning for each" },
    { "nameless-tags", "<tag id=\"0x1001\"/>: a double tag code and name warning for each" },
    { "unknown-elements", "<x/> after <x/>: skipped with a warning each" },
    { "blank-lines", "empty lines between tags" },
    { "huge-comment", "one comment of the whole size" },
    { "huge-attribute", "one tag comment of the whole size" },
    { "deep-nesting", "lists nested 100 deep, again and again" },
    { "attlist-default", "a 1 MB default attribute value declared for every tag", true },
    { "many-attributes", "one element with an attribute for every 12 bytes", true },
};

// Processor time of the process so far, in milliseconds.
double cpuMs()
{
    struct rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    return (usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * 1000.0
        + (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1000.0;
}

} // namespace

QStringList HostileInputs::shapes()
{
    QStringList names;
    for (const Shape &shape : shapeTable)
        names << QString::fromLatin1(shape.name);
    return names;
}

QByteArray HostileInputs::make(const QString &shape, qint64 bytes)
{
    const QByteArray root = "<zat16>\n";
    const QByteArray end = "</zat16>\n";
    if (shape == QLatin1String("empty-tags"))
        return repeated(root, "<tag/>", end, bytes);
    if (shape == QLatin1String("empty-comments"))
        return repeated(root, "<!---->", end, bytes);
    if (shape == QLatin1String("duplicate-values"))
        return repeated(root + "<tag name=\"T\" id=\"0x1001\"><enums>",
                        "<enum id=\"1\"/>",
                        "</enums></tag>" + end,
                        bytes);
    if (shape == QLatin1String("nameless-tags"))
        return repeated(root, "<tag id=\"0x1001\"/>", end, bytes);
    if (shape == QLatin1String("unknown-elements"))
        return repeated(root, "<x/>", end, bytes);
    if (shape == QLatin1String("blank-lines"))
        return repeated(root + "<tag name=\"A\"/>", "\n\n<tag/>", end, bytes);
    if (shape == QLatin1String("huge-comment"))
        return repeated(root + "<!--", "x", "-->" + end, bytes);
    if (shape == QLatin1String("huge-attribute"))
        return repeated(root + "<tag name=\"A\" comment=\"", "x", "\"/>" + end, bytes);
    if (shape == QLatin1String("deep-nesting")) {
        QByteArray unit = "<tag>";
        for (int i = 0; i < 98; ++i)
            unit += "<enums>";
        for (int i = 0; i < 98; ++i)
            unit += "</enums>";
        unit += "</tag>";
        return repeated(root, unit, end, bytes);
    }
    if (shape == QLatin1String("attlist-default"))
        return repeated("<!DOCTYPE zat16 [<!ATTLIST tag comment CDATA \"" + QByteArray(1 << 20, 'x') + "\">]>" + root,
                        "<tag/>",
                        end,
                        bytes);
    if (shape == QLatin1String("many-attributes")) {
        QByteArray text = root + "<tag";
        const qint64 count = bytes / 12;
        for (qint64 i = 0; i < count; ++i)
            text += " a" + QByteArray::number(i, 36).rightJustified(5, '0') + "=\"1\"";
        return text + "/>" + end;
    }
    return QByteArray();
}

int HostileInputs::child(const QString &path, bool anchored)
{
    // The floor: a bare reader over the same file, touching every token.
    double anchor = -1;
    if (anchored) {
        QFile file(path);
        file.open(QIODevice::ReadOnly);
        const double start = cpuMs();
        QXmlStreamReader reader(&file);
        qint64 tokens = 0;
        while (!reader.atEnd()) {
            reader.readNext();
            tokens += reader.name().size() + reader.attributes().size();
        }
        anchor = cpuMs() - start + (tokens < 0 ? 1 : 0);
    }
    const qint64 peakBefore = BenchRunner::statusKiB("VmHWM");
    const double start = cpuMs();
    ZAT16::Parser parser;
    const bool ok = parser.parse(path);
    const double ms = cpuMs() - start;
    const qint64 peakAfter = BenchRunner::statusKiB("VmHWM");
    std::printf("READ %.0f %lld %d %lld %.0f\n",
                ms,
                peakAfter - peakBefore,
                ok ? 1 : 0,
                qint64(parser.warnings.size()),
                anchor);
    std::fflush(stdout);
    // The tree is left to the end of the process: freeing it would only cost time.
    std::_Exit(0);
}

int HostileInputs::run(const QString &program, int megabytes)
{
    QTemporaryDir dir;
    if (!dir.isValid())
        return 1;
    const qint64 bytes = qint64(megabytes) * 1000 * 1000;
    const double scale = 100.0 / megabytes;
    std::printf("Reading %d MB of hostile input, a child process each: processor time of a bare QXmlStreamReader\n"
                "(anchor) and of the parser, the parser's peak memory growth\n\n",
                megabytes);
    std::printf("%-18s %9s %9s %9s %6s %11s  %s\n", "shape", "anchor ms", "ms", "MiB", "read", "warn bytes", "what");
    struct Result {
        QString shape;
        double ms;
        double mib;
    };
    QList<Result> results;
    bool failed = false;
    for (const Shape &shape : shapeTable) {
        const QString path = dir.filePath(QString::fromLatin1(shape.name));
        {
            QFile file(path);
            if (!file.open(QIODevice::WriteOnly) || file.write(make(QString::fromLatin1(shape.name), bytes)) < 0)
                return 1;
        }
        QProcess reader;
        reader.start(program,
                     { QStringLiteral("--hostile-child"),
                       path,
                       shape.refused ? QStringLiteral("bare") : QStringLiteral("anchored") });
        if (!reader.waitForFinished(600000) || reader.exitStatus() != QProcess::NormalExit) {
            std::printf("%-18s did not finish\n", shape.name);
            failed = true;
            continue;
        }
        const QList<QByteArray> fields = reader.readAllStandardOutput().trimmed().split(' ');
        QFile::remove(path);
        if (fields.size() != 6 || fields.at(0) != "READ") {
            std::printf("%-18s gave no figures\n", shape.name);
            failed = true;
            continue;
        }
        const double ms = fields.at(1).toDouble();
        const double mib = fields.at(2).toDouble() / 1024.0;
        std::printf("%-18s %9s %9.0f %9.1f %6s %11lld  %s\n",
                    shape.name,
                    shape.refused ? "-" : qPrintable(QString::number(fields.at(5).toDouble(), 'f', 0)),
                    ms,
                    mib,
                    fields.at(3) == "1" ? "yes" : "no",
                    fields.at(4).toLongLong(),
                    shape.description);
        results.append({ QString::fromLatin1(shape.name), ms, mib });
    }
    if (megabytes >= 100) {
        std::printf("\n");
        for (const Result &result : std::as_const(results)) {
            const double seconds = result.ms * scale / 1000.0;
            const double gib = result.mib * scale / 1024.0;
            std::printf("GOAL hostile %s: seconds per 100 MB %.2f 2 %s\n",
                        qPrintable(result.shape),
                        seconds,
                        seconds <= 2.0 ? "PASS" : "FAIL");
            std::printf("GOAL hostile %s: GiB per 100 MB %.2f 1 %s\n",
                        qPrintable(result.shape),
                        gib,
                        gib <= 1.0 ? "PASS" : "FAIL");
        }
    }
    return failed ? 1 : 0;
}

// Unsaved changes survive the editor's end: written every interval and on SIGTERM to a recovery
// file, offered at the next start, and gone once they are saved or dropped. The kill and the
// SIGTERM happen to this executable run again with --child, an editor with edits of its own.

#include "editormodel.h"
#include "editorwindow.h"
#include "filedialog.h"
#include "item.h"
#include "modal.h"
#include "recovery.h"
#include "testfiles.h"
#include "ui_editorwindow.h"
#include "writerxml.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QLocale>
#include <QProcess>
#include <QPushButton>
#include <QRegularExpression>
#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QTextEdit>
#include <QUndoStack>

#include <cstdio>
#include <cstring>
#include <memory>

using namespace ZAT16;

namespace {

using TestFiles::readFile;
using TestFiles::writeFile;

const QByteArray defs = "<?xml version=\"1.0\" encoding=\"UTF-8\"?> <!-- -*- nxml -*- -->\n"
                        "<zat16>\n"
                        "  <tag name=\"Power\" id=\"0x2001\"/>\n"
                        "  <tag name=\"Mode\" id=\"0x1002\">\n"
                        "    <enums>\n"
                        "      <enum name=\"Off\" id=\"0\"/>\n"
                        "      <enum name=\"On\" id=\"1\"/>\n"
                        "    </enums>\n"
                        "  </tag>\n"
                        "</zat16>\n";

// What the edits of edit() make of `defs`, as a save writes it: written down here, not taken from
// the writer, so that the recovered tree is checked against the edits themselves.
const QByteArray edited = "<?xml version=\"1.0\" encoding=\"UTF-8\"?> <!-- -*- nxml -*- -->\n"
                          "<zat16>\n"
                          "  <tag name=\"PowerOn\" id=\"0x2001\"/>\n"
                          "  <tag name=\"Mode\" id=\"0x1002\" comment=\"set by the user\">\n"
                          "    <enums>\n"
                          "      <enum name=\"Off\" id=\"0\"/>\n"
                          "      <enum name=\"On\" id=\"1\"/>\n"
                          "    </enums>\n"
                          "  </tag>\n"
                          "</zat16>\n";

const QString title = QStringLiteral("defs.zatdef * [ZAT16 tag editor]");

void useTestSettings()
{
    QStandardPaths::setTestModeEnabled(true);
    QCoreApplication::setOrganizationName(QStringLiteral("zatedit-tests"));
    QCoreApplication::setApplicationName(QStringLiteral("tst_recovery"));
}

// Where the recovery files are expected, worked out here rather than asked from Recovery.
QString recoveryFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) + QStringLiteral("/recovery");
}

// Everything in the recovery folder: recovery files, their locks, anything else.
QStringList folderEntries()
{
    const QDir::Filters all = QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System;
    return QDir(recoveryFolder()).entryList(all, QDir::Name);
}

QStringList recoveryFiles()
{
    return QDir(recoveryFolder()).entryList({ QStringLiteral("*.recovery") }, QDir::Files | QDir::Hidden, QDir::Name);
}

QByteArray encode(const Item *root)
{
    WriterXml writer;
    return writer.encode(root);
}

// A recovery file as its format is written down: three header lines, an empty line, the text.
struct RecoveryFile {
    bool valid = false;
    QString document;
    QDateTime written;
    QByteArray text;
};

RecoveryFile readRecovery(const QString &name)
{
    static const QRegularExpression header(QStringLiteral(
        "^zatedit recovery 1\ndocument: ([^\n]*)\nwritten: (\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{3}Z)\n\n"));
    const QByteArray bytes = readFile(recoveryFolder() + QLatin1Char('/') + name);
    const QString start = QString::fromUtf8(bytes.left(4096));
    const QRegularExpressionMatch match = header.match(start);
    RecoveryFile file;
    if (!match.hasMatch())
        return file;
    file.valid = true;
    file.document = match.captured(1);
    file.written = QDateTime::fromString(match.captured(2), Qt::ISODateWithMs);
    file.text = bytes.mid(match.captured(0).toUtf8().size());
    return file;
}

QString question(const QString &document, const QDateTime &written)
{
    const QString time = QLocale().toString(written.toLocalTime(), QLocale::ShortFormat);
    if (document.isEmpty())
        return QStringLiteral("Recover unsaved changes to a document without a name from %1?").arg(time);
    return QStringLiteral("Recover unsaved changes to %1 from %2?").arg(document, time);
}

// The edits of a session: a tag renamed, a comment given to another.
bool edit(EditorModel *model)
{
    return model->setData(model->index(0, 0), QStringLiteral("PowerOn"), Qt::EditRole)
        && model->setData(model->index(1, 2), QStringLiteral("set by the user"), Qt::EditRole);
}

// The child: an editor on `path` with the edits made. It prints what a save would write (base64,
// one line) and runs until it is killed or terminated. "kill" writes its recovery file every
// 50 ms; "term" keeps the default interval, and handles SIGTERM as zatedit's main() does.
int child(const QByteArray &how, const QString &path)
{
    auto *window = new EditorWindow;
    window->initialize(path, QString());
    if (how == "kill")
        window->recovery()->setInterval(50);
    else
        Recovery::onTermination(window, [window]() { window->terminate(); });
    if (!edit(window->model())) {
        std::printf("edits refused\n");
        return 1;
    }
    window->show();
    std::printf("%s\n", encode(window->model()->root()).toBase64().constData());
    std::fflush(stdout);
    const int result = QApplication::exec();
    delete window;
    return result;
}

// Starts a child and reads what it would save; false when it did not get that far.
bool startChild(QProcess &process, const char *how, const QString &path, QByteArray *unsaved)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    process.setProcessEnvironment(environment);
    process.start(QCoreApplication::applicationFilePath(),
                  { QStringLiteral("--child"), QString::fromLatin1(how), path });
    if (!process.waitForStarted())
        return false;
    while (!process.canReadLine()) {
        if (!process.waitForReadyRead(60000))
            return false;
    }
    *unsaved = QByteArray::fromBase64(process.readLine().trimmed());
    return true;
}

// Types a file name into a file dialog the way a user would, in the file's own directory.
} // namespace

// Helpers that check as they go; a failure there ends the calling test too.
#define CHECKED(call)                                                                                                  \
    do {                                                                                                               \
        call;                                                                                                          \
        if (QTest::currentTestFailed())                                                                                \
            return;                                                                                                    \
    } while (false)

class TestRecovery : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir *m_dir = nullptr;
    QString m_path;
    QList<EditorWindow *> m_windows;

    // A window on `path` (the test file when empty) that writes its recovery file every 20 ms.
    // With `asked`, a box that comes up while the window starts is closed and counted there.
    EditorWindow *startWindow(const QString &path, bool *asked = nullptr)
    {
        if (asked) {
            *asked = false;
            TestModal::onNextModal([asked](QWidget *w) {
                *asked = true;
                w->close();
            });
        }
        auto *window = new EditorWindow;
        m_windows.append(window);
        window->recovery()->setInterval(20);
        window->initialize(path, QString());
        if (asked)
            TestModal::cancelAll();
        return window;
    }

    EditorWindow *startEditedWindow()
    {
        EditorWindow *window = startWindow(m_path);
        if (!edit(window->model()))
            return nullptr;
        return window;
    }

    void closeWithoutAsking(EditorWindow *window)
    {
        m_windows.removeOne(window);
        window->undoStack()->setClean();
        delete window;
    }

    // What an editor that crashed leaves: a recovery file of the edited test file, and no lock
    // (the window goes without being closed, as the process would).
    void leaveRecoveryFile()
    {
        EditorWindow *window = startEditedWindow();
        QVERIFY(window);
        QTRY_COMPARE(recoveryFiles().size(), 1);
        QCOMPARE(readRecovery(recoveryFiles().constFirst()).text, edited);
        m_windows.removeOne(window);
        delete window;
        QCOMPARE(folderEntries(), recoveryFiles());
    }

private slots:
    void init()
    {
        QSettings().clear();
        QFile::remove(recoveryFolder());
        QDir(recoveryFolder()).removeRecursively();
        m_dir = new QTemporaryDir;
        QVERIFY(m_dir->isValid());
        m_path = m_dir->filePath(QStringLiteral("defs.zatdef"));
        QVERIFY(writeFile(m_path, defs));
    }

    void cleanup()
    {
        TestModal::cancelAll();
        for (EditorWindow *window : std::as_const(m_windows)) {
            window->undoStack()->setClean();
            delete window;
        }
        m_windows.clear();
        delete m_dir;
        m_dir = nullptr;
    }

    // End to end: an editor killed with SIGKILL leaves its last interval's changes, which the
    // next start offers and takes up as unsaved changes to the same file.
    void killedEditorsChangesAreOffered()
    {
        QProcess process;
        QByteArray unsaved;
        QVERIFY(startChild(process, "kill", m_path, &unsaved));
        QCOMPARE(unsaved, edited);
        QTRY_COMPARE_WITH_TIMEOUT(recoveryFiles().size(), 1, 30000);
        process.kill();
        QVERIFY(process.waitForFinished(30000));
        QCOMPARE(process.exitStatus(), QProcess::CrashExit);

        const QString name = recoveryFiles().constFirst();
        QVERIFY2(QRegularExpression(QStringLiteral("^[0-9a-f]{16}-defs\\.zatdef\\.recovery$")).match(name).hasMatch(),
                 qPrintable(name));
        const RecoveryFile file = readRecovery(name);
        QVERIFY(file.valid);
        QCOMPARE(file.document, m_path);
        QCOMPARE(file.text, edited);
        QVERIFY(file.written <= QDateTime::currentDateTimeUtc());
        QVERIFY(file.written >= QFileInfo(m_path).lastModified());
        // The file itself was not touched.
        QCOMPARE(readFile(m_path), defs);

        QString text;
        QString boxTitle;
        bool yesIsDefault = false;
        TestModal::onNextModalOf<QMessageBox>([&](QWidget *w) {
            auto *box = qobject_cast<QMessageBox *>(w);
            text = box->text();
            boxTitle = box->windowTitle();
            // asserted after the box is answered, so that a failure does not leave it open
            yesIsDefault = static_cast<QAbstractButton *>(box->defaultButton()) == box->button(QMessageBox::Yes);
            box->button(QMessageBox::Yes)->click();
        });
        EditorWindow *window = startWindow(m_path);
        QVERIFY(yesIsDefault);
        QCOMPARE(text, question(m_path, file.written));
        QCOMPARE(boxTitle, QStringLiteral("[ZAT16 tag editor]"));
        QCOMPARE(encode(window->model()->root()), edited);
        QCOMPARE(window->windowTitle(), title);
        QCOMPARE(window->fileName(), m_path);
        QVERIFY(!window->undoStack()->isClean());

        // The file's version is one undo away.
        window->undoStack()->undo();
        QCOMPARE(encode(window->model()->root()), defs);
        window->undoStack()->redo();
        QTRY_COMPARE(readRecovery(name).text, edited);

        QVERIFY(window->onSave());
        QCOMPARE(readFile(m_path), edited);
        QCOMPARE(folderEntries(), QStringList());
    }

    // SIGTERM before the first interval is over: the changes are written on the way out, and the
    // editor ends without asking.
    void terminatedEditorKeepsChanges()
    {
        QProcess process;
        QByteArray unsaved;
        QVERIFY(startChild(process, "term", m_path, &unsaved));
        QCOMPARE(unsaved, edited);
        QCOMPARE(recoveryFiles(), QStringList());
        process.terminate();
        QVERIFY(process.waitForFinished(30000));
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.exitCode(), 0);
        QCOMPARE(process.readAllStandardOutput(), QByteArray());

        QCOMPARE(recoveryFiles().size(), 1);
        // The lock went with the process.
        QCOMPARE(folderEntries(), recoveryFiles());
        const RecoveryFile file = readRecovery(recoveryFiles().constFirst());
        QVERIFY(file.valid);
        QCOMPARE(file.document, m_path);
        QCOMPARE(file.text, edited);

        TestModal::answerMessageBox(QMessageBox::Yes);
        EditorWindow *window = startWindow(m_path);
        QCOMPARE(encode(window->model()->root()), edited);
        QCOMPARE(window->windowTitle(), title);
    }

    void laterChangesAreWrittenToo()
    {
        EditorWindow *window = startEditedWindow();
        QVERIFY(window);
        QTRY_COMPARE(recoveryFiles().size(), 1);
        const QString name = recoveryFiles().constFirst();
        QTRY_COMPARE(readRecovery(name).text, edited);
        QVERIFY(window->model()->setData(window->model()->index(0, 0), QStringLiteral("PowerOff"), Qt::EditRole));
        QByteArray again = edited;
        again.replace("PowerOn", "PowerOff");
        QTRY_COMPARE(readRecovery(name).text, again);
        QCOMPARE(recoveryFiles(), QStringList({ name }));
    }

    void saveRemovesIt()
    {
        EditorWindow *window = startEditedWindow();
        QVERIFY(window);
        QTRY_COMPARE(recoveryFiles().size(), 1);
        QVERIFY(window->onSave());
        QCOMPARE(folderEntries(), QStringList());
        QCOMPARE(readFile(m_path), edited);
    }

    void discardRemovesIt()
    {
        EditorWindow *window = startEditedWindow();
        QVERIFY(window);
        QTRY_COMPARE(recoveryFiles().size(), 1);
        QString text;
        TestModal::answerMessageBox(QMessageBox::Discard, &text);
        QVERIFY(window->canDiscard());
        QCOMPARE(text, QStringLiteral("There are unsaved changes. What do you want to do?"));
        QCOMPARE(folderEntries(), QStringList());
        // The next change is kept again.
        QVERIFY(window->model()->setData(window->model()->index(0, 0), QStringLiteral("PowerOff"), Qt::EditRole));
        QTRY_COMPARE(recoveryFiles().size(), 1);
    }

    void closeRemovesIt_data()
    {
        QTest::addColumn<int>("answer");
        QTest::addColumn<QByteArray>("file");
        QTest::newRow("save") << int(QMessageBox::Save) << edited;
        QTest::newRow("discard") << int(QMessageBox::Discard) << defs;
    }

    void closeRemovesIt()
    {
        QFETCH(int, answer);
        QFETCH(QByteArray, file);
        EditorWindow *window = startEditedWindow();
        QVERIFY(window);
        window->show();
        QTRY_COMPARE(recoveryFiles().size(), 1);
        TestModal::answerMessageBox(QMessageBox::StandardButton(answer));
        QVERIFY(window->close());
        QCOMPARE(folderEntries(), QStringList());
        QCOMPARE(readFile(m_path), file);
        // A closed window writes nothing more, though its changes were dropped, not saved.
        QTest::qWait(200);
        QCOMPARE(folderEntries(), QStringList());
    }

    void undoingBackToCleanRemovesIt()
    {
        EditorWindow *window = startEditedWindow();
        QVERIFY(window);
        QTRY_COMPARE(recoveryFiles().size(), 1);
        window->undoStack()->undo();
        QCOMPARE(recoveryFiles().size(), 1);
        window->undoStack()->undo();
        QCOMPARE(folderEntries(), QStringList());
        window->undoStack()->redo();
        QTRY_COMPARE(recoveryFiles().size(), 1);
        QByteArray renamed = defs;
        renamed.replace("\"Power\"", "\"PowerOn\"");
        QTRY_COMPARE(readRecovery(recoveryFiles().constFirst()).text, renamed);
    }

    void noRemovesIt()
    {
        CHECKED(leaveRecoveryFile());
        const RecoveryFile file = readRecovery(recoveryFiles().constFirst());
        QString text;
        TestModal::answerMessageBox(QMessageBox::No, &text);
        EditorWindow *window = startWindow(m_path);
        QCOMPARE(text, question(m_path, file.written));
        QCOMPARE(folderEntries(), QStringList());
        QCOMPARE(encode(window->model()->root()), defs);
        QVERIFY(window->undoStack()->isClean());
        QCOMPARE(window->windowTitle(), QStringLiteral("defs.zatdef [ZAT16 tag editor]"));
    }

    // The file was saved (by another program, or another editor) after the changes were kept.
    void olderThanTheDocumentIsNotOffered()
    {
        CHECKED(leaveRecoveryFile());
        const QStringList left = recoveryFiles();
        {
            QFile file(m_path);
            QVERIFY(file.open(QIODevice::ReadWrite));
            QVERIFY(file.setFileTime(QDateTime::currentDateTime().addSecs(3600), QFileDevice::FileModificationTime));
        }
        bool asked = true;
        EditorWindow *window = startWindow(m_path, &asked);
        QVERIFY(!asked);
        QCOMPARE(encode(window->model()->root()), defs);
        QVERIFY(window->undoStack()->isClean());
        // Not offered, and not removed either.
        QCOMPARE(recoveryFiles(), left);
    }

    // Neither the question nor the error box of a missing file: the changes come back under the
    // file's name, and saving puts the file back.
    void missingDocumentIsOffered()
    {
        CHECKED(leaveRecoveryFile());
        const RecoveryFile file = readRecovery(recoveryFiles().constFirst());
        QVERIFY(QFile::remove(m_path));
        QStringList texts;
        TestModal::onNextModalOf<QMessageBox>([&](QWidget *w) {
            auto *box = qobject_cast<QMessageBox *>(w);
            texts << box->text();
            TestModal::onNextModal(
                [&](QWidget *again) {
                    texts << qobject_cast<QMessageBox *>(again)->text();
                    again->close();
                },
                box,
                500);
            box->button(QMessageBox::Yes)->click();
        });
        EditorWindow *window = startWindow(m_path);
        QTest::qWait(600);
        QCOMPARE(texts, QStringList({ question(m_path, file.written) }));
        QCOMPARE(window->fileName(), m_path);
        QCOMPARE(window->windowTitle(), title);
        QCOMPARE(encode(window->model()->root()), edited);
        QVERIFY(window->onSave());
        QCOMPARE(readFile(m_path), edited);
        QCOMPARE(folderEntries(), QStringList());
    }

    void cleanDocumentWritesNone()
    {
        EditorWindow *window = startWindow(m_path);
        QVERIFY(!window->recovery()->write());
        QTest::qWait(200);
        QCOMPARE(folderEntries(), QStringList());
        // The same window with a change does write: the interval was long enough.
        QVERIFY(edit(window->model()));
        QTRY_COMPARE(recoveryFiles().size(), 1);
    }

    // A document without a file is kept under a name of its own, offered only at a start that
    // opens no file, and comes back without a file.
    void documentWithoutFileIsOfferedAtStartWithoutFile()
    {
        EditorWindow *first = startWindow(QString());
        QVERIFY(first->fileName().isEmpty());
        QVERIFY(first->model()->insertRow(0));
        QVERIFY(first->model()->setData(first->model()->index(0, 0), QStringLiteral("Fresh"), Qt::EditRole));
        const QByteArray unsaved = encode(first->model()->root());
        QTRY_COMPARE(recoveryFiles().size(), 1);
        const QString name = recoveryFiles().constFirst();
        QVERIFY2(QRegularExpression(
                     QStringLiteral("^unnamed-%1-\\d{8}T\\d{9}\\.recovery$").arg(QCoreApplication::applicationPid()))
                     .match(name)
                     .hasMatch(),
                 qPrintable(name));
        QTRY_COMPARE(readRecovery(name).text, unsaved);
        const RecoveryFile file = readRecovery(name);
        QCOMPARE(file.document, QString());
        m_windows.removeOne(first);
        delete first;

        bool asked = true;
        startWindow(m_path, &asked);
        QVERIFY(!asked);
        QCOMPARE(recoveryFiles(), QStringList({ name }));

        QString text;
        TestModal::answerMessageBox(QMessageBox::Yes, &text);
        EditorWindow *window = startWindow(QString());
        QCOMPARE(text, question(QString(), file.written));
        QCOMPARE(encode(window->model()->root()), unsaved);
        QVERIFY(window->fileName().isEmpty());
        QCOMPARE(window->windowTitle(), QStringLiteral("* [ZAT16 tag editor]"));
        QCOMPARE(recoveryFiles(), QStringList({ name }));

        // Saved under a name, the document's next changes are kept under that name.
        const QString target = m_dir->filePath(QStringLiteral("named.zatdef"));
        TestModal::onNextModalOf<QFileDialog>([&](QWidget *w) {
            chooseFile(qobject_cast<QFileDialog *>(w), target);
            qobject_cast<QDialog *>(w)->accept();
        });
        QVERIFY(window->onSave());
        QCOMPARE(window->fileName(), target);
        QCOMPARE(folderEntries(), QStringList());
        QVERIFY(window->model()->setData(window->model()->index(0, 0), QStringLiteral("Named"), Qt::EditRole));
        QTRY_COMPARE(recoveryFiles().size(), 1);
        QVERIFY(recoveryFiles().constFirst().endsWith(QStringLiteral("-named.zatdef.recovery")));
        QTRY_COMPARE(readRecovery(recoveryFiles().constFirst()).document, target);
    }

    void twoDocumentsNeverShareOne()
    {
        QTemporaryDir other;
        QVERIFY(other.isValid());
        const QString otherPath = other.filePath(QStringLiteral("defs.zatdef"));
        QVERIFY(writeFile(otherPath, defs));
        QVERIFY(edit(startWindow(m_path)->model()));
        EditorWindow *second = startWindow(otherPath);
        QVERIFY(second->model()->setData(second->model()->index(0, 0), QStringLiteral("Other"), Qt::EditRole));
        QTRY_COMPARE(recoveryFiles().size(), 2);
        QStringList documents;
        for (const QString &name : recoveryFiles())
            documents << readRecovery(name).document;
        documents.sort();
        QStringList expected({ m_path, otherPath });
        expected.sort();
        QCOMPARE(documents, expected);
    }

    // The recovery file of an editor that still runs is not offered; a second editor of the
    // same file keeps its changes beside it.
    void runningEditorsFileIsNotOffered()
    {
        EditorWindow *first = startEditedWindow();
        QVERIFY(first);
        QTRY_COMPARE(recoveryFiles().size(), 1);
        const QString name = recoveryFiles().constFirst();
        bool asked = true;
        EditorWindow *second = startWindow(m_path, &asked);
        QVERIFY(!asked);
        QCOMPARE(encode(second->model()->root()), defs);
        QVERIFY(second->model()->setData(second->model()->index(0, 0), QStringLiteral("Second"), Qt::EditRole));
        QTRY_COMPARE(recoveryFiles().size(), 2);
        QString secondName = name;
        secondName.replace(QStringLiteral(".recovery"), QStringLiteral(".1.recovery"));
        QCOMPARE(recoveryFiles(), QStringList({ secondName, name }));
        QTRY_COMPARE(readRecovery(secondName).document, m_path);

        first->show();
        TestModal::answerMessageBox(QMessageBox::Discard);
        QVERIFY(first->close());
        QCOMPARE(recoveryFiles(), QStringList({ secondName }));
    }

    // Open gives the changes that follow the name of the file opened.
    void openedFileHasItsOwnRecovery()
    {
        const QString otherPath = m_dir->filePath(QStringLiteral("other.zatdef"));
        QVERIFY(writeFile(otherPath, defs));
        EditorWindow *window = startWindow(m_path);
        TestModal::onNextModalOf<QFileDialog>([&](QWidget *w) {
            chooseFile(qobject_cast<QFileDialog *>(w), otherPath);
            qobject_cast<QDialog *>(w)->accept();
        });
        window->onOpen();
        QCOMPARE(window->fileName(), otherPath);
        QVERIFY(edit(window->model()));
        QTRY_COMPARE(recoveryFiles().size(), 1);
        QVERIFY(recoveryFiles().constFirst().endsWith(QStringLiteral("-other.zatdef.recovery")));
        QCOMPARE(readRecovery(recoveryFiles().constFirst()).document, otherPath);
    }

    // A recovery file that would give back only part of the changes is named in Messages and
    // left alone.
    void partlyReadableRecoveryIsNotOffered()
    {
        QVERIFY(QDir().mkpath(recoveryFolder()));
        const QString name = QStringLiteral("0123456789abcdef-defs.zatdef.recovery");
        const QString path = recoveryFolder() + QLatin1Char('/') + name;
        QVERIFY(writeFile(path,
                          "zatedit recovery 1\ndocument: " + m_path.toUtf8()
                              + "\nwritten: 2100-01-01T00:00:00.000Z\n\n"
                                "<zat16>\n  <tag name=\"A\" id=\"0x2001\"/>\n  stray\n</zat16>\n"));
        bool asked = true;
        EditorWindow *window = startWindow(m_path, &asked);
        QVERIFY(!asked);
        QCOMPARE(encode(window->model()->root()), defs);
        QVERIFY(window->messages()->toPlainText().endsWith(
            QStringLiteral("The recovery file %1 cannot be read: the text stops at line 3").arg(path)));
        QCOMPARE(folderEntries(), QStringList({ name }));
    }

    // Writing never interrupts: a failure is one line in Messages, however often it is tried.
    void writeFailureIsOneMessage()
    {
        QVERIFY(QDir().mkpath(QFileInfo(recoveryFolder()).absolutePath()));
        QVERIFY(writeFile(recoveryFolder(), "not a folder"));
        EditorWindow *window = startEditedWindow();
        QVERIFY(window);
        bool asked = false;
        TestModal::onNextModal([&](QWidget *w) {
            asked = true;
            w->close();
        });
        const QString line
            = QStringLiteral("Unsaved changes cannot be kept for recovery: the folder %1 cannot be created")
                  .arg(recoveryFolder());
        QTRY_VERIFY(window->messages()->toPlainText().contains(line));
        QTest::qWait(300);
        QCOMPARE(window->messages()->toPlainText().count(line), 1);
        QVERIFY(!asked);
        QVERIFY(QFile::remove(recoveryFolder()));
    }
};

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    useTestSettings();
    if (argc == 4 && std::strcmp(argv[1], "--child") == 0)
        return child(argv[2], QString::fromLocal8Bit(argv[3]));
    TestRecovery test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}

#include "tst_recovery.moc"

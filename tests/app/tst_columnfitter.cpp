#include "columnfitter.h"
#include "editormodel.h"
#include "editorwindow.h"
#include "modal.h"
#include "testfiles.h"
#include "ui_editorwindow.h"

#include <QFontMetrics>
#include <QHeaderView>
#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QUndoStack>

using namespace ZAT16;

namespace {

// The widest code is a value of the second list, shown with eight hex digits; the longest name
// is a value's.
const QByteArray defs = "<?xml version=\"1.0\" encoding=\"UTF-8\"?> <!-- -*- nxml -*- -->\n"
                        "<zat16>\n"
                        "  <tag name=\"Power\" id=\"0x2001\"/>\n"
                        "  <tag name=\"Mode\" id=\"0x1002\">\n"
                        "    <enums>\n"
                        "      <enum name=\"Off\" id=\"0\"/>\n"
                        "      <enum name=\"AVeryLongNameOfAValueThatNeedsRoom\" id=\"1\"/>\n"
                        "    </enums>\n"
                        "  </tag>\n"
                        "  <tag name=\"Mask\" id=\"0x1003\">\n"
                        "    <enums display=\"8x\">\n"
                        "      <enum name=\"Low\" id=\"1\"/>\n"
                        "      <enum name=\"High\" id=\"0x12345678\"/>\n"
                        "    </enums>\n"
                        "  </tag>\n"
                        "</zat16>\n";

} // namespace

class TestColumnFitter : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

    QString writeDefs()
    {
        const QString path = m_dir.filePath(QStringLiteral("defs.zatdef"));
        TestFiles::writeFile(path, defs);
        return path;
    }

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        QCoreApplication::setOrganizationName(QStringLiteral("zatedit-tests"));
        QCoreApplication::setApplicationName(QStringLiteral("tst_columnfitter"));
    }

    void init() { QSettings().clear(); }

    void columnsFitTheOpenedFile()
    {
        EditorWindow window;
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QHeaderView *header = window.ui()->m_view->header();
        // before a file: the form's widths
        QCOMPARE(header->sectionSize(1), 60);
        window.initialize(writeDefs(), QString());
        const QFontMetrics fixed(window.model()->fixedFont());
        const int code = fixed.horizontalAdvance(QStringLiteral("0x12345678"));
        QVERIFY2(header->sectionSize(1) >= code, qPrintable(QString::number(header->sectionSize(1))));
        QVERIFY(header->sectionSize(1) <= code + 40);
        const int name = fixed.horizontalAdvance(QStringLiteral("AVeryLongNameOfAValueThatNeedsRoom"))
            + 3 * window.ui()->m_view->indentation();
        QVERIFY2(header->sectionSize(0) >= std::min(name, window.ui()->m_view->viewport()->width() / 2),
                 qPrintable(QString::number(header->sectionSize(0))));
        QVERIFY(header->sectionSize(0) <= std::max(150, window.ui()->m_view->viewport()->width() / 2));
    }

    void nameColumnStopsAtHalfTheView()
    {
        EditorWindow window;
        window.resize(900, 600);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        const QString path = m_dir.filePath(QStringLiteral("long.zatdef"));
        TestFiles::writeFile(path, "<zat16>\n  <tag name=\"" + QByteArray(300, 'N') + "\" id=\"0x1001\"/>\n</zat16>\n");
        window.initialize(path, QString());
        QCOMPARE(window.ui()->m_view->header()->sectionSize(0), window.ui()->m_view->viewport()->width() / 2);
    }

    void widthsTheUserDragsAreKept()
    {
        const QString path = writeDefs();
        int dragged = 0;
        {
            EditorWindow window;
            window.show();
            QVERIFY(QTest::qWaitForWindowExposed(&window));
            window.initialize(path, QString());
            QHeaderView *header = window.ui()->m_view->header();
            const int fitted = header->sectionSize(1);
            // drag the handle between the code and the comment column 40 pixels to the right
            const int edge = header->sectionViewportPosition(1) + header->sectionSize(1) - 1;
            const int y = header->height() / 2;
            QTest::mousePress(header->viewport(), Qt::LeftButton, {}, QPoint(edge, y));
            QTest::mouseMove(header->viewport(), QPoint(edge + 20, y));
            QTest::mouseMove(header->viewport(), QPoint(edge + 40, y));
            QTest::mouseRelease(header->viewport(), Qt::LeftButton, {}, QPoint(edge + 40, y));
            dragged = header->sectionSize(1);
            QVERIFY2(dragged > fitted, qPrintable(QStringLiteral("%1 %2").arg(dragged).arg(fitted)));
            QVERIFY(window.columnFitter()->isUserSized(1));
            QVERIFY(!window.columnFitter()->isUserSized(0));
            // opening again keeps it
            window.initialize(path, QString());
            QCOMPARE(header->sectionSize(1), dragged);
            window.close();
        }
        // and so does the next start
        EditorWindow window;
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        window.initialize(path, QString());
        QCOMPARE(window.ui()->m_view->header()->sectionSize(1), dragged);
    }
};

QTEST_MAIN(TestColumnFitter)
#include "tst_columnfitter.moc"

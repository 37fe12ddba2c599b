#include "filechangedwidget.h"
#include "testfiles.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileSystemWatcher>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTimer>
#include <QVBoxLayout>
#include <QtTest>

#include <cstdio>

using TestFiles::writeFile;

static QString const changedText
    = QStringLiteral("The file defs.zatdef has been changed outside this application. Do you want to reload?");
static QString const removedText = QStringLiteral("The file defs.zatdef has been removed.");

// Counts how often the banner is shown; a banner that is already visible is not shown again, so
// the tests hide it after each notice.
class ShowCounter : public QObject
{
public:
    explicit ShowCounter(QWidget *widget) { widget->installEventFilter(this); }
    int count = 0;

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Show)
            ++count;
        return false;
    }
};

class TestFileChangedWidget : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void form();
    void initialState();
    void fileChangedNotice();
    void fileDisappearedNotice();
    void inPlaceModification();
    void reloadKeepsWatching();
    void replacedByRename();
    void removedAndCreatedWithinASecond();
    void staysMissing();
    void sameFileAgainLeavesPollRunning();
    void ignoreEndsWatching();
    void closeEndsWatching();
    void watchOtherFile();
    void noticeKeepsWatching();

private:
    QLabel *label() const { return m_banner->findChild<QLabel *>("m_lbl_message"); }
    QPushButton *button(char const *name) const { return m_banner->findChild<QPushButton *>(name); }
    QFileSystemWatcher *watcher() const
    {
        return m_banner->findChild<QFileSystemWatcher *>(QString(), Qt::FindDirectChildrenOnly);
    }
    QTimer *pollTimer() const { return m_banner->findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly); }
    // Whether the banner shows the "changed" notice with Reload and Ignore.
    bool showsChanged() const;
    // Whether the banner shows the "removed" notice with Close only.
    bool showsRemoved() const;

    QTemporaryDir *m_dir = nullptr;
    QString m_path;
    QWidget *m_window = nullptr;
    FileChangedWidget *m_banner = nullptr;
};

void TestFileChangedWidget::init()
{
    m_dir = new QTemporaryDir;
    QVERIFY(m_dir->isValid());
    m_path = m_dir->filePath("defs.zatdef");
    QVERIFY(writeFile(m_path, "<zat16/>\n"));
    // Inside a visible window, as below the tree of the main window; hidden at start.
    m_window = new QWidget;
    auto *layout = new QVBoxLayout(m_window);
    layout->setSizeConstraint(QLayout::SetNoConstraint);
    m_banner = new FileChangedWidget(m_window);
    layout->addWidget(m_banner);
    m_banner->hide();
    m_window->resize(900, 200);
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window));
}

void TestFileChangedWidget::cleanup()
{
    delete m_window;
    m_window = nullptr;
    m_banner = nullptr;
    delete m_dir;
    m_dir = nullptr;
}

bool TestFileChangedWidget::showsChanged() const
{
    return m_banner->isVisible() && label()->text() == changedText && button("m_pb_reload")->isVisible()
        && button("m_pb_ignore")->isVisible() && !button("m_pb_close")->isVisible();
}

bool TestFileChangedWidget::showsRemoved() const
{
    return m_banner->isVisible() && label()->text() == removedText && !button("m_pb_reload")->isVisible()
        && !button("m_pb_ignore")->isVisible() && button("m_pb_close")->isVisible();
}

void TestFileChangedWidget::form()
{
    FileChangedWidget banner;
    QCOMPARE(banner.objectName(), QString("FileChangedWidget"));
    QCOMPARE(banner.windowTitle(), QString("Form"));
    QCOMPARE(banner.size(), QSize(871, 43));
    QVERIFY(m_banner->findChild<QHBoxLayout *>("horizontalLayout"));
    QVERIFY(label());
    QCOMPARE(label()->text(), QString("TextLabel"));
    QVERIFY(button("m_pb_reload"));
    QCOMPARE(button("m_pb_reload")->text(), QString("Reload"));
    QVERIFY(button("m_pb_ignore"));
    QCOMPARE(button("m_pb_ignore")->text(), QString("Ignore"));
    QVERIFY(button("m_pb_close"));
    QCOMPARE(button("m_pb_close")->text(), QString("Close"));
}

void TestFileChangedWidget::initialState()
{
    QCOMPARE(m_banner->fileName(), QString());
    QVERIFY(!watcher());
    QVERIFY(!pollTimer());

    m_banner->watchFile(m_path);
    QCOMPARE(m_banner->fileName(), m_path);
    QVERIFY(watcher());
    QCOMPARE(watcher()->files(), QStringList(m_path));
    QVERIFY(!pollTimer());
    QVERIFY(!m_banner->isVisible());
}

void TestFileChangedWidget::fileChangedNotice()
{
    m_banner->fileChanged("defs.zatdef");
    QVERIFY(showsChanged());
}

void TestFileChangedWidget::fileDisappearedNotice()
{
    m_banner->fileDisappeared("defs.zatdef");
    QVERIFY(showsRemoved());
}

void TestFileChangedWidget::inPlaceModification()
{
    m_banner->watchFile(m_path);
    QVERIFY(writeFile(m_path, "<zat16>\n</zat16>\n"));
    QTRY_VERIFY(m_banner->isVisible());
    QCOMPARE(label()->text(), changedText);
    QVERIFY(showsChanged());
    QCOMPARE(m_banner->fileName(), m_path);
    // The file is there, so it is reported at once, without polling.
    QVERIFY(!pollTimer());
}

void TestFileChangedWidget::reloadKeepsWatching()
{
    QSignalSpy reload(m_banner, &FileChangedWidget::reloadClicked);
    QSignalSpy ignore(m_banner, &FileChangedWidget::ignoreClicked);
    QSignalSpy close(m_banner, &FileChangedWidget::closeClicked);
    m_banner->watchFile(m_path);
    QVERIFY(writeFile(m_path, "one\n"));
    QTRY_VERIFY(showsChanged());

    QTest::mouseClick(button("m_pb_reload"), Qt::LeftButton);
    QCOMPARE(reload.count(), 1);
    QCOMPARE(ignore.count(), 0);
    QCOMPARE(close.count(), 0);
    QVERIFY(!m_banner->isVisible());
    QCOMPARE(m_banner->fileName(), m_path);

    QVERIFY(writeFile(m_path, "two\n"));
    QTRY_VERIFY(showsChanged());
}

void TestFileChangedWidget::replacedByRename()
{
    // The way careful programs save: write a new file beside the old one, rename it over.
    ShowCounter shows(m_banner);
    m_banner->watchFile(m_path);
    QString const fresh = m_path + ".new";
    QVERIFY(writeFile(fresh, "<zat16>\n</zat16>\n"));
    QCOMPARE(std::rename(QFile::encodeName(fresh).constData(), QFile::encodeName(m_path).constData()), 0);

    QTRY_VERIFY(m_banner->isVisible());
    QVERIFY(showsChanged());
    QCOMPARE(shows.count, 1);
    QVERIFY(!pollTimer());
    m_banner->hide();

    // No second notice, and no removed notice either.
    QTest::qWait(1500);
    QCOMPARE(shows.count, 1);
    QCOMPARE(label()->text(), changedText);

    // The new file is watched as well: its next change is reported too.
    QVERIFY(writeFile(m_path, "<zat16/>\n"));
    QTRY_COMPARE(shows.count, 2);
    QCOMPARE(label()->text(), changedText);
}

void TestFileChangedWidget::removedAndCreatedWithinASecond()
{
    ShowCounter shows(m_banner);
    m_banner->watchFile(m_path);
    QElapsedTimer clock;
    clock.start();
    QVERIFY(QFile::remove(m_path));
    QTRY_VERIFY(pollTimer() && pollTimer()->isActive());
    QVERIFY(!m_banner->isVisible());
    QTest::qWait(300);
    QVERIFY(writeFile(m_path, "<zat16>\n</zat16>\n"));

    QTRY_VERIFY_WITH_TIMEOUT(m_banner->isVisible(), 2500);
    QVERIFY2(clock.elapsed() < 2500, qPrintable(QString::number(clock.elapsed())));
    QVERIFY(showsChanged());
    QVERIFY(!pollTimer()->isActive());
    QCOMPARE(m_banner->fileName(), m_path);
    QCOMPARE(shows.count, 1);
    m_banner->hide();

    // Past the moment a removed notice would have come: nothing more.
    QTest::qWait(3000);
    QCOMPARE(shows.count, 1);
    QCOMPARE(label()->text(), changedText);

    // The watch follows the new file.
    QVERIFY(writeFile(m_path, "again\n"));
    QTRY_VERIFY(showsChanged());
    QCOMPARE(shows.count, 2);
}

void TestFileChangedWidget::staysMissing()
{
    ShowCounter shows(m_banner);
    m_banner->watchFile(m_path);
    QElapsedTimer clock;
    clock.start();
    QVERIFY(QFile::remove(m_path));

    QTRY_VERIFY_WITH_TIMEOUT(m_banner->isVisible(), 6000);
    qint64 const elapsed = clock.elapsed();
    // The third poll, one second apart: about three seconds.
    QVERIFY2(elapsed >= 2700 && elapsed < 4500, qPrintable(QString::number(elapsed)));
    QVERIFY(showsRemoved());
    QCOMPARE(shows.count, 1);
    QCOMPARE(m_banner->fileName(), m_path);
    m_banner->hide();

    // The removed notice is not repeated, but polling goes on.
    QTest::qWait(1500);
    QCOMPARE(shows.count, 1);
    QVERIFY(pollTimer()->isActive());

    // A file that comes back later is still reported, as changed.
    QVERIFY(writeFile(m_path, "<zat16/>\n"));
    QTRY_VERIFY_WITH_TIMEOUT(m_banner->isVisible(), 2500);
    QVERIFY(showsChanged());
    QCOMPARE(shows.count, 2);
    QVERIFY(!pollTimer()->isActive());
}

void TestFileChangedWidget::sameFileAgainLeavesPollRunning()
{
    QSignalSpy close(m_banner, &FileChangedWidget::closeClicked);
    m_banner->watchFile(m_path);
    QFileSystemWatcher const *const firstWatcher = watcher();
    QVERIFY(firstWatcher);
    QElapsedTimer clock;
    clock.start();
    QVERIFY(QFile::remove(m_path));
    QTRY_VERIFY(pollTimer() && pollTimer()->isActive());
    QTest::qWait(500);

    m_banner->watchFile(m_path);
    QCOMPARE(watcher(), firstWatcher);
    QVERIFY(pollTimer()->isActive());
    QCOMPARE(m_banner->fileName(), m_path);

    // Had the poll been restarted, the notice would come later; had it been stopped, never.
    QTRY_VERIFY_WITH_TIMEOUT(m_banner->isVisible(), 6000);
    QVERIFY2(clock.elapsed() < 4500, qPrintable(QString::number(clock.elapsed())));
    QVERIFY(showsRemoved());

    QTest::mouseClick(button("m_pb_close"), Qt::LeftButton);
    QCOMPARE(close.count(), 1);
    QVERIFY(!m_banner->isVisible());
    QCOMPARE(m_banner->fileName(), QString());
    QVERIFY(!watcher());
    QVERIFY(!pollTimer()->isActive());
}

void TestFileChangedWidget::ignoreEndsWatching()
{
    QSignalSpy reload(m_banner, &FileChangedWidget::reloadClicked);
    QSignalSpy ignore(m_banner, &FileChangedWidget::ignoreClicked);
    ShowCounter shows(m_banner);
    m_banner->watchFile(m_path);
    QVERIFY(writeFile(m_path, "one\n"));
    QTRY_VERIFY(showsChanged());

    QTest::mouseClick(button("m_pb_ignore"), Qt::LeftButton);
    QCOMPARE(ignore.count(), 1);
    QCOMPARE(reload.count(), 0);
    QVERIFY(!m_banner->isVisible());
    QCOMPARE(m_banner->fileName(), QString());
    QVERIFY(!watcher());

    // A save pauses the watch and then restores the one that was active before, here none.
    QString const before = m_banner->fileName();
    m_banner->watchFile(QString());
    QString const temporary = m_path + ".tmp";
    QVERIFY(writeFile(temporary, "two\n"));
    QCOMPARE(std::rename(QFile::encodeName(temporary).constData(), QFile::encodeName(m_path).constData()), 0);
    m_banner->watchFile(before);
    QCOMPARE(m_banner->fileName(), QString());
    QVERIFY(!watcher());

    // Later changes go unnoticed.
    QVERIFY(writeFile(m_path, "three\n"));
    QTest::qWait(1500);
    QVERIFY(!m_banner->isVisible());
    QCOMPARE(shows.count, 1);
}

void TestFileChangedWidget::closeEndsWatching()
{
    QSignalSpy close(m_banner, &FileChangedWidget::closeClicked);
    ShowCounter shows(m_banner);
    m_banner->watchFile(m_path);
    QVERIFY(QFile::remove(m_path));
    QTRY_VERIFY_WITH_TIMEOUT(showsRemoved(), 6000);

    QTest::mouseClick(button("m_pb_close"), Qt::LeftButton);
    QCOMPARE(close.count(), 1);
    QVERIFY(!m_banner->isVisible());
    QCOMPARE(m_banner->fileName(), QString());
    QVERIFY(!watcher());
    QVERIFY(!pollTimer()->isActive());

    // The file coming back is no longer of interest.
    QVERIFY(writeFile(m_path, "back\n"));
    QTest::qWait(1500);
    QVERIFY(!m_banner->isVisible());
    QCOMPARE(shows.count, 1);
}

// A notice (that reading stopped early, say) shows with Close, which only hides it; a change of
// the file takes its place, and hideNotice() hides only a notice.
void TestFileChangedWidget::noticeKeepsWatching()
{
    QSignalSpy close(m_banner, &FileChangedWidget::closeClicked);
    m_banner->watchFile(m_path);
    m_banner->showNotice(QStringLiteral("Only lines 1 to 3 were read"));
    QVERIFY(m_banner->isVisible());
    QCOMPARE(label()->text(), QStringLiteral("Only lines 1 to 3 were read"));
    QVERIFY(!button("m_pb_reload")->isVisible());
    QVERIFY(!button("m_pb_ignore")->isVisible());
    QVERIFY(button("m_pb_close")->isVisible());
    QTest::mouseClick(button("m_pb_close"), Qt::LeftButton);
    QVERIFY(!m_banner->isVisible());
    QCOMPARE(close.count(), 0);
    QCOMPARE(m_banner->fileName(), m_path);
    QVERIFY(watcher());

    m_banner->showNotice(QStringLiteral("again"));
    QVERIFY(writeFile(m_path, "changed\n"));
    QTRY_VERIFY(showsChanged());
    m_banner->hideNotice();
    QVERIFY(showsChanged());

    m_banner->showNotice(QStringLiteral("a notice"));
    m_banner->hideNotice();
    QVERIFY(!m_banner->isVisible());
}

void TestFileChangedWidget::watchOtherFile()
{
    QString const other = m_dir->filePath("other.zatdef");
    QVERIFY(writeFile(other, "<zat16/>\n"));
    m_banner->watchFile(m_path);
    m_banner->watchFile(other);
    QCOMPARE(m_banner->fileName(), other);
    QVERIFY(watcher());
    QCOMPARE(watcher()->files(), QStringList(other));

    // The previous file is no longer watched, the new one is.
    QVERIFY(writeFile(m_path, "changed\n"));
    QTest::qWait(1000);
    QVERIFY(!m_banner->isVisible());
    QVERIFY(writeFile(other, "changed\n"));
    QTRY_VERIFY(m_banner->isVisible());
    QCOMPARE(label()->text(),
             QString("The file other.zatdef has been changed outside this application. Do you want to reload?"));
}

QTEST_MAIN(TestFileChangedWidget)
#include "tst_filechangedwidget.moc"

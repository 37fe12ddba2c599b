#include "filechangedwidget.h"
#include "ui_filechangedwidget.h"

#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QPalette>
#include <QTimer>

FileChangedWidget::FileChangedWidget(QWidget *parent)
    : QFrame(parent)
    , m_ui(new Ui::FileChangedWidget)
{
    m_ui->setupUi(this);

    // A pale yellow bar with dark text, as browsers and editors show their information bars;
    // readable with light and dark desktop themes alike.
    QPalette bar = palette();
    bar.setColor(QPalette::Window, QColor(0xff, 0xf4, 0xc4));
    bar.setColor(QPalette::WindowText, QColor(0x20, 0x20, 0x20));
    setPalette(bar);
    setAutoFillBackground(true);

    connect(m_ui->m_pb_reload, &QPushButton::clicked, this, &FileChangedWidget::onReloadClicked);
    connect(m_ui->m_pb_ignore, &QPushButton::clicked, this, &FileChangedWidget::onIgnoreClicked);
    connect(m_ui->m_pb_close, &QPushButton::clicked, this, &FileChangedWidget::onCloseClicked);
}

FileChangedWidget::~FileChangedWidget()
{
    delete m_ui;
}

void FileChangedWidget::watchFile(QString const &path)
{
    if (path == m_fileName)
        return;
    if (m_pollTimer)
        m_pollTimer->stop();
    m_fileName = path;
    delete m_watcher;
    m_watcher = nullptr;
    if (!path.isEmpty()) {
        m_watcher = new QFileSystemWatcher(QStringList(path), this);
        connect(m_watcher, &QFileSystemWatcher::fileChanged, this, &FileChangedWidget::onFileChanged);
    }
}

void FileChangedWidget::fileChanged(QString const &name)
{
    m_notice = false;
    m_ui->m_lbl_message->setText(
        tr("The file %1 has been changed outside this application. Do you want to reload?").arg(name));
    m_ui->m_pb_reload->show();
    m_ui->m_pb_ignore->show();
    m_ui->m_pb_close->hide();
    show();
}

void FileChangedWidget::fileDisappeared(QString const &name)
{
    m_notice = false;
    m_ui->m_lbl_message->setText(tr("The file %1 has been removed.").arg(name));
    m_ui->m_pb_reload->hide();
    m_ui->m_pb_ignore->hide();
    m_ui->m_pb_close->show();
    show();
}

void FileChangedWidget::showNotice(QString const &text)
{
    m_notice = true;
    m_ui->m_lbl_message->setText(text);
    m_ui->m_pb_reload->hide();
    m_ui->m_pb_ignore->hide();
    m_ui->m_pb_close->show();
    show();
}

void FileChangedWidget::hideNotice()
{
    if (m_notice) {
        m_notice = false;
        hide();
    }
}

void FileChangedWidget::onReloadClicked()
{
    hide();
    emit reloadClicked();
}

void FileChangedWidget::onIgnoreClicked()
{
    watchFile(QString());
    hide();
    emit ignoreClicked();
}

void FileChangedWidget::onCloseClicked()
{
    if (m_notice) {
        hideNotice();
        return;
    }
    watchFile(QString());
    hide();
    emit closeClicked();
}

void FileChangedWidget::onFileChanged()
{
    if (m_fileName.isEmpty())
        return;
    QFileInfo const info(m_fileName);
    if (info.exists()) {
        // A file replaced by a rename is a new file: the watch on the old one is gone, so the
        // path is watched again to hear of the next change too.
        if (m_watcher && !m_watcher->files().contains(m_fileName))
            m_watcher->addPath(m_fileName);
        fileChanged(info.fileName());
        return;
    }
    // The file may be in the middle of being replaced by another program's save: wait for it to
    // come back before calling it removed.
    if (!m_pollTimer) {
        m_pollTimer = new QTimer(this);
        m_pollTimer->setInterval(1000);
        connect(m_pollTimer, &QTimer::timeout, this, &FileChangedWidget::onPoll);
    }
    m_pollCount = 0;
    m_pollTimer->start();
}

void FileChangedWidget::onPoll()
{
    QString const path = m_fileName;
    QFileInfo const info(path);
    if (info.exists()) {
        // The old watch died with the old file; a fresh watcher follows the new one. This also
        // stops the poll.
        watchFile(QString());
        watchFile(path);
        fileChanged(info.fileName());
        return;
    }
    // The timer keeps running after the removed notice, so a file that comes back later is still
    // reported as changed; the removed notice itself is given only once.
    if (++m_pollCount == 3)
        fileDisappeared(info.fileName());
}

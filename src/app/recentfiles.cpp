#include "recentfiles.h"

#include "editorsettings.h"
#include "localfile.h"

#include <QAction>
#include <QDir>
#include <QFileInfo>
#include <QMenu>
#include <QUrl>

#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace ZAT16 {

namespace {

// The name as the system has it: a name that is not UTF-8 would not be found through QFileInfo.
bool exists(const QString &path)
{
    struct stat st;
    return ::stat(LocalFile::encodeName(path).constData(), &st) == 0;
}

// "&1 defs.zatdef" to "&9 ...", then "1&0 ...": the last digit is the mnemonic. An ampersand in
// the file's name is shown as one.
QString entryText(int number, const QString &path)
{
    QString digits = QString::number(number);
    digits.insert(digits.size() - 1, QLatin1Char('&'));
    QString name = QFileInfo(path).fileName();
    name.replace(QLatin1Char('&'), QLatin1String("&&"));
    return digits + QLatin1Char(' ') + name;
}

} // namespace

RecentFiles::RecentFiles(QWidget *parent)
    : QObject(parent)
    , m_menu(new QMenu(tr("Open &Recent"), parent))
    , m_act_clear(new QAction(tr("Clear List"), m_menu))
{
    m_menu->setObjectName(QStringLiteral("m_menu_recent"));
    // The entries' tooltips give the full paths.
    m_menu->setToolTipsVisible(true);
    m_act_clear->setObjectName(QStringLiteral("m_act_clear_recent"));
    connect(m_act_clear, &QAction::triggered, this, &RecentFiles::clear);
    // A file may have gone since the entries were built.
    connect(m_menu, &QMenu::aboutToShow, this, &RecentFiles::refresh);
    refresh();
}

QStringList RecentFiles::files()
{
    QStringList files;
    for (const QString &url : EditorSettings::texts(EditorSettings::RecentFiles)) {
        if (files.size() == maxCount)
            break;
        const QString path = localPath(QUrl(url));
        if (!path.isEmpty() && !files.contains(path))
            files << path;
    }
    return files;
}

QString RecentFiles::startFolder()
{
    // The two paths of the dialogs are there for a list that was cleared.
    QString last = files().value(0);
    if (last.isEmpty())
        last = EditorSettings::text(EditorSettings::LastOpenPath);
    if (last.isEmpty())
        last = EditorSettings::text(EditorSettings::LastSaveAsPath);
    // Given a folder that does not exist, the dialog would show its last part as the file name.
    const QString folder = last.isEmpty() ? QString() : QFileInfo(last).absolutePath();
    return !folder.isEmpty() && QFileInfo(folder).isDir() ? folder : QDir::homePath();
}

QString RecentFiles::absolutePath(const QString &path)
{
    if (path.isEmpty() || QDir::isAbsolutePath(path))
        return QDir::cleanPath(path);
    QByteArray folder(4096, '\0');
    if (!::getcwd(folder.data(), size_t(folder.size())))
        return QDir::cleanPath(QDir::currentPath() + QLatin1Char('/') + path);
    folder.truncate(qsizetype(std::strlen(folder.constData())));
    return QDir::cleanPath(LocalFile::decodeName(folder) + QLatin1Char('/') + path);
}

QString RecentFiles::localPath(const QUrl &url)
{
    if (!url.isValid() || !url.isLocalFile() || !url.host().isEmpty())
        return QString();
    // The path as it is encoded, so that bytes that are not UTF-8 come out as they went in.
    const QString path
        = LocalFile::decodeName(QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1()));
    return QDir::isAbsolutePath(path) ? path : QString();
}

QString RecentFiles::fileUrl(const QString &path)
{
    return QLatin1String("file://") + QString::fromLatin1(LocalFile::encodeName(path).toPercentEncoding("/"));
}

void RecentFiles::add(const QString &path)
{
    if (path.isEmpty())
        return;
    const QString absolute = absolutePath(path);
    QStringList list = files();
    list.removeAll(absolute);
    list.prepend(absolute);
    store(list.mid(0, maxCount));
}

void RecentFiles::clear()
{
    store(QStringList());
}

void RecentFiles::store(const QStringList &files)
{
    QStringList urls;
    for (const QString &path : files)
        urls << fileUrl(path);
    EditorSettings::writeTexts(EditorSettings::RecentFiles, urls);
    refresh();
}

void RecentFiles::refresh()
{
    // The old entries go later: refresh() also runs while an entry's triggered() is delivered.
    for (QAction *action : m_menu->actions()) {
        m_menu->removeAction(action);
        if (action != m_act_clear)
            action->deleteLater();
    }
    const QStringList list = files();
    for (int i = 0; i < list.size(); ++i) {
        const QString path = list.at(i);
        QAction *entry = m_menu->addAction(entryText(i + 1, path));
        entry->setToolTip(QDir::toNativeSeparators(path));
        entry->setEnabled(exists(path));
        connect(entry, &QAction::triggered, this, [this, path]() { emit chosen(path); });
    }
    m_menu->addSeparator();
    m_menu->addAction(m_act_clear);
    m_act_clear->setEnabled(!list.isEmpty());
    m_menu->menuAction()->setEnabled(!list.isEmpty());
}

} // namespace ZAT16

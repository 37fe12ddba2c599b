#pragma once

// A file dialog answered by a test: the folder and the name typed as a user would.

#include <QFileDialog>
#include <QFileInfo>
#include <QLineEdit>
#include <QString>

inline void chooseFile(QFileDialog *dialog, const QString &path)
{
    dialog->setDirectory(QFileInfo(path).absolutePath());
    if (auto *edit = dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit")))
        edit->setText(path);
}

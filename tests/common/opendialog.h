#pragma once

// The dialog that an action of a window opens (a viewer, a report), found among the window's
// children: the one that was not there before the action ran.

#include <QAction>
#include <QDialog>
#include <QList>
#include <QWidget>

inline QDialog *dialogOpenedBy(QWidget *window, QAction *action)
{
    const QList<QDialog *> before = window->findChildren<QDialog *>();
    action->trigger();
    for (QDialog *dialog : window->findChildren<QDialog *>()) {
        if (!before.contains(dialog))
            return dialog;
    }
    return nullptr;
}

#pragma once

// Answers modal dialogs in GUI tests: the action runs from a timer once a modal widget is up,
// inside the dialog's own event loop, so that no person is needed.

#include <QAbstractButton>
#include <QApplication>
#include <QElapsedTimer>
#include <QMessageBox>
#include <QPointer>
#include <QTimer>

#include <functional>
#include <memory>

namespace TestModal {

/// The timers still waiting for a dialog; cancelAll() stops them between test functions, so that
/// one test's answer never reaches the next test's dialog.
inline QList<QPointer<QTimer>> &pending()
{
    static QList<QPointer<QTimer>> timers;
    return timers;
}

inline void cancelAll()
{
    for (const QPointer<QTimer> &timer : pending()) {
        if (timer) {
            timer->stop();
            timer->deleteLater();
        }
    }
    pending().clear();
}

/// Runs `action` with the next modal widget that is not `previous` and, when `Kind` is given, is
/// of that class (polled every 10 ms, for at most `timeoutMs`).
template<typename Kind = QWidget>
inline void onNextModalOf(std::function<void(QWidget *)> action, QWidget *previous = nullptr, int timeoutMs = 10000)
{
    auto *timer = new QTimer;
    pending().append(timer);
    auto elapsed = std::make_shared<QElapsedTimer>();
    elapsed->start();
    QPointer<QWidget> skip(previous);
    QObject::connect(timer, &QTimer::timeout, [=]() {
        QWidget *modal = QApplication::activeModalWidget();
        if (modal && modal != skip && modal->isVisible() && qobject_cast<Kind *>(modal)) {
            timer->stop();
            timer->deleteLater();
            action(modal);
        } else if (elapsed->elapsed() > timeoutMs) {
            timer->stop();
            timer->deleteLater();
        }
    });
    timer->start(10);
}

inline void onNextModal(std::function<void(QWidget *)> action, QWidget *previous = nullptr, int timeoutMs = 10000)
{
    onNextModalOf<QWidget>(action, previous, timeoutMs);
}

/// Clicks `button` of the next message box and hands its text to `text` (when given).
inline void answerMessageBox(QMessageBox::StandardButton button,
                             QString *text = nullptr,
                             std::function<void()> then = nullptr)
{
    onNextModalOf<QMessageBox>([=](QWidget *modal) {
        auto *box = qobject_cast<QMessageBox *>(modal);
        if (!box)
            return;
        if (text)
            *text = box->text();
        if (then)
            then();
        if (QAbstractButton *b = box->button(button))
            b->click();
    });
}

} // namespace TestModal

#include "platform/desktop_end.h"

#include <QApplication>
#include <QDialog>
#include <QGuiApplication>
#include <QSessionManager>

#ifdef Q_OS_UNIX
#include <QSocketNotifier>
#include <csignal>
#include <sys/socket.h>
#include <unistd.h>
#endif

namespace platform {
namespace {

bool ending = false;
std::function<void()> endHandler;

// Closes the dialogs whose event loops would otherwise hold the end up.
void closeDialogs()
{
    for (int guard = 0; guard < 32; ++guard) {
        auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
        if (!dialog)
            return;
        dialog->done(QDialog::Rejected);
    }
}

void desktopAsked()
{
    if (ending)
        return;
    ending = true;
    closeDialogs();
    if (endHandler)
        endHandler();
}

#ifdef Q_OS_UNIX
int signalPipe[2] = {-1, -1};

// Only what is safe in a signal handler: one byte to the user-interface thread.
void onSignal(int)
{
    const char byte = 1;
    [[maybe_unused]] const ssize_t written = ::write(signalPipe[1], &byte, 1);
}

void watchSignals()
{
    if (signalPipe[0] >= 0 || ::socketpair(AF_UNIX, SOCK_STREAM, 0, signalPipe) != 0)
        return;
    auto *notifier = new QSocketNotifier(signalPipe[0], QSocketNotifier::Read, qApp);
    QObject::connect(notifier, &QSocketNotifier::activated, notifier, [] {
        char byte;
        [[maybe_unused]] const ssize_t read = ::read(signalPipe[0], &byte, 1);
        desktopAsked();
    });
    struct sigaction action = {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (int signal : {SIGTERM, SIGHUP, SIGINT})
        ::sigaction(signal, &action, nullptr);
}
#else
void watchSignals() {}
#endif

} // namespace

void onDesktopEnd(std::function<void()> end)
{
    endHandler = std::move(end);
    watchSignals();
#ifndef QT_NO_SESSIONMANAGER
    QObject::connect(qApp, &QGuiApplication::commitDataRequest, qApp, [](QSessionManager &) { desktopAsked(); },
                     Qt::DirectConnection);
#endif
}

bool desktopEnding() { return ending; }

} // namespace platform

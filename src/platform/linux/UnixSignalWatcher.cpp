#include "platform/linux/UnixSignalWatcher.h"

#include <QSocketNotifier>

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace {

int g_pipe[2] = {-1, -1};

void onSignal(int signalNumber)
{
    const unsigned char number = static_cast<unsigned char>(signalNumber);
    [[maybe_unused]] const ssize_t written = ::write(g_pipe[1], &number, 1);
}

} // namespace

UnixSignalWatcher::UnixSignalWatcher(std::initializer_list<int> signalNumbers, QObject* parent)
    : QObject(parent)
{
    if (::pipe2(g_pipe, O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    m_notifier = new QSocketNotifier(g_pipe[0], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, [this] {
        unsigned char number = 0;
        while (::read(g_pipe[0], &number, 1) == 1)
            emit signalReceived(number);
    });
    struct sigaction action
    {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (int signalNumber : signalNumbers)
        ::sigaction(signalNumber, &action, nullptr);
}

UnixSignalWatcher::~UnixSignalWatcher()
{
    if (g_pipe[0] >= 0) {
        ::close(g_pipe[0]);
        ::close(g_pipe[1]);
        g_pipe[0] = g_pipe[1] = -1;
    }
}

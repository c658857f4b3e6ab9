#include "OutputPipe.h"

#include "ToolRunner.h"

#include <QSocketNotifier>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace {

// One turn reads at most a full pipe, so a child that writes without pause cannot hold the event loop.
constexpr int readsPerTurn = 4;

} // namespace

OutputPipe::OutputPipe(QObject *parent)
    : QObject(parent)
{
    int ends[2];
    if (::pipe(ends) != 0) {
        m_error = QString::fromLocal8Bit(std::strerror(errno));
        return;
    }
    m_readEnd = ends[0];
    m_writeEnd = ends[1];
    // Neither end leaks into other children; the child gets its copy of the writing end explicitly.
    for (const int end : ends)
        ::fcntl(end, F_SETFD, FD_CLOEXEC);
    ::fcntl(m_readEnd, F_SETFL, ::fcntl(m_readEnd, F_GETFL) | O_NONBLOCK);
    m_notifier = new QSocketNotifier(qintptr(m_readEnd), QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &OutputPipe::readNow);
}

OutputPipe::~OutputPipe()
{
    delete m_notifier;
    closeWriteEnd();
    if (m_readEnd >= 0)
        ::close(m_readEnd);
}

void OutputPipe::attachInChild(int target) const
{
    if (m_writeEnd >= 0)
        ::dup2(m_writeEnd, target);
}

void OutputPipe::closeWriteEnd()
{
    if (m_writeEnd >= 0)
        ::close(m_writeEnd);
    m_writeEnd = -1;
}

void OutputPipe::readNow()
{
    if (!m_notifier || !m_notifier->isEnabled())
        return;
    char buffer[ToolRunner::outputSlice];
    for (int reads = 0; reads < readsPerTurn;) {
        const ssize_t count = ::read(m_readEnd, buffer, sizeof buffer);
        if (count > 0) {
            ++reads;
            Q_EMIT received(QByteArray(buffer, qsizetype(count)));
            continue;
        }
        if (count < 0 && errno == EINTR)
            continue;
        // The end of the stream; an error other than "nothing yet" ends it too.
        if (count == 0 || errno != EAGAIN)
            m_notifier->setEnabled(false);
        return;
    }
}

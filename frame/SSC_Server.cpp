#include "frame/SSC_Server.h"

#include "frame/OsService.h"
#include "frame/SscTrace.h"

using namespace ssc_trace;

SSC_Server::SSC_Server(SignalDispatcherIf* dispatcher)
    : m_pDispatcher(dispatcher), m_clientRef(dispatcher->newClientRef())
{
}

SSC_Server::~SSC_Server()
{
    if (m_pid != 0) OsService::killProcess(m_pid);
}

void SSC_Server::receiveSignal(ose::Signal* signal)
{
    if (signal == nullptr) {
        SSC_TRACE(swuGroup(), kUnexpected, "Received NULL-pointer in %s::receiveSignal", getServerName());
        return;
    }
    const ose::SIGSELECT sigNo = ose::signalNumber(signal);
    if (m_pRows == nullptr) indexTable();
    if (const std::uint32_t* row = m_rowOf.find(sigNo)) {
        m_pRows->moveTo(*row);
        SSC_TRACE(swuGroup(), kFlow, "%s: Handling signal %s (0x%02X)", getServerName(), m_pRows->getSignalName(),
                  static_cast<unsigned>(sigNo));
        // Last use of the table here: the handler may dispatch to this server again.
        m_pRows->handleSignal(signal);
        return;
    }
    SSC_TRACE(swuGroup(), kUnexpected, "%s: Unhandled signal: %d", getServerName(), static_cast<int>(sigNo));
}

void SSC_Server::indexTable()
{
    m_pRows = createSignalIterator();
    std::uint32_t index = 0;
    for (; !m_pRows->atEnd(); m_pRows->next()) m_rowOf.insert(m_pRows->getSignalNo(), index++);
}

void SSC_Server::registerSignals()
{
    std::unique_ptr<SignalIterator> rows = createSignalIterator();
    for (; !rows->atEnd(); rows->next()) {
        SSC_TRACE(swuGroup(), kFlow, "%s: Registering signal %s (0x%02X) in SignalDispatcher", getServerName(),
                  rows->getSignalName(), static_cast<unsigned>(rows->getSignalNo()));
        m_pDispatcher->subscribeSignal(rows->getSignalNo(), this, m_clientRef);
    }
}

void SSC_Server::deregisterSignals()
{
    std::unique_ptr<SignalIterator> rows = createSignalIterator();
    for (; !rows->atEnd(); rows->next()) {
        SSC_TRACE(swuGroup(), kFlow, "%s: Deregistering signal %s (0x%02X) in SignalDispatcher", getServerName(),
                  rows->getSignalName(), static_cast<unsigned>(rows->getSignalNo()));
        m_pDispatcher->unsubscribeSignal(rows->getSignalNo(), this);
    }
}

void SSC_Server::startProcess()
{
    if (m_pid != 0) return; // one phantom a server: a second would shadow the first's name
    m_pid = OsService::createPhantom(getProcessName());
    SSC_TRACE(swuGroup(), kFlow, "Created phantom process: %s [pid: %u]", getProcessName(), static_cast<unsigned>(m_pid));
}

void SSC_Server::stopProcess()
{
    if (m_pid != 0) OsService::killProcess(m_pid);
    m_pid = 0;
}

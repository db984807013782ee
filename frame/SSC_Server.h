#pragma once
// Base of every signal server of the core. A server serves a table of
// signal numbers, each with its name and handler, and is reachable by name
// through a phantom process that redirects its signals to the core process.
// Routing inside the core is by signal number alone.
//
// A concrete server declares its table and hands it out:
//
//   static constexpr SSC_Server::SignalTableRow<FooServer> kSignalTable[] = {
//       {FOO_REQ, "FOO_REQ", &FooServer::handleFooReq},
//   };
//   std::unique_ptr<SignalIterator> createSignalIterator() override
//   {
//       return makeSignalIterator(*this, kSignalTable);
//   }
//
// and calls deregisterSignals() from its destructor.

#include "frame/FlatHashMap.h"
#include "frame/ServerResolver.h"
#include "frame/SignalDispatcherClient.h"
#include "frame/SignalDispatcherIf.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>

class SSC_Server : public SignalDispatcherClient, public ServerResolver {
public:
    template <typename Server>
    struct SignalTableRow {
        ose::SIGSELECT sigNo;
        const char* name;
        void (Server::*handler)(ose::Signal* signal);
    };

    // One walk over a server's table; made for the walk, destroyed by the walker,
    // who moves the index.
    class SignalIterator {
    public:
        explicit SignalIterator(std::uint32_t rows) : m_rows(rows) {}
        virtual ~SignalIterator() = default;
        virtual ose::SIGSELECT getSignalNo() const = 0;
        virtual const char* getSignalName() const = 0;
        virtual void handleSignal(ose::Signal* signal) = 0;

        bool atEnd() const { return m_index >= m_rows; }
        void next() { ++m_index; }
        // Straight to a row, for a walker that knows where its number is.
        void moveTo(std::uint32_t index) { m_index = index; }

    protected:
        std::uint32_t m_rows;
        std::uint32_t m_index = 0;
    };

    // A row of a concrete server's list of clients.
    struct Subscriber {
        ose::PROCESS pid;
        std::uint32_t word1;
        std::uint32_t word2;

        friend bool operator==(const Subscriber&, const Subscriber&) = default;
    };

    explicit SSC_Server(SignalDispatcherIf* dispatcher);
    ~SSC_Server() override;

    void receiveSignal(ose::Signal* signal) override;
    std::uint32_t getClientRef() override { return m_clientRef; }
    void registerSignals() override;
    // The server itself, for servers without a client-side interface.
    std::any resolve() override { return this; }

    virtual void startProcess();
    virtual void stopProcess();
    // The name of the phantom process.
    virtual const char* getProcessName() const = 0;
    // The name in trace texts.
    virtual const char* getServerName() const = 0;
    virtual std::unique_ptr<SignalIterator> createSignalIterator() = 0;

    void deregisterSignals();
    ose::PROCESS getPid() const { return m_pid; }

protected:
    template <typename Server, std::size_t N>
    static std::unique_ptr<SignalIterator> makeSignalIterator(Server& server,
                                                              const SignalTableRow<Server> (&table)[N])
    {
        return makeSignalIterator<Server>(server, std::span<const SignalTableRow<Server>>(table));
    }
    // Also for a server whose table is still empty.
    template <typename Server>
    static std::unique_ptr<SignalIterator> makeSignalIterator(Server& server,
                                                              std::span<const SignalTableRow<Server>> table);

    SignalDispatcherIf* m_pDispatcher; // not owned
    ose::PROCESS m_pid = 0;            // the phantom; 0 while none exists
    std::uint32_t m_clientRef;

private:
    template <typename Server>
    class TableIterator;

    struct SigNoHash {
        std::size_t operator()(ose::SIGSELECT sigNo) const { return sigNo; }
    };
    // The row of each number in the table (the first, where a number is
    // there twice), made once: a signal finds its handler without a walk.
    void indexTable();

    std::unique_ptr<SignalIterator> m_pRows; // the table, for dispatch
    FlatHashMap<ose::SIGSELECT, std::uint32_t, SigNoHash> m_rowOf;
};

template <typename Server>
class SSC_Server::TableIterator : public SSC_Server::SignalIterator {
public:
    TableIterator(Server& server, const SignalTableRow<Server>* table, std::uint32_t rows)
        : SignalIterator(rows), m_server(server), m_pTable(table)
    {
    }
    ose::SIGSELECT getSignalNo() const override { return m_pTable[m_index].sigNo; }
    const char* getSignalName() const override { return m_pTable[m_index].name; }
    void handleSignal(ose::Signal* signal) override
    {
        const auto handler = m_pTable[m_index].handler;
        std::invoke(handler, m_server, signal);
    }

private:
    Server& m_server;
    const SignalTableRow<Server>* m_pTable;
};

template <typename Server>
std::unique_ptr<SSC_Server::SignalIterator> SSC_Server::makeSignalIterator(Server& server,
                                                                           std::span<const SignalTableRow<Server>> table)
{
    return std::make_unique<TableIterator<Server>>(server, table.data(), static_cast<std::uint32_t>(table.size()));
}

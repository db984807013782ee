#pragma once
// The node platform's name server "ose_ns", our own: processes publish
// service names with NS_ADD_SERVICE and clients look them up with
// NS_FIND_SERVICE. A name belongs to the process that added it; when that
// process dies the name is free again, so a restarted program can publish
// it anew.

#include "vanto/VantoSignalTable.h"

#include "ose/Signal.h"
#include "ose/World.h"

#include <map>
#include <string>

class VantoNameServer {
public:
    VantoNameServer() = default;
    ~VantoNameServer();
    VantoNameServer(const VantoNameServer&) = delete;
    VantoNameServer& operator=(const VantoNameServer&) = delete;

    [[noreturn]] void run();
    // One received signal; the caller frees it.
    void handleSignal(ose::Signal* signal);

    std::size_t serviceCount() const { return m_services.size(); }

private:
    using Entry = VantoSignalEntry<VantoNameServer>;
    static const Entry kTable[];

    void onAdd(ose::Signal* signal, ose::PROCESS from);
    void onFind(ose::Signal* signal, ose::PROCESS from);
    void onOwnerDown(ose::Signal* signal, ose::PROCESS from);
    void reply(ose::SIGSELECT sigNo, std::uint32_t result, ose::PROCESS pid, ose::PROCESS to);
    void supervise(ose::PROCESS pid);

    std::map<std::string, ose::PROCESS> m_services;
    std::map<ose::PROCESS, ose::OSATTREF> m_supervised;
};

// Creates and starts the name server process in node.
ose::PROCESS createNameServer(ose::World& world, ose::Node& node);

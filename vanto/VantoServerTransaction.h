#pragma once
// One open transaction at the transaction server: who made it, the resources
// to tell at its end, the statements handed over for it, and the statements
// still arriving in pieces, one chain per sender.

#include "ose/Types.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

class VantoServerTransaction {
public:
    // Bounds on what one client may make the server hold.
    static constexpr std::size_t kMaxStatementBytes = 16u * 1024u * 1024u;
    static constexpr std::size_t kMaxTransactionBytes = 64u * 1024u * 1024u;

    VantoServerTransaction(std::int32_t id, ose::PROCESS creator) : m_id(id), m_creator(creator) {}

    std::int32_t id() const { return m_id; }
    ose::PROCESS creator() const { return m_creator; }
    const std::vector<ose::PROCESS>& resources() const { return m_resources; }
    const std::vector<std::string>& statements() const { return m_statements; }

    // False when it was a resource already.
    bool addResource(ose::PROCESS resource);
    void removeResource(ose::PROCESS resource);
    bool involves(ose::PROCESS pid) const;

    // A full piece of a statement from sender.
    void appendPiece(ose::PROCESS sender, const char* text, std::size_t length);
    // The last piece: the statement is whole.
    void finishStatement(ose::PROCESS sender, const char* text, std::size_t length);
    // A statement of sender will never be finished.
    void dropChainOf(ose::PROCESS sender);
    bool hasChainOf(ose::PROCESS sender) const { return m_chains.count(sender) != 0; }

    // Something handed over was lost or malformed: the transaction can only
    // roll back.
    void markBroken(const std::string& why);
    bool isBroken() const { return !m_broken.empty(); }
    // Why it cannot commit: broken, or a piece chain without its end.
    std::string whyNotCommittable() const;

private:
    bool withinBounds(std::size_t more, std::size_t statementSoFar);

    std::int32_t m_id;
    ose::PROCESS m_creator;
    std::vector<ose::PROCESS> m_resources;
    std::vector<std::string> m_statements;
    std::map<ose::PROCESS, std::string> m_chains;
    std::size_t m_bytes = 0;
    std::string m_broken;
};

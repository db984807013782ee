#include "vanto/VantoServerTransaction.h"

#include <algorithm>

bool VantoServerTransaction::addResource(ose::PROCESS resource)
{
    if (std::find(m_resources.begin(), m_resources.end(), resource) != m_resources.end())
        return false;
    m_resources.push_back(resource);
    return true;
}

void VantoServerTransaction::removeResource(ose::PROCESS resource)
{
    m_resources.erase(std::remove(m_resources.begin(), m_resources.end(), resource), m_resources.end());
}

bool VantoServerTransaction::involves(ose::PROCESS pid) const
{
    return pid == m_creator || std::find(m_resources.begin(), m_resources.end(), pid) != m_resources.end();
}

bool VantoServerTransaction::withinBounds(std::size_t more, std::size_t statementSoFar)
{
    if (statementSoFar + more > kMaxStatementBytes || m_bytes + more > kMaxTransactionBytes) {
        markBroken("statement or transaction too long");
        return false;
    }
    m_bytes += more;
    return true;
}

void VantoServerTransaction::appendPiece(ose::PROCESS sender, const char* text, std::size_t length)
{
    if (isBroken())
        return;
    std::string& chain = m_chains[sender];
    if (!withinBounds(length, chain.size())) {
        m_chains.erase(sender);
        return;
    }
    chain.append(text, length);
}

void VantoServerTransaction::finishStatement(ose::PROCESS sender, const char* text, std::size_t length)
{
    const auto chain = m_chains.find(sender);
    std::string statement = chain == m_chains.end() ? std::string() : std::move(chain->second);
    if (chain != m_chains.end())
        m_chains.erase(chain);
    if (isBroken() || !withinBounds(length, statement.size()))
        return;
    statement.append(text, length);
    m_statements.push_back(std::move(statement));
}

void VantoServerTransaction::dropChainOf(ose::PROCESS sender)
{
    if (m_chains.erase(sender) != 0)
        markBroken("a statement was cut off");
}

void VantoServerTransaction::markBroken(const std::string& why)
{
    if (m_broken.empty())
        m_broken = why;
    m_chains.clear();
    m_statements.clear();
}

std::string VantoServerTransaction::whyNotCommittable() const
{
    if (isBroken())
        return m_broken;
    if (!m_chains.empty())
        return "a statement without its last piece";
    return {};
}

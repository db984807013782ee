#pragma once
// A management client of the node, written from the gateway document alone:
// it waits for the object process's loop, finds the management service at
// the name server, opens transactions at the transaction server and
// creates, sets, gets and deletes managed objects with MAOFRO signals.

#include "app/GatewayTransactionPort.h"
#include "platform/VantoTransactionMgmtClient.h"
#include "tests/system/NodeProcess.h"
#include "tests/system/SignalBytes.h"

#include "ose/BigEndian.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace systemtest::maofro {

inline constexpr std::uint32_t kCreateReq = 0xB0061, kCreateCfm = 0xB0062, kDeleteReq = 0xB0063,
                               kDeleteCfm = 0xB0064, kGetReq = 0xB0065, kGetCfm = 0xB0066, kSetReq = 0xB0067,
                               kSetCfm = 0xB0068;

inline std::string word(std::uint32_t value)
{
    std::string bytes(4, '\0');
    ose::storeBe32(bytes.data(), value);
    return bytes;
}

inline std::uint32_t wordAt(const std::string& bytes, std::size_t offset)
{
    return bytes.size() >= offset + 4 ? ose::loadBe32(bytes.data() + offset) : 0xDEADBEEFu;
}

// An attribute block: type, element count and zero, length, the text.
inline std::string block(std::uint32_t type, const std::string& text)
{
    const std::uint32_t length = static_cast<std::uint32_t>((text.size() + 4) & ~std::size_t{3});
    std::string bytes = word(type) + std::string("\0\1\0\0", 4) + word(length) + text;
    bytes.resize(bytes.size() + (length - text.size()), '\0');
    return bytes;
}

// A request of that number with the body in the layout the document gives.
inline std::string request(std::uint32_t sigNo, std::uint32_t transactionId, std::uint32_t froId,
                           std::uint32_t froType, const std::string& xml, std::uint32_t count = 2,
                           std::uint32_t type = 21)
{
    constexpr std::uint32_t kActionNoCfmReq = 0xB0073, kActionReq = 0xB0077;
    std::string head = word(sigNo) + word(transactionId);
    if (sigNo == kCreateReq) head += word(0) + word(froType) + word(count);
    else if (sigNo == kActionReq || sigNo == kActionNoCfmReq) head += word(0) + word(0) + word(froType) + word(0) + word(count);
    else head += word(froId) + word(0) + word(froType) + word(count);
    return head + block(type, xml);
}

inline std::string mim(const std::string& ldn, const std::string& body)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n<mim version=\"1.0\">\n<class ldn=\"" + ldn + "\">\n" +
           body + "</class>\n</mim>\n";
}

inline std::string attr(const std::string& name, const std::string& type, const std::string& value)
{
    return "<attr name=\"" + name + "\" type=\"" + type + "\" value=\"" + value + "\"/>\n";
}

// The text of a confirmation's attribute block that starts at `offset`.
inline std::string textAt(const std::string& bytes, std::size_t offset)
{
    if (bytes.size() <= offset + 12) return {};
    const std::string text = bytes.substr(offset + 12);
    return text.substr(0, text.find('\0'));
}

class ManagementClient {
public:
    explicit ManagementClient(const NodeProcess& node) : m_port(m_client), m_transactions(m_port)
    {
        EXPECT_TRUE(m_client.connect(node.socketPath(), "manager"));
        awaitObjectProcess();
        findService();
    }

    std::int32_t begin()
    {
        std::int32_t id = 0;
        EXPECT_EQ(m_transactions.create(id), vanto_trans::TransResult::Ok);
        return id;
    }
    bool commit(std::int32_t id) { return m_transactions.commit(id) == vanto_trans::TransResult::Ok; }
    bool rollback(std::int32_t id) { return m_transactions.rollback(id) == vanto_trans::TransResult::Ok; }
    // The commit request handed to the transaction server, its answer not
    // awaited: what follows races the commit. Each of the `exchanges` that
    // follow lets the node run a little further before the client goes on.
    bool commitWithoutWaiting(std::int32_t id, int exchanges)
    {
        constexpr std::uint32_t kCommitReq = 10007;
        const auto server = m_client.hunt("VantoTransaction", 0);
        if (!server || *server == 0 ||
            !m_client.sendAcknowledged(*server, word(kCommitReq) + word(77) + word(static_cast<std::uint32_t>(id)) +
                                                    word(0)))
            return false;
        for (int i = 0; i < exchanges; ++i)
            if (!m_client.time()) return false;
        return true;
    }

    struct Answer {
        std::uint32_t result;
        std::uint32_t froId; // of a create
        std::string text;    // the object's XML, or the error
    };
    Answer create(std::int32_t tid, std::uint32_t froType, const std::string& xml)
    {
        const std::string cfm = ask(request(kCreateReq, tx(tid), 0, froType, xml), kCreateCfm);
        return {wordAt(cfm, 12), wordAt(cfm, 8), textAt(cfm, 20)};
    }
    Answer set(std::int32_t tid, std::uint32_t froId, std::uint32_t froType, const std::string& xml)
    {
        const std::string cfm = ask(request(kSetReq, tx(tid), froId, froType, xml), kSetCfm);
        return {wordAt(cfm, 8), froId, textAt(cfm, 16)};
    }
    Answer remove(std::int32_t tid, std::uint32_t froId, std::uint32_t froType, const std::string& ldn)
    {
        const std::string cfm = ask(request(kDeleteReq, tx(tid), froId, froType, mim(ldn, "")), kDeleteCfm);
        return {wordAt(cfm, 8), froId, textAt(cfm, 16)};
    }
    // A get outside any transaction: the committed object.
    Answer get(std::uint32_t froType, const std::string& ldn)
    {
        const std::string cfm = ask(request(kGetReq, 0, 0, froType, mim(ldn, "")), kGetCfm);
        return {wordAt(cfm, 8), 0, textAt(cfm, 16)};
    }

    // Sends the bytes and gives the answer of that number.
    std::string ask(const std::string& bytes, std::uint32_t answerNo)
    {
        EXPECT_TRUE(m_client.send(m_service, bytes));
        const auto answer = nextOf(m_client, answerNo);
        return answer ? answer->bytes : std::string();
    }
    bool send(const std::string& bytes) { return m_client.send(m_service, bytes); }
    std::uint32_t service() const { return m_service; }
    ose::GatewayClient& client() { return m_client; }

private:
    static std::uint32_t tx(std::int32_t tid) { return static_cast<std::uint32_t>(tid); }

    // The object process answers its diagnosis timer only from its receive
    // loop, which it enters when its start, the restore included, is done.
    void awaitObjectProcess()
    {
        constexpr std::uint32_t kDiagTimerReq = 0x1705110, kDiagTimerCfm = 0x1705111;
        const auto objects = m_client.hunt("support_system_control_thread", 0);
        ASSERT_TRUE(objects && *objects != 0) << "no object process";
        ASSERT_TRUE(m_client.send(*objects, word(kDiagTimerReq) + word(1) + word(0)));
        ASSERT_TRUE(nextOf(m_client, kDiagTimerCfm).has_value()) << "the object process never came to its loop";
    }

    void findService()
    {
        const std::string name = "ZORV_SUP_SYS_CTRL_MGMT_SERVICE";
        const std::uint32_t field = static_cast<std::uint32_t>((name.size() + 4) & ~std::size_t{3});
        std::string find = word(31602) + word(field) + name;
        find.resize(8 + field, '\0');
        const auto ns = m_client.hunt("ose_ns", 0);
        if (ns && m_client.send(*ns, find)) {
            const auto reply = nextOf(m_client, 31603);
            if (reply && wordAt(reply->bytes, 4) == 0) m_service = wordAt(reply->bytes, 8);
        }
        EXPECT_NE(m_service, 0u) << "the management service was not published";
    }

    ose::GatewayClient m_client;
    app::GatewayTransactionPort m_port;
    VantoTransactionMgmtClient m_transactions;
    std::uint32_t m_service = 0;
};

} // namespace systemtest::maofro

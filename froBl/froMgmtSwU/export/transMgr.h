#pragma once
// The open transactions of the management client. While a transaction is
// open the real objects in froMgr stay as they are; each object it touches is
// stood for by a shadow (a dummy_fRO with the attribute TransState: CREATE,
// SET or DELETE). The platform's commit plays the shadows into froMgr; its
// rollback drops them. An object stands in at most one transaction at a time.
//
// Operations that take a transaction id return 1 on success, 0 on failure.

#include "froBl/froMgmtSwU/export/TransMgrCallbackIf.h"
#include "froBl/froMgmtSwU/export/fRO.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

class VantoTransactionApi;
class froMgr;
class fROFactory;

class transMgr {
public:
    static constexpr const char* kCreate = "CREATE";
    static constexpr const char* kSet = "SET";
    static constexpr const char* kDelete = "DELETE";
    static constexpr const char* kTransState = "TransState";

    transMgr(froMgr& table, fROFactory& factory, VantoTransactionApi& platform);
    ~transMgr();
    transMgr(const transMgr&) = delete;
    transMgr& operator=(const transMgr&) = delete;

    // The transactions of the process, on its object table and the platform.
    static transMgr& instance();

    // externalId in: the id wanted (negative for a new one); out: the id given.
    int createMO(std::int32_t transactionId, const std::string& ldn, const std::vector<std::string>& names,
                 const std::vector<std::string>& values, const std::vector<std::string>& types,
                 std::uint32_t froType, std::int32_t& externalId);
    int deleteMO(std::int32_t transactionId, const std::string& ldn);
    int setMoAttribute(std::int32_t transactionId, const std::string& ldn, const std::string& name,
                       const std::string& value);
    // Id 0: not in a transaction. An empty names list asks for all attributes.
    int getMoAttributes(std::int32_t transactionId, const std::string& ldn, std::vector<std::string>& names,
                        std::vector<std::string>& values, std::vector<std::string>& types);
    fRO* getFro(std::int32_t transactionId, const std::string& ldn);
    std::string getLdn(std::int32_t transactionId, std::int32_t internalId);
    bool isInTransaction(std::int32_t transactionId, const std::string& moType);
    // The ldns in state DELETE, each child before its ancestors.
    std::vector<std::string> getDeleted(std::int32_t transactionId) const;
    // The ldns of real objects that a create in the transaction replaces (a
    // delete and a create of one ldn), a child before its parent.
    std::vector<std::string> getReplaced(std::int32_t transactionId) const;
    bool commit(std::int32_t transactionId, std::vector<std::string>& created, std::vector<std::string>& set,
                std::vector<std::string>& deleted, TransMgrCallbackIf* callback);
    bool rollback(std::int32_t transactionId);
    void rollbackAll();

    bool hasTransaction(std::int32_t transactionId) const { return m_transactions.count(transactionId) != 0; }
    std::size_t transactionCount() const { return m_transactions.size(); }

private:
    using LdnDict = std::map<std::string, std::unique_ptr<fRO>>;
    struct Found {
        fRO* shadow = nullptr;
        std::int32_t transactionId = 0;
    };

    LdnDict* dictionary(std::int32_t transactionId);
    std::vector<std::string> listed(std::int32_t transactionId, bool replaced) const;
    bool registerWithPlatform(std::int32_t transactionId);
    Found findInAny(const std::string& ldn) const;
    int newShadow(std::int32_t transactionId, const std::string& ldn, const std::vector<std::string>& names,
                  const std::vector<std::string>& values, const std::vector<std::string>& types,
                  std::uint32_t froType, std::int32_t& externalId, const char* state);
    int insertShadow(std::int32_t transactionId, const std::string& ldn, std::unique_ptr<fRO> shadow);
    int removeFro(std::int32_t transactionId, const std::string& ldn);
    static std::string stateOf(const fRO* shadow);
    static void setState(fRO& shadow, const char* state);
    static int readAttributes(const fRO* first, const fRO* second, std::vector<std::string>& names,
                              std::vector<std::string>& values, std::vector<std::string>& types);
    static bool copyAttributes(const fRO& from, fRO& to, bool withAdding);
    bool commitShadow(const std::string& ldn, fRO& shadow, std::vector<std::string>& created,
                      std::vector<std::string>& set, std::vector<std::string>& deleted, TransMgrCallbackIf* callback);
    void dropDictionary(std::map<std::int32_t, LdnDict>::iterator it);

    int createWithShadow(std::int32_t transactionId, const Found& found, const std::string& ldn,
                         const std::vector<std::string>& names, const std::vector<std::string>& values,
                         const std::vector<std::string>& types, std::uint32_t froType, std::int32_t& externalId);
    int deleteWithShadow(std::int32_t transactionId, const Found& found, const std::string& ldn);
    int setWithShadow(const Found& found, const std::string& ldn, const std::string& name, const std::string& value);

    froMgr& m_table;
    fROFactory& m_factory;
    VantoTransactionApi& m_platform;
    std::map<std::int32_t, LdnDict> m_transactions;
};

// A node killed while it commits a transaction of objects, then started
// again on the same database: every object of the transaction comes back
// whole, or none of them does. The child kills itself at chosen calls to the
// database, so every point of the commit is hit on every run.

#include "froBl/froMgmtSwU/export/froTypes.h"
#include "froBl/froMgmtSwU/testSupport/dbTestFixture.h"
#include "platform/VantoTransactionClient.h"
#include "platform/VantoTransactionMgmtClient.h"
#include "platform/VantoTransactionOsePort.h"
#include "platform/testSupport/odbcFaultInjection.h"
#include "vanto/VantoTransactionServer.h"

#include "ose/World.h"

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace fro_types;
using vanto_trans::TransResult;

constexpr int kObjects = 1500;

// Where the child dies: at the nth call of that kind whose statement holds
// the words (nth 0: it does not die).
struct KillPoint {
    const char* what;
    odbc_fault::Call call;
    int nth;
    const char* statementContains;
};

std::string ldnOf(int i)
{
    return "Cabinet=" + std::to_string(i + 1);
}

class DatabaseFacadeCrashTest : public dbTestFixture {
protected:
    // The objects of the transaction, made the same way in the child and here.
    std::vector<std::unique_ptr<fRO>> makeObjects(fROFactory& factory)
    {
        std::vector<std::unique_ptr<fRO>> objects;
        for (int i = 0; i < kObjects; ++i) {
            objects.push_back(factory.createFro(ldnOf(i), kCabinet, -1, false, true, true));
            objects.back()->setAttribute("cabinetIdentifier", "cabinet number " + std::to_string(i));
        }
        return objects;
    }

    // The child: a node with the transaction server and an object process
    // that saves every object in one transaction and commits; it dies where
    // the kill point says. Ends with _exit, or killed.
    [[noreturn]] void runChild(const KillPoint& kill)
    {
        if (kill.nth > 0)
            odbc_fault::dieAt(kill.call, kill.nth, kill.statementContains);
        ose::World world;
        createTransactionServer(world, world.defaultNode(), m_config);
        ose::ProcessSpec definition;
        definition.name = "support_system_control_thread";
        definition.entry = [this] {
            VantoTransactionClient platform;
            DatabaseFacade database(m_config, platform);
            froIdHandler ids;
            fROFactory factory(ids);
            const auto objects = makeObjects(factory);
            VantoTransactionOsePort port;
            VantoTransactionMgmtClient client(port);
            std::int32_t tx = 0;
            if (!database.init() || client.create(tx) != TransResult::Ok)
                _exit(2);
            for (int i = 0; i < kObjects; ++i)
                if (!database.saveFRO(tx, objects[i]->getInternalId(), kCabinet, mimOf(ldnOf(i), *objects[i])))
                    _exit(3);
            _exit(client.commit(tx) == TransResult::Ok ? 0 : 4);
        };
        world.start(world.createProcess(world.defaultNode(), definition));
        world.runUntilIdle();
        _exit(5);
    }

    // One round on a fresh database: the child runs to its kill point (or to
    // its end), then the objects are read back by a database started anew.
    int runRound(const KillPoint& kill)
    {
        TearDown();
        SetUp();
        VantoDb_disconnect(m_probe);
        const pid_t child = fork();
        EXPECT_GE(child, 0);
        if (child == 0)
            runChild(kill);
        int status = 0;
        waitpid(child, &status, 0);
        if (kill.nth > 0) {
            EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << kill.what << ": " << status;
        } else {
            EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "child failed: " << status;
        }
        return countWholeObjects();
    }

    // Read back by a database started anew; -1 when an object is not whole.
    int countWholeObjects()
    {
        m_db = std::make_unique<DatabaseFacade>(m_config, *m_server);
        EXPECT_TRUE(m_db->init());
        std::vector<froRecord> records;
        EXPECT_TRUE(m_db->retrieveFros(kCabinet, kCabinet + 1, records));
        froIdHandler ids;
        fROFactory factory(ids);
        const auto expected = makeObjects(factory);
        for (const froRecord& record : records) {
            const auto it = std::find_if(expected.begin(), expected.end(),
                                         [&](const auto& o) { return o->getInternalId() == record.froId; });
            if (it == expected.end() || stored(record.froId, kCabinet) != attributesOf(**it))
                return -1;
        }
        return static_cast<int>(records.size());
    }
};

TEST_F(DatabaseFacadeCrashTest, ANodeKilledDuringACommitOfObjectsLeavesEveryObjectWholeOrNone)
{
    using odbc_fault::Call;
    const std::vector<std::pair<KillPoint, int>> rounds = {
        {{"no kill", Call::ExecDirect, 0, ""}, kObjects},
        {{"before the commit marker", Call::ExecDirect, 1, "insert into vanto_commit_marks"}, 0},
        {{"before the attribute rows", Call::ExecDirect, 1, "insert into apc_fro_attributes"}, 0},
        {{"before the first object", Call::ExecDirect, 1, "insert into apc_frodata_"}, 0},
        {{"in the middle of the objects", Call::ExecDirect, kObjects / 2, "insert into apc_frodata_"}, 0},
        {{"before the last object", Call::ExecDirect, kObjects, "insert into apc_frodata_"}, 0},
        {{"before the commit reaches the database", Call::EndTran, 1, ""}, 0},
        {{"right after the commit", Call::EndTranAfterCommit, 1, ""}, kObjects},
    };
    for (const auto& [kill, expected] : rounds)
        EXPECT_EQ(runRound(kill), expected) << "killed " << kill.what << " (-1: an object not whole)";
}

} // namespace

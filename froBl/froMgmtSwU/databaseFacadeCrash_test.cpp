// A node killed while it commits a transaction of objects, then started
// again on the same database: every object of the transaction comes back
// whole, or none of them does.

#include "froBl/froMgmtSwU/export/froTypes.h"
#include "froBl/froMgmtSwU/testSupport/dbTestFixture.h"
#include "platform/VantoTransactionClient.h"
#include "platform/VantoTransactionMgmtClient.h"
#include "platform/VantoTransactionOsePort.h"
#include "vanto/VantoTransactionServer.h"

#include "ose/World.h"

#include <csignal>
#include <cstdio>
#include <random>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

using namespace fro_types;
using vanto_trans::TransResult;

constexpr int kObjects = 1500;

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
    // that saves every object in one transaction, leaves a marker file and
    // commits. Ends with _exit only.
    [[noreturn]] void runChild(const std::string& marker)
    {
        ose::World world;
        createTransactionServer(world, world.defaultNode(), m_config);
        ose::ProcessSpec definition;
        definition.name = "support_system_control_thread";
        definition.entry = [this, &marker] {
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
            if (FILE* file = std::fopen(marker.c_str(), "w"))
                std::fclose(file);
            _exit(client.commit(tx) == TransResult::Ok ? 0 : 4);
        };
        world.start(world.createProcess(world.defaultNode(), definition));
        world.runUntilIdle();
        _exit(5);
    }

    // One round on a fresh database: kill the child killAfterMs after its
    // commit began (never when negative); the objects found afterwards and the
    // time from the marker to the child's end.
    std::pair<int, long long> runRound(int killAfterMs)
    {
        TearDown();
        SetUp();
        VantoDb_disconnect(m_probe);
        const std::string marker = m_dir + "/committing";
        const pid_t child = fork();
        EXPECT_GE(child, 0);
        if (child == 0)
            runChild(marker);
        bool sawMarker = false;
        for (int i = 0; i < 120000 && !sawMarker; ++i) {
            sawMarker = access(marker.c_str(), F_OK) == 0;
            if (!sawMarker && waitpid(child, nullptr, WNOHANG) == child)
                break;
            if (!sawMarker)
                std::this_thread::sleep_for(std::chrono::milliseconds(1)); // waits for the child only
        }
        EXPECT_TRUE(sawMarker) << "the child ended before its commit";
        const auto began = std::chrono::steady_clock::now();
        if (killAfterMs >= 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(killAfterMs));
            kill(child, SIGKILL);
        }
        int status = 0;
        waitpid(child, &status, 0);
        const long long tookMs =
            std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - began).count();
        if (killAfterMs < 0) {
            EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "child failed: " << status;
        }
        return {countWholeObjects(), tookMs};
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
    // A round without a kill tells how long the commit takes here, so that
    // the kills spread over it; only the outcome is checked, never the time.
    const auto [all, commitMs] = runRound(-1);
    ASSERT_EQ(all, kObjects);
    std::mt19937 random(20261125);
    int whole = 0, none = 0;
    for (int fifth = 0; fifth <= 5; ++fifth) {
        const int killAfter = static_cast<int>(commitMs * fifth / 4) + static_cast<int>(random() % 3); // to beyond the end
        const int found = runRound(killAfter).first;
        EXPECT_TRUE(found == 0 || found == kObjects)
            << found << " objects came back (-1: one not whole), killed " << killAfter << " ms into the commit";
        (found == kObjects ? whole : none) += 1;
    }
    std::printf("commit of %d objects: %lld ms; kills: %d left every object, %d none\n", kObjects, commitMs, whole,
                none);
}

} // namespace

// A node killed while its transaction server commits, then started again on
// the same database: the transaction is there whole or not at all.

#include "vanto/VantoTransactionServer.h"

#include "platform/VantoTransaction.h"
#include "platform/VantoTransactionMgmtClient.h"
#include "platform/VantoTransactionOsePort.h"
#include "vanto/testSupport/sqliteFile.h"

#include "ose/Kernel.h"
#include "ose/TestWorld.h"

#include <csignal>
#include <cstdio>
#include <random>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

using namespace vanto_trans;

constexpr int kRows = 20000;

std::string rowValue(int i)
{
    return "row " + std::to_string(i) + " of the large transaction, long enough to make the commit take a while";
}

std::string rowStatement(int i)
{
    return "insert into t values (" + std::to_string(i) + ", '" + rowValue(i) + "')";
}

// The child: one node with the server and a client that commits kRows inserts,
// leaving a marker file just before the commit. Ends with _exit only.
[[noreturn]] void runChild(const VantoDbConfig& config, const std::string& marker)
{
    ose::World world;
    ose::Node& node = world.addNode("node");
    createTransactionServer(world, node, config);
    ose::ProcessSpec definition;
    definition.name = "client";
    definition.entry = [&marker] {
        VantoTransactionOsePort port;
        VantoTransactionMgmtClient client(port);
        std::int32_t id = 0;
        if (client.create(id) != TransResult::Ok)
            _exit(2);
        for (int i = 0; i < kRows; ++i)
            VantoTransaction_databaseUpdateSQL(id, rowStatement(i).c_str());
        if (FILE* file = std::fopen(marker.c_str(), "w"))
            std::fclose(file);
        _exit(client.commit(id) == TransResult::Ok ? 0 : 3);
    };
    world.start(world.createProcess(node, definition));
    world.runUntilIdle();
    _exit(4);
}

// Waits (on the wall clock: only for the child) until the marker exists or
// the child has ended.
bool waitForMarker(pid_t child, const std::string& marker)
{
    for (int i = 0; i < 60000; ++i) {
        if (access(marker.c_str(), F_OK) == 0)
            return true;
        if (waitpid(child, nullptr, WNOHANG) == child)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return false;
}

// One round: a child commits, the parent kills it killAfterMs after the commit
// began (never when negative) and starts the server again on the database.
// Gives the rows of the transaction found afterwards, and how long the child
// took from the marker to its end when it was not killed.
struct Round {
    int rows = -1;
    long long commitMs = 0;
};

class VantoTransactionCrashTest : public ose::testing::TestWorld {
protected:
    Round runRound(int killAfterMs)
    {
        Round round;
        sqliteFile db;
        db.query("create table t (id integer primary key, v varchar(0))");
        db.closeProbe();
        const std::string marker = db.dir() + "/committing";

        const pid_t child = fork();
        EXPECT_GE(child, 0);
        if (child == 0)
            runChild(db.config(), marker);
        const bool sawMarker = waitForMarker(child, marker);
        const auto began = std::chrono::steady_clock::now();
        int status = 0;
        if (killAfterMs >= 0) {
            if (sawMarker)
                std::this_thread::sleep_for(std::chrono::milliseconds(killAfterMs));
            kill(child, SIGKILL);
        }
        waitpid(child, &status, 0);
        round.commitMs =
            std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - began).count();
        EXPECT_TRUE(sawMarker || (WIFEXITED(status) && WEXITSTATUS(status) == 0)) << "child failed: " << status;
        if (killAfterMs < 0) {
            EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "child failed: " << status;
        }

        // Started again on the same database: it opens, recovers and commits.
        m_world = std::make_unique<ose::World>(ose::ClockConfig{});
        createTransactionServer(world(), node(), db.config());
        TransResult next = TransResult::BadRequest;
        spawn("restarted", [&] {
            VantoTransactionOsePort port;
            VantoTransactionMgmtClient client(port);
            std::int32_t id = 0;
            ASSERT_EQ(client.create(id), TransResult::Ok);
            VantoTransaction_databaseUpdateSQL(id, "insert into t values (-1, 'after the restart')");
            next = client.commit(id);
        });
        world().runUntilIdle();
        m_world = std::make_unique<ose::World>(ose::ClockConfig{});
        EXPECT_EQ(next, TransResult::Ok);
        EXPECT_EQ(db.scalar("select count(*) from t where id = -1"), "1");

        round.rows = std::stoi(db.scalar("select count(*) from t where id >= 0"));
        if (round.rows == kRows) {
            EXPECT_EQ(db.scalar("select v from t where id = " + std::to_string(kRows - 1)), rowValue(kRows - 1));
        }
        return round;
    }
};

TEST_F(VantoTransactionCrashTest, ANodeKilledDuringACommitLeavesAllOrNothing)
{
    // A round without a kill tells how long a commit takes here, so that the
    // kills spread over it; only the outcome is checked, never the time.
    const Round full = runRound(-1);
    ASSERT_EQ(full.rows, kRows);
    std::mt19937 random(12345);
    int whole = 0, none = 0;
    for (int tenth = 0; tenth <= 11; ++tenth) {
        const int killAfter = static_cast<int>(full.commitMs * tenth / 10) + static_cast<int>(random() % 3);
        const Round round = runRound(killAfter);
        EXPECT_TRUE(round.rows == 0 || round.rows == kRows)
            << "a part of the transaction survived: " << round.rows << " rows, killed " << killAfter << " ms in";
        (round.rows == kRows ? whole : none) += 1;
    }
    std::printf("commit of %d rows: %lld ms; kills: %d left the whole transaction, %d none of it\n", kRows,
                full.commitMs, whole, none);
}

} // namespace

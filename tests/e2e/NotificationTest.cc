// Change notifications of the real agent on the demo station, through the host's event router:
// watches of the command line, consumers of the host's own, vesk-host --watch in a process of its
// own beside a host that writes, and the host's journal.
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <algorithm>

#include <condition_variable>
#include <set>

#include "e2e/HostFixture.h"
#include "platform/IDatabase.h"
#include "platform/Logger.h"
#include "platform/OrlController.h"
#include "station/framework/FrameworkControl.h"
#include "station/log/LogControl.h"

extern char** environ;

namespace {

using namespace vesk::e2e;

const std::string kSeenEnb = "ManagedElement=demo-station-01,ENodeBFunction=1";
const std::string kWatchedNewCell = kEnb + ",EUtranCellFDD=9";

class NotificationTest : public HostFixture {
  protected:
    Json ok(const std::string& command) {
        _shell->runText(command);
        Json answer = lastAnswer();
        EXPECT_TRUE(answer["ok"].get<bool>()) << command << "\n" << answer.dump();
        return answer;
    }
    // Every line the shell printed, parsed; the watches print from their own threads.
    std::vector<Json> lines() {
        std::lock_guard<std::mutex> lock(_shell->outputMutex());
        std::vector<Json> result;
        std::istringstream text(_out.str());
        for (std::string line; std::getline(text, line);) {
            result.push_back(Json::parse(line));
        }
        return result;
    }
    Json lastAnswer() {
        std::vector<Json> all = lines();
        for (auto it = all.rbegin(); it != all.rend(); ++it) {
            if (it->contains("command")) {
                return *it;
            }
        }
        return Json();
    }
    // The notifications watch `id` printed, as "event dn attribute..." in order, once the
    // changes made so far have been delivered.
    std::vector<std::string> seen(int id) {
        _host->settleNotifications();
        return printed(id);
    }
    std::vector<std::string> printed(int id) {
        std::vector<std::string> result;
        for (const Json& line : lines()) {
            if (line.value("watch", 0) != id) {
                continue;
            }
            std::string text =
                line["event"].get<std::string>() + " " + line["dn"].get<std::string>();
            for (auto it = line["attributes"].begin(); it != line["attributes"].end(); ++it) {
                text += " " + it.key();
            }
            result.push_back(text);
        }
        return result;
    }
};

TEST_F(NotificationTest, EachWatchSeesItsOwnCommittedChanges) {
    startAgentShell();
    ok("watch " + kSeenEnb + ",EUtranCellFDD=9");
    ok("watch .*EUtranCellFDD=2");
    ok("create " + kEnb + " EUtranCellFDD=9 cellId=9 earfcndl=6300");
    ok("begin; set " + kWatchedNewCell + " userLabel a; set " + kWatchedNewCell + " cellId 10");
    ok("set " + kEnb + ",EUtranCellFDD=2 userLabel b");
    ok("commit");
    ok("begin; set " + kWatchedNewCell + " userLabel aborted; abort");
    ok("delete " + kWatchedNewCell);

    std::vector<std::string> mine = seen(1);
    ASSERT_GE(mine.size(), 4u);
    EXPECT_EQ(mine.front().rfind("created " + kSeenEnb + ",EUtranCellFDD=9 ", 0), 0u);
    EXPECT_NE(mine.front().find(" cellId"), std::string::npos);
    EXPECT_EQ(mine.back(), "deleted " + kSeenEnb + ",EUtranCellFDD=9");
    // Between them one notification per changed attribute, from the committed transaction only.
    std::multiset<std::string> changed(mine.begin() + 1, mine.end() - 1);
    EXPECT_EQ(changed.count("changed " + kSeenEnb + ",EUtranCellFDD=9 userLabel"), 1u);
    EXPECT_EQ(changed.count("changed " + kSeenEnb + ",EUtranCellFDD=9 cellId"), 1u);
    for (const std::string& line : changed) {
        EXPECT_EQ(line.rfind("changed " + kSeenEnb + ",EUtranCellFDD=9 ", 0), 0u) << line;
        EXPECT_EQ(std::count(line.begin(), line.end(), ' '), 2) << line;
    }
    EXPECT_EQ(seen(2), (Names{"changed " + kSeenEnb + ",EUtranCellFDD=2 lastModification",
                              "changed " + kSeenEnb + ",EUtranCellFDD=2 userLabel"}));
    EXPECT_EQ(ok("unwatch")["notes"][0],
              "watch 1 ended after " + std::to_string(mine.size()) + " notifications");
}

TEST_F(NotificationTest, HiddenAttributesAndLocalDateTimeNeverGoOut) {
    startAgentShell();
    ok("watch");
    int handle = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
    std::unique_ptr<DBObject> cell(IDatabase::getObject(kCell, 1, handle));
    ASSERT_NE(cell, nullptr);
    Attribute* hidden = new Attribute(true, "keyMaterial", std::string("k"), 0, true,
                                      IPCData::AVT_STRING, true, false);
    cell->addAttribute(*hidden);
    Attribute* label = new Attribute(false, "userLabel", std::string("by station"), 0, true,
                                     IPCData::AVT_STRING, true, false);
    cell->addAttribute(*label);
    ASSERT_NE(IDatabase::update(cell.get(), handle), 0);
    ASSERT_NE(IDatabase::setAttribute("ManagedElement=1", 1, "localDateTime",
                                      std::string("2030-01-01T00:00:00"), false,
                                      IPCData::AVT_STRING, true, handle),
              0);
    ASSERT_NE(IDatabase::transaction(IPCData::OP_TX_COMMIT, handle, false), 0);
    EXPECT_EQ(seen(1), (Names{"changed " + kSeenEnb + ",EUtranCellFDD=1 userLabel"}));
}

TEST_F(NotificationTest, NothingIsDeliveredWhileTheHostShutsDown) {
    startAgentShell();
    ok("watch");
    vesk::log::LogCapture log;
    vesk::station::setHostStatus(OrlController::TIB_SHUTTING_DOWN);
    ok("set " + kCell + " userLabel late");
    EXPECT_TRUE(seen(1).empty());
    vesk::station::setHostStatus(OrlController::TIB_RUNNING);
    EXPECT_GE(log.countContaining("OrlController state is TIB_SHUTTING_DOWN. Notifications are "
                                  "not forwarded to orl.",
                                  VESK_LOG_INFO),
              1u);
}

TEST_F(NotificationTest, BadPatternSlowConsumerAndUnknownFilterAreAnswered) {
    startAgentShell();
    _shell->runCommand("watch ([");
    EXPECT_EQ(lastAnswer()["error"].get<std::string>().rfind("bad pattern '([': ", 0), 0u);
    // A consumer that holds its first notification until told to go on.
    std::mutex gate;
    std::condition_variable opened;
    bool open = false;
    auto release = [&] {
        std::lock_guard<std::mutex> lock(gate);
        open = true;
        opened.notify_all();
    };
    // Released however the test ends, so that the consumer's thread can be joined.
    std::shared_ptr<void> guard(nullptr, [&](void*) { release(); });
    vesk::host::events::EventRouter& router = _host->events();
    unsigned long slow = router.addConsumer("slow", [&](unsigned long, const char*, const void*) {
        std::unique_lock<std::mutex> lock(gate);
        opened.wait(lock, [&] { return open; });
    });
    ASSERT_EQ(router.subscribe(slow, vesk::host::events::kCmEventType, {}), OrlOk);
    ok("watch");
    for (int i = 0; i < 5; ++i) {
        ok("set " + kCell + " userLabel l" + std::to_string(i));
    }
    // The watch shows all five labels while the slow consumer still sits on its first
    // notification and keeps the others queued.
    Json consumers;
    size_t labels = 0;
    ASSERT_TRUE(eventually([&] {
        consumers = ok("status")["result"]["events"]["consumers"];
        std::vector<std::string> shown = printed(1);
        labels = std::count_if(shown.begin(), shown.end(), [](const std::string& line) {
            return line.find("userLabel") != std::string::npos;
        });
        return labels == 5 && consumers.size() == 2 && consumers[1]["queued"] == 0 &&
               consumers[0]["queued"] >= 4;
    })) << consumers.dump()
        << " labels shown " << labels;
    EXPECT_EQ(consumers[0]["name"], "slow");
    EXPECT_EQ(consumers[0]["delivered"], 0);
    release();
    EXPECT_TRUE(router.waitIdle(5000));
    OrlNameValuePair pair{"dn", ".*"};
    OrlNameValuePair* foreign[] = {&pair, nullptr};
    EXPECT_EQ(router.record()->unsubscribe(slow, vesk::host::events::kCmEventType, foreign), -8);
    EXPECT_EQ(router.removeConsumer(slow), OrlOk);
}

TEST_F(NotificationTest, FirstJoinWhileUpReadsTheNorthboundNameOnce) {
    vesk::log::LogCapture log;
    startOnStation(VESK_AGENT_PATH);
    // Below the integrated phase the operator's session does not count as the OSS connection,
    // so joins still look at the host's status.
    ASSERT_NE(IDatabase::setAttribute("OAM", 1, "AI_phase", AttributeVariant(3), false,
                                      IPCData::AVT_INT32, false, 0),
              0);
    openShell();
    const char* read = "as ManagedElement's dn when sending AVCN to NBI.";
    EXPECT_EQ(log.countContaining(read), 2u);  // the producer's start and its subscription
    ok("get " + kCell + " cellId");
    ok("get " + kCell + " cellId");
    EXPECT_EQ(log.countContaining(read), 3u);
}

TEST_F(NotificationTest, ProducerRefusedByTheRouterLeavesWritesWorking) {
    _host->events().refuseRegistration(OrlFailure);
    startAgentShell();
    ok("watch");
    ok("set " + kCell + " userLabel unseen");
    EXPECT_TRUE(seen(1).empty());
    EXPECT_EQ(_host->events().producerCount(), 0u);
}

// vesk-host --watch in a process of its own, while another vesk-host writes.
class WatchProgramTest : public StationProgramFixture {};

TEST_F(WatchProgramTest, WatcherPrintsWhatTheWritingHostCommitsUntilInterrupted) {
    std::string out = _dir + "/watch.out";
    std::string err = _dir + "/watch.err";
    std::string state = _dir + "/state";
    std::string script = "exec " + std::string(VESK_HOST_PATH) + " --state " + state +
                         " --watch '.*EUtranCellFDD=1' > " + out + " 2> " + err;
    const char* argv[] = {"sh", "-c", script.c_str(), nullptr};
    pid_t watcher = 0;
    ASSERT_EQ(posix_spawn(&watcher, "/bin/sh", nullptr, nullptr, const_cast<char**>(argv), environ),
              0);
    ASSERT_TRUE(eventually([&] { return slurp(err).find("watching") != std::string::npos; }));
    Outcome wrote =
        agent("set " + kCell + " userLabel west; set " + kEnb + ",EUtranCellFDD=2 userLabel east");
    EXPECT_EQ(wrote.status, 0) << wrote.err;
    ASSERT_TRUE(eventually([&] { return slurp(err).find(" left") != std::string::npos; }));
    kill(watcher, SIGINT);
    int status = 0;
    waitpid(watcher, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    std::string printed = slurp(out);
    EXPECT_NE(printed.find(" changed " + kSeenEnb + ",EUtranCellFDD=1 userLabel=west\n"),
              std::string::npos)
        << printed;
    EXPECT_EQ(printed.find("EUtranCellFDD=2"), std::string::npos) << printed;
    EXPECT_NE(slurp(err).find(" joined"), std::string::npos);
}

// The host's journal takes every notification, watched or not: the last ones in order, narrowed
// by a pattern, never more than --journal. Without it nobody takes them, and the agent says so.
TEST_F(WatchProgramTest, JournalKeepsTheLastNotificationsNobodyWatched) {
    std::string sets = "set " + kCell + " userLabel a; set " + kEnb +
                       ",EUtranCellFDD=2 userLabel b; set " + kCell + " userLabel c; ";
    Outcome kept;
    std::vector<Json> a =
        answers(sets + "notifications 2; notifications .*FDD=2; notifications 9; status", 7,
                "--journal 4", &kept);
    // Each set is a change of lastModification, then of userLabel.
    auto shown = [](const Json& answer) {
        Names result;
        for (const Json& notification : answer["result"]) {
            std::string dn = notification["dn"];
            result.push_back(dn.substr(dn.rfind(',') + 1) + " " +
                             notification["attributes"].dump());
        }
        return result;
    };
    const std::string edited = R"( {"lastModification":"OPERATOR"})";
    const Names cell1 = {"EUtranCellFDD=1" + edited, R"(EUtranCellFDD=1 {"userLabel":"c"})"};
    const Names cell2 = {"EUtranCellFDD=2" + edited, R"(EUtranCellFDD=2 {"userLabel":"b"})"};
    EXPECT_EQ(shown(a[3]), cell1);
    EXPECT_EQ(shown(a[4]), cell2);
    EXPECT_EQ(shown(a[5]), (Names{cell2[0], cell2[1], cell1[0], cell1[1]}));
    EXPECT_EQ(a[6]["result"]["events"]["journal"],
              Json::parse(R"({"kept":4,"capacity":4,"recorded":6})"));
    EXPECT_EQ((kept.out + kept.err).find("notif sending fails"), std::string::npos);

    Outcome none = agent(sets + "notifications", "--no-journal");
    EXPECT_NE((none.out + none.err).find("notif sending fails"), std::string::npos) << none.out;
    EXPECT_NE(none.out.find("error: the host keeps no journal of notifications (--no-journal)"),
              std::string::npos)
        << none.out;
}

TEST_F(WatchProgramTest, MalformedPatternIsRefusedAtOnce) {
    Outcome o = program("--state " + _dir + " --watch '(['");
    EXPECT_EQ(o.status, 1);
    EXPECT_NE(o.err.find("vesk-host: bad --watch pattern '([': "), std::string::npos) << o.err;
}

}  // namespace

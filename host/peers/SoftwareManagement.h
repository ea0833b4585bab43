// The station's software management component, destination 7, which also keeps the backups.
// It takes VESK_BrMOperationReq ("CREATE", "DELETE", "RESTORE", "confirmRestore",
// "cancelCurrentAction"), VESK_InitialiseSWReq and VESK_SwmCmd, queues them and handles them in
// order on its own thread, acting on the station as the real component would: a backup is a zip
// archive of a consistent snapshot of the station database in the backup store
// (VESK_BRM_BACKUP_PATH) with its BrmBackup MO and progress report; a restore puts the archived
// configuration back and restarts the agent on it; upgrade packages are UpgradePackage MOs whose
// state the commands move. Each answer goes back through the station's inbound router.
//
// Behaviours (`peer swm ...`): ok (the default), refuse (the send fails), silent (takes the
// request, does nothing, never answers), fail (starts the work and fails mid-way, answering
// false), stale (as ok, but a package command's answer carries another request's id), slow MS
// (as ok, the work taking MS milliseconds longer, through the station's sleep).
// `peer swm show` lists the requests with what became of them; `peer swm wait` waits (up to a
// minute) until every request received has been handled and its answer taken by the agent.
#pragma once

#include <atomic>
#include <condition_variable>
#include <deque>
#include <memory>
#include <thread>

#include "host/peers/Peer.h"
#include "platform/VeskMessages.h"

namespace vesk {
namespace host {

class Host;

namespace peers {

class SoftwareManagement : public Peer {
  public:
    // `host` restarts the agent after a restore; it must outlive the peer.
    explicit SoftwareManagement(Host& host);
    ~SoftwareManagement() override;

    // On the sender's thread: refuses (refuse), or queues the request; a "cancelCurrentAction"
    // also stops the work under way at once.
    bool receive(const VESK::Messages::SerializableMessage& message, int flag) override;
    bool command(const Words& words, Json* result, std::string* error) override;
    std::string usage() const override;
    // Once the station's state is open: an operation that a stop of the host interrupted is
    // ended (a half-made backup removed, the progress report told).
    void stateOpened() override;
    // Drops what is queued, cancels the work under way and ends the thread.
    void stop() override;

    // The folder of the backups.
    static std::string storePath();

  private:
    struct Request {
        std::unique_ptr<VESK::Messages::SerializableMessage> message;
        size_t record = 0;
    };
    // What an operation came to: the answer's fields and what the record shows.
    struct Outcome {
        bool success = false;
        int code = 0;
        std::string dn;
        std::string info;
    };

    void run();
    // True once the queue is empty and nothing runs, within `ms` of real time.
    bool waitIdle(unsigned ms);
    void handle(Request& request);
    // The backup operations (BackupWork.cc), on the peer's thread.
    void backupRequest(const VESK::Messages::VESK_BrMOperationReq& request, size_t record);
    Outcome createBackup(const std::string& name);
    Outcome deleteBackup(const std::string& dn);
    Outcome restoreBackup(const std::string& dn);
    Outcome confirmRestore(const std::string& dn);
    // Writes the archive of the station's state now to `file` in the store, telling the
    // progress report of `dn` (if not empty) how far it is.
    bool archiveStation(const std::string& file, const std::string& dn, const std::string& name,
                        std::string* error);
    // The upgrade package operations (UpgradeWork.cc).
    void createPackage(const VESK::Messages::VESK_InitialiseSWReq& request, size_t record);
    void packageCommand(const VESK::Messages::VESK_SwmCmd& request, size_t record);
    // The slow behaviour's time, in ten steps; false (at once) when the work is cancelled.
    bool pace();
    bool cancelled() const { return _cancel.load(); }
    // The host is closing: work under way is abandoned as it stands, as a stop of the station
    // leaves it, for stateOpened to end at the next start.
    bool stopping() const { return _stopping.load(); }
    bool failing() const { return behaviour() == "fail"; }
    // Sends `answer` to the agent and notes it in the request's record.
    void answer(const VESK::Messages::SerializableMessage& answer, size_t record, Json shown);

    Host& _host;
    std::mutex _queueMutex;
    std::condition_variable _queued;
    std::condition_variable _idle;
    std::deque<Request> _queue;
    bool _working = false;               // a request taken off the queue is being handled
    std::atomic<bool> _stopping{false};  // set under _queueMutex
    std::atomic<bool> _cancel{false};
    bool _cancelledWork = false;  // the peer's thread only: the last work ended by a cancel
    std::atomic<unsigned> _slowMs{0};
    std::thread _thread;
};

}  // namespace peers
}  // namespace host
}  // namespace vesk

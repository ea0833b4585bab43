// The station's baseband OAM, destination 6: takes the BoamMsg records inside
// VESK_BoamMsgContainer. A set request (ConfMsg_setAttributeReq) is staged under its baseband
// transaction id and answered with VESK_BoamSetAttributeResp through the station's inbound path;
// a commit moves the staged values of one class into what the baseband holds applied, a cancel
// drops them. Behaviours: `accept` (the default), `refuse` (answers -1), `silent` (never
// answers), `strict` (refuses a power pair whose minimum is above its maximum), `late [MS]`
// (accepts, but answers MS milliseconds of station time later, 1200 unless given: after the
// agent's second of waiting, before its next attempt). `show` gives each message decoded
// (transaction id, class, attribute id, values, answer) and what is staged and applied.
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "host/peers/Peer.h"

namespace VESK {
namespace Messages {
class ConfMsg_setAttributeReq;
class BoamMsg_objectOperation;
}  // namespace Messages
}  // namespace VESK

namespace vesk {
namespace host {
namespace peers {

class BasebandOam : public Peer {
  public:
    BasebandOam();
    // Waits for the late answers still under way.
    ~BasebandOam() override;

    bool receive(const VESK::Messages::SerializableMessage& message, int flag) override;
    // Adds "late MS" to the behaviours.
    bool command(const Words& words, Json* result, std::string* error) override;
    Json show() const override;
    std::string usage() const override;

    // The named values of one attribute record as the baseband's model lays it out; unknown
    // ids give the bytes in hex.
    static Json decode(int attributeId, const std::vector<char>& data);

  private:
    // (class, attribute id) -> the record's data bytes.
    typedef std::map<std::pair<int, int>, std::vector<char>> Records;

    void set(const VESK::Messages::ConfMsg_setAttributeReq& request);
    void finish(const VESK::Messages::BoamMsg_objectOperation& operation, bool commit);
    // Delivers the verdict on a set to the agent: now, or (late) from a thread of its own, which
    // marks the set's record `record` when it has.
    void answer(uint32_t transactionId, int status, bool late, size_t record);
    static Json list(const Records& records);

    mutable std::mutex _stateMutex;
    std::map<uint32_t, Records> _staged;  // by baseband transaction id
    Records _applied;
    std::vector<std::thread> _lateAnswers;
    unsigned _lateMs = 1200;
};

}  // namespace peers
}  // namespace host
}  // namespace vesk

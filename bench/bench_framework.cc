// Throughput of the station framework: events through one machine's queue, messages through
// the bus with serialisation, and answers through the inbound router.
#include <benchmark/benchmark.h>

#include <atomic>
#include <memory>
#include <string>

#include "platform/BoamMsg.h"
#include "platform/EventWithMessage.h"
#include "platform/Messaging.h"
#include "platform/ReactiveStateMachine.h"
#include "platform/Semaphore.h"
#include "platform/VeskMessages.h"
#include "station/messages/MessageBus.h"
#include "station/messages/MessageCodec.h"

namespace {

using VESK::Framework::Event;
using VESK::Framework::EventWithMessage;

// Counts events; posts the semaphore at the event with id 2.
class CountingMachine : public VESK::Framework::ReactiveStateMachine {
  public:
    CountingMachine() : ReactiveStateMachine(1998, 1999, nullptr) {}
    ~CountingMachine() override { stopQueue(); }
    int processEvent(Event& event) override {
        if (auto* e = dynamic_cast<EventWithMessage*>(&event))
            delete e->message;
        if (event.eventId == 2)
            done.post();
        return 1;
    }
    VESK::Framework::Semaphore done{0};
};

void BM_EventsThroughOneQueue(benchmark::State& state) {
    CountingMachine machine;
    machine.initializeStateMachine();
    machine.start();
    const int batch = static_cast<int>(state.range(0));
    for (auto _ : state) {
        for (int i = 1; i < batch; ++i)
            machine.enqueueEvent(Event(1), false);
        machine.enqueueEvent(Event(2), false);
        machine.done.wait();
    }
    state.SetItemsProcessed(state.iterations() * batch);
}
BENCHMARK(BM_EventsThroughOneQueue)->Arg(1)->Arg(1000)->UseRealTime();

void BM_SendWithSerialisation(benchmark::State& state) {
    vesk::station::registerComponent(7, [](int, const uint8_t*, size_t, int) { return true; });
    VESK::Messages::VESK_BrMOperationReq request;
    request.operation = "CREATE";
    request.backupName = "backup-2026-11-23";
    for (auto _ : state) {
        benchmark::DoNotOptimize(VESK::Framework::Messaging::sendVeskMessage(7, request));
    }
    vesk::station::unregisterComponent(7);
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_SendWithSerialisation);

void BM_SendAndDecode(benchmark::State& state) {
    vesk::station::registerComponent(2, [](int, const uint8_t* data, size_t size, int) {
        std::string error;
        return VESK::Messages::decodeMessage(data, size, error) != nullptr;
    });
    VESK::Messages::VESK_ValidateFrequencyReq request;
    for (int i = 0; i < 4; ++i) {
        request.cellFrequencies.push_back(
            {"ManagedElement=1,ENodeBFunction=1,EUtranCellFDD=" + std::to_string(i), 5000, 6300});
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(VESK::Framework::Messaging::sendVeskMessage(2, request));
    }
    vesk::station::unregisterComponent(2);
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_SendAndDecode);

void BM_SendSetAttributeRecord(benchmark::State& state) {
    vesk::station::registerComponent(6, [](int, const uint8_t*, size_t, int) { return true; });
    auto record = std::make_unique<VESK::Messages::ConfMsg_setAttributeReq>();
    record->numberOfAttributes = 1;
    for (auto _ : state) {
        VESK::Messages::VESK_BoamMsgContainer container(record.get());
        benchmark::DoNotOptimize(VESK::Framework::Messaging::sendVeskMessage(6, container));
    }
    vesk::station::unregisterComponent(6);
    state.SetBytesProcessed(state.iterations() * record->getMsgSize());
}
BENCHMARK(BM_SendSetAttributeRecord);

void BM_InboundAnswerToMachine(benchmark::State& state) {
    CountingMachine machine;
    machine.initializeStateMachine();
    machine.start();
    VESK::Framework::Messaging::subscribeInbound(VESK::Messages::VESK_SwOssUpdateResp::MESSAGE_ID,
                                                 2, &machine);
    VESK::Messages::VESK_SwOssUpdateResp answer;
    std::vector<uint8_t> bytes = answer.serialize();
    for (auto _ : state) {
        vesk::station::deliverInbound(bytes);
        machine.done.wait();
    }
    VESK::Framework::Messaging::unsubscribeInbound(&machine);
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_InboundAnswerToMachine)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();

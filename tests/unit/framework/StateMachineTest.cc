#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/EventWithMessage.h"
#include "platform/ReactiveStateMachine.h"
#include "platform/Semaphore.h"
#include "platform/VeskMessages.h"
#include "station/framework/EventQueueHandler.h"
#include "station/log/LogControl.h"
#include "unit/Eventually.h"

namespace {

using VESK::Framework::Event;
using VESK::Framework::EventQueueHandler;
using VESK::Framework::EventWithMessage;
using VESK::Framework::ReactiveStateMachine;
using VESK::Framework::Semaphore;
using vesk::test::eventually;

constexpr int kInitial = 1998;
constexpr int kFinal = 1999;
constexpr int kQuit = 1000;
constexpr int kWork = 1001;
constexpr int kIgnored = 1015;

std::atomic<int> g_cleanups{0};
Semaphore g_gate(0);  // a work event with a negative sequence number waits here

// An event with a payload, so that copies can be told from the original.
struct PayloadEvent : Event {
    PayloadEvent(int id, int p, int s) : Event(id), producer(p), seq(s) {}
    Event* copyEvent() const override { return new PayloadEvent(eventId, producer, seq); }
    void cleanup() override { ++g_cleanups; }
    int producer;
    int seq;
};

struct CountedMessage : VESK::Messages::VESK_BrMOperationResp {
    static std::atomic<int> alive;
    CountedMessage() { ++alive; }
    ~CountedMessage() override { --alive; }
};
std::atomic<int> CountedMessage::alive{0};

// Quit leads to the final state, work is handled, anything else is unhandled.
class RecordingMachine : public ReactiveStateMachine {
  public:
    explicit RecordingMachine(EventQueueHandler* handler = nullptr, int delayUs = 0)
        : ReactiveStateMachine(kInitial, kFinal, handler), _delayUs(delayUs) {}
    ~RecordingMachine() override { stopQueue(); }

    int processEvent(Event& event) override {
        if (_delayUs > 0)
            std::this_thread::sleep_for(std::chrono::microseconds(_delayUs));
        auto* p = dynamic_cast<PayloadEvent*>(&event);
        if (p != nullptr && p->seq < 0)
            g_gate.wait();
        std::lock_guard<std::mutex> lock(mutex);
        threads.push_back(std::this_thread::get_id());
        if (event.eventId == kQuit) {
            onExit();
            onEnter(kFinal);
            return 1;
        }
        if (event.eventId != kWork) {
            onUnhandledEvent(event);
            return 0;
        }
        seen.emplace_back(p ? p->producer : -1, p ? p->seq : -1);
        return 1;
    }

    size_t seenCount() {
        std::lock_guard<std::mutex> lock(mutex);
        return seen.size();
    }

    std::mutex mutex;
    std::vector<std::pair<int, int>> seen;
    std::vector<std::thread::id> threads;

  private:
    int _delayUs;
};

TEST(StateMachine, EventsAreCopiedAndProcessedInOrderOnTheMachineThread) {
    RecordingMachine machine;
    machine.initializeStateMachine();
    EXPECT_EQ(kInitial, machine.currentState);
    machine.start();

    constexpr int kPerProducer = 500;
    auto produce = [&](int producer) {
        for (int i = 0; i < kPerProducer; ++i) {
            PayloadEvent event(kWork, producer, i);
            ASSERT_TRUE(machine.enqueueEvent(event, false));
            event.seq = -100;  // the queued copy must not see this
        }
    };
    std::thread a(produce, 0), b(produce, 1);
    a.join();
    b.join();
    ASSERT_TRUE(eventually([&] { return machine.seenCount() == 2 * kPerProducer; }));

    std::lock_guard<std::mutex> lock(machine.mutex);
    int next[2] = {0, 0};
    for (auto& [producer, seq] : machine.seen) {
        ASSERT_EQ(next[producer], seq) << "producer " << producer;
        ++next[producer];
    }
    for (auto id : machine.threads) {
        EXPECT_EQ(machine.threads.front(), id);
        EXPECT_NE(std::this_thread::get_id(), id);
    }
}

TEST(StateMachine, FinalStateRefusesAndDropsLaterEvents) {
    vesk::log::LogCapture capture;
    g_cleanups = 0;
    RecordingMachine machine;
    machine.initializeStateMachine();
    EXPECT_TRUE(machine.allowEnqueue());
    EXPECT_FALSE(machine.hasTerminated());
    machine.start();
    // Held back by the gate, the work behind the quit is still queued when the quit arrives.
    ASSERT_TRUE(machine.enqueueEvent(PayloadEvent(kWork, 0, -1), false));
    ASSERT_TRUE(machine.enqueueEvent(Event(kQuit), false));
    for (int i = 1; i <= 3; ++i)
        machine.enqueueEvent(PayloadEvent(kWork, 0, i), false);
    g_gate.post();
    ASSERT_TRUE(eventually([&] { return machine.hasTerminated(); }));
    EXPECT_FALSE(machine.allowEnqueue());
    EXPECT_FALSE(machine.enqueueEvent(PayloadEvent(kWork, 0, 9), false));
    EXPECT_EQ(1u, capture.count("ReactiveStateMachine: event 1001 refused, the machine has "
                                "terminated",
                                2));
    machine.stopQueue();

    EXPECT_EQ(1u, machine.seenCount());
    // Each of the three queued work events was dropped once, with its cleanup and a line.
    EXPECT_EQ(3, g_cleanups.load());
    EXPECT_EQ(3u, capture.count("EventQueueHandler: event 1001 dropped, its machine is stopped"));
}

TEST(StateMachine, UnhandledEventReleasesItsMessageAndHandledOneDoesNot) {
    RecordingMachine machine;
    machine.initializeStateMachine();
    machine.start();
    auto* message = new CountedMessage();
    ASSERT_EQ(1, CountedMessage::alive.load());
    EventWithMessage event(kIgnored, message);
    ASSERT_TRUE(machine.enqueueEvent(event, false));
    ASSERT_TRUE(eventually([] { return CountedMessage::alive == 0; }));

    // A handled event leaves the message to the handler.
    auto* kept = new CountedMessage();
    EventWithMessage work(kWork, kept);
    ASSERT_TRUE(machine.enqueueEvent(work, false));
    ASSERT_TRUE(eventually([&] { return machine.seenCount() == 1; }));
    machine.stopQueue();
    EXPECT_EQ(1, CountedMessage::alive.load());
    EXPECT_EQ(kept, work.message);
    work.cleanup();
    EXPECT_EQ(0, CountedMessage::alive.load());
}

TEST(StateMachine, DestructionWithEventsInFlightProcessesOrDropsEachOnce) {
    g_cleanups = 0;
    size_t processed = 0;
    {
        RecordingMachine machine(nullptr, 200);
        machine.initializeStateMachine();
        machine.start();
        for (int i = 0; i < 200; ++i)
            machine.enqueueEvent(PayloadEvent(kWork, 0, i), false);
        // Stop while the queue is part way through, whatever the load of the machine.
        ASSERT_TRUE(eventually([&] { return machine.seenCount() > 0; }));
        machine.stopQueue();
        processed = machine.seenCount();
        EXPECT_FALSE(machine.enqueueEvent(PayloadEvent(kWork, 0, 999), false));
    }
    EXPECT_GT(processed, 0u);
    EXPECT_EQ(200u, processed + g_cleanups.load());
}

TEST(StateMachine, SharedQueueServesSeveralMachinesAndForgetsADestroyedOne) {
    EventQueueHandler queue;
    RecordingMachine first(&queue), second(&queue, 100);
    first.initializeStateMachine();
    second.initializeStateMachine();
    first.start();
    for (int i = 0; i < 50; ++i) {
        first.enqueueEvent(PayloadEvent(kWork, 1, i), false);
        second.enqueueEvent(PayloadEvent(kWork, 2, i), false);
    }
    ASSERT_TRUE(eventually([&] { return first.seenCount() == 50; }));
    second.stopQueue();  // drops what is left of the second machine's events
    first.enqueueEvent(Event(kQuit), false);
    ASSERT_TRUE(eventually([&] { return first.hasTerminated(); }));
    // The queue goes on for other machines after one has terminated.
    EXPECT_FALSE(first.enqueueEvent(PayloadEvent(kWork, 1, 99), false));
    EXPECT_EQ(50u, first.seenCount());
}

TEST(Semaphore, WaitBlocksUntilPostFromAnotherThread) {
    Semaphore semaphore(0);
    EXPECT_FALSE(semaphore.tryWait());
    EXPECT_FALSE(semaphore.waitFor(5));
    std::atomic<bool> released{false};
    std::thread waiter([&] {
        semaphore.wait();
        released = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_FALSE(released.load());
    semaphore.post();
    waiter.join();
    EXPECT_TRUE(released.load());

    Semaphore counted(2);
    EXPECT_TRUE(counted.tryWait());
    EXPECT_TRUE(counted.waitFor(1));
    EXPECT_FALSE(counted.tryWait());
}

}  // namespace

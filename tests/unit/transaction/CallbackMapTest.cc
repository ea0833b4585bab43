// The callbacks that actions hang on a host transaction: prepare and abort run them in callback
// order and stop at the first refusal; finish forgets them.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "front/VeskMoImpl.h"
#include "platform/Logger.h"
#include "station/log/LogControl.h"

namespace {

using TibVeskCM::VeskMoImpl;
using vesk::log::LogCapture;

std::vector<std::string> g_calls;
OrlReturnT g_secondAnswer = OrlOk;

OrlReturnT first(unsigned long tx) {
    g_calls.push_back("first " + std::to_string(tx));
    return OrlOk;
}
OrlReturnT second(unsigned long tx) {
    g_calls.push_back("second " + std::to_string(tx));
    return g_secondAnswer;
}
OrlReturnT third(unsigned long tx) {
    g_calls.push_back("third " + std::to_string(tx));
    return OrlOk;
}

// Callbacks are walked by their address; this lists the three in that order.
std::vector<VeskMoImpl::TxCallback> byAddress() {
    std::vector<VeskMoImpl::TxCallback> all = {&first, &second, &third};
    std::sort(all.begin(), all.end(), std::less<VeskMoImpl::TxCallback>());
    return all;
}

TEST(CallbackMapTest, PrepareAndAbortRunTheirOwnCallbacksUntilARefusal) {
    VeskMoImpl* mo = VeskMoImpl::instance();
    g_calls.clear();
    EXPECT_EQ(mo->prepare(31), OrlOk);  // nothing hung on it
    EXPECT_TRUE(g_calls.empty());

    std::vector<VeskMoImpl::TxCallback> order = byAddress();
    for (VeskMoImpl::TxCallback callback : order) {
        mo->insertToCallbackMap(31, TibVeskCM::OrlTxOperationPrepare, callback);
    }
    // A second operation for a callback already there changes nothing.
    mo->insertToCallbackMap(31, TibVeskCM::OrlTxOperationAbort, &first);
    mo->insertToCallbackMap(32, TibVeskCM::OrlTxOperationAbort, &third);

    g_secondAnswer = -6;
    EXPECT_EQ(mo->prepare(31), -6);
    std::vector<std::string> expected;
    for (VeskMoImpl::TxCallback callback : order) {
        expected.push_back((callback == &first    ? "first"
                            : callback == &second ? "second"
                                                  : "third") +
                           std::string(" 31"));
        if (callback == &second)
            break;
    }
    EXPECT_EQ(g_calls, expected);

    g_calls.clear();
    EXPECT_EQ(mo->checkCallbackMap(31, TibVeskCM::OrlTxOperationAbort), OrlOk);
    EXPECT_TRUE(g_calls.empty());  // first stayed a prepare callback

    // Abort of a transaction the front does not hold still runs its abort callbacks.
    LogCapture log;
    EXPECT_EQ(mo->abort(32), OrlOk);
    EXPECT_EQ(g_calls, std::vector<std::string>{"third 32"});

    // Finish of an unknown transaction fails, and forgets its callbacks all the same.
    EXPECT_EQ(mo->finish(31), OrlNotExist);
    EXPECT_EQ(log.count("VeskMoImpl::finish - Transaction finished with failure - txHandle: 31 "
                        "return: -2",
                        VESK_LOG_INFO),
              1u);
    g_calls.clear();
    EXPECT_EQ(mo->prepare(31), OrlOk);
    EXPECT_TRUE(g_calls.empty());

    // An abort callback that refuses is logged and returned.
    g_secondAnswer = OrlFailure;
    mo->insertToCallbackMap(33, TibVeskCM::OrlTxOperationAbort, &second);
    EXPECT_EQ(mo->abort(33), OrlFailure);
    EXPECT_EQ(log.count("VeskMoImpl::abort - Unable to abort changes - txHandle: 33 return: -1",
                        VESK_LOG_ERROR),
              1u);
    mo->finish(32);
    mo->finish(33);
}

}  // namespace

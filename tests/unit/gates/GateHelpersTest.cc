// MO paths and classes of dns, and the number of attempts an implementer is given.
#include <gtest/gtest.h>

#include <cstdlib>

#include "front/VeskMoImpl.h"

namespace {

using TibVeskCM::VeskMoImpl;

TEST(GateHelpersTest, MoPathAndClassOfADn) {
    EXPECT_EQ(VeskMoImpl::GetMoPathFromFdn("A=1"), "/A");
    EXPECT_EQ(VeskMoImpl::GetMoPathFromFdn("A=1,B=2"), "/A/B");
    EXPECT_EQ(VeskMoImpl::GetMoPathFromFdn("ManagedElement=1,Equipment=1,RbsUnit=long-id"),
              "/ManagedElement/Equipment/RbsUnit");
    // The form createMo asks about: parent dn, class, and a closing "/".
    EXPECT_EQ(VeskMoImpl::GetMoPathFromFdn("A=1,B=2,Cell/"), "/A/B/Cell");
    EXPECT_EQ(VeskMoImpl::GetMoPathFromFdn("NoEquals"), "/NoEqual");

    EXPECT_EQ(VeskMoImpl::classFromDn("A=1,B=2"), "B");
    EXPECT_EQ(VeskMoImpl::classFromDn("Only=7"), "Only");
    EXPECT_EQ(VeskMoImpl::classFromDn("A=1,B=x=y"), "B=x");

    EXPECT_TRUE(VeskMoImpl::checkSecMo("ManagedElement=1,SystemFunctions=1,SecM=1,CertM=1"));
    EXPECT_FALSE(VeskMoImpl::checkSecMo("ManagedElement=1,CertM=2"));
}

TEST(GateHelpersTest, AttemptsComeFromTheEnvironmentAtEachCall) {
    const char* name = "DOLM_NUM_OI_SETMOATTR_ATTEMPTS";
    unsetenv(name);
    EXPECT_EQ(VeskMoImpl::getOINumOfAttemptEnv(), 200);
    EXPECT_EQ(VeskMoImpl::GetEnv(name), "");
    setenv(name, "", 1);
    EXPECT_EQ(VeskMoImpl::getOINumOfAttemptEnv(), 200);
    setenv(name, "abc", 1);
    EXPECT_EQ(VeskMoImpl::getOINumOfAttemptEnv(), 200);
    setenv(name, "3", 1);
    EXPECT_EQ(VeskMoImpl::getOINumOfAttemptEnv(), 3);
    setenv(name, "-4", 1);
    EXPECT_EQ(VeskMoImpl::getOINumOfAttemptEnv(), -4);
    unsetenv(name);
}

}  // namespace

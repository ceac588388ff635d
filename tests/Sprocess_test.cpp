#include "Sprocess.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <string>

TEST(Environment, GetAndPut)
{
    unsetenv("TARNWICK_TEST_VAR");
    SString unset = GetEnv("TARNWICK_TEST_VAR");
    EXPECT_TRUE(unset.Defined() && unset.Length() == 0);
    EXPECT_TRUE(GetEnv(SString()).Defined());
    EXPECT_TRUE(GetEnv((const char*)nullptr).Defined());

    SString name("TARNWICK_TEST_VAR");
    {
        SString value("a=b c");
        EXPECT_EQ(PutEnv(name, value), 1);
    }
    EXPECT_STREQ(getenv("TARNWICK_TEST_VAR"), "a=b c") << "the environment outlives the arguments";
    EXPECT_TRUE(GetEnv(name) == "a=b c");
    EXPECT_EQ(PutEnv(name, SString()), 1);
    SString empty = GetEnv("TARNWICK_TEST_VAR");
    EXPECT_TRUE(empty.Defined() && empty.Length() == 0);
}

TEST(ProcessIdString, IsDecimalPid)
{
    EXPECT_TRUE(ProcessIdString() == std::to_string(getpid()).c_str());
}

#include "Sprocess.h"

#include <gtest/gtest.h>
#include <stdlib.h>

TEST(Environment, GetAndPut)
{
    unsetenv("TARNWICK_TEST_VAR");
    for (SString unset : {GetEnv("TARNWICK_TEST_VAR"), GetEnv(SString()), GetEnv((const char*)nullptr)})
        EXPECT_TRUE(unset.Defined() && unset.Length() == 0);
    EXPECT_EQ(PutEnv(SString("TARNWICK_TEST_VAR"), SString("a=b c")), 1);
    EXPECT_STREQ(getenv("TARNWICK_TEST_VAR"), "a=b c") << "the text outlives the arguments";
    EXPECT_TRUE(GetEnv(SString("TARNWICK_TEST_VAR")) == "a=b c");
}

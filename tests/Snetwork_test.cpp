// Name resolution, through the machine's /etc/hosts only: this machine has no
// other network, and names under ".invalid" never resolve.
#include "Snetwork.h"

#include "text_helpers.h"

#include <gtest/gtest.h>

#include <string>

namespace {

struct Lookup {
    std::string text;
    std::string expected;  // Joined() of the answer
};

TEST(Snetwork, GetHostByNameGivesDottedQuads)
{
    const Lookup rows[] = {
        {"localhost", "127.0.0.1"},
        {"LOCALHOST", "127.0.0.1"},
        {"[127.0.0.1]", "127.0.0.1"},
        {"10.1.2.3", "10.1.2.3"},  // numeric: no lookup
        {"nowhere.invalid", "-"},
        {"", "-"},
        {std::string("local\0host", 10), "-"},
        {"[]", "-"},
        {"127.1", "-"},  // shorthands the C library would read as 127.0.0.1
        {"0x7f.0.0.1", "-"},
        {"2130706433", "-"},
    };
    for (const auto& row : rows) {
        SStringList found = GetHostByName(Bytes(row.text));
        EXPECT_TRUE(found.Defined()) << row.text;
        EXPECT_EQ(Joined(found), row.expected) << row.text;
    }
    EXPECT_EQ(Joined(GetHostByName(SString())), "-");
}

TEST(Snetwork, GetHostByAddrGivesCanonicalNameFirst)
{
    for (const char* address : {"127.0.0.1", "[127.0.0.1]"})
        EXPECT_EQ(Str(GetHostByAddr(address).Get(0)), "localhost") << address;
    for (const char* text : {"localhost", "127.0.0", "[127.0.0.1", "", "[IPv6:]", "1.2.3.4.5"}) {
        SStringList found = GetHostByAddr(text);
        EXPECT_TRUE(found.Defined()) << text;
        EXPECT_EQ(found.Count(), 0) << text;
    }
}

}  // namespace

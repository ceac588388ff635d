#include "Ssecurity.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string Text(const SString& s)
{
    return s.Defined() ? std::string(s.Data(), s.Length()) : "(undefined)";
}

}  // namespace

TEST(MD5, Rfc1321SuiteAndHex)
{
    struct { SString input; const char* digest; } rows[] = {
        {"", "d41d8cd98f00b204e9800998ecf8427e"},
        {SString(), "d41d8cd98f00b204e9800998ecf8427e"},
        {"a", "0cc175b9c0f1b6a831c399e269772661"},
        {"abc", "900150983cd24fb0d6963f7d28e17f72"},
        {"message digest", "f96b697d7cb7938d525a2f31aaf161d0"},
        {"abcdefghijklmnopqrstuvwxyz", "c3fcd3d76192e4007dfb496cca67e13b"},
        {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789",
         "d174ab98d277d9f5a5611c2c9f419d9f"},
        {"12345678901234567890123456789012345678901234567890123456789012345678901234567890",
         "57edf4a22be3c955ac49da2e2107b67a"},
        {SString("a\0b", 3), "70350f6027bce3713f6b76473084309b"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Text(MD5(row.input)), row.digest) << Text(row.input);
    EXPECT_EQ(Text(Hex(SString("\x00\xff\x10\x7f", 4))), "00ff107f");
    EXPECT_EQ(Text(Hex(SString())), "");
}

TEST(StoredPassword, PinnedFormsAndRoundTrip)
{
    // Made with md5sum over salt "K" password "\xb7" salt: if a separator
    // ever changes, these stop matching.
    SString salt("fb5ff4bbc41032dbab2245b5681d3c7d");
    SString pinned = "8f78798ccd4b26ef71054fde55d855d3" + salt;
    EXPECT_EQ(StringComp("pass word", pinned), 1);
    EXPECT_EQ(StringComp("", "d0f7b192459a488fb4a95bc82a49df83" + salt), 1);
    EXPECT_EQ(StringComp("pass wore", pinned), 0);
    EXPECT_EQ(StringComp("pass word", SString(pinned.Data(), 63)), 0);
    EXPECT_EQ(StringComp("pass word", pinned + "0"), 0);

    SString password("p\0\xe9", 3);
    SString stored = StringCopy(password);
    EXPECT_EQ(Text(stored).find_first_not_of("0123456789abcdef"), std::string::npos);
    EXPECT_EQ(StringComp(password, stored) + StringComp(SString("p"), stored), 1);
    EXPECT_EQ(stored.Length(), 64);
    EXPECT_FALSE(StringCopy(password) == stored) << "each copy gets its own salt";
}

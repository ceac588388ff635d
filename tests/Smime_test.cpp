#include "Smime.h"

#include <gtest/gtest.h>

#include <string>

static std::string Text(const SString& s)
{
    return s.Defined() ? std::string(s.Data(), s.Length()) : "(undefined)";
}

// RFC 4648 vectors both ways, 76-column lines ended by CR LF, round trips of
// every byte value, and decoding of damaged text.
TEST(Base64, EncodeAndDecode)
{
    const char* rows[][2] = {
        {"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foo", "Zm9v"},
        {"foob", "Zm9vYg=="}, {"fooba", "Zm9vYmE="}, {"foobar", "Zm9vYmFy"},
    };
    for (const auto& [plain, encoded] : rows) {
        EXPECT_EQ(Text(EncodeBase64(plain)), encoded + std::string("\r\n")) << plain;
        EXPECT_EQ(Text(DecodeBase64(encoded)), plain) << encoded;
    }
    EXPECT_FALSE(EncodeBase64(SString()).Defined());
    EXPECT_EQ(Text(DecodeBase64(SString())), "");
    std::string line;
    for (int i = 0; i < 19; i++)
        line += "eHh4";
    EXPECT_EQ(Text(EncodeBase64(std::string(57, 'x').c_str())), line + "\r\n");
    EXPECT_EQ(Text(EncodeBase64(std::string(115, 'x').c_str())), line + "\r\n" + line + "\r\neA==\r\n");
    std::string all;
    for (int n = 0; n < 256; all += (char)n++)
        EXPECT_EQ(Text(DecodeBase64(EncodeBase64(SString(all.data(), n)))), all) << n;

    // Decoding skips junk and stops after the first padded group.
    const std::pair<std::string, std::string> junk[] = {
        {"TWFu\r\nTQ==", "ManM"}, {"TQ==TWFu", "M"}, {"TWE=TWFu", "Ma"}, {"TWF", ""},
        {"TWFuTW", "Man"}, {std::string(" T\tW\0F\xffu!\r\n", 12), "Man"}, {"=\r\n", ""},
    };
    for (const auto& [encoded, plain] : junk)
        EXPECT_EQ(Text(DecodeBase64(SString(encoded.data(), (int)encoded.size()))), plain) << encoded;
}

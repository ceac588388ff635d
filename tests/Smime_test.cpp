#include "Smime.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string Text(const SString& s)
{
    return s.Defined() ? std::string(s.Data(), s.Length()) : "(undefined)";
}

}  // namespace

TEST(Base64, Rfc4648VectorsBothWays)
{
    struct { const char* plain; const char* encoded; } rows[] = {
        {"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foo", "Zm9v"},
        {"foob", "Zm9vYg=="}, {"fooba", "Zm9vYmE="}, {"foobar", "Zm9vYmFy"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Text(EncodeBase64(row.plain)), row.encoded + std::string("\r\n")) << row.plain;
        EXPECT_EQ(Text(DecodeBase64(row.encoded)), row.plain) << row.encoded;
    }
    EXPECT_FALSE(EncodeBase64(SString()).Defined());
    EXPECT_TRUE(DecodeBase64(SString()).Defined());
}

TEST(Base64, LinesOf76EndedByCrLfAndRoundTrips)
{
    std::string line;
    for (int i = 0; i < 19; i++)
        line += "eHh4";
    EXPECT_EQ(Text(EncodeBase64(std::string(57, 'x').c_str())), line + "\r\n");
    EXPECT_EQ(Text(EncodeBase64(std::string(115, 'x').c_str())), line + "\r\n" + line + "\r\neA==\r\n");
    std::string all;
    for (int n = 0; n < 256; all += (char)n++) {
        SString bytes(all.data(), n);
        EXPECT_EQ(Text(DecodeBase64(EncodeBase64(bytes))), all) << n;
    }
}

TEST(Base64, DecodingSkipsJunkAndStopsAtPad)
{
    struct { std::string encoded, plain; } rows[] = {
        {"TWFu\r\nTQ==", "ManM"}, {"TQ==TWFu", "M"}, {"TWE=TWFu", "Ma"}, {"TWF", ""},
        {"TWFuTW", "Man"}, {std::string(" T\tW\0F\xffu!\r\n", 12), "Man"}, {"=\r\n", ""},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Text(DecodeBase64(SString(row.encoded.data(), (int)row.encoded.size()))), row.plain);
}

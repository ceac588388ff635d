#include "Smime.h"

#include <gtest/gtest.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <string>

namespace {

std::string Text(const SString& s)
{
    return s.Defined() ? std::string(s.Data(), s.Length()) : "(undefined)";
}

SString Bytes(const std::string& s)
{
    return SString(s.data(), (int)s.size());
}

// The coreutils encoder's output for bytes, with its "\n" line ends made
// "\r\n": an expected value built without the code under test.
std::string ReferenceBase64(const std::string& bytes)
{
    char name[] = "/tmp/Smime_test.XXXXXX";
    int fd = mkstemp(name);
    EXPECT_EQ(write(fd, bytes.data(), bytes.size()), (ssize_t)bytes.size());
    close(fd);
    std::string out;
    FILE* pipe = popen(("base64 -w 76 " + std::string(name)).c_str(), "r");
    for (int c; pipe && (c = fgetc(pipe)) != EOF;)
        out += c == '\n' ? "\r\n" : std::string(1, (char)c);
    if (pipe)
        pclose(pipe);
    unlink(name);
    return out;
}

}  // namespace

TEST(Base64, Rfc4648VectorsBothWays)
{
    struct { const char* plain; const char* encoded; } rows[] = {
        {"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foo", "Zm9v"}, {"foob", "Zm9vYg=="},
        {"fooba", "Zm9vYmE="}, {"foobar", "Zm9vYmFy"}, {"Man", "TWFu"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Text(EncodeBase64(row.plain)), row.encoded + std::string("\r\n")) << row.plain;
        EXPECT_EQ(Text(DecodeBase64(row.encoded)), row.plain) << row.encoded;
    }
    EXPECT_FALSE(EncodeBase64(SString()).Defined());
    EXPECT_TRUE(DecodeBase64(SString()).Defined());
}

TEST(Base64, LinesOf76EndedByCrLf)
{
    std::string all;
    for (int i = 0; i < 256; i++)
        all += (char)i;
    for (size_t n : {56, 57, 58, 114, 115, 256}) {
        std::string bytes = all.substr(0, n);
        std::string encoded = Text(EncodeBase64(Bytes(bytes)));
        EXPECT_EQ(encoded, ReferenceBase64(bytes)) << n;
        EXPECT_EQ(Text(DecodeBase64(Bytes(encoded))), bytes) << n;
    }
    EXPECT_EQ(Text(EncodeBase64(Bytes(std::string(57, 'x')))).size(), 78u);
}

TEST(Base64, DecodingSkipsJunkAndStopsAtPad)
{
    struct { std::string encoded, plain; } rows[] = {
        {"TWFu\r\nTQ==", "ManM"},
        {"TQ==TWFu", "M"},
        {"TWE=TWFu", "Ma"},
        {"TWF", ""},
        {"TWFuTW", "Man"},
        {std::string(" T\tW\0F\xffu!\r\n", 12), "Man"},
        {"=\r\n", ""},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Text(DecodeBase64(Bytes(row.encoded))), row.plain) << row.encoded;
}

#include "text_helpers.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

using namespace std::string_literals;

namespace {

std::string DebugText(const SString& s, int verbose)
{
    testing::internal::CaptureStderr();
    s.Debug(verbose);
    return testing::internal::GetCapturedStderr();
}

// The "Bytes allocated:" line of the verbose dump.
std::string Allocated(const SString& s)
{
    std::string dump = DebugText(s, 1);
    size_t at = dump.find("Bytes allocated:      ");
    return at == std::string::npos ? "undefined" : dump.substr(at + 22, dump.find('\n', at) - at - 22);
}

} // namespace

TEST(SString, ConstructionAndTheUndefinedString)
{
    SString undefined, empty(""), fromNull(static_cast<const char*>(nullptr));
    EXPECT_TRUE(!undefined.Defined() && undefined.Data() == nullptr && empty.Defined() && fromNull.Defined());
    EXPECT_TRUE(undefined == empty && empty == fromNull && undefined == "" && undefined == nullptr);

    SString s;
    s += "";
    s += SString("");
    EXPECT_FALSE(s.Defined()) << "appending nothing leaves an undefined string undefined";
    s = static_cast<const char*>(nullptr);
    EXPECT_TRUE(s.Defined());
    EXPECT_EQ(Allocated(SString().LowerCase()), "8") << "case conversion defines the string";

    EXPECT_EQ(SString("xyz", -4).Length() + SString('z', -1).Length(), 0);
    EXPECT_EQ(Str(SString(static_cast<const char*>(nullptr), 2)), std::string(2, '\0'));
    EXPECT_EQ(Str(SString('z', 3)) + Str(SString(-42)) + Str(SString(1234567890123L)), "zzz-421234567890123");
    EXPECT_EQ(Str(SString(0.1)) + " " + Str(SString(0.1f)), "0.1 0.1000000014901161");
    EXPECT_DOUBLE_EQ(static_cast<double>(SString("3.25xyz")), 3.25);
    EXPECT_DOUBLE_EQ(static_cast<double>(SString()), 0.0);
}

TEST(SString, BuffersGrowToTheNextMultipleOfEight)
{
    // A buffer starts inside its representation's block and moves out as it
    // grows: every step keeps the bytes and the exact size.
    SString grown;
    std::string want;
    for (int i = 0; i < 296; i++) {
        char c = static_cast<char>(i * 7);
        grown += c;
        want += c;
        ASSERT_EQ(Str(grown), want);
        ASSERT_EQ(Allocated(grown), std::to_string((i + 1) / 8 * 8 + 8));
    }
    grown.Chop();
    EXPECT_EQ(Allocated(grown), "304") << "shrinking keeps the buffer";
}

TEST(SString, IndexingAndChopGiveNulPastTheEnds)
{
    const SString abc("abc");
    struct { int i; char want; } rows[] = {{0, 'a'}, {2, 'c'}, {-1, 'c'}, {-3, 'a'}, {3, 0}, {-4, 0}, {100, 0}};
    for (auto& r : rows)
        EXPECT_EQ(abc[r.i], r.want) << r.i;
    SString s("ab");
    std::string chopped{s.Chop(), s.Chop(), s.Chop()};  // braces: evaluated in order
    EXPECT_EQ(chopped, std::string("ba\0", 3));
    EXPECT_EQ(SString().Chop(), '\0');
}

TEST(SString, SearchingAndCounting)
{
    enum Op { Index, RIndex, Count };
    struct { Op op; SString text, needle; int start, want; } rows[] = {
        {Index, "abcb", "b", 0, 1}, {Index, "abcb", "b", 2, 3}, {Index, "abcb", "b", -1, -1},
        {Index, "abcb", "", 0, -1}, {Index, "abcb", "cbx", 0, -1}, {Index, SString("a\0b\0c", 5), SString("\0c", 2), 0, 3},
        {RIndex, "abcb", "b", 0, 3}, {RIndex, "abcb", "b", 2, 1}, {RIndex, "abcb", "b", -2, 1},
        {RIndex, "abcb", "b", -9, -1}, {RIndex, "abc", "", 0, 2}, {RIndex, "ab", "abc", 0, -1},
        // The string form of RIndex compares like strncmp: it stops at a NUL.
        {RIndex, SString("xa\0c", 4), SString("a\0b", 3), 0, 1},
        {Count, "aaaa", "aa", 0, 3}, {Count, "aaaa", "", 0, 0}, {Count, "aa", "aaa", 0, 0},
    };
    for (auto& r : rows) {
        int got = r.op == Index ? r.text.Index(r.needle, r.start)
                : r.op == RIndex ? r.text.RIndex(r.needle, r.start) : r.text.Count(r.needle);
        EXPECT_EQ(got, r.want) << r.op << " " << Str(r.text) << " " << Str(r.needle) << " " << r.start;
    }
    const SString abcb("abcb");
    EXPECT_EQ(abcb.Index('c'), 2);
    EXPECT_EQ(abcb.Index('c', 9), -1);
    EXPECT_EQ(abcb.RIndex('b', 3), 1) << "char form starts one before start";
    EXPECT_EQ(abcb.RIndex('b', 0), 3);
    EXPECT_EQ(abcb.RIndex('b', 99), 3);
    EXPECT_EQ(SString("a\0a\0", 4).Count('\0'), 2);
}

TEST(SString, ComparisonsAreUnsignedBytewise)
{
    const char* null = nullptr;
    EXPECT_TRUE(SString("abc") < SString("abd") && SString("ab") < SString("abc"));
    EXPECT_TRUE(SString("\xff") > SString("a")) << "bytes compare unsigned";
    EXPECT_TRUE(SString("a\0b", 3) > SString("a\0a", 3) && SString("a\0", 2) != SString("a"));
    EXPECT_FALSE(SString("a") < SString("a"));
    EXPECT_TRUE(!(SString("a") < null) && SString("a") > null && SString("a") > "");
    EXPECT_FALSE(SString("") > "" || SString("") > null || SString("abc") == "ab");
    // The char forms look at the first byte alone.
    EXPECT_TRUE(SString("b") < 'c' && SString("") < '\0' && SString("\xe9") > 'z' && SString("x") == 'x');
    EXPECT_FALSE(SString("bz") > 'b' || SString("") > '\0' || SString("xx") == 'x');
}

// MUTATE(statement): a change to the string s.
#define MUTATE(statement) [](SString& s) { statement; }

TEST(SString, MutatorsWorkAloneAndLeaveCopiesAlone)
{
    // Each mutation runs on a string of its own and on a copy that shares
    // the original, which must keep its bytes.
    struct { const char* text; void (*mutate)(SString&); std::string want; } rows[] = {
        {"Hello", MUTATE(s += "!"), "Hello!"}, {"Hello", MUTATE(s += SString("!")), "Hello!"},
        {"Hello", MUTATE(s += '!'), "Hello!"}, {"Hello", MUTATE(s = "other"), "other"},
        {"Hello", MUTATE(s = 'o'), "o"}, {"Hello", MUTATE(s.Chop()), "Hell"},
        {"Hello", MUTATE(s.Resize(2)[0] = 'J'), "Je"}, {"xyz", MUTATE(s.Resize(5)), "xyz\0\0"s},  // new bytes are NUL
        // Only ASCII letters change case.
        {"aZ\xc9\xe9", MUTATE(s.LowerCase()), "az\xc9\xe9"}, {"aZ\xc9\xe9", MUTATE(s.UpperCase()), "AZ\xc9\xe9"},
        // The operand is the string itself, or points into the buffer that
        // the operation writes.
        {"abc", MUTATE(s += s), "abcabc"}, {"12345678", MUTATE(s += s.Data()), "1234567812345678"},
        {"12345678", MUTATE(s = s.Data() + 4), "5678"},
        // The same once the buffer has left its first block, so that growing
        // it frees the bytes being appended.
        {"1234567", MUTATE(s += "89abcdefghijklmnopqrs"; s += s.Data()), "123456789abcdefghijklmnopqrs123456789abcdefghijklmnopqrs"},
    };
    for (auto& r : rows) {
        const SString original(r.text);
        SString alone(r.text), copy(original);
        r.mutate(alone);
        r.mutate(copy);
        EXPECT_EQ(Str(alone), r.want) << r.text;
        EXPECT_EQ(Str(copy), r.want) << r.text;
        EXPECT_EQ(Str(original), r.text);
    }
}

TEST(SString, SplitExactKeepsEveryField)
{
    struct { const char* text; const char* sep; int limit; const char* want; } rows[] = {
        {"a,,b,", ",", 0, "a||b|"}, {"a,,b,", ",", 2, "a|,b,"}, {"a,,b,", ",", 1, "a,,b,"},
        {"a,,b,", ",", -1, "a||b|"}, {"a::b::c", "::", 0, "a|b|c"}, {"", ",", 0, ""},
        // An empty separator splits into characters; a negative limit keeps the whole.
        {"abc", "", 0, "a|b|c"}, {"abcd", "", 2, "a|bcd"}, {"abcd", "", -3, "abcd"},
    };
    for (auto& r : rows)
        EXPECT_EQ(Joined(SString(r.text).SplitExact(r.sep, r.limit)), r.want) << r.text << " " << r.limit;
    EXPECT_FALSE(SString().SplitExact(",").Defined());
    EXPECT_EQ(Joined(SString("x\0y", 3).SplitExact(SString("\0", 1))), "x|y");
}

TEST(SString, ReadLineAndWriteKeepEveryByte)
{
    std::istringstream in("ab\ncd");
    SString line;
    line.ReadLine(in);
    EXPECT_EQ(line.ReadLine(in), 1) << "a last line without a line end";
    EXPECT_EQ(Str(line), "cd");
    EXPECT_TRUE(in.eof() && !in.fail());
    EXPECT_EQ(line.ReadLine(in), 0);
    EXPECT_EQ(Str(line), "");

    std::string longLine(3000, 'x');
    longLine[1500] = '\0';
    std::istringstream big(longLine + "\r\nnext\n");
    EXPECT_EQ(line.ReadLine(big), 1);
    EXPECT_EQ(Str(line), longLine + "\r\n");

    std::istringstream failed("text\n");
    failed.setstate(std::ios_base::failbit);
    EXPECT_EQ(line.ReadLine(failed), 0);
    EXPECT_EQ(Str(line), "") << "a failed stream still clears the line";

    std::ostringstream out, bad;
    const SString bytes("a\0b\n", 4);
    EXPECT_EQ(bytes.Write(out), 1);
    EXPECT_EQ(out.str(), std::string("a\0b\n", 4));
    bad.setstate(std::ios_base::badbit);
    EXPECT_EQ(bytes.Write(bad), 0);
    EXPECT_EQ(bad.str(), "");
}

TEST(SString, BaseName)
{
    struct { const char* path; const char* suffix; const char* want; } rows[] = {
        {"/var/spool/x.tmp", ".tmp", "x"}, {"x", "", "x"}, {"/a/b/", "", ""},
        {"dir/file-Control", "-Control", "file"}, {"x.tmp", ".tmpx", "x.tmp"}, {".tmp", ".tmp", ""},
    };
    for (auto& r : rows)
        EXPECT_EQ(Str(BaseName(SString(r.path), r.suffix)), r.want) << r.path;
}

TEST(SString, DebugWritesTheExactDump)
{
    const SString bytes("a\\\f\n\r\t\v\0\x1b\xff~", 11);
    EXPECT_EQ(DebugText(bytes, 0), "a\\\\\\f\\n\\r\\t\\v\\0\\27\\255~");
}

TEST(SStringDeathTest, BuffersOfTwentyMillionBytesEndTheProcess)
{
    SString nearly('x', 19999990);
    EXPECT_EXIT(nearly += "abcdefghij", testing::ExitedWithCode(108), "");
    nearly += "abcdefghi";
    EXPECT_EQ(nearly.Length(), 19999999) << "a buffer of 20,000,000 bytes is allowed";
    EXPECT_EXIT(SString('x', 20000000), testing::ExitedWithCode(108), "");
}

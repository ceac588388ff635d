#include <gtest/gtest.h>

#include <fstream>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "SNamedLists.h"

namespace {

using Map = std::vector<std::pair<std::string, std::vector<std::string>>>;

std::string Bytes(const SString& s) { return std::string(s.Data() ? s.Data() : "", s.Length()); }
SString Str(const std::string& s) { return SString(s.data(), static_cast<int>(s.size())); }

// The visible contents, through the public lookups only.
Map Contents(const SNamedStringList& m)
{
    Map out;
    const SStringList keys = m.Keys();
    for (int i = 0; i < keys.Count(); i++) {
        const SStringList values = m.Get(keys.Get(i));
        out.emplace_back(Bytes(keys.Get(i)), std::vector<std::string>());
        for (int j = 0; j < values.Count(); j++)
            out.back().second.push_back(Bytes(values.Get(j)));
    }
    return out;
}

SNamedStringList Build(const Map& contents, int crlf)
{
    SNamedStringList m;
    m.SetCRLF(crlf);
    for (const auto& kv : contents) {
        m[Str(kv.first)].Reset();
        for (const std::string& v : kv.second)
            m[Str(kv.first)].Push(Str(v));
    }
    return m;
}

SNamedStringList Parse(const std::string& text, int crlf)
{
    SNamedStringList m;
    m.SetCRLF(crlf);
    Str(text) >> m;
    return m;
}

Map Read(const std::string& text, int crlf) { return Contents(Parse(text, crlf)); }

std::string Write(const SNamedStringList& m)
{
    SString out;
    out << m;
    return Bytes(out);
}

// The generated round trips below cover the common lines; these are the rest.
TEST(SNamedStringList, WriterEdges)
{
    EXPECT_EQ(Write(Build({{"Empty:", {}}, {"K", {"x"}}}, 1)), "Empty: \r\nK x\r\n");
    SString out("Head\n");
    out << Build({{"A", {"1"}}}, 0);
    EXPECT_EQ(Bytes(out), "Head\nA 1\n");
    SString none;
    none << SNamedStringList();
    EXPECT_FALSE(none.Defined());
}

TEST(SNamedStringList, ReaderSplitsKeysValuesAndContinuations)
{
    struct Row {
        std::string text;
        int crlf;
        Map expected;
    };
    const std::vector<Row> rows = {
        {"Subject hello world\nA x\n y\n\tz\nB w\n", 0,
         {{"Subject", {"hello world"}}, {"A", {"x\n y\n\tz"}}, {"B", {"w"}}}},
        {"B 1\nnoblank\nA 2\nB 3", 0, {{"B", {"1", "noblank", "3"}}, {"A", {"2"}}}},
        {"A x\n\n", 0, {{"A", {"x", ""}}}},
        {"A x\n\n y\n", 0, {{"A", {"x", "\n y"}}}},
        {"A  two\nK\tv x\n", 0, {{"A", {" two"}}, {"K\tv", {"x"}}}},
        {"first\n lead\nA x\n", 0, {{"", {"first\n lead"}}, {"A", {"x"}}}},
        {"A x\r\n", 0, {{"A", {"x\r"}}}},
        {"A x\nB y\r\n", 1, {{"A", {"x\nB y"}}}},
        {"A x\r\n b\r\nB \r\nC x\r\r\n", 1, {{"A", {"x\r\n b"}}, {"B", {""}}, {"C", {"x\r"}}}},
        {"", 0, {}},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.text);
        EXPECT_EQ(Read(r.text, r.crlf), r.expected);
    }

    // Reading resets the map but keeps its flags.
    SNamedStringList m;
    m.SetCaseSensitive(0);
    SString("Old 0\n") >> m;
    SString("a 1\nA 2\n") >> m;
    EXPECT_EQ(Contents(m), (Map{{"a", {"1", "2"}}}));
    m["T"].Push("B 3\n");
    m["T"][0] >> m;  // the text lives in the map that reading empties
    EXPECT_EQ(Contents(m), (Map{{"B", {"3"}}}));
}

// Random bytes, rich in those the text form cares about, holding no line end.
std::string Random(std::mt19937& rng, int maxLen, int crlf)
{
    static const char alphabet[] = "ab Z:\t\r\n\0\xff";
    std::string s;
    for (int n = rng() % (maxLen + 1); n > 0; n--) {
        char c = alphabet[rng() % (sizeof alphabet - 1)];
        s += (c == '\n' && (!crlf || (!s.empty() && s.back() == '\r'))) ? 'n' : c;
    }
    return s;
}

// Generated maps (values may carry continuation lines) and the text that
// belongs to them, built by hand: the writer must give that text, the reader
// the map, and reading then writing the text must give its bytes back.
TEST(SNamedStringList, GeneratedMapsAndTextsRoundTrip)
{
    for (unsigned seed = 1; seed <= 500; seed++) {
        std::mt19937 rng(seed);
        const int crlf = seed % 2;
        const std::string eol = crlf ? "\r\n" : "\n";
        Map contents;
        std::set<std::string> seen;
        std::string text;
        for (int k = rng() % 10; k > 0; k--) {
            std::string key = Random(rng, 8, crlf);
            for (char& c : key)
                c = (c == ' ' || c == '\n' || c == '\r') ? '_' : c;
            if (key.empty() || key[0] == '\t' || !seen.insert(key).second)
                continue;
            contents.emplace_back(key, std::vector<std::string>());
            for (int v = 1 + rng() % 5; v > 0; v--) {
                std::string value = Random(rng, 15, crlf);
                for (int c = rng() % 4 == 0 ? 1 + rng() % 2 : 0; c > 0; c--)
                    value += eol + (rng() % 2 ? " " : "\t") + Random(rng, 10, crlf);
                contents.back().second.push_back(value);
                text += key + " " + value + eol;
            }
        }
        SCOPED_TRACE(seed);
        EXPECT_EQ(Write(Build(contents, crlf)), text);
        EXPECT_EQ(Read(text, crlf), contents);
        EXPECT_EQ(Write(Parse(text, crlf)), text);
    }
}

TEST(SNamedStringList, GoldenSampleKeepsItsMeaning)
{
    std::ifstream in(TARNWICK_TEST_DATA "/named-list-sample.txt", std::ios::binary);
    ASSERT_TRUE(in);
    std::stringstream file;
    file << in.rdbuf();
    const Map expected = {
        {"Function:", {"deliver"}},
        {"Control-Type:", {"local"}},
        {"Priority:", {"5"}},
        {"Mail-From:", {"<alice@example.org> SIZE=2048"}},
        {"Rcpt-To:", {"<bob@example.net>", "<carol@example.net> NOTIFY=FAILURE", ""}},
        {"Received:", {"from relay.example.org (relay.example.org [192.0.2.7])\n"
                       "\tby mx.example.net with ESMTP id 1a2b3c\n"
                       "\tfor <bob@example.net>; Mon, 23 Nov 2026 00:00:00 +0000"}},
        {"Subject:", {" two blanks, the second kept"}},
        {"X-Empty-Line:", {""}},
        {"Trace:", {"smtpd", "dispatcher"}},
    };
    EXPECT_EQ(Read(file.str(), 0), expected);
    EXPECT_EQ(Write(Build(expected, 0)), file.str());
}

TEST(SNamedStringList, LookupDeleteAndCopy)
{
    SNamedStringList m;
    EXPECT_FALSE(m["Ghost"].Defined());
    EXPECT_FALSE(m.Keys().Defined());
    for (int i = 0; i < 23; i++)  // grows the values array several times
        m[SString("K") + SString(i)].Push(SString(i));
    EXPECT_EQ(m.Delete("Ghost"), 1);
    EXPECT_EQ(m.Delete("K0"), 1);
    EXPECT_EQ(m.Delete("K0"), -1);
    EXPECT_EQ(m.Keys().Count(), 22);
    EXPECT_EQ(m.Keys().Get(0), "K1");
    EXPECT_EQ(m.Get("K22").Get(0), "22");

    SNamedStringList h;
    h.SetCRLF(1);
    h["Subject"].Push("hi");
    h["Unset"];
    EXPECT_FALSE(h.Get("subject").Defined());
    h.SetCaseSensitive(0);
    SNamedStringList copy(h);
    copy["SUBJECT"].Push("again");
    EXPECT_EQ(Contents(copy), (Map{{"Subject", {"hi", "again"}}}));
    EXPECT_EQ(Contents(h), (Map{{"Subject", {"hi"}}}));
    m = copy;
    EXPECT_EQ(m.CRLF(), 1);
    EXPECT_EQ(m.Delete("sUBJECT"), 1);
    EXPECT_FALSE(m.Keys().Defined());
}

TEST(SNamedValue, SIndexString)
{
    SNamedValue v;
    EXPECT_EQ(v["x"], -1);
    for (int i = 0; i < 12; i++)
        v[SString("k") + SString(i)] = i * 10;
    EXPECT_EQ(v.Delete("k0"), 1);
    EXPECT_EQ(v.Delete("k0"), -1);
    v["k5"] = -1;
    v.SetCaseSensitive(0);
    SNamedValue copy(v);
    EXPECT_EQ(copy.Get("K11"), 110);
    EXPECT_EQ(copy.Get("X"), -1);
    EXPECT_EQ(copy.Keys().Count(), 10);
    EXPECT_EQ(copy.Keys().Get(0), "k1");

    SIndexString m;
    EXPECT_FALSE(m[3].Defined());
    for (int i = 10; i < 22; i++)
        m[i] = SString(i);
    m[11] = "";
    m.Delete(10);
    m.Delete(99);
    EXPECT_FALSE(m.Get(10).Defined());
    int* numbers = nullptr;
    EXPECT_EQ(SIndexString(m).Keys(&numbers), 10);  // 3 and 11 hold no text
    EXPECT_EQ(numbers[0], 12);
    EXPECT_EQ(numbers[9], 21);
    delete[] numbers;
}

} // namespace

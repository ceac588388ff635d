#include <gtest/gtest.h>

#include <fstream>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "SNamedLists.h"
#include "text_helpers.h"

namespace {

using Map = std::vector<std::pair<std::string, std::vector<std::string>>>;

// The visible contents, through the public lookups only.
Map Contents(const SNamedStringList& m)
{
    Map out;
    const SStringList keys = m.Keys();
    for (int i = 0; i < keys.Count(); i++) {
        const SStringList values = m.Get(keys.Get(i));
        out.emplace_back(Str(keys.Get(i)), std::vector<std::string>());
        for (int j = 0; j < values.Count(); j++)
            out.back().second.push_back(Str(values.Get(j)));
    }
    return out;
}

SNamedStringList Build(const Map& contents, int crlf)
{
    SNamedStringList m;
    m.SetCRLF(crlf);
    for (const auto& kv : contents) {
        m[Bytes(kv.first)].Reset();
        for (const std::string& v : kv.second)
            m[Bytes(kv.first)].Push(Bytes(v));
    }
    return m;
}

Map Read(const std::string& text, int crlf)
{
    SNamedStringList m = Build({}, crlf);
    Bytes(text) >> m;
    return Contents(m);
}

std::string Write(const SNamedStringList& m, SString out = SString()) { return Str(out << m); }

// What the generated round trips below never make: keys without values,
// lines without a blank, blank lines, lines before the first key, a last
// line without its end.
TEST(SNamedStringList, TextFormEdges)
{
    EXPECT_EQ(Write(Build({{"Empty:", {}}, {"K", {"x"}}}, 1)), "Empty: \r\nK x\r\n");
    EXPECT_EQ(Write(Build({{"A", {"1"}}}, 0), "Head\n"), "Head\nA 1\n");
    SString none;
    EXPECT_FALSE((none << SNamedStringList()).Defined());

    const std::pair<std::string, Map> rows[] = {
        {"B 1\nnoblank\nA 2\nB 3", {{"B", {"1", "noblank", "3"}}, {"A", {"2"}}}},
        {"A x\n\n", {{"A", {"x", ""}}}}, {"A x\n\n y\n", {{"A", {"x", "\n y"}}}},
        {"first\n lead\nA x\n", {{"", {"first\n lead"}}, {"A", {"x"}}}}, {"", {}},
    };
    for (const auto& r : rows)
        EXPECT_EQ(Read(r.first, 0), r.second) << r.first;

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
// Keys draw from the bytes that cannot end a key.
std::string Random(std::mt19937& rng, int maxLen, int crlf, bool key = false)
{
    static const char alphabet[] = "abZ:\t\0\xff \r\n";
    std::string s;
    for (int n = rng() % (maxLen + 1); n > 0; n--) {
        char c = alphabet[rng() % (sizeof alphabet - (key ? 4 : 1))];
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
            std::string key = Random(rng, 8, crlf, true);
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
    }
}

TEST(SNamedStringList, GoldenSampleKeepsItsMeaning)
{
    std::ostringstream file;
    file << std::ifstream(TARNWICK_TEST_DATA "/named-list-sample.txt", std::ios::binary).rdbuf();
    const Map expected = {
        {"Function:", {"deliver"}}, {"Control-Type:", {"local"}}, {"Priority:", {"5"}},
        {"Mail-From:", {"<alice@example.org> SIZE=2048"}},
        {"Rcpt-To:", {"<bob@example.net>", "<carol@example.net> NOTIFY=FAILURE", ""}},
        {"Received:", {"from relay.example.org (relay.example.org [192.0.2.7])\n"
                       "\tby mx.example.net with ESMTP id 1a2b3c\n"
                       "\tfor <bob@example.net>; Mon, 23 Nov 2026 00:00:00 +0000"}},
        {"Subject:", {" two blanks, the second kept"}}, {"X-Empty-Line:", {""}},
        {"Trace:", {"smtpd", "dispatcher"}},
    };
    EXPECT_EQ(Read(file.str(), 0), expected);
    EXPECT_EQ(Write(Build(expected, 0)), file.str());
}

TEST(SNamedStringList, LookupDeleteAndCopy)
{
    SNamedStringList m;
    EXPECT_FALSE(m["Ghost"].Defined() || m.Keys().Defined());
    for (int i = 0; i < 23; i++)  // grows the values array several times
        m[SString("K") + SString(i)].Push(SString(i));
    EXPECT_EQ(m.Delete("Ghost") + m.Delete("K0"), 2);
    EXPECT_EQ(m.Delete("K0"), -1);
    EXPECT_TRUE(m.Keys().Get(0) == "K1" && m.Get("K22").Get(0) == "22");  // later values moved down

    SNamedStringList h = Build({{"Subject", {"hi"}}}, 1);
    h["Unset"];  // a key without a value is not listed
    EXPECT_FALSE(h.Get("subject").Defined());
    h.SetCaseSensitive(0);
    SNamedStringList copy(h);
    copy["SUBJECT"].Push("again");
    EXPECT_EQ(Contents(copy), (Map{{"Subject", {"hi", "again"}}}));
    EXPECT_EQ(Contents(h), (Map{{"Subject", {"hi"}}}));
    m = copy;
    EXPECT_EQ(m.CRLF() + m.Delete("sUBJECT"), 2);
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
    EXPECT_EQ(std::make_pair(copy.Get("K11"), copy.Get("X")), std::make_pair(110, -1));
    EXPECT_EQ(Joined(copy.Keys()), "k1|k2|k3|k4|k6|k7|k8|k9|k10|k11");

    SIndexString m;
    EXPECT_FALSE(m[3].Defined());
    for (int i = 10; i < 22; i++)
        m[i] = SString(i);
    m[11] = "";
    m.Delete(10);
    m.Delete(99);
    int* numbers = nullptr;
    EXPECT_EQ(SIndexString(m).Keys(&numbers), 10);  // 3 and 11 hold no text
    EXPECT_EQ(std::make_pair(numbers[0], numbers[9]), std::make_pair(12, 21));
    delete[] numbers;
}

} // namespace

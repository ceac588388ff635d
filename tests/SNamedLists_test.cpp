#include <gtest/gtest.h>

#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "SNamedLists.h"

namespace {

using Map = std::vector<std::pair<std::string, std::vector<std::string>>>;

std::string Bytes(const SString& s)
{
    return std::string(s.Data() ? s.Data() : "", s.Length());
}

SString Str(const std::string& s)
{
    return SString(s.data(), static_cast<int>(s.size()));
}

// The visible contents, through the public lookups only.
Map Contents(const SNamedStringList& m)
{
    Map out;
    const SStringList keys = m.Keys();
    for (int i = 0; i < keys.Count(); i++) {
        const SStringList values = m.Get(keys.Get(i));
        std::vector<std::string> v;
        for (int j = 0; j < values.Count(); j++)
            v.push_back(Bytes(values.Get(j)));
        out.emplace_back(Bytes(keys.Get(i)), v);
    }
    return out;
}

SNamedStringList Build(const Map& contents, int crlf)
{
    SNamedStringList m;
    m.SetCRLF(crlf);
    for (const auto& kv : contents) {
        SStringList& values = m[Str(kv.first)];
        values.Reset();
        for (const std::string& v : kv.second)
            values.Push(Str(v));
    }
    return m;
}

Map Read(const std::string& text, int crlf)
{
    SNamedStringList m;
    m.SetCRLF(crlf);
    Str(text) >> m;
    return Contents(m);
}

std::string Write(const SNamedStringList& m)
{
    SString out;
    out << m;
    return Bytes(out);
}

TEST(SNamedStringList, WriterGivesOneLinePerValue)
{
    struct Row {
        Map contents;
        int crlf;
        std::string text;
    };
    const std::vector<Row> rows = {
        {{{"From", {"a", "b"}}, {"To", {""}}}, 0, "From a\nFrom b\nTo \n"},
        {{{"From", {"a", "b"}}, {"To", {""}}}, 1, "From a\r\nFrom b\r\nTo \r\n"},
        {{{"Empty:", {}}, {"K", {" x", "y\n z"}}}, 0, "Empty: \nK  x\nK y\n z\n"},
        {{{std::string("N\0l", 3), {std::string("\xff\0", 2)}}}, 0, std::string("N\0l \xff\0\n", 7)},
        {{}, 0, ""},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.text);
        EXPECT_EQ(Write(Build(r.contents, r.crlf)), r.text);
    }

    // Appends to what is there; nothing to write leaves even an undefined
    // string undefined.
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
        {"Subject hello world\n", 0, {{"Subject", {"hello world"}}}},
        {"A x\n y\n\tz\nB w\n", 0, {{"A", {"x\n y\n\tz"}}, {"B", {"w"}}}},
        {"A x\nnoblank\n", 0, {{"A", {"x", "noblank"}}}},
        {"A x\nA y\n", 0, {{"A", {"x", "y"}}}},
        {"B 1\nA 2\nB 3", 0, {{"B", {"1", "3"}}, {"A", {"2"}}}},
        {"A x\n\n", 0, {{"A", {"x", ""}}}},
        {"A x\n\n y\n", 0, {{"A", {"x", "\n y"}}}},
        {"A x\n \n", 0, {{"A", {"x\n "}}}},
        {"A  two\n", 0, {{"A", {" two"}}}},
        {"K\tv x\n", 0, {{"K\tv", {"x"}}}},
        {"first\n lead\nA x\n", 0, {{"", {"first\n lead"}}, {"A", {"x"}}}},
        {" lead\n", 0, {{"", {"lead"}}}},
        {"A x\r\n", 0, {{"A", {"x\r"}}}},
        {"A x\nB y\r\n", 1, {{"A", {"x\nB y"}}}},
        {"A x\r\n b\r\nB \r\n", 1, {{"A", {"x\r\n b"}}, {"B", {""}}}},
        {"A x\r\r\n", 1, {{"A", {"x\r"}}}},
        {"\n", 0, {{"", {""}}}},
        {"", 0, {}},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.text);
        EXPECT_EQ(Read(r.text, r.crlf), r.expected);
    }

    SNamedStringList m;
    m["Old"].Push("value");
    m.SetCaseSensitive(0);
    SString() >> m;
    EXPECT_FALSE(m.Keys().Defined());
    SString("a 1\nA 2\n") >> m;
    EXPECT_EQ(Contents(m), (Map{{"a", {"1", "2"}}}));
}

// Random bytes from an alphabet rich in the bytes the text form cares about.
class Generator {
public:
    explicit Generator(unsigned seed) : _rng(seed) {}

    int Below(int n) { return static_cast<int>(_rng() % n); }

    // No line end inside; LF mode forbids "\n", CRLF mode only "\r\n".
    std::string Value(int crlf, int maxLen)
    {
        static const char alphabet[] = "ab Z:\t\r\n\0\xff-";
        std::string v;
        for (int n = Below(maxLen + 1); n > 0; n--) {
            char c = alphabet[Below(sizeof alphabet - 1)];
            if (c == '\n' && (!crlf || (!v.empty() && v.back() == '\r')))
                c = 'n';
            v += c;
        }
        return v;
    }

    // Non-empty, no blank, no line end, not starting with a tab.
    std::string Key(int crlf)
    {
        std::string k;
        do {
            k = Value(crlf, 8);
            for (char& c : k)
                if (c == ' ' || c == '\n' || c == '\r')
                    c = '_';
        } while (k.empty() || k[0] == '\t');
        return k;
    }

private:
    std::mt19937 _rng;
};

TEST(SNamedStringList, GeneratedMapsSurviveWriteThenRead)
{
    for (unsigned seed = 1; seed <= 400; seed++) {
        Generator g(seed);
        const int crlf = seed % 2;
        Map contents;
        for (int k = g.Below(12); k > 0; k--) {
            std::string key = g.Key(crlf);
            bool seen = false;
            for (const auto& kv : contents)
                seen = seen || kv.first == key;
            if (seen)
                continue;
            std::vector<std::string> values;
            for (int v = 1 + g.Below(6); v > 0; v--) {
                std::string value = g.Value(crlf, 12);
                // A continuation line keeps its value in one piece.
                if (g.Below(4) == 0)
                    value += (crlf ? "\r\n" : "\n") + std::string(1, g.Below(2) ? ' ' : '\t') + g.Value(crlf, 6);
                values.push_back(value);
            }
            contents.emplace_back(key, values);
        }
        SCOPED_TRACE(seed);
        EXPECT_EQ(Read(Write(Build(contents, crlf)), crlf), contents);
    }
}

TEST(SNamedStringList, GeneratedTextsSurviveReadThenWrite)
{
    for (unsigned seed = 1; seed <= 400; seed++) {
        Generator g(seed);
        const int crlf = seed % 2;
        const std::string eol = crlf ? "\r\n" : "\n";
        std::string text;
        std::vector<std::string> keys;
        for (int k = g.Below(10); k > 0; k--) {
            const std::string key = g.Key(crlf);
            bool seen = false;
            for (const std::string& other : keys)
                seen = seen || other == key;
            if (seen)
                continue;
            keys.push_back(key);
            for (int v = 1 + g.Below(5); v > 0; v--) {
                text += key + " " + g.Value(crlf, 15) + eol;
                for (int c = g.Below(3) == 0 ? 1 + g.Below(2) : 0; c > 0; c--)
                    text += (g.Below(2) ? " " : "\t") + g.Value(crlf, 10) + eol;
            }
        }
        SCOPED_TRACE(seed);
        SNamedStringList m;
        m.SetCRLF(crlf);
        Str(text) >> m;
        EXPECT_EQ(Write(m), text);
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
    SNamedStringList m;
    Str(file.str()) >> m;
    EXPECT_EQ(Contents(m), expected);
    EXPECT_EQ(Write(m), file.str());
}

TEST(SNamedStringList, KeysLookupAndDelete)
{
    SNamedStringList m;
    SStringList& fresh = m["Ghost"];
    EXPECT_FALSE(fresh.Defined());
    EXPECT_FALSE(m.Keys().Defined());
    EXPECT_EQ(Write(m), "");
    EXPECT_TRUE(SNamedStringList(m).Get("Ghost").Count() == 0);

    // Enough keys to grow the values array several times.
    for (int i = 0; i < 23; i++)
        m[SString("K") + SString(i)].Push(SString(i));
    EXPECT_EQ(m.Keys().Count(), 23);
    EXPECT_EQ(m.Delete("Ghost"), 1);
    EXPECT_EQ(m.Delete("Ghost"), -1);
    EXPECT_EQ(m.Delete("K0"), 1);
    EXPECT_EQ(m.Keys().Get(0), "K1");
    EXPECT_EQ(m.Get("K22").Get(0), "22");
    EXPECT_EQ(m.Get("K1").Get(0), "1");
    m["Late"].Push("x");
    EXPECT_EQ(m.Keys().Get(-1), "Late");
    EXPECT_FALSE(m.Get("K0").Defined());

    SNamedStringList h;
    h["Subject"].Push("hi");
    EXPECT_FALSE(h.Get("subject").Defined());
    h.SetCaseSensitive(0);
    EXPECT_EQ(h.Get("SUBJECT").Get(0), "hi");
    h["subject"].Push("again");
    EXPECT_EQ(Contents(h), (Map{{"Subject", {"hi", "again"}}}));
    EXPECT_EQ(h.Delete("sUBJECT"), 1);
    EXPECT_FALSE(h.Keys().Defined());

    m.Reset();
    EXPECT_FALSE(m.Keys().Defined());
    EXPECT_FALSE(m.Get("K1").Defined());
}

TEST(SNamedStringList, CopiesTakeFlagsAndDefinedValuesOnly)
{
    SNamedStringList m;
    m.SetCRLF(1);
    m.SetCaseSensitive(0);
    m["A"].Push("1");
    m["Unset"];
    m["B"].Reset();

    SNamedStringList copy(m);
    EXPECT_EQ(copy.CRLF(), 1);
    EXPECT_EQ(copy.CaseSensitive(), 0);
    EXPECT_EQ(Contents(copy), (Map{{"A", {"1"}}, {"B", {}}}));
    copy["a"].Push("2");
    EXPECT_EQ(Contents(m), (Map{{"A", {"1"}}, {"B", {}}}));

    SNamedStringList assigned;
    assigned["Old"].Push("x");
    assigned = copy;
    assigned = assigned;
    EXPECT_EQ(Contents(assigned), (Map{{"A", {"1", "2"}}, {"B", {}}}));
}

TEST(SNamedValue, MapsKeysToInts)
{
    SNamedValue v;
    EXPECT_EQ(v.Get("x"), -1);
    EXPECT_EQ(v["x"], -1);
    EXPECT_FALSE(v.Keys().Defined());
    for (int i = 0; i < 12; i++)
        v[SString("k") + SString(i)] = i * 10;
    v["x"] = 7;
    EXPECT_EQ(v.Keys().Count(), 13);
    EXPECT_EQ(v.Delete("k0"), 1);
    EXPECT_EQ(v.Delete("k0"), -1);
    EXPECT_EQ(v.Get("k11"), 110);
    EXPECT_EQ(v.Keys().Get(0), "x");

    v["k5"] = -1;
    v.SetCaseSensitive(0);
    SNamedValue copy(v);
    EXPECT_EQ(copy.Get("K5"), -1);
    EXPECT_EQ(copy.Get("X"), 7);
    EXPECT_EQ(copy.Keys().Count(), 11);
    copy = copy;
    EXPECT_EQ(copy.Keys().Count(), 11);
    v.Reset();
    EXPECT_EQ(v.Get("x"), -1);
}

TEST(SIndexString, MapsIntsToStrings)
{
    SIndexString m;
    EXPECT_FALSE(m.Get(3).Defined());
    EXPECT_FALSE(m[3].Defined());
    for (int i = 10; i < 22; i++)
        m[i] = SString(i);
    m[11] = "";
    m.Delete(10);
    m.Delete(99);
    EXPECT_EQ(m.Get(21), "21");
    EXPECT_FALSE(m.Get(10).Defined());

    int* numbers = nullptr;
    EXPECT_EQ(m.Keys(nullptr), 10);
    EXPECT_EQ(m.Keys(&numbers), 10);
    EXPECT_EQ(numbers[0], 12);
    EXPECT_EQ(numbers[9], 21);
    delete[] numbers;

    SIndexString copy(m);
    copy[12] = "changed";
    EXPECT_EQ(m.Get(12), "12");
    m = copy;
    EXPECT_EQ(m.Get(12), "changed");
    m[40] = "new";
    EXPECT_EQ(m.Get(40), "new");
}

} // namespace

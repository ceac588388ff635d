#include "SStringList.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

// A list as text: items separated by "|", an undefined item as "?", and a
// list not marked defined prefixed with "~".
std::string Show(const SStringList& l)
{
    std::string text = l.Defined() ? "" : "~";
    for (int i = 0; i < l.Count(); i++) {
        SString s = l.Get(i);
        text += (i ? "|" : "") + (s.Defined() ? std::string(s.Data(), s.Length()) : "?");
    }
    return text;
}

// "a|b|c" as a defined list; "" is the defined empty list.
SStringList List(const std::string& items)
{
    SStringList l;
    l.Reset();
    for (size_t start = 0; !items.empty() && start <= items.size();) {
        size_t bar = std::min(items.find('|', start), items.size());
        l.Push(SString(items.data() + start, static_cast<int>(bar - start)));
        start = bar + 1;
    }
    return l;
}

} // namespace

TEST(SStringList, DefinedUndefinedAndEmpty)
{
    SStringList l;
    EXPECT_FALSE(l.Defined());
    EXPECT_FALSE(l.Join().Defined());
    l.Reset();
    EXPECT_TRUE(l.Defined() && l.Join().Defined() && l.Count() == 0);
    l.Push("a");
    l.Undef();
    EXPECT_EQ(Show(l), "~");

    const char* texts[] = {"x", "y", nullptr};
    const char* none[] = {nullptr};
    EXPECT_EQ(Show(SStringList(texts)), "x|y");
    EXPECT_EQ(Show(SStringList(none)), "");
    EXPECT_EQ(Show(SStringList(static_cast<const char**>(nullptr))), "~");
    EXPECT_EQ(Show(SStringList(static_cast<const char*>(nullptr))), "");

    SStringList pushed;
    pushed.Push(SStringList());
    EXPECT_EQ(Show(pushed), "~") << "pushing an undefined empty list adds nothing";
    pushed.Push(List(""));
    EXPECT_EQ(Show(pushed), "");
}

TEST(SStringList, GetAndIndexingGrowOnlyOnWrite)
{
    SStringList l = List("a|b|c");
    EXPECT_EQ(Show(SStringList(l.Get(-1))), "c");
    EXPECT_FALSE(l.Get(5).Defined() || l.Get(-4).Defined());
    EXPECT_EQ(l.Count(), 3);
    l[5] = "f";
    EXPECT_EQ(Show(l), "a|b|c|?|?|f");
    l[-6] = "A";
    l[-7] = "nowhere";
    EXPECT_EQ(Show(l), "A|b|c|?|?|f") << "an index still negative writes into no list";
}

TEST(SStringList, PushPopShiftSearchDelete)
{
    SStringList l;
    EXPECT_EQ(l.Push("a"), 1);
    EXPECT_EQ(l.Push(List("b|c")), 3);
    EXPECT_EQ(l.Push(l), 6) << "a list pushed onto itself is appended once";
    EXPECT_EQ(Show(SStringList(l.Pop())), "c");
    EXPECT_EQ(Show(SStringList(l.Shift())), "a");
    EXPECT_EQ(Show(l), "b|c|a|b");
    EXPECT_EQ(l.Index("a"), 2);
    EXPECT_EQ(l.Index(SString("zz")), -1);
    EXPECT_TRUE(l.Contains("c"));

    EXPECT_EQ(l.Delete(-1) + l.Delete(4), 0) << "no counting from the end";
    EXPECT_EQ(l.Delete(0), 1);
    EXPECT_EQ(l.Delete("b"), 1);
    EXPECT_EQ(Show(l), "c|a");
    EXPECT_EQ(l.Delete(SString("zz")), 0);
    EXPECT_EQ(l.Delete(1) + l.Delete(0), 2);
    EXPECT_EQ(Show(l), "");
    EXPECT_FALSE(l.Pop().Defined() || l.Shift().Defined());
    EXPECT_EQ(l.Push("again"), 1);

    SStringList withUndefined;
    withUndefined[1] = "x";
    EXPECT_EQ(withUndefined.Index(""), 0) << "an undefined item equals the empty string";
}

TEST(SStringList, SpliceAndSlice)
{
    struct { int offset, length; const char* removed; const char* left; } rows[] = {
        {1, 2, "~b|c", "a|d"},  // a partial splice is deliberately not marked defined
        {0, 4, "a|b|c|d", ""},  {0, 1, "~a", "b|c|d"}, {3, 1, "~d", "a|b|c"},
        {2, 0, "~", "a|b|c|d"}, {-1, 1, "~", "a|b|c|d"}, {3, 2, "~", "a|b|c|d"}, {0, -1, "~", "a|b|c|d"},
    };
    for (auto& r : rows) {
        SStringList l = List("a|b|c|d");
        EXPECT_EQ(Show(l.Splice(r.offset, r.length)), r.removed) << r.offset << "," << r.length;
        EXPECT_EQ(Show(l), r.left) << r.offset << "," << r.length;
    }
    SStringList l = List("a|b|c|d");
    EXPECT_EQ(Show(l.Splice(2)), "~c|d");
    EXPECT_EQ(Show(l.Splice(2)), "~");
    l = List("a|b|c|d");
    EXPECT_EQ(Show(l.Splice(1, 2, List("x|y|z"))), "~b|c");
    EXPECT_EQ(Show(l), "a|x|y|z|d");

    const SStringList s = List("a|b|c|d");
    EXPECT_EQ(Show(s.Slice(1, 1)), "b");
    EXPECT_EQ(Show(s.Slice(1, 2)), "b|c");
    EXPECT_EQ(Show(s.Slice(2, 1)) + Show(s.Slice(0, 4)) + Show(s.Slice(-1, 2)), "~~~");
}

TEST(SStringList, Insert)
{
    struct { const char* into; const char* other; int pos; const char* want; } rows[] = {
        {"a|b", "x|y", 0, "x|y|a|b"}, {"a|b", "x|y", 1, "a|x|y|b"}, {"a|b", "x|y", 2, "a|b|x|y"},
        {"a|b", "x|y", 3, "a|b"},     {"a|b", "x|y", -1, "a|b"},    {"a|b", "", 1, "a|b"},
        {"", "x|y", 2, "?|?|x|y"},    {"", "x|y", 0, "x|y"},
    };
    for (auto& r : rows) {
        SStringList l = List(r.into), other = List(r.other);
        l.Insert(other, r.pos);
        EXPECT_EQ(Show(l), r.want) << r.into << " + " << r.other << " at " << r.pos;
        EXPECT_EQ(Show(other), Show(List(r.other))) << "the inserted list is left as it was";
    }
    SStringList l = List("a|b");
    l.Insert(l, 1);
    EXPECT_EQ(Show(l), "a|a|b|b") << "a list inserted into itself";
}

TEST(SStringList, JoinAllocatesOnceAndKeepsBytes)
{
    EXPECT_EQ(Show(SStringList(List("a||b").Join(", "))), "a, , b");
    EXPECT_EQ(Show(SStringList(List("||x").Join(","))), ",,x");
    EXPECT_EQ(Show(SStringList(List("ab|c").Join())), "abc");
    EXPECT_EQ(Show(SStringList(List("one").Join("-"))), "one");
    SStringList withNul = List("x");
    withNul.Push(SString("\0", 1));
    EXPECT_EQ(withNul.Join(SString("\0", 1)), SString("x\0\0", 3));
    EXPECT_EQ(Length(List("ab|c")), 3);
    EXPECT_EQ(Length(SStringList()), 0);
}

TEST(SStringList, SortReverseUnique)
{
    // Compared with std::sort on std::string, whose operator< is the same
    // unsigned byte order with the shorter string first.
    std::mt19937 rng(42);
    std::vector<std::string> words;
    SStringList l;
    for (int i = 0; i < 500; i++) {
        std::string w(rng() % 4, 'a');
        for (auto& c : w)
            c = "ab\0\xff"[rng() % 4];
        words.push_back(w);
        l.Push(SString(w.data(), static_cast<int>(w.size())));
    }
    SStringList copy(l);
    l.Sort();
    std::sort(words.begin(), words.end());
    for (size_t i = 0; i < words.size(); i++)
        ASSERT_EQ(l.Get(static_cast<int>(i)), SString(words[i].data(), static_cast<int>(words[i].size()))) << i;
    EXPECT_FALSE(copy.Get(0) == l.Get(0) && copy.Get(-1) == l.Get(-1)) << "sorting unshares";

    EXPECT_EQ(Show(List("a|b|c").Reverse()), "c|b|a");
    EXPECT_EQ(Show(List("a|b|c|d").Reverse()), "d|c|b|a");
    EXPECT_EQ(Show(List("a|a|b|a").Unique()), "a|b|a");
    EXPECT_EQ(Show(List("a|a|a").Unique()), "a");
    EXPECT_EQ(Show(List("").Sort()), "");
}

TEST(SStringList, CopiesAreIsolatedExceptForChop)
{
    const SStringList original = List("ab|cd");
    auto mutators = std::vector<void (*)(SStringList&)>{
        [](SStringList& l) { l.Push("x"); },   [](SStringList& l) { l.Pop(); },
        [](SStringList& l) { l.Shift(); },     [](SStringList& l) { l.Delete(0); },
        [](SStringList& l) { l[0] = "zz"; },   [](SStringList& l) { l.Insert(List("q"), 1); },
        [](SStringList& l) { l.Splice(0, 1); }, [](SStringList& l) { l.Reverse(); },
        [](SStringList& l) { l.Reset(); },     [](SStringList& l) { l = "other"; },
    };
    for (auto mutate : mutators) {
        SStringList copy(original);
        mutate(copy);
        EXPECT_EQ(Show(original), "ab|cd");
    }
    SStringList shared(original);
    EXPECT_EQ(shared.Chop(), 'd');
    EXPECT_EQ(Show(original), "a|c") << "Chop changes every handle on the list";
    EXPECT_EQ(SStringList().Chop(), '\0');
}

TEST(SStringList, CharArray)
{
    char** texts = List("ab||c");
    ASSERT_NE(texts, nullptr);
    EXPECT_EQ(std::string(texts[0], 6), std::string("ab\0\0c\0", 6)) << "one block, texts back to back";
    EXPECT_TRUE(texts[1] == texts[0] + 3 && texts[2] == texts[0] + 4 && texts[3] == nullptr);
    delete[] texts[0];
    delete[] texts;
    char** none = List("");
    ASSERT_NE(none, nullptr);
    EXPECT_EQ(none[0], nullptr);
    delete[] none;
    EXPECT_EQ(static_cast<char**>(SStringList()), nullptr);
}

TEST(SStringList, StreamsRoundTripByteForByte)
{
    const std::string text("first\nsecond\r\n\nlast without end");
    std::istringstream in(text);
    SStringList l;
    in >> l;
    EXPECT_EQ(Show(l), "first\n|second\r\n|\n|last without end");
    std::ostringstream out;
    out << l;
    EXPECT_EQ(out.str(), text);
}

TEST(SStringList, FreeFunctionsLeaveTheArgumentAlone)
{
    EXPECT_EQ(Show(BaseName(List("/a/x.tmp|y.tmp|z"), ".tmp")), "x|y|z");
    const SStringList words = List("MiXed|ok");
    EXPECT_EQ(Show(LowerCase(words)) + " " + Show(UpperCase(words)), "mixed|ok MIXED|OK");
    EXPECT_EQ(Show(words), "MiXed|ok");
    EXPECT_EQ(Show(LowerCase(List(""))) + Show(UpperCase(SStringList())), "~");
}

TEST(SStringList, DebugDump)
{
    testing::internal::CaptureStderr();
    SStringList().Debug(1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Undefined\n");

    testing::internal::CaptureStderr();
    List("a\tb").Debug(1);
    std::string dump = testing::internal::GetCapturedStderr();
    EXPECT_EQ(dump.substr(0, 38), "Number of Links: 1\nNumber of Items: 1\n");
    EXPECT_NE(dump.find("\nFlags:           1\nPrev: 0x"), std::string::npos);
    EXPECT_NE(dump.find(" 'a\\tb'\n\n"), std::string::npos);
}

TEST(SStringListDeathTest, TheHundredThousandAndFirstItemEndsTheProcess)
{
    SStringList l;
    for (int i = 0; i < SStringList::MaxItems; i++)
        l.Push("");
    EXPECT_EQ(l.Count(), 100000);
    EXPECT_EXIT(l.Push("one more"), testing::ExitedWithCode(109), "");
    EXPECT_EXIT(l[100000] = "x", testing::ExitedWithCode(109), "");
}

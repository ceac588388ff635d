#include "SStringList.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

std::string Str(const SString& s) { return std::string(s.Data() ? s.Data() : "", s.Length()); }

std::vector<std::string> Items(const SStringList& l)
{
    std::vector<std::string> items;
    for (int i = 0; i < l.Count(); i++)
        items.push_back(Str(l.Get(i)));
    return items;
}

SStringList List(std::vector<std::string> items)
{
    SStringList l;
    l.Reset();
    for (auto& item : items)
        l.Push(SString(item.data(), static_cast<int>(item.size())));
    return l;
}

using V = std::vector<std::string>;

} // namespace

TEST(SStringList, DefinedUndefinedAndEmpty)
{
    SStringList l;
    EXPECT_FALSE(l.Defined());
    EXPECT_FALSE(l.Join().Defined());
    l.Reset();
    EXPECT_TRUE(l.Defined());
    EXPECT_EQ(l.Count(), 0);
    EXPECT_TRUE(l.Join().Defined());
    l.Push("a");
    l.Undef();
    EXPECT_FALSE(l.Defined());
    EXPECT_EQ(l.Count(), 0);

    const char* texts[] = {"x", "y", nullptr};
    const char* none[] = {nullptr};
    EXPECT_EQ(Items(SStringList(texts)), (V{"x", "y"}));
    EXPECT_TRUE(SStringList(none).Defined());
    EXPECT_FALSE(SStringList(static_cast<const char**>(nullptr)).Defined());
    EXPECT_EQ(Items(SStringList(static_cast<const char*>(nullptr))), V{""});

    SStringList undefinedEmpty, pushed;
    pushed.Push(undefinedEmpty);
    EXPECT_FALSE(pushed.Defined()) << "pushing an undefined empty list adds nothing";
    pushed.Push(List({}));
    EXPECT_TRUE(pushed.Defined());
}

TEST(SStringList, GetAndIndexingGrowOnlyOnWrite)
{
    SStringList l = List({"a", "b", "c"});
    EXPECT_EQ(Str(l.Get(-1)), "c");
    EXPECT_FALSE(l.Get(5).Defined());
    EXPECT_FALSE(l.Get(-4).Defined());
    EXPECT_EQ(l.Count(), 3);

    l[5] = "f";
    EXPECT_EQ(l.Count(), 6);
    EXPECT_FALSE(l.Get(3).Defined());
    EXPECT_FALSE(l.Get(4).Defined());
    EXPECT_EQ(Str(l.Get(5)), "f");
    l[-6] = "A";
    EXPECT_EQ(Str(l.Get(0)), "A");
    l[-7] = "nowhere";
    EXPECT_EQ(l.Count(), 6) << "an index still negative writes into no list";
}

TEST(SStringList, PushPopShiftAndSearch)
{
    SStringList l;
    EXPECT_EQ(l.Push("a"), 1);
    EXPECT_EQ(l.Push(List({"b", "c"})), 3);
    EXPECT_EQ(l.Push(l), 6) << "a list pushed onto itself is appended once";
    EXPECT_EQ(Str(l.Pop()), "c");
    EXPECT_EQ(Str(l.Shift()), "a");
    EXPECT_EQ(Items(l), (V{"b", "c", "a", "b"}));
    EXPECT_EQ(l.Index("a"), 2);
    EXPECT_EQ(l.Index(SString("zz")), -1);
    EXPECT_TRUE(l.Contains("c"));

    SStringList one = List({"only"});
    EXPECT_EQ(Str(one.Shift()), "only");
    EXPECT_EQ(one.Count(), 0);
    EXPECT_FALSE(one.Pop().Defined());
    EXPECT_FALSE(one.Shift().Defined());

    SStringList withUndefined;
    withUndefined[1] = "x";
    EXPECT_EQ(withUndefined.Index(""), 0) << "an undefined item equals the empty string";
}

TEST(SStringList, Delete)
{
    SStringList l = List({"a", "b", "c", "b"});
    EXPECT_EQ(l.Delete(-1), 0);
    EXPECT_EQ(l.Delete(4), 0);
    EXPECT_EQ(l.Delete(0), 1);
    EXPECT_EQ(Items(l), (V{"b", "c", "b"}));
    EXPECT_EQ(l.Delete("b"), 1);
    EXPECT_EQ(Items(l), (V{"c", "b"}));
    EXPECT_EQ(l.Delete(SString("zz")), 0);
    EXPECT_EQ(l.Delete(1), 1);
    EXPECT_EQ(l.Delete(0), 1);
    EXPECT_EQ(l.Count(), 0);
    EXPECT_EQ(l.Push("again"), 1);
}

TEST(SStringList, SpliceAndSlice)
{
    SStringList l = List({"a", "b", "c", "d"});
    SStringList removed = l.Splice(1, 2);
    EXPECT_EQ(Items(removed), (V{"b", "c"}));
    EXPECT_FALSE(removed.Defined()) << "a partial splice is not marked defined";
    EXPECT_EQ(Items(l), (V{"a", "d"}));

    l = List({"a", "b", "c", "d"});
    removed = l.Splice(0, 4);
    EXPECT_EQ(Items(removed), (V{"a", "b", "c", "d"}));
    EXPECT_TRUE(l.Defined());
    EXPECT_EQ(l.Count(), 0);

    l = List({"a", "b", "c", "d"});
    for (auto bad : {std::make_pair(2, 0), {-1, 1}, {3, 2}, {0, -1}}) {
        EXPECT_FALSE(l.Splice(bad.first, bad.second).Defined());
        EXPECT_EQ(l.Count(), 4);
    }
    EXPECT_EQ(Items(l.Splice(0, 1)), V{"a"});
    EXPECT_EQ(Items(l), (V{"b", "c", "d"}));
    EXPECT_EQ(Items(l.Splice(1)), (V{"c", "d"}));
    EXPECT_FALSE(l.Splice(1).Defined());

    l = List({"a", "b", "c", "d"});
    EXPECT_EQ(Items(l.Splice(1, 2, List({"x", "y", "z"}))), (V{"b", "c"}));
    EXPECT_EQ(Items(l), (V{"a", "x", "y", "z", "d"}));

    const SStringList s = List({"a", "b", "c", "d"});
    EXPECT_EQ(Items(s.Slice(1, 1)), V{"b"});
    EXPECT_TRUE(s.Slice(1, 2).Defined());
    EXPECT_FALSE(s.Slice(2, 1).Defined());
    EXPECT_FALSE(s.Slice(0, 4).Defined());
    EXPECT_FALSE(s.Slice(-1, 2).Defined());
}

TEST(SStringList, Insert)
{
    const SStringList xy = List({"x", "y"});
    struct { int pos; V want; } rows[] = {
        {0, {"x", "y", "a", "b"}}, {1, {"a", "x", "y", "b"}}, {2, {"a", "b", "x", "y"}},
        {3, {"a", "b"}}, {-1, {"a", "b"}}};
    for (auto& r : rows) {
        SStringList l = List({"a", "b"});
        l.Insert(xy, r.pos);
        EXPECT_EQ(Items(l), r.want) << r.pos;
    }
    SStringList l = List({"a", "b"});
    l.Insert(List({}), 1);
    EXPECT_EQ(Items(l), (V{"a", "b"}));
    l.Insert(l, 1);
    EXPECT_EQ(Items(l), (V{"a", "a", "b", "b"})) << "a list inserted into itself";

    SStringList empty;
    empty.Insert(xy, 2);
    EXPECT_EQ(Items(empty), (V{"", "", "x", "y"}));
    EXPECT_FALSE(empty.Get(0).Defined());
    EXPECT_EQ(Items(xy), (V{"x", "y"})) << "the inserted list is left as it was";
    SStringList empty2;
    empty2.Insert(xy, 0);
    EXPECT_EQ(Items(empty2), (V{"x", "y"}));
}

TEST(SStringList, JoinAllocatesOnceAndKeepsBytes)
{
    EXPECT_EQ(Str(List({"a", "", "b"}).Join(", ")), "a, , b");
    EXPECT_EQ(Str(List({"", "", "x"}).Join(",")), ",,x");
    EXPECT_EQ(Str(List({"ab", "c"}).Join()), "abc");
    EXPECT_EQ(Str(List({"one"}).Join("-")), "one");
    EXPECT_EQ(Str(List({std::string("\0", 1), "x"}).Join(SString("\0", 1))), std::string("\0\0x", 3));
    EXPECT_EQ(Length(List({"ab", "c"})), 3);
    EXPECT_EQ(Length(SStringList()), 0);
}

TEST(SStringList, SortReverseUnique)
{
    // Compared with std::sort on std::string, whose operator< is the same
    // unsigned byte order with the shorter string first.
    std::mt19937 rng(42);
    std::vector<std::string> words;
    for (int i = 0; i < 500; i++) {
        std::string w(rng() % 4, 'a');
        for (auto& c : w)
            c = "ab\0\xff"[rng() % 4];
        words.push_back(w);
    }
    SStringList l = List(words);
    SStringList copy(l);
    std::sort(words.begin(), words.end());
    EXPECT_EQ(Items(l.Sort()), words);
    EXPECT_NE(Items(copy), words) << "sorting unshares";

    std::reverse(words.begin(), words.end());
    EXPECT_EQ(Items(l.Reverse()), words);
    EXPECT_EQ(Items(List({"a", "b", "c"}).Reverse()), (V{"c", "b", "a"}));

    EXPECT_EQ(Items(List({"a", "a", "b", "a"}).Unique()), (V{"a", "b", "a"}));
    EXPECT_EQ(Items(List({"a", "a", "a"}).Unique()), V{"a"});
    EXPECT_EQ(List({}).Sort().Count(), 0);
}

TEST(SStringList, CopiesAreIsolatedExceptForChop)
{
    const SStringList original = List({"ab", "cd"});
    auto mutators = std::vector<void (*)(SStringList&)>{
        [](SStringList& l) { l.Push("x"); },
        [](SStringList& l) { l.Pop(); },
        [](SStringList& l) { l.Shift(); },
        [](SStringList& l) { l.Delete(0); },
        [](SStringList& l) { l[0] = "zz"; },
        [](SStringList& l) { l.Insert(List({"q"}), 1); },
        [](SStringList& l) { l.Splice(0, 1); },
        [](SStringList& l) { l.Reverse(); },
        [](SStringList& l) { l.Reset(); },
        [](SStringList& l) { l = "other"; },
    };
    for (auto mutate : mutators) {
        SStringList copy(original);
        mutate(copy);
        EXPECT_EQ(Items(original), (V{"ab", "cd"}));
    }

    SStringList shared(original);
    EXPECT_EQ(shared.Chop(), 'd');
    EXPECT_EQ(Items(original), (V{"a", "c"})) << "Chop changes every handle on the list";
    EXPECT_EQ(SStringList().Chop(), '\0');
}

TEST(SStringList, CharArray)
{
    char** texts = List({"ab", "", "c"});
    ASSERT_NE(texts, nullptr);
    EXPECT_STREQ(texts[0], "ab");
    EXPECT_STREQ(texts[1], "");
    EXPECT_STREQ(texts[2], "c");
    EXPECT_EQ(texts[3], nullptr);
    EXPECT_EQ(texts[1], texts[0] + 3) << "one block, texts back to back";
    delete[] texts[0];
    delete[] texts;

    char** none = List({});
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
    EXPECT_EQ(Items(l), (V{"first\n", "second\r\n", "\n", "last without end"}));
    std::ostringstream out;
    out << l;
    EXPECT_EQ(out.str(), text);
}

TEST(SStringList, FreeFunctionsLeaveTheArgumentAlone)
{
    const SStringList paths = List({"/a/x.tmp", "y.tmp", "z"});
    EXPECT_EQ(Items(BaseName(paths, ".tmp")), (V{"x", "y", "z"}));
    const SStringList words = List({"MiXed", "ok"});
    EXPECT_EQ(Items(LowerCase(words)), (V{"mixed", "ok"}));
    EXPECT_EQ(Items(UpperCase(words)), (V{"MIXED", "OK"}));
    EXPECT_EQ(Items(words), (V{"MiXed", "ok"}));
    EXPECT_TRUE(LowerCase(List({})).Defined());
    EXPECT_FALSE(UpperCase(SStringList()).Defined());
}

TEST(SStringList, DebugDump)
{
    testing::internal::CaptureStderr();
    SStringList().Debug(1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Undefined\n");

    SStringList l = List({"a\tb"});
    testing::internal::CaptureStderr();
    l.Debug(1);
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

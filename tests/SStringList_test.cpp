#include "text_helpers.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

using namespace std::string_literals;

namespace {

// A list as text: items separated by "|", an undefined item as "?", and a
// list not marked defined prefixed with "~".
std::string Show(const SStringList& l)
{
    std::string text = l.Defined() ? "" : "~";
    for (int i = 0; i < l.Count(); i++)
        text += (i ? "|" : "") + (l.Get(i).Defined() ? Str(l.Get(i)) : "?");
    return text;
}

// "a|b|c" as a defined list, NULs allowed; "" is the defined empty list.
SStringList List(const std::string& items)
{
    SStringList l = Bytes(items).SplitExact("|");
    if (items.empty())
        l.Reset();
    return l;
}

} // namespace

TEST(SStringList, DefinedUndefinedAndEmpty)
{
    SStringList l;
    EXPECT_FALSE(l.Join().Defined());
    l.Reset();
    EXPECT_TRUE(l.Defined() && l.Join().Defined());
    l.Push("a");
    l.Undef();
    EXPECT_EQ(Show(l), "~");

    const char* texts[] = {"x", "y", nullptr};
    const char* none[] = {nullptr};
    EXPECT_EQ(Show(SStringList(texts)), "x|y");
    EXPECT_EQ(Show(SStringList(none)), "");
    EXPECT_EQ(Show(SStringList(static_cast<const char**>(nullptr))), "~");

    SStringList pushed;
    pushed.Push(SStringList());
    EXPECT_EQ(Show(pushed), "~") << "pushing an undefined empty list adds nothing";
    pushed.Push(List(""));
    EXPECT_EQ(Show(pushed), "");
}

TEST(SStringList, GetAndIndexingGrowOnlyOnWrite)
{
    SStringList l = List("a|b|c");
    EXPECT_EQ(Str(l.Get(-1)), "c");
    EXPECT_FALSE(l.Get(3).Defined() || l.Get(-4).Defined());
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
    EXPECT_EQ(Str(l.Pop()), "c");
    EXPECT_EQ(Str(l.Shift()), "a");
    EXPECT_EQ(Show(l), "b|c|a|b");
    EXPECT_EQ(l.Index("a"), 2);
    EXPECT_EQ(l.Index("zz"), -1);

    EXPECT_EQ(l.Delete(-1) + l.Delete(4) + l.Delete("zz"), 0) << "no counting from the end";
    EXPECT_EQ(l.Delete(0), 1);
    EXPECT_EQ(l.Delete("b"), 1);
    EXPECT_EQ(Show(l), "c|a");
    l.Delete(1);
    l.Delete(0);
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
    EXPECT_EQ(Show(l.Splice(1, 2, List("x|y|z"))), "~b|c");
    EXPECT_EQ(Show(l), "a|x|y|z|d");
    EXPECT_EQ(Show(l.Splice(3)), "~z|d");
    EXPECT_EQ(Show(l.Splice(3)), "~") << "nothing left from 3 on";

    EXPECT_EQ(Show(List("a|b|c|d").Slice(1, 2)), "b|c");
    EXPECT_EQ(Show(l.Slice(2, 1)) + Show(l.Slice(0, 3)) + Show(l.Slice(-1, 2)), "~~~");
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

TEST(SStringList, JoinAndLengthKeepEveryByte)
{
    EXPECT_EQ(Str(List("a||b").Join(", ")), "a, , b");
    EXPECT_EQ(Str(List("ab|c").Join()), "abc");
    EXPECT_EQ(Str(List("x|\0"s).Join(SString("\0", 1))), "x\0\0"s);
    EXPECT_EQ(Length(List("ab|c")), 3) << "bytes, not items";
}

TEST(SStringList, SortReverseUnique)
{
    // Unsigned byte order, NUL and 0xFF included, the shorter first on a
    // common prefix; items equal up to a NUL arrive in the wrong order.
    EXPECT_EQ(Joined(List("b|a\0b|\xff||a\0a|a|ab"s).Sort()), "|a|a\0a|a\0b|ab|b|\xff"s);
    EXPECT_EQ(Show(List("a|b|c").Reverse()), "c|b|a");
    EXPECT_EQ(Show(List("a|b|c|d").Reverse()), "d|c|b|a");
    EXPECT_EQ(Show(List("a|a|b|a").Unique()), "a|b|a");
    EXPECT_EQ(Show(List("a|a|a").Unique()), "a");
}

TEST(SStringList, CopiesAreIsolatedExceptForChop)
{
    const SStringList original = List("cd|ab");
    auto mutators = std::vector<void (*)(SStringList&)>{
        [](SStringList& l) { l.Push("x"); },    [](SStringList& l) { l.Pop(); },
        [](SStringList& l) { l.Shift(); },      [](SStringList& l) { l.Delete(0); },
        [](SStringList& l) { l[0] = "zz"; },    [](SStringList& l) { l.Insert(List("q"), 1); },
        [](SStringList& l) { l.Splice(0, 1); }, [](SStringList& l) { l.Reverse(); },
        [](SStringList& l) { l.Sort(); },       [](SStringList& l) { l.Reset(); },
        [](SStringList& l) { l = "other"; },
    };
    for (auto mutate : mutators) {
        SStringList copy(original);
        mutate(copy);
        EXPECT_EQ(Show(original), "cd|ab");
    }
    SStringList shared(original);
    EXPECT_EQ(shared.Chop(), 'b');
    EXPECT_EQ(Show(original), "c|a") << "Chop changes every handle on the list";
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
    List("a\tb").Debug(1);
    std::string dump = testing::internal::GetCapturedStderr();
    EXPECT_EQ(dump.substr(0, 48), "Undefined\nNumber of Links: 1\nNumber of Items: 1\n");
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

#include "text_helpers.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

using namespace std::string_literals;

namespace {

// A string as text, "?" when undefined.
std::string Shown(const SString& s) { return s.Defined() ? Str(s) : "?"; }

// A list as text: items separated by "|", an undefined item as "?", and a
// list not marked defined prefixed with "~".
std::string Show(const SStringList& l)
{
    std::string text = l.Defined() ? "" : "~";
    for (int i = 0; i < l.Count(); i++)
        text += (i ? "|" : "") + Shown(l.Get(i));
    return text;
}

std::string Num(int n) { return std::to_string(n); }

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
    SStringList sharer(l);
    l.Undef();
    EXPECT_EQ(Show(l) + " " + Show(sharer), "~ a") << "emptying a shared list leaves the sharer alone";

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
    l[5] = "f";
    EXPECT_EQ(Show(l), "a|b|c|?|?|f");
    l[-6] = "A";
    l[-7] = "nowhere";
    EXPECT_EQ(Show(l), "A|b|c|?|?|f") << "an index still negative writes into no list";
}

// OP(text): an operation on the list l, giving text.
#define OP(text) [](SStringList& l) { return std::string(text); }

// Each operation runs on a list of its own and on a copy sharing the
// original, which must not change.  Rows: the list, the operation, its
// result, the list afterwards.
TEST(SStringList, OperationsOnOwnAndSharedLists)
{
    struct { std::string list; std::string (*op)(SStringList&); std::string result, after; } rows[] = {
        {"a", OP(Num(l.Push("b"))), "2", "a|b"}, {"a|b", OP(Num(l.Push(l))), "4", "a|b|a|b"},  // onto itself: once
        {"a|b|c", OP(Shown(l.Pop())), "c", "a|b"}, {"a|b|c", OP(Shown(l.Shift())), "a", "b|c"},
        {"", OP(Shown(l.Pop()) + Shown(l.Shift())), "??", ""},
        {"b|a|c|a", OP(Num(l.Index("a"))), "1", "b|a|c|a"}, {"b|a", OP(Num(l.Index("zz"))), "-1", "b|a"},
        // No counting from the end.
        {"a|b", OP(Num(l.Delete(-1) + l.Delete(2) + l.Delete("zz"))), "0", "a|b"},
        {"a|b|c", OP(Num(l.Delete(1))), "1", "a|c"}, {"b|a|b", OP(Num(l.Delete("b"))), "1", "a|b"},
        {"a", OP(Num(l.Delete(0) ? l.Push("again") : 0)), "1", "again"},
        {"a|b", OP(Str(l[0] = "zz")), "zz", "zz|b"}, {"a|b", OP(Show(l = "other")), "other", "other"},
        {"a|b|c", OP(Show(l.Reverse())), "c|b|a", "c|b|a"}, {"a|b|c|d", OP(Show(l.Reverse())), "d|c|b|a", "d|c|b|a"},
        {"a|a|b|a", OP(Show(l.Unique())), "a|b|a", "a|b|a"}, {"a|a|a", OP(Show(l.Unique())), "a", "a"},
        // Unsigned byte order, NUL and 0xFF included, the shorter first on a
        // common prefix; items equal up to a NUL arrive in the wrong order.
        {"b|a\0b|\xff||a\0a|a|ab"s, OP(Joined(l.Sort())), "|a|a\0a|a\0b|ab|b|\xff"s, "|a|a\0a|a\0b|ab|b|\xff"s},
        {"a||b", OP(Str(l.Join(", "))), "a, , b", "a||b"}, {"ab|c", OP(Str(l.Join())), "abc", "ab|c"},
        // A NUL separator is kept; Length counts bytes, not items.
        {"x|\0"s, OP(Str(l.Join(SString("\0", 1)))), "x\0\0"s, "x|\0"s}, {"ab|c", OP(Num(Length(l))), "3", "ab|c"},
        {"a|b|c", OP(Show(l.Slice(1, 2))), "b|c", "a|b|c"},
        {"a|b|c", OP(Show(l.Slice(2, 1)) + Show(l.Slice(0, 3)) + Show(l.Slice(-1, 2))), "~~~", "a|b|c"},
        {"a|b|c|d", OP(Show(l.Splice(1, 2, List("x|y|z")))), "~b|c", "a|x|y|z|d"},
        {"a|b|c|d", OP(Show(l.Splice(2))), "~c|d", "a|b"}, {"a|b", OP(Show(l.Splice(2))), "~", "a|b"},
    };
    for (auto& r : rows) {
        const SStringList original = List(r.list);
        SStringList alone = List(r.list), copy(original);
        EXPECT_EQ(r.op(alone), r.result) << r.list;
        EXPECT_EQ(r.op(copy), r.result) << r.list;
        EXPECT_EQ(Show(alone), r.after) << r.list;
        EXPECT_EQ(Show(copy), r.after) << r.list;
        EXPECT_EQ(Show(original), Show(List(r.list))) << r.list;
    }
    SStringList withUndefined;
    withUndefined[1] = "x";
    EXPECT_EQ(withUndefined.Index(""), 0) << "an undefined item equals the empty string";
}

TEST(SStringList, Splice)
{
    struct { int offset, length; const char* removed; const char* left; } rows[] = {
        {1, 2, "~b|c", "a|d"},  // a partial splice is deliberately not marked defined
        {0, 4, "a|b|c|d", ""},  {0, 1, "~a", "b|c|d"}, {3, 1, "~d", "a|b|c"},
        {2, 0, "~", "a|b|c|d"}, {-1, 1, "~", "a|b|c|d"}, {3, 2, "~", "a|b|c|d"}, {0, -1, "~", "a|b|c|d"},
    };
    for (auto& r : rows) {
        const SStringList original = List("a|b|c|d");
        SStringList l(original);
        EXPECT_EQ(Show(l.Splice(r.offset, r.length)), r.removed) << r.offset << "," << r.length;
        EXPECT_EQ(Show(l), r.left) << r.offset << "," << r.length;
        EXPECT_EQ(Show(original), "a|b|c|d");
    }
}

TEST(SStringList, Insert)
{
    struct { const char* into; const char* other; int pos; const char* want; } rows[] = {
        {"a|b", "x|y", 0, "x|y|a|b"}, {"a|b", "x|y", 1, "a|x|y|b"}, {"a|b", "x|y", 2, "a|b|x|y"},
        {"a|b", "x|y", 3, "a|b"},     {"a|b", "x|y", -1, "a|b"},    {"a|b", "", 1, "a|b"},
        {"", "x|y", 2, "?|?|x|y"},    {"", "x|y", 0, "x|y"},
    };
    for (auto& r : rows) {
        const SStringList original = List(r.into), other = List(r.other);
        SStringList l(original);
        l.Insert(other, r.pos);
        EXPECT_EQ(Show(l), r.want) << r.into << " + " << r.other << " at " << r.pos;
        EXPECT_EQ(Show(original) + " " + Show(other), Show(List(r.into)) + " " + Show(List(r.other)));
    }
    SStringList l = List("a|b");
    l.Insert(l, 1);
    EXPECT_EQ(Show(l), "a|a|b|b") << "a list inserted into itself";
}

TEST(SStringList, ChopChangesEveryHandleOnTheList)
{
    const SStringList original = List("cd|ab");
    SStringList shared(original);
    EXPECT_EQ(shared.Chop(), 'b');
    EXPECT_EQ(Show(original), "c|a");
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

TEST(SStringListDeathTest, TheHundredThousandAndFirstItemEndsTheProcess)
{
    SStringList l;
    for (int i = 0; i < SStringList::MaxItems; i++)
        l.Push("");
    EXPECT_EXIT(l.Push("one more"), testing::ExitedWithCode(109), "");
}

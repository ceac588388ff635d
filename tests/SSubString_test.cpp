#include <gtest/gtest.h>

#include <string>

#include "SString.h"

namespace {

std::string Bytes(const SString& s) { return std::string(s.Data() ? s.Data() : "", s.Length()); }

TEST(SSubString, ReadsAndReplacesTheClampedRange)
{
    struct Row {
        const char *parent, *viewed, *assigned, *result;
        int start, n;
    };
    const Row rows[] = {
        {"hello world", "world", "there", "hello there", 6, 5},
        {"hello world", "hello ", "", "world", 0, 6},
        {"abcdef", "ab", "X", "Xcdef", -3, 5},
        {"abcdef", "", "X", "Xabcdef", -9, 5},
        {"abc", "", "Z", "abcZ", 10, 2},
        {"abc", "", "--", "a--bc", 1, -1},
        {"abc", "bc", "", "a", 1, 99},
        {"", "", "new", "new", 0, 3},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(std::string(r.parent) + " @" + std::to_string(r.start) + "," + std::to_string(r.n));
        SString s(r.parent);
        SSubString view = s.Segment(r.start, r.n);
        EXPECT_EQ(Bytes(view), r.viewed);
        EXPECT_TRUE(SString(view).Defined());
        view = SString(r.assigned);
        EXPECT_EQ(Bytes(s), r.result);
        EXPECT_TRUE(s.Defined());
    }
}

TEST(SSubString, KeepsItsRangeAndLeavesSharersAlone)
{
    SString s("0123456789");
    SString sharer = s;
    SSubString view = s.Segment(2, 3);
    view = SString("abcdefg");
    EXPECT_EQ(Bytes(s), "01abcdefg56789");
    // The same bytes 2..4 of the new parent are replaced, not the inserted text.
    view = SString("_");
    EXPECT_EQ(Bytes(s), "01_defg56789");
    EXPECT_EQ(Bytes(sharer), "0123456789");
}

TEST(SSubString, UndefinedAliasedAndShrunkParents)
{
    SString undefinedParent;
    EXPECT_FALSE(SString(undefinedParent.Segment(0, 4)).Defined());
    undefinedParent.Segment(3, 4) = SString("new");
    EXPECT_EQ(Bytes(undefinedParent), "new");

    SString s("abc");
    s.Segment(1, 1) = s;
    EXPECT_EQ(Bytes(s), "aabcc");
    s.Segment(0, 1) = s.Segment(4, 1);
    EXPECT_EQ(Bytes(s), "cabcc");

    SString u("hello world");
    SSubString tail = u.Segment(6, 5);
    u = "hi";
    EXPECT_EQ(Bytes(tail), "");
    tail = SString("!\0", 2);
    EXPECT_EQ(Bytes(u), std::string("hi!\0", 4));
}

} // namespace

#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "SString.h"

namespace {

std::string Bytes(const SString& s) { return std::string(s.Data() ? s.Data() : "", s.Length()); }

// Parent, start, count, the bytes viewed, the text assigned, the parent afterwards.
TEST(SSubString, ReadsAndReplacesTheClampedRange)
{
    const std::tuple<const char*, int, int, const char*, const char*, const char*> rows[] = {
        {"hello world", 6, 5, "world", "there", "hello there"}, {"hello world", 0, 6, "hello ", "", "world"},
        {"abcdef", -3, 5, "ab", "X", "Xcdef"}, {"abcdef", -9, 5, "", "X", "Xabcdef"}, {"abc", 10, 2, "", "Z", "abcZ"},
        {"abc", 1, -1, "", "--", "a--bc"}, {"abc", 1, 99, "bc", "", "a"}, {"", 0, 3, "", "new", "new"},
    };
    for (const auto& [parent, start, n, viewed, assigned, result] : rows) {
        SString s(parent);
        SSubString view = s.Segment(start, n);
        EXPECT_EQ(Bytes(view), viewed) << parent << " @" << start << "," << n;
        EXPECT_TRUE(SString(view).Defined());
        view = SString(assigned);
        EXPECT_EQ(Bytes(s), result) << parent << " @" << start << "," << n;
        EXPECT_TRUE(s.Defined());
    }
}

TEST(SSubString, KeepsItsRangeAndCopesWithOddParents)
{
    SString s("0123456789"), sharer = s;
    SSubString view = s.Segment(2, 3);
    view = SString("abcdefg");
    EXPECT_EQ(Bytes(s), "01abcdefg56789");
    // The same bytes 2..4 of the new parent are replaced, not the inserted text.
    view = SString("_");
    EXPECT_EQ(Bytes(s), "01_defg56789");
    EXPECT_EQ(Bytes(sharer), "0123456789");

    SString undefinedParent;
    EXPECT_FALSE(SString(undefinedParent.Segment(0, 4)).Defined());
    undefinedParent.Segment(3, 4) = SString("new");
    EXPECT_EQ(Bytes(undefinedParent), "new");

    SString aliased("abc");
    aliased.Segment(1, 1) = aliased;
    aliased.Segment(0, 1) = aliased.Segment(4, 1);
    EXPECT_EQ(Bytes(aliased), "cabcc");

    SString shrunk("hello world");
    SSubString tail = shrunk.Segment(6, 5);
    shrunk = "hi";
    EXPECT_EQ(Bytes(tail), "");
    tail = SString("!\0", 2);
    EXPECT_EQ(Bytes(shrunk), std::string("hi!\0", 4));
}

} // namespace

#include "text_helpers.h"

#include <gtest/gtest.h>

#include <tuple>
#include <utility>

// The copy that a const string's Segment returns and the view of a non-const
// one select the same clamped range.  Rows: parent, start, count, the bytes
// selected, the text assigned through the view, the parent afterwards.
TEST(SSubString, ReadsAndReplacesTheClampedRange)
{
    const std::tuple<const char*, int, int, const char*, const char*, const char*> rows[] = {
        {"hello world", 6, 5, "world", "there", "hello there"}, {"hello world", 0, 6, "hello ", "", "world"},
        {"abcdef", -3, 5, "ab", "X", "Xcdef"}, {"abcdef", -9, 5, "", "X", "Xabcdef"}, {"abc", 10, 2, "", "Z", "abcZ"},
        {"abc", 1, -1, "", "--", "a--bc"}, {"abc", 1, 99, "bc", "", "a"}, {"", 0, 3, "", "new", "new"},
        {"abc", 3, 1, "", "d", "abcd"}, {"abc", 0, 0, "", "_", "_abc"}, {"abc", 0, 3, "abc", "x", "x"},
    };
    for (const auto& [parent, start, n, selected, assigned, result] : rows) {
        SString s(parent);
        const SString copy = std::as_const(s).Segment(start, n);
        SSubString view = s.Segment(start, n);
        EXPECT_EQ(Str(copy), selected) << parent << " @" << start << "," << n;
        EXPECT_EQ(Str(view), selected) << parent << " @" << start << "," << n;
        EXPECT_TRUE(copy.Defined() && SString(view).Defined());
        view = SString(assigned);
        EXPECT_EQ(Str(s), result) << parent << " @" << start << "," << n;
    }
}

TEST(SSubString, KeepsItsRangeAndCopesWithOddParents)
{
    SString s("0123456789"), sharer = s;
    SSubString view = s.Segment(2, 3);
    view = SString("abcdefg");
    // The same bytes 2..4 of the new parent are replaced, not the inserted text.
    view = SString("_");
    EXPECT_EQ(Str(s), "01_defg56789");
    EXPECT_EQ(Str(sharer), "0123456789");

    SString undefinedParent;
    EXPECT_TRUE(std::as_const(undefinedParent).Segment(0, 4).Defined()) << "a copy is always defined";
    EXPECT_FALSE(SString(undefinedParent.Segment(0, 4)).Defined()) << "a view is not";
    undefinedParent.Segment(3, 4) = SString("new");
    EXPECT_EQ(Str(undefinedParent), "new");

    SString aliased("abc");
    aliased.Segment(1, 1) = aliased;
    aliased.Segment(0, 1) = aliased.Segment(4, 1);
    EXPECT_EQ(Str(aliased), "cabcc");

    SString shrunk("hello world");
    SSubString tail = shrunk.Segment(6, 5);
    shrunk = "hi";
    EXPECT_EQ(Str(tail), "");
    tail = SString("!\0", 2);
    EXPECT_EQ(Str(shrunk), std::string("hi!\0", 4));
}

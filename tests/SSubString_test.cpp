#include <gtest/gtest.h>

#include <string>

#include "SString.h"

namespace {

std::string Bytes(const SString& s)
{
    return std::string(s.Data() ? s.Data() : "", s.Length());
}

TEST(SSubString, ReadsAndReplacesTheClampedRange)
{
    struct Row {
        const char* parent;
        int start, n;
        const char* viewed;
        const char* assigned;
        const char* result;
    };
    const Row rows[] = {
        {"hello world", 6, 5, "world", "there", "hello there"},
        {"hello world", 0, 6, "hello ", "", "world"},
        {"abcdef", -3, 5, "ab", "X", "Xcdef"},
        {"abcdef", -9, 5, "", "X", "Xabcdef"},
        {"abc", 10, 2, "", "Z", "abcZ"},
        {"abc", 1, -1, "", "--", "a--bc"},
        {"abc", 1, 99, "bc", "", "a"},
        {"", 0, 3, "", "new", "new"},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(std::string(r.parent) + " @" + std::to_string(r.start) + "," + std::to_string(r.n));
        SString s(r.parent);
        SSubString view = s.Segment(r.start, r.n);
        EXPECT_EQ(Bytes(view), r.viewed);
        view = SString(r.assigned);
        EXPECT_EQ(Bytes(s), r.result);
        EXPECT_TRUE(s.Defined());
    }
}

TEST(SSubString, UndefinedParent)
{
    SString undefinedParent;
    EXPECT_FALSE(SString(undefinedParent.Segment(0, 4)).Defined());

    SString empty("");
    EXPECT_TRUE(SString(empty.Segment(0, 4)).Defined());

    SString value("assigned");
    undefinedParent.Segment(3, 4) = value;
    EXPECT_EQ(Bytes(undefinedParent), "assigned");

    SString stillUndefined;
    stillUndefined.Segment(0, 0) = SString();
    EXPECT_FALSE(stillUndefined.Defined());
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

    SSubString copy(view);
    EXPECT_EQ(Bytes(copy), "_de");
}

TEST(SSubString, AliasingAndShrunkParents)
{
    SString s("abc");
    s.Segment(1, 1) = s;
    EXPECT_EQ(Bytes(s), "aabcc");

    SString t("xyz");
    t.Segment(0, 1) = t.Segment(2, 1);
    EXPECT_EQ(Bytes(t), "zyz");

    SString u("hello world");
    SSubString tail = u.Segment(6, 5);
    u = "hi";
    EXPECT_EQ(Bytes(tail), "");
    tail = SString("!");
    EXPECT_EQ(Bytes(u), "hi!");

    SString bin("a\0b\xff", 4);
    bin.Segment(1, 1) = SString("\0\0", 2);
    EXPECT_EQ(Bytes(bin), std::string("a\0\0b\xff", 5));
}

} // namespace

// Tests of the pattern members: SString::M, S, Split and SStringList::Grep.
#include "SRegex.h"

#include <gtest/gtest.h>

#include "text_helpers.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <tuple>

TEST(RegexFuncs, MatchSubstituteAndSplit)
{
    // A text pattern is translated and compiled with the flags.
    EXPECT_EQ(Joined(SString("user@Example.ORG").M("(\\w+)\\.(org)$", "i")), "Example.ORG|Example|ORG");

    const char* rows[][6] = {
        // subject, pattern, replacement, flags, the subject afterwards, returned
        {"a1b22c", "\\d+", "#", "g", "a#b#c", "22"}, {"Hello", "(h)(e)", "\\2\\1", "i", "eHllo", "He|H|e"},
        {"abc", "", "-", "g", "-a-b-c-", ""}, {"", "", "-", "g", "-", ""}, {"abc", "", "-", 0, "-abc", ""},
        {"abc", 0, "-", 0, "-abc", ""},
    };
    for (const auto& r : rows) {
        SString subject(r[0]);
        EXPECT_EQ(Joined(subject.S(r[1], SString(r[2]), r[3])), r[5]) << r[0] << " " << r[2];
        EXPECT_EQ(Str(subject), r[4]);
    }

    const std::tuple<const char*, const char*, int, const char*> splits[] = {
        {"a,b,,c", ",", 0, "a|b||c"}, {",a", ",", 0, "|a"},       {"a,", ",", 0, "a"},
        {",,a", ",", 2, "||a"},       {"a,b,c", ",", 2, "a|b,c"}, {"a,b,c", ",", 1, "a,b,c"},
        {"a,b,c", ",", -1, "a,b,c"},  {"a1b22c", "\\d+", 0, "a|b|c"}, {"a.b", ".", 0, "||"},
        {"abxc", "x*", 0, "a|b|c"},   {"", ",", 0, "-"},          {"abcd", "", 2, "a|bcd"},
        {"abc", 0, 0, "a|b|c"},
    };
    for (const auto& [subject, separator, limit, fields] : splits)
        EXPECT_EQ(Joined(SString(subject).Split(separator, limit)), fields) << subject;
    const std::tuple<const char*, char, int, const char*> chars[] = {
        {"  a b ", ' ', 0, "a|b"}, {"a \t\r\nb", ' ', 0, "a|b"}, {"   ", ' ', 0, ""},
        {" a b c", ' ', 2, "a|b c"}, {"a.b", '.', 0, "a|b"},     {"a|b\\c", '|', 0, "a|b\\c"},
        {"a\\b", '\\', 0, "a|b"},  {"1+2^3", '^', 0, "1+2|3"},  {"axb", 'x', 0, "a|b"},
    };
    for (const auto& [subject, separator, limit, fields] : chars)
        EXPECT_EQ(Joined(SString(subject).Split(separator, limit)), fields) << subject;
    EXPECT_EQ(Joined(SString("a\0b", 3).Split('\0')), "a|b");
    EXPECT_EQ(Joined(SString("a(b").Split(SRegex(SString("(")))), "-");
}

TEST(RegexFuncs, GrepByTestExpression)
{
    const char* items[] = {"#x", "a", "#y", "ba", 0};
    const char* rows[][4] = {
        // test, passed, rest, the list afterwards (if edited)
        {"/^#/", "#x|#y", "a|ba", ""}, {"!/^#/", "a|ba", "#x|#y", ""}, {"!! m#^\\##", "#x|#y", "a|ba", ""},
        {"m|A|i", "a|ba", "#x|#y", ""}, {"/a", "a|ba", "#x|#y", ""}, {"s/a/b/g", "b|bb", "#x|#y", "#x|b|#y|bb"},
        {"!s,^#,%,", "a|ba", "%x|%y", "%x|a|%y|ba"}, {"s/\\/|#/<$&>/", "<#>x|<#>y", "a|ba", "<#>x|a|<#>y|ba"},
    };
    for (const auto& r : rows) {
        SStringList l(items), copy = l, rest;
        EXPECT_EQ(Joined(l.Grep(SString(r[0]), &rest)), r[1]) << r[0];
        EXPECT_EQ(Joined(rest), r[2]) << r[0];
        EXPECT_EQ(Joined(l), *r[3] ? r[3] : "#x|a|#y|ba") << r[0];
        EXPECT_EQ(Joined(copy), "#x|a|#y|ba") << r[0];
    }
    SStringList l(items), same("a"), rest("x");
    SRegex hash{SString("^#")};
    EXPECT_EQ(Joined(l.Grep(hash)) + " " + Joined(l.Grep(hash, 0)), "#x|#y a|ba");
    EXPECT_FALSE(SStringList().Grep(hash).Defined() || l.Grep(SRegex()).Defined());
    same.Push("b");
    EXPECT_EQ(Joined(same.Grep(SString("/a/"), &same)), "a");
    EXPECT_EQ(Joined(same), "b");
    EXPECT_FALSE(SStringList().Grep(SString("/a/"), &rest).Defined() || rest.Defined());

    // Tests that are not understood: the diagnostics, and whether a list comes back.
    const std::tuple<const char*, std::string, bool> bad[] = {
        {"", "Grep called without a valid test field.\nThe test field for Grep was ''\n", true},
        {"x", "Unknown test type for Grep function\nThe test field for Grep was 'x'\nGrep called without", true},
        {"-q", "Grep: invalid file test\n", true}, {"m", "Incomplete expression in Grep function call\n", false},
        {"/a\\", "Incomplete expression in Grep function call\n", false},
    };
    for (const auto& [test, diagnostic, defined] : bad) {
        testing::internal::CaptureStderr();
        SStringList passed = SStringList("a").Grep(SString(test));
        EXPECT_EQ(testing::internal::GetCapturedStderr().substr(0, diagnostic.size()), diagnostic) << test;
        EXPECT_TRUE(passed.Count() == 0 && passed.Defined() == defined) << test;
    }
}

TEST(RegexFuncs, GrepFileTests)
{
    char base[] = "/tmp/tw-grep-XXXXXX";
    ASSERT_TRUE(mkdtemp(base));
    const std::string dir = base, plain = dir + "/plain", script = dir + "/script", link = dir + "/link";
    const std::string missing = dir + "/missing", all = dir + "|" + plain + "|" + script + "|" + link;
    std::ofstream(plain) << "x";
    std::ofstream(script) << "#!/bin/sh\n";
    chmod(plain.c_str(), 0400);
    chmod(script.c_str(), 0700);
    ASSERT_EQ(symlink(plain.c_str(), link.c_str()), 0);
    const std::string rows[][2] = {
        {"-d", dir}, {"-e", all}, {"-f", plain + "|" + script}, {"-x", dir + "|" + script}, {"-r", all},
        {"!-e", missing}, {"-w", geteuid() == 0 ? all : dir + "|" + script},
    };
    SStringList paths;
    for (const std::string& path : {dir, plain, script, link, missing})
        paths.Push(path.c_str());
    for (const auto& r : rows)
        EXPECT_EQ(Joined(SStringList(paths).Grep(SString(r[0].c_str()))), r[1]) << r[0];
    std::filesystem::remove_all(dir);
}

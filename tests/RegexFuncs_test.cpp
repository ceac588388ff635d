// Tests of the pattern members: SString::M, S, Split and SStringList::Grep.
#include "SRegex.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <string>

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

namespace {

std::string Str(const SString& s) {
    return std::string(s.Data() ? s.Data() : "", s.Length());
}

// Items joined by "|", so that empty items stay visible.
std::string Joined(const SStringList& l) {
    std::string out;
    for (int i = 0; i < l.Count(); i++)
        out += (i ? "|" : "") + Str(l.Get(i));
    return out;
}

SStringList ListOf(std::initializer_list<const char*> items) {
    SStringList l;
    l.Reset();
    for (const char* item : items)
        l.Push(item);
    return l;
}

}  // namespace

TEST(RegexFuncs, MatchForms) {
    SString s("user@Example.ORG");
    EXPECT_EQ(Joined(s.M("(\\w+)@(\\w+)")), "user@Example|user|Example");
    EXPECT_EQ(Joined(s.M(SString("org$"), "i")), "ORG");
    EXPECT_EQ(s.M("org$").Count(), 0);
    SPerlRegex re(SString("\\.(\\w+)"));
    EXPECT_EQ(Joined(s.M(re)), ".ORG|ORG");
    EXPECT_EQ(s.M(static_cast<const char*>(0)).Count(), 0);
    CaptureStderr();
    EXPECT_EQ(s.M("(x").Count(), 0);
    EXPECT_NE(GetCapturedStderr(), "");
}

TEST(RegexFuncs, SubstituteForms) {
    struct Row {
        const char* subject;
        const char* pattern;
        const char* replacement;
        const char* flags;
        const char* result;
        const char* returned;
    } rows[] = {
        {"a1b22c", "\\d+", "#", 0, "a#b22c", "1"},
        {"a1b22c", "\\d+", "#", "g", "a#b#c", "22"},
        {"Hello", "l", "L", "gi", "HeLLo", "l"},
        {"Hello", "(h)(e)", "\\2\\1", "i", "eHllo", "He|H|e"},
        {"abc", "x", "y", "g", "abc", ""},
        {"abc", "", "-", "g", "-a-b-c-", ""},
        {"", "", "-", "g", "-", ""},
        {"abc", "", "-", 0, "-abc", ""},
        {"abc", 0, "-", 0, "-abc", ""},
    };
    for (const Row& r : rows) {
        SString s(r.subject);
        SStringList last = s.S(r.pattern, SString(r.replacement), r.flags);
        EXPECT_EQ(Str(s), r.result) << r.subject << " " << (r.pattern ? r.pattern : "null");
        EXPECT_EQ(Joined(last), r.returned) << r.subject;
    }
    SString insertion("abc");
    EXPECT_EQ(insertion.S(SString(""), SString("-")).Count(), 1);
    SString undefined;
    undefined.S("", SString("-"), 0);
    EXPECT_EQ(Str(undefined), "-");
    SString compiled("aXbX");
    SRegex x{SString("X")};
    EXPECT_EQ(Joined(compiled.S(x, SString("$&$&"), "g")), "X");
    EXPECT_EQ(Str(compiled), "aXXbXX");
}

TEST(RegexFuncs, SplitByPattern) {
    struct Row {
        const char* subject;
        const char* separator;
        int limit;
        const char* fields;  // joined by "|"
        int count;
    } rows[] = {
        {"a,b,,c", ",", 0, "a|b||c", 4},
        {",a", ",", 0, "|a", 2},
        {"a,", ",", 0, "a", 1},
        {",,a", ",", 2, "||a", 3},
        {"a,b,c", ",", 2, "a|b,c", 2},
        {"a,b,c", ",", 3, "a|b|c", 3},
        {"a,b,c", ",", 1, "a,b,c", 1},
        {"a,b,c", ",", -1, "a,b,c", 1},
        {"a1b22c", "\\d+", 0, "a|b|c", 3},
        {"a.b", ".", 0, "||", 3},
        {"abc", "x*", 0, "a|b|c", 3},
        {"abxc", "x*", 0, "a|b|c", 3},
        {"", ",", 0, "", 0},
        {"abcd", "", 2, "a|bcd", 2},
        {"abc", 0, 0, "a|b|c", 3},
    };
    for (const Row& r : rows) {
        SStringList l = SString(r.subject).Split(r.separator, r.limit);
        EXPECT_EQ(Joined(l), r.fields) << r.subject << " at " << (r.separator ? r.separator : "null");
        EXPECT_EQ(l.Count(), r.count) << r.subject;
        if (r.separator && *r.separator) {
            EXPECT_EQ(Joined(SString(r.subject).Split(SString(r.separator), r.limit)), r.fields);
        }
    }
    SRegex broken{SString("(")};
    EXPECT_EQ(SString("a(b").Split(broken).Count(), 0);
    SRegex comma{SString(",")};
    EXPECT_EQ(Joined(SString("x,y").Split(comma)), "x|y");
}

TEST(RegexFuncs, SplitByCharacter) {
    struct Row {
        const char* subject;
        char separator;
        int limit;
        const char* fields;
        int count;
    } rows[] = {
        {"  a b ", ' ', 0, "a|b", 2},
        {"a \t\r\nb", ' ', 0, "a|b", 2},
        {"   ", ' ', 0, "", 1},
        {" a b c", ' ', 2, "a|b c", 2},
        {"a.b", '.', 0, "a|b", 2},
        {"a|b", '|', 0, "a|b", 2},
        {"a\\b", '\\', 0, "a|b", 2},
        {"1+2", '+', 0, "1|2", 2},
        {"a^b$c", '^', 0, "a|b$c", 2},
        {"axbxc", 'x', 0, "a|b|c", 3},
    };
    for (const Row& r : rows) {
        SStringList l = SString(r.subject).Split(r.separator, r.limit);
        EXPECT_EQ(Joined(l), r.fields) << r.subject;
        EXPECT_EQ(l.Count(), r.count) << r.subject;
    }
    SStringList nul = SString("a\0b", 3).Split('\0');
    EXPECT_EQ(Joined(nul), "a|b");
}

TEST(RegexFuncs, GrepByCompiledPattern) {
    SStringList l = ListOf({"#x", "a", "#y", "b"});
    SRegex hash{SString("^#")};
    EXPECT_EQ(Joined(l.Grep(hash)), "#x|#y");
    EXPECT_EQ(Joined(l.Grep(hash, 0)), "a|b");
    EXPECT_FALSE(SStringList().Grep(hash).Defined());
    EXPECT_FALSE(l.Grep(SRegex()).Defined());
    SStringList none = ListOf({}).Grep(hash, 0);
    EXPECT_TRUE(none.Defined());
    EXPECT_EQ(none.Count(), 0);
}

TEST(RegexFuncs, GrepByTestExpression) {
    struct Row {
        const char* test;
        const char* passed;
        const char* rest;
        const char* items;  // the list afterwards
    } rows[] = {
        {"/^#/", "#x|#y", "a|ba", "#x|a|#y|ba"},
        {"!/^#/", "a|ba", "#x|#y", "#x|a|#y|ba"},
        {"!!  m#^\\##", "#x|#y", "a|ba", "#x|a|#y|ba"},
        {"m|A|i", "a|ba", "#x|#y", "#x|a|#y|ba"},
        {"/a", "a|ba", "#x|#y", "#x|a|#y|ba"},
        {"s/a/b/g", "b|bb", "#x|#y", "#x|b|#y|bb"},
        {"!s,^#,%,", "a|ba", "%x|%y", "%x|a|%y|ba"},
        {"s/\\/|#/<$&>/", "<#>x|<#>y", "a|ba", "<#>x|a|<#>y|ba"},
    };
    for (const Row& r : rows) {
        SStringList l = ListOf({"#x", "a", "#y", "ba"});
        SStringList copy = l;
        SStringList rest;
        SStringList passed = l.Grep(SString(r.test), &rest);
        EXPECT_EQ(Joined(passed), r.passed) << r.test;
        EXPECT_EQ(Joined(rest), r.rest) << r.test;
        EXPECT_EQ(Joined(l), r.items) << r.test;
        EXPECT_EQ(Joined(copy), "#x|a|#y|ba") << r.test;
    }
    SStringList same = ListOf({"a", "b"});
    EXPECT_EQ(Joined(same.Grep(SString("/a/"), &same)), "a");
    EXPECT_EQ(Joined(same), "b");
    SStringList undefinedRest("x");
    EXPECT_FALSE(SStringList().Grep(SString("/a/"), &undefinedRest).Defined());
    EXPECT_FALSE(undefinedRest.Defined());
}

TEST(RegexFuncs, GrepDiagnostics) {
    const std::string field = "The test field for Grep was '";
    struct Row {
        const char* test;
        const char* stderrText;
        bool defined;
    } rows[] = {
        {"", "Grep called without a valid test field.\nThe test field for Grep was ''\n", true},
        {"x", "Unknown test type for Grep function\nThe test field for Grep was 'x'\n"
              "Grep called without a valid test field.\nThe test field for Grep was 'x'\n", true},
        {"-q", "Grep: invalid file test\n", true},
        {"m", "Incomplete expression in Grep function call\nThe test field for Grep was 'm'\n", false},
        {"/a\\", "Incomplete expression in Grep function call\nThe test field for Grep was '/a\\'\n", false},
    };
    for (const Row& r : rows) {
        SStringList l = ListOf({"a"});
        SStringList rest;
        CaptureStderr();
        SStringList passed = l.Grep(SString(r.test), &rest);
        std::string err = GetCapturedStderr();
        EXPECT_EQ(err.substr(0, std::string(r.stderrText).size()), r.stderrText) << r.test;
        EXPECT_EQ(passed.Count(), 0) << r.test;
        EXPECT_EQ(passed.Defined(), r.defined) << r.test;
    }
    CaptureStderr();
    GrepError(9, SString("t"));
    EXPECT_EQ(GetCapturedStderr(), field + "t'\n");
}

TEST(RegexFuncs, GrepFileTests) {
    char base[] = "/tmp/tw-grep-XXXXXX";
    ASSERT_TRUE(mkdtemp(base));
    std::string dir = base;
    std::string plain = dir + "/plain", script = dir + "/script", link = dir + "/link";
    std::ofstream(plain) << "x";
    std::ofstream(script) << "#!/bin/sh\n";
    chmod(plain.c_str(), 0400);
    chmod(script.c_str(), 0700);
    ASSERT_EQ(symlink(plain.c_str(), link.c_str()), 0);
    std::string missing = dir + "/missing";
    struct Row {
        const char* test;
        std::string passed;
    } rows[] = {
        {"-d", dir},
        {"-e", dir + "|" + plain + "|" + script + "|" + link},
        {"-f", plain + "|" + script},
        {"-x", dir + "|" + script},
        {"!-e", missing},
    };
    bool root = geteuid() == 0;
    for (const Row& r : rows) {
        SStringList l = ListOf({dir.c_str(), plain.c_str(), script.c_str(), link.c_str(), missing.c_str()});
        EXPECT_EQ(Joined(l.Grep(SString(r.test))), r.passed) << r.test;
    }
    SStringList l = ListOf({plain.c_str(), script.c_str()});
    EXPECT_EQ(Joined(l.Grep(SString("-r"))), plain + "|" + script);
    if (!root) {
        EXPECT_EQ(Joined(l.Grep(SString("-w"))), script);
    }
    unlink(link.c_str());
    unlink(plain.c_str());
    unlink(script.c_str());
    rmdir(dir.c_str());
}

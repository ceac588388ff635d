// tw-grep: filters lines with a Grep test expression and prints those that
// pass, as edited by a substitution test.
//
//   tw-grep TEST [FILE...]     reads each FILE, or the standard input
//
// TEST is what SStringList::Grep understands: "/re/", "m#re#i", "!/^#/",
// "s/re/replacement/g", or a file test such as "-f" applied to each line as
// a path name.  Patterns are Perl syntax (\d, \s, \w ...).

#include <tarnwick.h>

#include <fstream>
#include <iostream>

// Appends the lines of in to lines, without their line ends.
static void ReadLines(std::istream& in, SStringList& lines)
{
    SStringList read;
    in >> read;
    for (int i = 0; i < read.Count(); i++) {
        SString line = read.Get(i);
        if (line[-1] == '\n')
            line.Chop();
        lines.Push(line);
    }
}

int main(int argc, char** argv)
{
    if (argc < 2) {
        std::cerr << "usage: tw-grep TEST [FILE...]\n";
        return 2;
    }
    SStringList lines;
    lines.Reset();
    if (argc == 2)
        ReadLines(std::cin, lines);
    for (int i = 2; i < argc; i++) {
        std::ifstream file(argv[i]);
        if (!file) {
            std::cerr << "tw-grep: cannot open " << argv[i] << "\n";
            return 2;
        }
        ReadLines(file, lines);
    }

    SStringList passed = lines.Grep(SString(argv[1]));
    for (int i = 0; i < passed.Count(); i++)
        std::cout << passed.Get(i) << "\n";
    return passed.Count() > 0 ? 0 : 1;
}

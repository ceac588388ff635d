// words: reads text, lists its distinct words in byte order and counts them,
// using the string and list core only (SplitExact, Sort, Unique, Join).
//
//   words [FILE]      reads FILE, or the standard input

#include <tarnwick.h>

#include <fstream>
#include <iostream>

int main(int argc, char** argv)
{
    std::ifstream file;
    if (argc > 1) {
        file.open(argv[1]);
        if (!file) {
            std::cerr << "words: cannot open " << argv[1] << "\n";
            return 1;
        }
    }
    std::istream& in = argc > 1 ? file : std::cin;

    SStringList lines;
    in >> lines;  // one item per line, each keeping its "\n"

    SStringList words;
    for (int i = 0; i < lines.Count(); i++) {
        SString line = lines.Get(i);
        if (line[-1] == '\n')
            line.Chop();
        SStringList fields = line.LowerCase().SplitExact(" ");
        for (int j = 0; j < fields.Count(); j++)
            if (fields.Get(j).Length() > 0)
                words.Push(fields.Get(j));
    }

    SStringList distinct(words);  // shares until Sort unshares it
    distinct.Sort().Unique();
    std::cout << lines.Count() << " lines, " << words.Count() << " words, "
              << distinct.Count() << " distinct, " << Length(words) << " bytes of words\n";
    std::cout << distinct.Join(" ") << "\n";
    std::cout << "first word as read: " << words.Get(0) << ", last: " << words.Get(-1) << "\n";
    return 0;
}

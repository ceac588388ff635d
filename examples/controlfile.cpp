// Reads a control file, lists its keys and values, checks that writing the
// untouched map gives back the very same bytes, then appends a module name
// to its "Trace:" entry and writes the result.
//
//   controlfile <control-file> <output-file> [module]
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

#include <tarnwick.h>

namespace {

bool ReadFile(const char* name, SString& text)
{
    std::ifstream in(name, std::ios::binary);
    if (!in)
        return false;
    std::stringstream bytes;
    bytes << in.rdbuf();
    const std::string s = bytes.str();
    text = SString(s.data(), static_cast<int>(s.size()));
    return true;
}

bool WriteFile(const char* name, const SString& text)
{
    std::ofstream out(name, std::ios::binary);
    return out && text.Write(out);
}

// A value on one output line: its line ends shown as "\n".
std::string Shown(const SString& value)
{
    std::string shown;
    for (int i = 0; i < value.Length(); i++)
        shown += value[i] == '\n' ? std::string("\\n") : std::string(1, value[i]);
    return shown;
}

void List(const SNamedStringList& control)
{
    const SStringList keys = control.Keys();
    for (int i = 0; i < keys.Count(); i++) {
        const SStringList values = control.Get(keys.Get(i));
        std::cout << "  " << keys.Get(i) << " (" << values.Count() << ")\n";
        for (int j = 0; j < values.Count(); j++)
            std::cout << "      " << Shown(values.Get(j)) << "\n";
    }
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 3) {
        std::cerr << "usage: controlfile <control-file> <output-file> [module]\n";
        return 2;
    }
    SString original;
    if (!ReadFile(argv[1], original)) {
        std::cerr << "controlfile: cannot read " << argv[1] << "\n";
        return 1;
    }

    SNamedStringList control;
    original >> control;
    std::cout << "keys and values of " << argv[1] << ":\n";
    List(control);

    SString again;
    again << control;
    std::cout << "untouched map written back: " << again.Length() << " of "
              << original.Length() << " bytes, "
              << (again == original ? "identical" : "DIFFERENT") << "\n";

    control["Trace:"].Push(argc > 3 ? argv[3] : "controlfile");
    SString changed;
    changed << control;
    if (!WriteFile(argv[2], changed)) {
        std::cerr << "controlfile: cannot write " << argv[2] << "\n";
        return 1;
    }
    std::cout << "with the new Trace: entry written to the output file\n";
    return again == original ? 0 : 1;
}

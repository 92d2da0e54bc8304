#include "client/run.h"
#include "common/unicode.h"

#include <string>
#include <vector>

namespace {

int runWithArguments(int argc, const std::vector<std::u16string>& arguments) {
    std::vector<const char16_t*> wide;
    for (const std::u16string& argument : arguments) wide.push_back(argument.c_str());
    wide.push_back(nullptr);
    return runClient(argc, wide.data());
}

} // namespace

#ifdef _WIN32
// Windows hands the arguments over as UTF-16 already, through the wide entry point.
int wmain(int argc, wchar_t** argv) {
    static_assert(sizeof(wchar_t) == sizeof(char16_t), "Windows' wide text is UTF-16");
    std::vector<std::u16string> arguments;
    arguments.reserve(argc);
    for (int i = 0; i < argc; ++i) {
        std::u16string argument;
        for (const wchar_t* unit = argv[i]; *unit; ++unit) argument += char16_t(*unit);
        arguments.push_back(argument);
    }
    return runWithArguments(argc, arguments);
}
#else
// Arguments arrive as UTF-8 and are handed on as the wide text the client works in.
int main(int argc, char** argv) {
    std::vector<std::u16string> arguments;
    arguments.reserve(argc);
    for (int i = 0; i < argc; ++i) arguments.push_back(utf8ToUtf16(argv[i]));
    return runWithArguments(argc, arguments);
}
#endif

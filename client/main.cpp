#include "client/run.h"
#include "common/unicode.h"

#include <string>
#include <vector>

// Arguments arrive as UTF-8 and are handed on as the wide text the client works in.
int main(int argc, char** argv) {
    std::vector<std::u16string> arguments;
    arguments.reserve(argc);
    for (int i = 0; i < argc; ++i) arguments.push_back(utf8ToUtf16(argv[i]));
    std::vector<const char16_t*> wide;
    for (const std::u16string& argument : arguments) wide.push_back(argument.c_str());
    wide.push_back(nullptr);
    return runClient(argc, wide.data());
}

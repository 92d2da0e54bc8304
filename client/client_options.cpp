#include "client/client_options.h"

#include "client/banner.h"
#include "client/console.h"
#include "client/messages.h"

#include <cstdlib>

ClientOptions gClientOptions;

void resetClientOptions(ClientOptions& options) {
    options.scenePath.clear();
    options.settingsFile.clear();
    options.cameraFile.clear();
    options.materialsPath.clear();
    options.texmapsPath.clear();
    for (std::u16string& path : options.texturePaths) path.clear();
    options.outputPath.clear();
    options.outputName.clear();
    options.cachePath.clear();
    options.numPasses = options.frame = -1;
    options.numThreads = options.noAffinity = -1;
    options.fps = options.affinity = -1;
    options.saveJpeg = options.saveTiff = 0;
}

bool parseUnsigned(const char16_t* text, uint32_t& out) {
    out = 0;
    while (*text == u' ' || *text == u'\t') ++text;
    for (; *text; ++text) {
        if (*text < u'0' || *text > u'9') return false;
        out = out * 10u + static_cast<uint32_t>(*text - u'0');
    }
    return true;
}

namespace {

enum class Action {
    Version, Help, IgnoreWarnings, Jpeg, Tiff, NoAffinity,
    Path, Folder, Textures, Size, Region, Window, Number,
};

struct Option {
    const char16_t* names[3];
    Action action;
    std::u16string ClientOptions::*text; // Path and Folder
    int32_t ClientOptions::*number;      // Number
    const char16_t* twice;
    const char16_t* none;
    const char16_t* wrong;
};

const Option kOptions[] = {
    {{u"-version"}, Action::Version, nullptr, nullptr, nullptr, nullptr, nullptr},
    {{u"-help"}, Action::Help, nullptr, nullptr, nullptr, nullptr, nullptr},
    {{u"-ignorewarnings"}, Action::IgnoreWarnings, nullptr, nullptr, nullptr, nullptr, nullptr},
    {{u"-jpeg"}, Action::Jpeg, nullptr, nullptr, nullptr, nullptr, nullptr},
    {{u"-tiff", u"-tif"}, Action::Tiff, nullptr, nullptr, nullptr, nullptr, nullptr},
    {{u"-noaffinity", u"-noaffinitymask"}, Action::NoAffinity, nullptr, nullptr, nullptr, nullptr, nullptr},
    {{u"-scene"}, Action::Path, &ClientOptions::scenePath, nullptr,
     messages::kScenePathTwice, messages::kNoScenePath, nullptr},
    {{u"-settings"}, Action::Path, &ClientOptions::settingsFile, nullptr,
     messages::kSettingsFileTwice, messages::kNoSettingsFile,
     nullptr},
    {{u"-camera"}, Action::Path, &ClientOptions::cameraFile, nullptr,
     messages::kCameraFileTwice, messages::kNoCameraFile, nullptr},
    {{u"-materials"}, Action::Folder, &ClientOptions::materialsPath, nullptr,
     messages::kMaterialsPathTwice, messages::kNoMaterialsPath,
     nullptr},
    {{u"-texmaps"}, Action::Folder, &ClientOptions::texmapsPath, nullptr,
     messages::kTexmapsPathTwice, messages::kNoTexmapsPath,
     nullptr},
    {{u"-textures"}, Action::Textures, nullptr, nullptr, messages::kTooManyTexturePaths,
     messages::kNoTexturesPath, nullptr},
    {{u"-outputpath", u"-output"}, Action::Folder, &ClientOptions::outputPath, nullptr,
     messages::kOutputPathTwice, messages::kNoOutputPath, nullptr},
    {{u"-outputname", u"-name"}, Action::Path, &ClientOptions::outputName, nullptr,
     messages::kOutputNameTwice, messages::kNoOutputName, nullptr},
    {{u"-cachepath", u"-cache"}, Action::Folder, &ClientOptions::cachePath, nullptr,
     messages::kCachePathTwice, messages::kNoCachePath, nullptr},
    {{u"-size"}, Action::Size, nullptr, nullptr, nullptr, messages::kNoImageSize,
     messages::kWrongImageSize},
    {{u"-region"}, Action::Region, nullptr, nullptr, nullptr, messages::kNoRegionSize,
     messages::kWrongImageSize},
    {{u"-window"}, Action::Window, nullptr, nullptr, nullptr, messages::kNoWindowSize,
     messages::kWrongImageSize},
    {{u"-numpasses"}, Action::Number, nullptr, &ClientOptions::numPasses, nullptr,
     messages::kNoNumpassesValue, messages::kWrongNumpassesValue},
    {{u"-affinity", u"-affinityshift", u"-affinitystart"}, Action::Number, nullptr, &ClientOptions::affinity, nullptr,
     messages::kNoAffinityValue, messages::kWrongAffinityValue},
    {{u"-numthreads", u"-maxthreads"}, Action::Number, nullptr, &ClientOptions::numThreads, nullptr,
     messages::kNoNumthreadsValue, messages::kWrongNumthreadsValue},
    {{u"-frame"}, Action::Number, nullptr, &ClientOptions::frame, nullptr,
     messages::kNoFrameValue, messages::kWrongFrameValue},
    {{u"-fps"}, Action::Number, nullptr, &ClientOptions::fps, nullptr, messages::kNoFpsValue,
     messages::kWrongFpsValue},
};

char16_t foldAscii(char16_t c) { return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + 32) : c; }

bool sameOption(const char16_t* argument, const char16_t* name) {
    for (; *argument && *name; ++argument, ++name)
        if (foldAscii(*argument) != foldAscii(*name)) return false;
    return *argument == *name;
}

const Option* findOption(const char16_t* argument) {
    for (const Option& option : kOptions)
        for (const char16_t* name : option.names)
            if (name && sameOption(argument, name)) return &option;
    return nullptr;
}

bool isSeparator(char16_t c) { return c == u'\\' || c == u'/'; }

void applyFolderRule(std::u16string& folder) {
    if (!folder.empty() && !isSeparator(folder.back())) folder += u'/';
}

// The separator test of -textures looks at the length of the slot numbered by the value's
// position in argv, not at the slot just filled; slots past the array are the path fields
// that follow it.
size_t textureTestLength(const ClientOptions& options, int argvIndex) {
    if (argvIndex < ClientOptions::kMaxTexturePaths) return options.texturePaths[argvIndex].size();
    switch (argvIndex - ClientOptions::kMaxTexturePaths) {
    case 0: return options.outputPath.size();
    case 1: return options.outputName.size();
    case 2: return options.cachePath.size();
    default: return 0;
    }
}

void storeTexturePath(ClientOptions& options, const char16_t* value, int argvIndex) {
    std::u16string& slot = options.texturePaths[options.texturePathCount++];
    slot = value;
    if (slot.empty()) return;
    size_t length = textureTestLength(options, argvIndex);
    bool separator = length > 0 && length - 1 < slot.size() && isSeparator(slot[length - 1]);
    if (!separator) slot += u'/';
}

bool parseSigned(const char16_t* text, int32_t& out) {
    uint32_t value;
    bool ok = parseUnsigned(text, value);
    out = static_cast<int32_t>(value);
    return ok;
}

bool fail(const char16_t* message) {
    consolePrint(message);
    return false;
}

ParseOutcome failWith(const char16_t* message) {
    consolePrint(message);
    return ParseOutcome::ExitFailure;
}

// Reads `count` values behind argv[index]; false (after the message) when they are missing or bad.
bool parseValues(int argc, const char16_t* const* argv, int index, const Option& option, int32_t* values,
                 int count) {
    if (index + count >= argc) return fail(option.none);
    bool ok = true;
    for (int i = 0; i < count; ++i) ok = parseSigned(argv[index + 1 + i], values[i]) && ok;
    return ok || fail(option.wrong);
}

} // namespace

ParseOutcome parseCommandLine(int argc, const char16_t* const* argv, ClientOptions& options) {
    int index = 1;
    while (index < argc) {
        const Option* option = findOption(argv[index]);
        if (!option) return failWith(messages::kUnknownOption);
        int32_t v[4];
        int taken = 0;
        switch (option->action) {
        case Action::Version:
            printVersion();
            return ParseOutcome::ExitSuccess;
        case Action::Help:
            printUsage();
            return ParseOutcome::ExitSuccess;
        case Action::IgnoreWarnings: options.ignoreWarnings = 1; break;
        case Action::Jpeg: options.saveJpeg = 1; break;
        case Action::Tiff: options.saveTiff = 1; break;
        case Action::NoAffinity: options.noAffinity = 1; break;
        case Action::Path:
        case Action::Folder: {
            std::u16string& field = options.*(option->text);
            if (!field.empty()) return failWith(option->twice);
            if (index + 1 >= argc) return failWith(option->none);
            field = argv[index + 1];
            if (option->action == Action::Folder) applyFolderRule(field);
            taken = 1;
            break;
        }
        case Action::Textures:
            if (options.texturePathCount >= ClientOptions::kMaxTexturePaths)
                return failWith(option->twice);
            if (index + 1 >= argc) return failWith(option->none);
            storeTexturePath(options, argv[index + 1], index + 1);
            taken = 1;
            break;
        case Action::Size:
            if (!parseValues(argc, argv, index, *option, v, 2)) return ParseOutcome::ExitFailure;
            if (v[0] < 1 || v[1] < 1) return failWith(option->wrong);
            options.imageSizeX = v[0];
            options.imageSizeY = v[1];
            taken = 2;
            break;
        case Action::Region:
            if (!parseValues(argc, argv, index, *option, v, 4)) return ParseOutcome::ExitFailure;
            if (v[0] < 0 || v[1] < 0 || v[2] < 1 || v[3] < 1) return failWith(option->wrong);
            options.regionX = v[0];
            options.regionY = v[1];
            options.regionSizeX = v[2];
            options.regionSizeY = v[3];
            taken = 4;
            break;
        case Action::Window: {
            if (index + 4 >= argc) return failWith(option->none);
            bool ok = true;
            for (int i = 0; i < 4; ++i) ok = parseSigned(argv[index + 1 + i], v[i]) && ok;
            // The region is written before the values are judged.
            options.regionX = v[0] < v[2] ? v[0] : v[2];
            options.regionY = v[1] < v[3] ? v[1] : v[3];
            options.regionSizeX = static_cast<int32_t>(
                static_cast<uint32_t>(std::abs(static_cast<int64_t>(v[2]) - v[0])) + 1u);
            options.regionSizeY = static_cast<int32_t>(
                static_cast<uint32_t>(std::abs(static_cast<int64_t>(v[3]) - v[1])) + 1u);
            if (!ok || options.regionX < 0 || options.regionY < 0 || options.regionSizeX < 1 ||
                options.regionSizeY < 1)
                return failWith(option->wrong);
            taken = 4;
            break;
        }
        case Action::Number:
            if (!parseValues(argc, argv, index, *option, v, 1)) return ParseOutcome::ExitFailure;
            options.*(option->number) = v[0];
            taken = 1;
            break;
        }
        index += 1 + taken;
    }
    return ParseOutcome::Run;
}

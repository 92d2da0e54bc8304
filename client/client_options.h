// The client's whole configuration, taken from the command line.
#pragma once
#include <cstdint>
#include <string>

struct ClientOptions {
    static constexpr int kMaxTexturePaths = 16;

    std::u16string scenePath;
    std::u16string settingsFile;
    std::u16string cameraFile;
    std::u16string materialsPath;
    std::u16string texmapsPath;
    std::u16string texturePaths[kMaxTexturePaths];
    std::u16string outputPath;
    std::u16string outputName;
    std::u16string cachePath;
    int32_t texturePathCount = 0;
    int32_t imageSizeX = 0;
    int32_t imageSizeY = 0;
    int32_t regionX = 0;
    int32_t regionY = 0;
    int32_t regionSizeX = 0;
    int32_t regionSizeY = 0;
    int32_t numPasses = -1;
    int32_t frame = -1;
    int32_t fps = -1;
    int32_t ignoreWarnings = 0;
    int32_t numThreads = -1;
    int32_t noAffinity = -1;
    int32_t affinity = -1;
    int32_t saveJpeg = 0;
    int32_t saveTiff = 0;
};

extern ClientOptions gClientOptions;

// Empties the strings and restores the "not given" values; leaves the counts, the size,
// the region and ignoreWarnings alone.
void resetClientOptions(ClientOptions& options);

// Decimal digits after leading blanks, wrapping in 32 bits. `out` holds the value so far
// even when the text is refused.
bool parseUnsigned(const char16_t* text, uint32_t& out);

enum class ParseOutcome { Run, ExitSuccess, ExitFailure };

// Parses argv[1..] into `options`, printing the message of the first failure.
ParseOutcome parseCommandLine(int argc, const char16_t* const* argv, ClientOptions& options);

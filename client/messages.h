// Every text the client shows, exactly as users and scripts know them.
#pragma once

namespace messages {

constexpr char16_t kLibraryNotFound[] = u"Error: Tavi Tracer AVX library not found!";
constexpr char16_t kInvalidLibrary[] = u"Error: Invalid Tavi Tracer AVX library!";
constexpr char16_t kClosingRenderer[] = u"Closing renderer ...";
constexpr char16_t kNotStarted[] = u"Rendering not started because of errors or warnings.\n";
constexpr char16_t kFinished[] = u"Rendering finished without errors.\n";
constexpr char16_t kFailed[] = u"Rendering failed!\n\n";
constexpr char16_t kProblems[] = u"The errors and problems:\n\n";
constexpr char16_t kRendering[] = u"Rendering ...\n";
constexpr char16_t kStatistics[] = u"Calculate statistics ...\n";
constexpr char16_t kPreparingTitle[] = u"TaviClient [preparing...]: %s";
constexpr char16_t kEstimatingTitle[] = u"TaviClient [estimating...]: %s";
constexpr char16_t kRenderTitle[] =
    u"TaviClient %.1f%% done [%i passes, %i:%02i:%02i elapsed, %i:%02i:%02i left]: %s";

constexpr char16_t kInvalidScene[] = u"Error: invalid scene file.";
constexpr char16_t kUnknownVersion[] = u"Error: unknown version of scene file.";
constexpr char16_t kIoError[] = u"Error: IO error.";

constexpr char16_t kDuplicateTexture[] =
    u"Error: two textures with same name %ls, but different ID detected.";
constexpr char16_t kDuplicateTexMap[] = u"Error: two texmaps with same name %ls, but different ID detected.";
constexpr char16_t kDuplicateMaterial[] =
    u"Error: two materials with same name %ls, but different ID detected.";
constexpr char16_t kTexMapRecursion[] = u"Error: texmap %ls recurrently referenced by itself.";
constexpr char16_t kMaterialRecursion[] = u"Error: material %ls recurrently referenced by itself.";
constexpr char16_t kSettingsDocumentFailed[] =
    u"Error: the custom settings specified, but the file could not be loaded.";
constexpr char16_t kCameraDocumentFailed[] = u"Error: XML camera file specified, but is not found.";
constexpr char16_t kForcingFormats[] = u"Warning: Forcing Jpeg, TIFF and EXR!\n";
constexpr char16_t kToneOperatorSwitched[] =
    u"Warning: the external tonemap operator specified! Switched to ACES.\n";

// Followed by the names of the missing extensions.
constexpr char16_t kCpuRequirements[] =
    u"Required CPU extensions are: SSE42, AVX2, BMI2, F16C, FMA, POPCNT\nYour CPU does not support";

// The banner and the usage.
constexpr char16_t kVersion[] = u"Standalone client for Tavi Renderer.\n"
                                u"Made by the Tavi Renderer team.\n"
                                u"Version 1.5.60, 30 May 2024"
                                u"\nContact: tavi-renderer@users.invalid\n\n";
constexpr char16_t kUsage[] =
    u"Command line arguments:\n"
    u"  -version                  print the version and exit\n"
    u"  -help                     print this text and exit\n"
    u"  -ignorewarnings           render even if the scene loads with warnings\n"
    u"  -jpeg                     save the image as JPEG as well\n"
    u"  -tiff                     save the image as TIFF as well\n"
    u"  -noaffinity               do not pin the render threads to processors\n"
    u"  -scene <file>             the scene file to render (required)\n"
    u"  -settings <file>          a TaviSettings document over the scene's settings\n"
    u"  -camera <file>            a TaviCamera document for the render camera\n"
    u"  -materials <folder>       folder of TaviMaterial documents, one per material name\n"
    u"  -texmaps <folder>         folder of TaviTexMap documents, one per texmap name\n"
    u"  -textures <folder>        a folder to search for textures (up to 16 times)\n"
    u"  -outputpath <folder>      folder of the rendered images\n"
    u"  -outputname <name>        base name of the rendered images\n"
    u"  -cachepath <folder>       folder of the render caches\n"
    u"  -size <x> <y>             image size in pixels\n"
    u"  -region <x> <y> <sx> <sy> render only this region of the image\n"
    u"  -numpasses <n>            number of passes\n"
    u"  -affinity <n>             first processor of the render threads\n"
    u"  -numthreads <n>           number of render threads\n"
    u"  -frame <n>                frame number of an animated scene\n"
    u"  -fps <n>                  frames per second of an animated scene\n"
    u"\n";

// The command line's.
constexpr char16_t kScenePathTwice[] = u"Error: the scene path specified twice, aborting!\n";
constexpr char16_t kNoScenePath[] = u"Error: no scene path specified, aborting!\n";
constexpr char16_t kSettingsFileTwice[] = u"Error: the settings file specified twice, aborting!\n";
constexpr char16_t kNoSettingsFile[] = u"Error: no settings file specified, aborting!\n";
constexpr char16_t kCameraFileTwice[] = u"Error: the camera file specified twice, aborting!\n";
constexpr char16_t kNoCameraFile[] = u"Error: no camera file specified, aborting!\n";
constexpr char16_t kMaterialsPathTwice[] = u"Error: the materials path specified twice, aborting!\n";
constexpr char16_t kNoMaterialsPath[] = u"Error: no materials path specified, aborting!\n";
constexpr char16_t kTexmapsPathTwice[] = u"Error: the texmaps path specified twice, aborting!\n";
constexpr char16_t kNoTexmapsPath[] = u"Error: no texmaps path specified, aborting!\n";
constexpr char16_t kTooManyTexturePaths[] = u"Error: too many texmaps path specified, aborting!\n";
constexpr char16_t kNoTexturesPath[] = u"Error: no textures path specified, aborting!\n";
constexpr char16_t kOutputPathTwice[] = u"Error: the output path specified twice, aborting!\n";
constexpr char16_t kNoOutputPath[] = u"Error: no output path specified, aborting!\n";
constexpr char16_t kOutputNameTwice[] = u"Error: the output name specified twice, aborting!\n";
constexpr char16_t kNoOutputName[] = u"Error: no output name specified, aborting!\n";
constexpr char16_t kCachePathTwice[] = u"Error: the cache path specified twice, aborting!\n";
constexpr char16_t kNoCachePath[] = u"Error: no cache path specified, aborting!\n";
constexpr char16_t kNoImageSize[] = u"Error: no image size specified, aborting!\n";
constexpr char16_t kWrongImageSize[] = u"Error: wrong image size specified, aborting!\n";
constexpr char16_t kNoRegionSize[] = u"Error: no region size specified, aborting!\n";
constexpr char16_t kNoWindowSize[] = u"Error: no window size specified, aborting!\n";
constexpr char16_t kNoNumpassesValue[] = u"Error: no numpasses value specified, aborting!\n";
constexpr char16_t kWrongNumpassesValue[] = u"Error: wrong numpasses value specified, aborting!\n";
constexpr char16_t kNoAffinityValue[] = u"Error: no affinity value specified, aborting!\n";
constexpr char16_t kWrongAffinityValue[] = u"Error: wrong affinity value specified, aborting!\n";
constexpr char16_t kNoNumthreadsValue[] = u"Error: no numthreads value specified, aborting!\n";
constexpr char16_t kWrongNumthreadsValue[] = u"Error: wrong numthreads value specified, aborting!\n";
constexpr char16_t kNoFrameValue[] = u"Error: no frame value specified, aborting!\n";
constexpr char16_t kWrongFrameValue[] = u"Error: wrong frame value specified, aborting!\n";
constexpr char16_t kNoFpsValue[] = u"Error: no fps value specified, aborting!\n";
constexpr char16_t kWrongFpsValue[] = u"Error: wrong fps value specified, aborting!\n";
constexpr char16_t kUnknownOption[] = u"Error: unknown option specified, aborting!\n";

} // namespace messages

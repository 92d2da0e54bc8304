// Outcome of every scene file operation.
#pragma once
#include <cstdint>

enum SceneStatus : int32_t {
    SceneOk = 0,
    SceneInvalid = 1,
    SceneOutOfMemory = 2,
    SceneBadVersion = 3,
    SceneIoError = 4,
    SceneEndOfChunks = 5,
};

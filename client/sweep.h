// A pass over the scene file's chunk chain.
#pragma once
#include "scene/scene_status.h"

#include <cstdint>

// Walks every chunk that `readOne` takes along the chain. The end of the chain is the normal
// end of a sweep; `readOne` answers false to stop the sweep early.
template <class ReadOne>
SceneStatus sweep(ReadOne readOne) {
    uint64_t offset = 0;
    for (;;) {
        SceneStatus status = SceneOk;
        bool goOn = readOne(offset, status);
        if (status == SceneEndOfChunks) return SceneOk;
        if (status != SceneOk || !goOn || offset == 0) return status;
    }
}

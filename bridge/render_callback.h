// The callbacks that the client offers the engine during a run.
#pragma once
#include <cstdint>

// What the engine tells of its progress.
struct ProgressInfo {
    float fraction; // done part of the current stage, 0 to 1
    int32_t stage;  // below 1: statistics; 1 and above: rendering
    uint32_t reserved;
    int32_t passes;
};
static_assert(sizeof(ProgressInfo) == 16);

struct ViewState {
    uint32_t words[4];
};
static_assert(sizeof(ViewState) == 16);

// An opaque 16-byte value that the engine may ask the client to filter.
struct Value16 {
    uint8_t bytes[16];
};
static_assert(sizeof(Value16) == 16);

// Slot order is part of the binary boundary: never reorder, insert or remove.
class ITaviRenderCallback {
  public:
    virtual bool onProgress(const ProgressInfo* info) = 0;            // 0
    virtual bool peekCommand(int32_t* command) = 0;                   // 1
    virtual int32_t queryZero() = 0;                                  // 2
    virtual bool peekViewState(ViewState* state) = 0;                 // 3
    virtual bool queryInteractive() = 0;                              // 4
    virtual void notifyStart() = 0;                                   // 5
    virtual void notifySceneReady() = 0;                              // 6
    virtual void notifyPass() = 0;                                    // 7
    virtual void notifyStop() = 0;                                    // 8
    virtual bool queryPreview() = 0;                                  // 9
    virtual bool queryAbort() = 0;                                    // 10
    virtual void notifyImage() = 0;                                   // 11
    virtual Value16* filterValue(Value16* result, const Value16* source) = 0; // 12
    virtual Value16* defaultValue(Value16* result) = 0;               // 13
    virtual bool acceptSave() = 0;                                    // 14
    virtual bool acceptOutput() = 0;                                  // 15
    virtual void reportError(const char16_t* text, int64_t code) = 0; // 16
    virtual void reportWarning(const char16_t* text, int64_t code) = 0; // 17
    virtual void reportInfo(const char16_t* text) = 0;                // 18

  protected:
    ~ITaviRenderCallback() = default;
};

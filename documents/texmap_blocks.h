// The three structures that texture maps share: the coordinate generator with its noise, and
// the colour output. They sit at fixed places of the mapped texmap types, among the own fields
// of a few others, and in one material (the triplanar one carries a CoordGen).
#pragma once
#include "documents/xml_value_codec.h"

#include <cstddef>
#include <cstdint>

struct CommonNoise {
    ColorRGB Amplitude;
    ColorRGB Scale;
    float Phase;
    int16_t Levels;
    uint8_t UsePhase;
    uint8_t reserved1F;
    float OctaveAmplitude;
    float OctaveSize;
};
static_assert(offsetof(CommonNoise, Scale) == 0x0C && offsetof(CommonNoise, Phase) == 0x18);
static_assert(offsetof(CommonNoise, Levels) == 0x1C && offsetof(CommonNoise, UsePhase) == 0x1E);
static_assert(offsetof(CommonNoise, OctaveAmplitude) == 0x20 && offsetof(CommonNoise, OctaveSize) == 0x24);
static_assert(sizeof(CommonNoise) == 0x28);

struct CoordGen {
    Matrix3x4 CoordinateMatrix;
    ColorEx OutsideColor;
    float Blur;
    float BlurOffset;
    int32_t CoordinateChannel;
    uint8_t CoordinateEnTile[3];
    uint8_t CoordinateEnMirror[3];
    // Derived on every read: the whole matrix, and its 3 x 3 part, differ from identity.
    uint8_t matrixNotIdentity;
    uint8_t linearNotIdentity;
    int32_t CoordGenType; // 0 EXPLICIT, 1 MODELSPACE, 2 WORLDSPACE
    CommonNoise Noise;
};
static_assert(offsetof(CoordGen, OutsideColor) == 0x30 && offsetof(CoordGen, Blur) == 0x50);
static_assert(offsetof(CoordGen, BlurOffset) == 0x54 && offsetof(CoordGen, CoordinateChannel) == 0x58);
static_assert(offsetof(CoordGen, CoordinateEnTile) == 0x5C && offsetof(CoordGen, CoordinateEnMirror) == 0x5F);
static_assert(offsetof(CoordGen, matrixNotIdentity) == 0x62 && offsetof(CoordGen, linearNotIdentity) == 0x63);
static_assert(offsetof(CoordGen, CoordGenType) == 0x64 && offsetof(CoordGen, Noise) == 0x68);
static_assert(sizeof(CoordGen) == 0x90);

struct ColorOutput {
    float RgbMul, RgbAdd, AlphaMul, AlphaAdd;
    float LumR, LumG, LumB;
    uint8_t RGB2Lum, Clamp0, Clamp1;
    uint8_t reserved1F;
    SplineSegment SplineR[8];
    SplineSegment SplineG[8];
    SplineSegment SplineB[8];
    SplineSegment SplineA[8];
};
static_assert(offsetof(ColorOutput, LumB) == 0x18 && offsetof(ColorOutput, RGB2Lum) == 0x1C);
static_assert(offsetof(ColorOutput, Clamp1) == 0x1E && offsetof(ColorOutput, SplineR) == 0x20);
static_assert(offsetof(ColorOutput, SplineG) == 0x120 && offsetof(ColorOutput, SplineB) == 0x220);
static_assert(offsetof(ColorOutput, SplineA) == 0x320 && sizeof(ColorOutput) == 0x420);

extern const char* const kCoordGenTypeWords[];

// `element` is the block's own element (`CoordGen`, `ColorOutput`, `CommonNoise`); a null
// element reads as all keys missing. Reading a CoordGen always ends with its derived flags.
void ReadCoordGen(pugi::xml_node element, CoordGen* block);
void WriteCoordGen(pugi::xml_node element, const CoordGen* block);
void ReadCommonNoise(pugi::xml_node element, CommonNoise* block);
void WriteCommonNoise(pugi::xml_node element, const CommonNoise* block);
void ReadColorOutput(pugi::xml_node element, ColorOutput* block);
void WriteColorOutput(pugi::xml_node element, const ColorOutput* block);

// Sets the two derived flags from the matrix. An entry counts as identity when it lies
// strictly within 2^-20 of 1 (diagonal) or of 0 (elsewhere).
void UpdateCoordGenFlags(CoordGen* block);

#include "documents/texmap_blocks.h"

#include "documents/field_table.h"

#include <cmath>

const char* const kCoordGenTypeWords[] = {"EXPLICIT", "MODELSPACE", "WORLDSPACE", nullptr};

namespace {

// In reading order; the matrix and the outside colour come last so that the flags follow them.
constexpr FieldDescriptor kCoordGenFields[] = {
    floatField("Blur", 0x50),
    floatField("BlurOffset", 0x54),
    intField("CoordinateChannel", 0x58),
    boolField("CoordinateEnTileX", 0x5C),
    boolField("CoordinateEnTileY", 0x5D),
    boolField("CoordinateEnTileZ", 0x5E),
    boolField("CoordinateEnMirrorX", 0x5F),
    boolField("CoordinateEnMirrorY", 0x60),
    boolField("CoordinateEnMirrorZ", 0x61),
    enumField("CoordGenType", 0x64, kCoordGenTypeWords),
    matrixField("CoordinateMatrix", 0x00),
    colorExField("OutsideColor", 0x30),
};
static_assert(fieldsFit(kCoordGenFields, offsetof(CoordGen, Noise)));

constexpr FieldDescriptor kCommonNoiseFields[] = {
    colorField("Amplitude", 0x00),  colorField("Scale", 0x0C),   floatField("Phase", 0x18),
    int16Field("Levels", 0x1C),     boolField("UsePhase", 0x1E), floatField("OctaveAmplitude", 0x20),
    floatField("OctaveSize", 0x24),
};
static_assert(fieldsFit(kCommonNoiseFields, sizeof(CommonNoise)));

constexpr FieldDescriptor kColorOutputFields[] = {
    floatField("RgbMul", 0x00),       floatField("RgbAdd", 0x04),       floatField("AlphaMul", 0x08),
    floatField("AlphaAdd", 0x0C),     floatField("LumR", 0x10),         floatField("LumG", 0x14),
    floatField("LumB", 0x18),         boolField("RGB2Lum", 0x1C),       boolField("Clamp0", 0x1D),
    boolField("Clamp1", 0x1E),        splineField("SplineR", 0x20, 8),  splineField("SplineG", 0x120, 8),
    splineField("SplineB", 0x220, 8), splineField("SplineA", 0x320, 8),
};
static_assert(fieldsFit(kColorOutputFields, sizeof(ColorOutput)));

template <class Block, size_t N>
void readBlock(const FieldDescriptor (&fields)[N], pugi::xml_node element, Block* block) {
    readFields(fields, N, element, reinterpret_cast<uint8_t*>(block), sizeof(Block), nullptr);
}

template <class Block, size_t N>
void writeBlock(const FieldDescriptor (&fields)[N], pugi::xml_node element, const Block* block) {
    writeFields(fields, N, element, reinterpret_cast<const uint8_t*>(block), sizeof(Block), nullptr);
}

bool nearIdentity(float value, bool diagonal) {
    const double tolerance = std::ldexp(1.0, -20);
    const double target = diagonal ? 1.0 : 0.0;
    return value > target - tolerance && value < target + tolerance;
}

} // namespace

void UpdateCoordGenFlags(CoordGen* block) {
    bool whole = false;
    bool linear = false;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 4; ++column) {
            if (nearIdentity(block->CoordinateMatrix.m[row][column], row == column)) continue;
            whole = true;
            if (column < 3) linear = true;
        }
    }
    block->matrixNotIdentity = whole ? 1 : 0;
    block->linearNotIdentity = linear ? 1 : 0;
}

void ReadCoordGen(pugi::xml_node element, CoordGen* block) {
    readBlock(kCoordGenFields, element, block);
    UpdateCoordGenFlags(block);
    ReadCommonNoise(element.child("CommonNoise"), &block->Noise);
}

void WriteCoordGen(pugi::xml_node element, const CoordGen* block) {
    writeBlock(kCoordGenFields, element, block);
    WriteCommonNoise(element.type() == pugi::node_element ? element.append_child("CommonNoise")
                                                          : pugi::xml_node(),
                     &block->Noise);
}

void ReadCommonNoise(pugi::xml_node element, CommonNoise* block) {
    readBlock(kCommonNoiseFields, element, block);
}

void WriteCommonNoise(pugi::xml_node element, const CommonNoise* block) {
    writeBlock(kCommonNoiseFields, element, block);
}

void ReadColorOutput(pugi::xml_node element, ColorOutput* block) {
    readBlock(kColorOutputFields, element, block);
}

void WriteColorOutput(pugi::xml_node element, const ColorOutput* block) {
    writeBlock(kColorOutputFields, element, block);
}

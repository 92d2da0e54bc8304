// Records and models in the meaning the preview engine gives them (engines/preview/README.md,
// "The format it reads"): track keys, triangle meshes with normals and UVs, materials and
// texmaps set by the keys of their field tables, cameras, lights and their paths. Offsets of
// materials, texmaps and cameras come from the client's field tables alone; the light record,
// which has no table, is laid out as the README says.
#pragma once
#include "documents/field_table.h"
#include "tools/scene_writer/geometry_builders.h"
#include "tools/scene_writer/record_builders.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace scene_writer {

using Vec3f = std::array<float, 3>;

// ---- Track keys --------------------------------------------------------------------------------

constexpr int32_t kKeyForAnyTime = 0x7FFFFFFF;

// One key in its 36-byte file form: interpolation at 0 (1 holds until the next key), x, y, z
// at 8, 12, 16, scale at 28, time in milliseconds at 32.
FileKey trackKey(float x, float y, float z, int32_t milliseconds = kKeyForAnyTime, float scale = 1,
                 bool hold = false);
inline FileKey trackKey(const Vec3f& v, int32_t milliseconds = kKeyForAnyTime) {
    return trackKey(v[0], v[1], v[2], milliseconds);
}

// ---- Splines -----------------------------------------------------------------------------------

// `value` at every time: the first segment spans all times, the others are switched off.
void putConstantSpline(Bytes& image, size_t offset, uint32_t segments, float value);
// Every segment switched off: the spline counts as unset.
void putSwitchedOffSpline(Bytes& image, size_t offset, uint32_t segments);
// A colour spline of kColorSplineSegments segments holding `colour` at every time.
void putConstantColorSpline(Bytes& image, size_t offset, const ColorRGB& colour);

// ---- Triangle meshes ---------------------------------------------------------------------------

// A mesh of one part and one time slice (at time 0). `positions` and `normals` are x, y, z per
// vertex, `uvs` u, v per vertex, `indices` three vertices a triangle and `materialIds` one id a
// triangle. Normals, when given, are looked up per corner by the corner's vertex index; without
// them the triangles are flat.
MeshPlan triangleMesh(const std::string& name, const std::vector<float>& positions,
                      const std::vector<uint32_t>& indices, const std::vector<uint32_t>& materialIds,
                      const std::vector<float>& normals = {}, const std::vector<float>& uvs = {});

// A rectangle spanned by `edgeU` and `edgeV` from `corner`, facing edgeU x edgeV. UV (0, 0) is
// at the corner, u grows along edgeU and v along edgeV, so (1, 1) is at corner + edgeU + edgeV.
MeshPlan quadMesh(const std::string& name, const Vec3f& corner, const Vec3f& edgeU, const Vec3f& edgeV,
                  uint32_t materialId);
// An axis-aligned box with outward normals, each face a quad with its own UVs 0 to 1.
MeshPlan boxMesh(const std::string& name, const Vec3f& lower, const Vec3f& upper, uint32_t materialId);
// A UV sphere with smooth normals: `rings` bands from pole to pole, `segments` around +Y.
// u goes once around (0 at +X, towards -Z), v from 0 at the south pole to 1 at the north.
MeshPlan sphereMesh(const std::string& name, const Vec3f& centre, float radius, uint32_t rings,
                    uint32_t segments, uint32_t materialId);

// ---- Fur and sprites ---------------------------------------------------------------------------

using Vec4f = std::array<float, 4>;

// A fur element: four control points of a cubic Bezier curve, each x, y, z and radius; the
// material id in the low 24 bits of the material word, the other words zero.
Bytes furCurve(const std::array<Vec4f, 4>& points, uint32_t materialId);
// A sprite element: a disc at `centre` facing `normal`, of `radius`.
Bytes spriteDisc(const Vec3f& centre, const Vec3f& normal, float radius, uint32_t materialId);
// A fur or sprite model of one part and one time slice (at time 0) holding `elements`, each in
// the file form of its kind; write it with furBody or spriteBody.
CloudPlan cloudModel(const std::string& name, const std::vector<Bytes>& elements);

// ---- Materials and texmaps by key --------------------------------------------------------------

// Sets values of a record image by the keys of its type's table. The image starts as the type's
// record with no document keys read over it: references -1, splines unset, the rest zero.
// A key the table doesn't have, or of another kind than the setter's, throws
// std::invalid_argument: a scene meant for the engine must not silently miss a value.
class RecordBuilder {
  public:
    RecordBuilder& real(const char* key, float value);        // Float, or a constant Spline
    RecordBuilder& integer(const char* key, int32_t value);   // Int, UInt, Int16, Enum by index
    RecordBuilder& word(const char* key, const char* value);  // Enum by its word
    RecordBuilder& flag(const char* key, bool value);         // Bool
    RecordBuilder& color(const char* key, ColorRGB value);    // Color, ColorEx (weight 1)
    RecordBuilder& texMap(const char* key, int32_t id);       // TexMapRef
    RecordBuilder& material(const char* key, int32_t id);     // MaterialRef
    RecordBuilder& texture(const char* key, int32_t id);      // TextureRef

    const TypeDescriptor& type() const { return *type_; }
    const Bytes& body() const { return image_; }

  protected:
    RecordBuilder(const TypeDescriptor& type, Bytes image);
    // The image as a document without keys leaves it.
    void clearDocumentKeys();
    Bytes image_;

  private:
    const FieldDescriptor& row(const char* key, std::initializer_list<FieldKind> kinds) const;
    const TypeDescriptor* type_;
};

class MaterialBuilder : public RecordBuilder {
  public:
    MaterialBuilder(const char* typeWord, int32_t id, const std::string& name, int32_t aovId = 0);
    MaterialBuilder(int32_t type, int32_t id, const std::string& name, int32_t aovId = 0);
};

// Mapped types (IMAGE, COLOR, ...) start with an identity coordinate generator over UV channel
// 0 that tiles in every direction, and a neutral colour output (multipliers 1).
class TexMapBuilder : public RecordBuilder {
  public:
    TexMapBuilder(const char* typeWord, int32_t id, const std::string& name);
    TexMapBuilder(int32_t type, int32_t id, const std::string& name);
    // Repeats the map `u` and `v` times over the UV square (mapped types only).
    TexMapBuilder& tiling(float u, float v);
};

// The table of a material or texmap type by its word; throws std::invalid_argument for none.
const TypeDescriptor& materialType(const char* word);
const TypeDescriptor& texMapType(const char* word);
// The row of `key` in a table, or null.
const FieldDescriptor* findRow(const TypeDescriptor& type, const char* key);

// ---- Cameras -----------------------------------------------------------------------------------

// A camera image of `type` with the projection's splines and references unset, a 36 mm sensor,
// the image's aspect, no exposure change and no depth of field.
Bytes cameraImage(int32_t type);
// Perspective with a horizontal field of view in degrees (FocalLength agrees with it).
Bytes perspectiveCamera(float fovXDegrees);
// Orthographic, `width` metres across the frame.
Bytes orthographicCamera(float width);
// Values by key: keys of CameraCommonTable() first, then of the projection table of the image's
// type. A Spline key gets a constant spline. Throws std::invalid_argument for an unknown key.
void setCameraValue(Bytes& camera, const char* key, float value);

// The render camera (role 0) at `eye` looking at `target`.
CameraPathPlan lookAt(const Vec3f& eye, const Vec3f& target, const Vec3f& up = {0, 1, 0});

// ---- Lights ------------------------------------------------------------------------------------

struct LightPlan {
    int32_t type = 1;
    bool enabled = true;
    float intensity = 1;
    ColorRGB colour{1, 1, 1};
    float temperature = 6500; // kelvin; 6500 leaves the colour as it is
    float multiplier = 1;
    float radius = 0; // point and spot lights; 0 leaves the spline unset
    float spotCone = 3.14159265f, spotInnerCone = 3.14159265f;
    Vec3f direction{0, -1, 0};
    Vec3f up{0, 0, 0}; // a rectangle's height axis; zero: any
    float width = 1, height = 1;
    float sunDiameterDegrees = 0.53f;
    int32_t texMap = -1;
    std::string environmentFile; // type 8: the latitude-longitude image
    Vec3f position{0, 0, 0};
    std::string name = "light";
};

// The light record: the reader's defaults with the plan's fields; type 4 also names no second
// texmap. Written with lightVersion(plan.type).
Bytes lightImage(const LightPlan& plan);
// The light's path: one key at the plan's position.
LightPathPlan lightPath(const LightPlan& plan);

} // namespace scene_writer

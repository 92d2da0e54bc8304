// TaviCamera documents: override the camera record that the scene file gave.
//
//   <TaviCamera type="PERSPECTIVE">
//     <Common> SensorSize ... <Shutter/> <Aperture/> <Stereo/> </Common>
//     <Perspective> the projection's own keys </Perspective>
//   </TaviCamera>
//
// The projection sections (Perspective, FishEye, Ortho, Cylinder, Spherical) lay their fields
// over the same bytes from 764 on. Which one is read follows the type the record already has,
// not the document: a document may change the type, but its section is still read by the old
// layout. The client only reads these documents; it never writes one.
#pragma once
#include "documents/field_table.h"
#include "scene/records.h"

#include <pugixml.hpp>

#include <cstdint>

class ITaviNameInterface;
class TempCamera;

constexpr char kCameraRootWord[] = "TaviCamera";
// Projection words by type number 0 to 5 (0 is the empty word), then the null end.
extern const char* const kCameraTypeWords[];
// What the type lookup gives for a word that is not a projection word.
constexpr int32_t kCameraTypeUnknown = 0x7FFFFFFF;

// Index of `word` among the projection words ignoring ASCII case, kCameraTypeUnknown when it is
// none of them. A missing attribute is the empty word, which is type 0.
int32_t LookUpCameraType(const char* word);

// The part that all projections share: `type` on the root (stored only when the word is known,
// so a root without `type` sets 0), then Common with its sections Shutter, Aperture and Stereo.
// A null root is allowed: every key is then missing.
void ReadCameraCommon(pugi::xml_node root, CameraRecord* camera, ITaviNameInterface* names);

// One reader per projection: open the document, ReadCameraCommon, then the projection's section.
// False when the file can't be opened or doesn't parse, with the record unchanged; true otherwise,
// also when the root is not TaviCamera.
bool ReadCameraPerspective(CameraRecord* camera, const char16_t* path, ITaviNameInterface* names);
bool ReadCameraFishEye(CameraRecord* camera, const char16_t* path, ITaviNameInterface* names);
bool ReadCameraOrtho(CameraRecord* camera, const char16_t* path, ITaviNameInterface* names);
bool ReadCameraCylinder(CameraRecord* camera, const char16_t* path, ITaviNameInterface* names);
bool ReadCameraSpherical(CameraRecord* camera, const char16_t* path, ITaviNameInterface* names);

// The loader's call: the reader of the record's current type (1 to 5). False for any other type,
// which leaves the record alone, and when the reader fails.
bool ReadCameraDocument(CameraRecord* camera, const char16_t* path, ITaviNameInterface* names);
// The same on the camera record of a scene camera.
bool ApplyCameraDocument(TempCamera* camera, const char16_t* path, ITaviNameInterface* names);

// The same tables for readers of the record other than documents, such as an engine: the shared
// fields (keys without their "Common/" prefix), and the projection fields of a type, whose
// word is the projection's section; a type without a projection has no fields.
TypeDescriptor CameraCommonTable();
TypeDescriptor CameraProjectionTable(int32_t type);

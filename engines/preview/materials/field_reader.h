// Values of a material record by key, with the guards that compiling needs: a value that is not
// finite is replaced by its default and remembered, so the caller reports it once.
#pragma once
#include "engines/preview/materials/compiled_material.h"
#include "engines/preview/record_view.h"

namespace preview {

class FieldReader {
  public:
    explicit FieldReader(const RecordView& view) : view_(view) {}

    const RecordView& view() const { return view_; }
    bool sawNonFinite() const { return sawNonFinite_; }

    float real(const char* key, float fallback);
    Color color(const char* key, Color fallback); // negative channels become 0
    // The value where a curve starts: its first segment that is switched on.
    float splineStart(const char* key, float fallback);
    Color colorSplineStart(const char* key, Color fallback);

    TexturedColor texturedColor(const char* colorKey, const char* mapKey, Color fallback = Color(0));
    TexturedScalar texturedScalar(const char* valueKey, const char* mapKey, float fallback = 0);

  private:
    float finite(float value, float fallback);

    const RecordView& view_;
    bool sawNonFinite_ = false;
};

} // namespace preview

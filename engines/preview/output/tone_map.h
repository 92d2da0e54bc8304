// The display transform of the 8-bit outputs, prepared once from the tone operator record so
// that the per-pixel work is only the curve evaluation.
#pragma once
#include "engines/preview/vec3.h"
#include "scene/records.h"

namespace preview {

// The piecewise power curve of the filmic operator: a toe, a linear middle and a shoulder,
// normalised so that the white point maps to 1.
class FilmicCurve {
  public:
    struct Shape {
        float toeStrength, toeLength, shoulderStrength, shoulderLength, shoulderAngle, gamma;
    };
    // Used when every shape field of the record is 0, i.e. the document left the operator
    // unset: a gentle toe and two stops of shoulder.
    static constexpr Shape kDefaultShape{0.5f, 0.5f, 2.0f, 0.5f, 0.0f, 1.0f};

    explicit FilmicCurve(const Shape& shape);
    float operator()(float x) const;

  private:
    // y = scaleY * exp(lnA + b * ln((x - offsetX) * scaleX)) + offsetY, 0 where the log is
    // undefined. In double: the mirrored shoulder subtracts values close to its overshoot.
    struct Segment {
        double offsetX = 0, offsetY = 0, scaleX = 1, scaleY = 1, lnA = 0, b = 1;
        double operator()(double x) const;
    };
    double invWhite_ = 1, x0_ = 0, x1_ = 0;
    Segment toe_, middle_, shoulder_;
};

class ToneMapper {
  public:
    explicit ToneMapper(const ToneOperatorRecord& tone);
    // Linear scene colour to display values in [0, 1].
    Color operator()(Color linear) const;

  private:
    float exposureScale_ = 1;
    uint32_t operator_;
    float reinhardInvWhite2_ = 0;
    FilmicCurve filmic_;
    bool applySaturation_;
    float saturation_;
    float invGamma_ = 0; // 0: the sRGB curve
};

} // namespace preview

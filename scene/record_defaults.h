// Defaults of the records that are read as images over them.
#pragma once
#include "scene/records.h"

#include <cstddef>

// A spline that holds `value` everywhere: the first segment spans all abscissas, every further
// one is switched off.
void setConstantSpline(SplineSegment* segments, size_t count, float value);
// Every segment switched off (ts 1, te 0), the rest zero.
void switchOffSpline(SplineSegment* segments, size_t count);

void initCameraRecord(CameraRecord& record);
void initLightRecord(LightRecord& record);

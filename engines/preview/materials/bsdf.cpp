#include "engines/preview/materials/bsdf.h"

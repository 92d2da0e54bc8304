#include "engines/preview/texmaps/texmap_set.h"

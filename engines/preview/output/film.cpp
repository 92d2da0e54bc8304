#include "engines/preview/output/film.h"

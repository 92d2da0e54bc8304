// The preview engine's boundary object (in progress).
#include "bridge/tracer.h"

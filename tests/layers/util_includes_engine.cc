// Must not compile: the util layer sees no engine header.
#include "engine/synchronizer.h"

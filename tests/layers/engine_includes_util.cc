// Compiles: a layer sees the layers below it.
#include "config/ini_file.h"
#include "engine/synchronizer.h"
#include "util/file_system.h"

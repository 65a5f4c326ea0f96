// Must not compile: the engine layer sees no application header.
#include "app/program.h"

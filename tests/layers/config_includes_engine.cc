// Must not compile: the config layer sees no engine header.
#include "engine/sync_set_list.h"

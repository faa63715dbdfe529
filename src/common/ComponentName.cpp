#include "common/ComponentName.h"

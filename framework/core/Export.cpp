#include "framework/core/Export.h"

#include "app/filter_modules.h"

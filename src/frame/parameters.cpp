#include "frame/parameters.h"

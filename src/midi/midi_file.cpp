#include "platform/bytes.h"

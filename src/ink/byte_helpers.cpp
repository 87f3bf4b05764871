#include "ink/byte_helpers.h"

#include "ink/ink_quantities.h"
